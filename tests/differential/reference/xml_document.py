"""XML documents that remember every byte they came from.

expat decides whether a document is well-formed; what is read here of one that is, is a tree in which each node keeps
its own text.
"""

import codecs
import re
from xml.parsers import expat

from .failures import Status
from .paths import fitting

TOKENS = re.compile(
    r"<!--.*?-->|<\?.*?\?>|<!\[CDATA\[.*?\]\]>"
    r"|<!DOCTYPE(?:\"[^\"]*\"|'[^']*'|\[.*?\]|[^>\"'\[])*>"
    r"|<(?:\"[^\"]*\"|'[^']*'|[^>\"'])*>|[^<]+",
    re.S,
)
ATTRIBUTES = re.compile(r"([^\s=<>/\"']+)\s*=\s*(?:\"([^\"]*)\"|'([^']*)')")
REFERENCES = re.compile(r"&(?:#x([0-9a-fA-F]+)|#([0-9]+)|(lt|gt|amp|quot|apos));")
NAMED = {"lt": "<", "gt": ">", "amp": "&", "quot": '"', "apos": "'"}
BLANKS = " \t\r\n"
MARKS = ((codecs.BOM_UTF8, "utf-8"), (codecs.BOM_UTF16_LE, "utf-16-le"), (codecs.BOM_UTF16_BE, "utf-16-be"))


def resolved(text):
    def one(match):
        if match[3]:
            return NAMED[match[3]]
        return chr(int(match[1], 16) if match[1] else int(match[2]))

    return REFERENCES.sub(one, text)


def unix_lines(text):
    return text.replace("\r\n", "\n").replace("\r", "\n")


class Node:
    """An element, comment, instruction, CDATA section or piece of text; `raw` is its own text, an element's start tag.

    A `fresh` element was made by an edit: its content is known, how it is written is not. One with a `lead` is the copy
    of an element that stood behind this white space.
    """

    def __init__(self, kind, raw="", name="", attributes=None, fresh=False):
        self.kind, self.raw, self.name, self.fresh = kind, raw, name, fresh
        self.attributes = attributes or {}
        self.children = []
        self.end = None  # the end tag; None for an empty-element tag
        self.lead = None
        self.neighbour = None  # what stood before it, as it was read
        self.last = None  # the last child that is more than white space, as it was read

    def elements(self):
        return [child for child in self.children if child.kind == "element"]

    def text(self):
        """The text of an item; white space alone is none."""
        pieces = [child.value() for child in self.children if child.kind in ("text", "cdata")]
        text = "".join(pieces)
        return text if text.strip(BLANKS) else ""

    def value(self):
        if self.kind == "cdata":
            return unix_lines(self.raw[9:-3])
        return self.raw if self.fresh else resolved(unix_lines(self.raw))

    def child(self, name):
        for child in self.elements():
            if child.name == name:
                return child
        raise Status("not found")

    # ---- Reads into buffers ------------------------------------------------------------------------------

    def read_text(self, capacity):
        return fitting(self.text(), capacity)

    def read_attribute(self, name, capacity):
        if name not in self.attributes:
            raise Status("not found")
        return fitting(self.attributes[name], capacity)

    # ---- Edits -------------------------------------------------------------------------------------------

    def add(self, tag, text=None, /, **attributes):
        for value in (*attributes.values(), text or ""):
            require_storable(value)
        child = Node("element", name=tag, attributes=dict(attributes), fresh=True)
        if text:
            child.children.append(Node("text", text, fresh=True))
        self.children.append(child)
        return child

    def remove(self, child):
        self.children = [other for other in self.children if other is not child]

    def copied(self, child):
        """A copy of a child for another document: it is the same text, but for line ends and indentation."""
        copy = Node("element", child.raw, child.name, child.attributes, fresh=True)
        copy.children, copy.end = child.children, child.end
        at = self.children.index(child)
        before = self.children[at - 1] if at else None
        copy.lead = before.raw if before is not None and is_blank(before) else ""
        return copy


def require_storable(text):
    """Refuses what XML cannot hold, and bytes that are no text."""
    for character in text:
        code = ord(character)
        if (code < 32 and character not in "\t\n\r") or 0xD800 <= code < 0xE000 or code in (0xFFFE, 0xFFFF):
            raise Status("any")


class Document:
    def __init__(self, data):
        self.mark, self.encoding = detected(data)
        try:
            parser = expat.ParserCreate()
            parser.Parse(data, True)
            self.source = data[len(self.mark) :].decode(self.encoding)
        except (expat.ExpatError, UnicodeError, LookupError, ValueError):
            raise Status("malformed") from None
        self.before, self.root, self.behind = tree(self.source)

    def serialised(self):
        """The document as text, without a care for layout."""
        return "".join(node.raw for node in self.before) + written(self.root)


def fresh_document(root):
    document = Document(b'<?xml version="1.0" encoding="UTF-8"?>\n<x/>')
    document.root = Node("element", name=root, fresh=True)
    document.source = None
    return document


def written(node):
    if node.kind != "element":
        return node.raw
    start = node.raw or f"<{node.name}" + "".join(f' {k}="{v}"' for k, v in node.attributes.items()) + ">"
    return start + "".join(written(child) for child in node.children)


def detected(data):
    """The byte order mark and Python's name of the encoding."""
    for mark, encoding in MARKS:
        if data.startswith(mark):
            return mark, encoding
    declared = re.match(rb"<\?xml[^>]*?encoding\s*=\s*[\"']([A-Za-z0-9._-]+)", data)
    return b"", declared[1].decode().lower() if declared else "utf-8"


def tree(text):
    """What stands before the root, the root, and what stands behind it."""
    top = Node("element")
    open_nodes = [top]
    for token in TOKENS.findall(text):
        parent = open_nodes[-1]
        if token.startswith("</"):
            parent.end = token
            parent.last = next((n for n in reversed(parent.children) if not is_blank(n)), None)
            open_nodes.pop()
            continue
        node = Node(kind_of(token), token)
        node.neighbour = next((n for n in reversed(parent.children) if not is_blank(n)), None)
        parent.children.append(node)
        if node.kind == "element":
            node.name = re.match(r"<([^\s/>]+)", token)[1]
            node.attributes = attributes_of(token)
            if not token.endswith("/>"):
                open_nodes.append(node)
    at = next(i for i, node in enumerate(top.children) if node.kind == "element")
    return top.children[:at], top.children[at], top.children[at + 1 :]


def is_blank(node):
    return node.kind == "text" and not node.fresh and not node.raw.strip(BLANKS)


def kind_of(token):
    for start, kind in (("<!--", "comment"), ("<![", "cdata"), ("<!", "doctype"), ("<?", "instruction")):
        if token.startswith(start):
            return kind
    return "element" if token.startswith("<") else "text"


def attributes_of(token):
    found = ATTRIBUTES.findall(re.sub(r"^<[^\s/>]+", "", token))
    return {
        name: resolved(re.sub("[\t\n]", " ", unix_lines(double or single))) for name, double, single in found
    }
