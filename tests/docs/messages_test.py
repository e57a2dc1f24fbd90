"""Every message of the program stands in docs/messages.md, every one of our tar in docs/tar.md, and what stands there is in
the programs."""

import re
import unittest

import literals
import markdown
from workplace import REPOSITORY

from harness import manual

PAGE = REPOSITORY / "docs/messages.md"
TAR_PAGE = REPOSITORY / "docs/tar.md"
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
        self.check_listed(self.page, all_texts("TaVekUtil", "platform"))

    def check_listed(self, page, texts):
        listed = [
            text for row in re.findall(r"^\| (`[^|]+) \|", page, re.M) for text in CODE_SPAN.findall(row)
        ]
        self.assertGreater(len(listed), 30)
        for message in listed:
            with self.subTest(message):
                self.assertEqual(strange_words(message, texts), [])

    def test_messages_shown_elsewhere_are_listed(self):
        shown = [
            line
            for document in markdown.documents()
            for block in markdown.blocks(document)
            if block.language == "text" and block.lines[0].startswith("TaVekUtil: ")
            for line in block.lines
        ]
        self.assertGreater(len(shown), 4)
        self.assertEqual(manual.undescribed("\n".join(shown)), [])

    def test_every_message_of_our_tar_is_listed(self):
        page = TAR_PAGE.read_text().partition("\n## Messages\n")[2].partition("\n## ")[0]
        self.check_listed(page, all_texts("tools/tar", "platform"))
        texts = [
            text
            for path in (REPOSITORY / "tools/tar").glob("*.cpp")
            for text in literals.literals(re.sub(r"^\s*#.*$", "", path.read_text(), flags=re.M))
            if literals.is_sentence(text) and not text.startswith("Usage: ")
        ]
        self.assertGreater(len(texts), 35)
        self.assertEqual([text for text in texts if text.strip(" :") not in page], [])


def all_texts(*directories):
    """A pattern for every literal of the sources, the longest first."""
    texts = set()
    for top in directories:
        for path in (REPOSITORY / top).rglob("*.[ch]*"):
            texts |= {literal.strip(" :\t\n") for literal in literals.literals(path.read_text())}
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
