"""Every message of the program stands in docs/messages.md, and what stands there is in the program."""

import re
import unittest

import literals
from workplace import REPOSITORY

PAGE = REPOSITORY / "docs/messages.md"
PHRASE = re.compile(r'return "([^"]+)";')
CODE_SPAN = re.compile(r"`([^`]+)`")


class Messages(unittest.TestCase):
    def setUp(self):
        self.page = PAGE.read_text()

    def test_every_text_of_the_sources_is_listed(self):
        shown = literals.shown()
        self.assertGreater(len(shown), 150, "hardly a text was found in the sources")
        missing = [f"{source}: {text}" for text, source in shown.items() if not self.is_listed(text)]
        self.assertEqual(missing, [], "these are not in docs/messages.md")

    def is_listed(self, text):
        return all(part.strip() in self.page for part in text.split("%s"))

    def test_every_mistake_on_the_command_line_is_listed(self):
        source = (REPOSITORY / "TaVekUtil/cli/command_line.cpp").read_text()
        mistakes = re.findall(r'refuse\("([^"]+)"\)|"(ERROR: No [^"]+)"', source)
        self.assertEqual(len(mistakes), 3)
        for mistake in ("".join(groups) for groups in mistakes):
            self.assertIn(mistake, self.page)

    def test_every_status_phrase_is_listed(self):
        phrases = PHRASE.findall((REPOSITORY / "platform/base/status.cpp").read_text())
        self.assertGreater(len(phrases), 8)
        for phrase in phrases:
            self.assertIn(f"| `{phrase}` |", self.page)

    def test_every_listed_message_is_made_of_texts_of_the_sources(self):
        texts = all_texts()
        for row in re.findall(r"^\| (`[^|]+) \|", self.page, re.M):
            for message in CODE_SPAN.findall(row):
                with self.subTest(message):
                    self.assertEqual(strange_words(message, texts), [])


def all_texts():
    """A pattern for every literal of the sources, the longest first."""
    texts = set()
    for top in ("TaVekUtil", "platform"):
        for path in (REPOSITORY / top).rglob("*.[ch]*"):
            texts |= {literal.strip() for literal in literals.literals(path.read_text())}
    return [pattern(text) for text in sorted(texts, key=len, reverse=True) if len(text) > 1]


def pattern(text):
    begin = r"\b" if text[0].isalpha() else ""
    end = r"\b" if text[-1].isalpha() else ""
    return re.compile(begin + re.escape(text.replace("%s", "NAME")) + end)


def strange_words(message, texts):
    """The words of a message, without the changing ones in capitals, that stand in none of `texts`."""
    for text in texts:
        message = text.sub(" ~ ", message)
    return re.findall(r"[A-Za-z]*[a-z][A-Za-z]*", message)


if __name__ == "__main__":
    unittest.main()
