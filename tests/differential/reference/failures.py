"""How the model fails: statuses of platform operations, and the exceptions that carry them to the user.

A status is a class of failure by name. Those with a number of their own are known here; of the others the comparison
only demands that one class always shows the same number and phrase.
"""

import re
from contextlib import contextmanager

NUMBERS = {"general": 0, "not found": -999, "not established": -984}
ANY = "any"


class Status(Exception):
    """A platform operation answered something else than success."""

    def __init__(self, kind):
        super().__init__(kind)
        self.kind = kind


class Failure(Exception):
    """What the tool raises; `pattern` is a regular expression of its message."""

    def __init__(self, pattern):
        super().__init__(pattern)
        self.pattern = pattern


class AbnormalEnd(Exception):
    """The process ends at once."""


def message(text):
    return Failure(re.escape(text))


def status_alone(kind):
    return Failure(located_tail(kind, None, lead="", separator=r" \(", end=r"\)"))


def located_tail(kind, line, lead=r" \(", separator=", ", end=None):
    number = str(NUMBERS[kind]) if kind in NUMBERS else r"-?\d+"
    place = "" if end else ", TaVekUtil:" + (str(line) if line else r"\d+")
    name = "k_" + kind.replace(" ", "_")
    return rf"{lead}(?P<{name}>[^(),\n]+{separator}status {number}){place}{end or chr(92) + ')'}"


@contextmanager
def located(operation, line=None):
    """Turns a status into the located exception of `operation`; `line` where the number is fixed."""
    try:
        yield
    except Status as status:
        pattern = re.escape(operation) + r"(?:: [^\n]*)?" + located_tail(status.kind, line)
        raise Failure(pattern) from None
