"""Holds what the program prints against docs/messages.md: a line that no row of the page describes is found here."""

import functools
import os
import re

PAGE = os.path.join(os.path.dirname(__file__), "../../../docs/messages.md")

# The words that stand for what differs.
OPEN = (
    "CHARACTER COLUMN DESTINATION ELEMENT ENCODING ENTRY KIND LINE NAME NUMBER PATH TEXT VERSION WORD".split()
)
# Not the program's own words: the usage text and what tar says.
OTHERS = re.compile(
    r"Usage: |       TaVekUtil\.exe .*|           <.*> - .*|If archive and file .*|.*tar(\.exe)?: .*|"
)


def sections():
    """{heading: the messages in the first cells of the tables below it}"""
    found, heading = {}, None
    with open(PAGE, encoding="utf-8") as page:
        for line in page:
            if line.startswith("## "):
                heading = line[3:].strip()
            elif row := re.match(r"\| (`.+?`) \|", line):
                found.setdefault(heading, []).extend(re.findall(r"`([^`]+)`", row.group(1)))
    return found


def any_of(messages, **parts):
    return "(?:" + "|".join(pattern(message, parts) for message in messages) + ")"


def pattern(message, parts):
    """The message as a regular expression; a word of `parts` stands for that expression."""

    def word(match):
        return parts.get(match.group(), ".*" if match.group() in OPEN else match.group())

    # XML has words in capitals of its own, as in <!ELEMENT.
    return re.sub(r"(?<![!A-Z])[A-Z]{2,}", word, re.escape(message))


@functools.lru_cache(maxsize=None)
def described():
    """A regular expression for every line that the page describes."""
    page = sections()
    phrases = "|".join(page["Status phrases"])
    sentences = [text for heading, texts in page.items() if "Details" in heading for text in texts]
    detail = f"(?:.*: )?{any_of(sentences, REASON='.*')}"
    located = rf"[\w:]+: {detail} \((?:{phrases}), status -?\d+, TaVekUtil:\d+\)"
    findings = any_of(page["Findings about archives and packages"])
    lines = [
        any_of(page[heading], REASON=f"(?:{findings}|{located})", DETAIL=detail)
        for heading in page
        if not heading.startswith(("Findings", "Status", "Details", "Mistakes inside"))
    ]
    return re.compile(r"\s*(?:" + "|".join(lines) + r")\s*")


def undescribed(text):
    """The lines of the program's output that the page does not describe."""
    return [
        line for line in text.split("\n") if not OTHERS.fullmatch(line) and not described().fullmatch(line)
    ]
