"""Every fault of form that a document can have is told in the words of docs/messages.md and docs/xml.md, and those words are
all told."""

import os
import re

from harness import manual, program
from harness.scenario import Scenario

# Ending in the fault that the comment of the manual's row tells; the program is given each as its configuration.
STRUCTURE = [
    "",
    "<a></b>",
    "<a><b></b>",
    "<a",
    "<a></a b>",
    "text<a/>",
    "<a/>text",
    "<![CDATA[x]]><a/>",
    "<a/><![CDATA[x]]>",
    "</a>",
    "<a/></a>",
    "<a/><b/>",
    "<!ELEMENT a><a/>",
    "<a/><!ELEMENT a>",
    "<a><!ELEMENT a></a>",
]
TAGS = [
    "<a =''/>",
    "<a b=''c=''/>",
    "<a b='' b=''/>",
    "<a b/>",
    "<a b=c/>",
    "<a b='",
    "<a b='<'/>",
    "<a>& b</a>",
    "<a>&lt</a>",
    "<a>&#65</a>",
    "<a>&other;</a>",
    "<a>&#;</a>",
    "<a>&#0;</a>",
]
MARKUP = [
    "<a>]]></a>",
    "<a><!-- -- --></a>",
    "<a><!--",
    "<a><![CDATA[",
    "<a><?b",
    "<a><?XML b?></a>",
    "<a><?b+?></a>",
    "<a>< b</a>",
    "<a></ a>",
    "<a><? b?></a>",
]
DECLARATION = [
    "\n<?xml version='1.0'?><a/>",
    "<?xml encoding='UTF-8'?><a/>",
    "<?xml version='2.0'?><a/>",
    "<?xml version='1.0' encoding='8'?><a/>",
    "<?xml version='1.0' standalone='maybe'?><a/>",
    "<?xml version='1.0' ><a/>",
    "<?xml?><a/>",
    *(f"<?xml version='1.0' {name} x?><a/>" for name in ("encoding", "standalone")),
    *(f"<?xml version='1.0' {name}=x?><a/>" for name in ("encoding", "standalone")),
    *(f"<?xml version='1.0' {name}='x" for name in ("encoding", "standalone")),
    "<?xml version x?><a/>",
    "<?xml version=x?><a/>",
    "<?xml version='1.0",
]
DOCUMENT_TYPE = [
    "<a/><!DOCTYPE a>",
    "<!DOCTYPEa><a/>",
    "<!DOCTYPE ><a/>",
    "<!DOCTYPE a b><a/>",
    "<!DOCTYPE a PUBLIC'x' 'y'><a/>",
    "<!DOCTYPE a SYSTEM'y'><a/>",
    "<!DOCTYPE a PUBLIC 'x''y'><a/>",
    "<!DOCTYPE a PUBLIC x><a/>",
    "<!DOCTYPE a PUBLIC 'x><a/>",
    "<!DOCTYPE a SYSTEM y><a/>",
    "<!DOCTYPE a SYSTEM 'y><a/>",
    "<!DOCTYPE a PUBLIC '{' 'y'><a/>",
    "<!DOCTYPE a [<!ENTITY a 'b]><a/>",
    "<!DOCTYPE a [<!OTHER a>]><a/>",
    *(f"<!DOCTYPE a [<!{name}>]><a/>" for name in ("ELEMENT", "ATTLIST", "ENTITY", "NOTATION")),
    "<!DOCTYPE a [<!ENTITY a",
    "<!DOCTYPE a [<!ENTITY [>]><a/>",
    "<!DOCTYPE a [",
    "<!DOCTYPE a [a]><a/>",
    "<!DOCTYPE a [% b;]><a/>",
    "<!DOCTYPE a [%b]><a/>",
]
BYTES = [
    "<?xml version='1.0' encoding='KOI8-R'?><a/>",
    "\ufeff<a/>".encode("utf-32-le"),
    "<?xml version='1.0'?><a/>".encode("cp500"),
    "<a/>".encode("utf-16-le"),
    "\ufeff<?xml version='1.0' encoding='US-ASCII'?><a/>",
    "<?xml version='1.0' encoding='UTF-16'?><a/>",
    b"<a>\xff</a>",
    b"<?xml version='1.0' encoding='US-ASCII'?><a>\xff</a>",
    b"\xff\xfe<\0a\0>\0\0\xd8<\0/\0a\0>\0",
    b"\xff\xfe<\0a\0/\0>",
    "<a>\1</a>",
]
# Faults of what is written, not of what is read; and a document too large to be made here.
NOT_OF_FORM = re.compile(
    r"there is no element|.* has no attribute|.*NUMBER are allowed|.*without which it is none"
    r"|.*documents of 2 GiB|.*is no XML name|.*cannot be written in|the text is no UTF-8|XML cannot hold"
)

RULES = os.path.join(os.path.dirname(manual.PAGE), "xml.md")


def refusals():
    """The sentences of the page about documents, as regular expressions."""
    with open(RULES, encoding="utf-8") as page:
        section = page.read().partition("## What is refused")[2].partition("\n## ")[0]
    rows = "".join(line for line in section.splitlines() if line.startswith("| "))
    return [".+".join(map(re.escape, text.split("..."))) for text in re.findall(r"`([^`]+)`", rows)]


class DocumentFaults(Scenario):
    def told(self, document):
        """What the program says is wrong with the document, without the place."""
        self.write("host/bin/win64/cfg.xml", document)
        result = program.start(self.program, ["--config", "cfg.xml"], self.root)
        self.assertEqual(result.status, 1)
        self.assertEqual(manual.undescribed(result.stderr), [], "docs/messages.md lacks this")
        found = re.search(
            r"cfg\.xml:\d+:\d+: (.*) \([a-z ]+, status -\d+, TaVekUtil:1268\)\n$", result.stderr
        )
        self.assertIsNotNone(found, result.stderr)
        return found.group(1)

    def test_the_manual_tells_each_and_no_other(self):
        listed = [text for text in manual.sections()["Details of documents"] if not NOT_OF_FORM.match(text)]
        self.assertGreater(len(listed), 80)
        rules = {text: re.compile(text) for text in refusals()}
        followed = set()
        untold = {text: re.compile(manual.pattern(text, {})) for text in listed}
        for document in (*STRUCTURE, *TAGS, *MARKUP, *DECLARATION, *DOCUMENT_TYPE, *BYTES):
            with self.subTest(document):
                told = self.told(document)
                fitting = [text for text, form in untold.items() if form.fullmatch(told)]
                self.assertEqual(len(fitting), 1, f"{told} is {fitting} of those that are left")
                del untold[fitting[0]]
                ruling = {text for text, rule in rules.items() if rule.fullmatch(told)}
                self.assertTrue(ruling, f"docs/xml.md lacks: {told}")
                followed |= ruling
        self.assertEqual(list(untold), [], "these are never told")
        self.assertEqual(rules.keys() - followed, set(), "these of docs/xml.md are never told")
