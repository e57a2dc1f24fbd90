"""Expected texts of which a part is left open."""

import re

PHRASES = {
    0: "failure",
    -999: "not found",
    -984: "cannot be established",
    -5: "input/output error",
    -22: "invalid argument",
    -74: "malformed input",
    -75: "does not fit",
    -95: "not supported",
}


class Pattern:
    """A text with open parts. Plain text may be added on either side; equality is a full match."""

    def __init__(self, expression):
        self.expression = expression

    def __add__(self, other):
        return Pattern(self.expression + expression_of(other))

    def __radd__(self, other):
        return Pattern(expression_of(other) + self.expression)

    def __eq__(self, text):
        return re.fullmatch(self.expression, text) is not None

    def __repr__(self):
        return f"text matching {self.expression!r}"


def expression_of(text):
    return text.expression if isinstance(text, Pattern) else re.escape(text)


def anything():
    """Any text within one line."""
    return Pattern(r"[^\n]*")


def containing(text):
    """One line's text that holds `text`."""
    return anything() + text + anything()


def one_of(*texts):
    return Pattern("(?:" + "|".join(expression_of(text) for text in texts) + ")")


def located(operation, status, detail=None, line=None):
    """The message of a failed operation: `<operation>: <detail> (<phrase>, status <n>, TaVekUtil:<line>)`.

    `detail` is a text or a Pattern, None when the message has none. Without `line` any line number will do.
    """
    head = operation if detail is None else operation + ": " + detail
    number = Pattern("[1-9][0-9]*") if line is None else str(line)
    return head + f" ({PHRASES[status]}, status {status}, TaVekUtil:" + number + ")"
