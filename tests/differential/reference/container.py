"""The archive container: ZIP members in their order, each carried as it was read or added by the tool."""

import struct
import zlib

from harness.zip_walker import Entry, Malformed, walk

from .failures import Status
from .xml_document import Document


class AddedMember:
    """A member put in by the tool; its content is bytes or a document."""

    def __init__(self, name, content):
        self.name, self.content = name, content


class Image:
    """An archive as the model saves it."""

    def __init__(self, comment, items):
        self.comment, self.items = comment, items


def encoded(name):
    return name.encode("utf-8", "surrogateescape")


class Container:
    def __init__(self):
        self.comment, self.items = b"", []

    def load(self, content):
        """Takes the members of a file's content, bytes or an image."""
        if isinstance(content, Image):
            self.comment, self.items = content.comment, list(content.items)
            return
        if isinstance(content, Document):
            raise Status("malformed")
        try:
            self.comment, self.items = walk(content)
        except (Malformed, struct.error, IndexError):
            raise Status("malformed") from None
        names = [item.name for item in self.items]
        if len(set(names)) != len(names) or b"" in names:
            raise Status("malformed")

    def item(self, name):
        return next((item for item in self.items if item.name == encoded(name)), None)

    def find(self, name):
        """The member's content, bytes or a document."""
        item = self.item(name)
        if item is None:
            raise Status("not found")
        return item.content if isinstance(item, AddedMember) else decoded(item)

    def add(self, name, content):
        """A name that is taken keeps its member when the bytes are the same."""
        if self.item(name) is None:
            self.items.append(AddedMember(encoded(name), content))
            return
        try:
            is_shared = self.find(name) == content
        except Status:
            is_shared = False
        if not is_shared:
            raise Status("any")

    def delete(self, name):
        self.items = [item for item in self.items if item.name != encoded(name)]

    def image(self):
        for item in self.items:
            if isinstance(item, Entry) and is_readable(item):
                decoded(item)
        return Image(self.comment, list(self.items))


def is_readable(entry):
    return not entry.central["flags"] & 1 and entry.central["method"] in (0, 8)


def decoded(entry):
    if not is_readable(entry):
        raise Status("unsupported")
    try:
        data = entry.data()
    except zlib.error:
        raise Status("malformed") from None
    if len(data) != entry.central["size"] or zlib.crc32(data) != entry.central["crc"]:
        raise Status("malformed")
    return data
