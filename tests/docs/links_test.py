"""Every link of the documents leads somewhere, and every document of the manual can be found from its contents."""

import re
import unittest
import xml.etree.ElementTree

import markdown
from workplace import REPOSITORY

NAMED = re.compile(
    r"`((?:bench|docs|packaging|platform|samples|schemas|scripts|tests|tools|TaVekUtil|TaVekInspect)/[^` ]*)[^`]*`"
)
MADE_UP = {"tests/TaVekUtil/edit/rename_package_test.cpp"}


class Links(unittest.TestCase):
    def test_every_link_leads_somewhere(self):
        checked = 0
        for document in markdown.documents():
            for line, target in markdown.links(document):
                with self.subTest(f"{document.relative_to(REPOSITORY)}:{line}: {target}"):
                    self.follow(document, target)
                    checked += 1
        self.assertGreater(checked, 30, "hardly a link was found")

    def follow(self, document, target):
        self.assertNotIn("://", target, "documents refer to nothing outside the repository")
        name, _, anchor = target.partition("#")
        path = (document.parent / name).resolve() if name else document
        self.assertTrue(path.exists(), "names nothing")
        if path.suffix == ".svg":
            xml.etree.ElementTree.parse(path)
        if anchor:
            self.assertIn(anchor, markdown.anchors(path), "there is no such heading")

    def test_every_file_that_is_named_is_there(self):
        checked = 0
        for document in markdown.documents():
            for line, text in markdown.prose(document):
                for name in set(NAMED.findall(text)) - MADE_UP:
                    with self.subTest(f"{document.relative_to(REPOSITORY)}:{line}: {name}"):
                        self.assertTrue(any(REPOSITORY.glob(name.rstrip("/"))), "names nothing")
                        checked += 1
        self.assertGreater(checked, 50, "hardly a name was found")

    def test_every_document_of_the_manual_is_in_its_contents(self):
        contents = REPOSITORY / "docs/README.md"
        named = {target for _, target in markdown.links(contents)}
        for document in markdown.documents():
            if document.parent == contents.parent and document != contents:
                self.assertIn(document.name, named)


if __name__ == "__main__":
    unittest.main()
