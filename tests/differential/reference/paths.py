"""Texts of limited length, paths, and a disk in memory."""

import copy
import os

from .failures import Status

SEPARATORS = "/\\"


def size(text):
    return len(text.encode("utf-8", "surrogateescape"))


def fitting(text, capacity):
    """`text`, when it fits a buffer of `capacity` bytes with its terminator."""
    if size(text) >= capacity:
        raise Status("does not fit")
    return text


def cut(text, capacity):
    return text.encode("utf-8", "surrogateescape")[: capacity - 1].decode("utf-8", "surrogateescape")


def last_separator(path):
    return max(path.rfind(separator) for separator in SEPARATORS)


def combine(first, second, capacity=512):
    if not first or not second:
        return fitting(first or second, capacity)
    return fitting(first.rstrip(SEPARATORS) + "/" + second.lstrip(SEPARATORS), capacity)


def directory(path, capacity=512):
    at = last_separator(path)
    return fitting(path[: max(at, 1)] if at >= 0 else "", capacity)


def file_name(path, capacity=512):
    return fitting(path[last_separator(path) + 1 :], capacity)


def extension(path, capacity=512):
    name = file_name(path)
    at = name.rfind(".")
    return fitting(name[at + 1 :] if at > 0 else "", capacity)


def strip_extension(path, capacity=512):
    at = path.rfind(".")
    return fitting(path[:at] if at > last_separator(path) + 1 else path, capacity)


def is_absolute(path):
    return path[:1] in ("/", "\\")


DIRECTORY = "directory"


class Disk:
    """The files below `root`, which is the working directory too. A file is bytes, or an image the model made."""

    def __init__(self, root):
        self.root = root
        self.files = {root: DIRECTORY}
        for here, directories, files in os.walk(root):
            for name in directories:
                self.files[os.path.join(here, name)] = DIRECTORY
            for name in files:
                with open(os.path.join(here, name), "rb") as file:
                    self.files[os.path.join(here, name)] = file.read()

    def place(self, path):
        """The absolute name behind `path`, None when nothing can lie there."""
        path = path.replace("\\", "/")
        if not path or "\0" in path:
            return None
        if not path.startswith("/"):
            path = self.root + "/" + path
        at = ""
        parts = path.split("/")
        for index, part in enumerate(parts):
            if index and self.is_below_root(at) and self.files.get(at) != DIRECTORY and part is not parts[0]:
                return None
            if part == "..":
                at = os.path.dirname(at) if at != "/" else ""
            elif part not in ("", "."):
                if size(part) > 255:
                    return None
                at += "/" + part
        return at or "/"

    def is_below_root(self, path):
        return path == self.root or path.startswith(self.root + "/")

    def look(self, path):
        """What lies at `path`: DIRECTORY, a file's content, None for nothing."""
        place = self.place(path)
        return None if place is None else self.files.get(place)

    def is_directory(self, path):
        return self.look(path) == DIRECTORY

    def load(self, path):
        found = self.look(path)
        if found is None:
            raise Status("not found" if self.could_lie(path) else "any")
        if isinstance(found, str):
            raise Status("any")
        return copy.deepcopy(found) if not isinstance(found, bytes) else found

    def could_lie(self, path):
        """Whether nothing but the file itself, or a directory above it, is missing."""
        return not self.has_long_name(path) and not self.under_file(path)

    @staticmethod
    def has_long_name(path):
        """Whether a part is longer than file systems take, which is another fault than that it is missing."""
        return any(size(part) > 255 for part in path.replace("\\", "/").split("/"))

    def under_file(self, path):
        parts = path.replace("\\", "/").rstrip("/").split("/")
        above = ["/".join(parts[:count]) for count in range(1, len(parts))]
        found = [self.look(name) for name in above if name]
        return any(item is not None and item != DIRECTORY for item in found) or path.endswith(("/", "\\"))

    def save(self, path, content):
        place = self.place(path)
        if place is None or self.files.get(os.path.dirname(place)) != DIRECTORY:
            raise Status("any")
        if self.files.get(place) == DIRECTORY or path.endswith(("/", "\\")):
            raise Status("any")
        self.files[place] = content

    def delete(self, path):
        found = self.look(path)
        if found is None and not self.has_long_name(path):
            raise Status("not found")
        if found is None or found == DIRECTORY:
            raise Status("any")
        del self.files[self.place(path)]

    def create_directory(self, path):
        if self.is_directory(path):
            return
        parts = path.replace("\\", "/").split("/")
        for count in range(1, len(parts) + 1):
            here = "/".join(parts[:count])
            if not here or self.is_directory(here):
                continue
            place = self.place(here)
            if place is None or self.files.get(place) is not None:
                raise Status("any")
            self.files[place] = DIRECTORY

    def list_files(self, path):
        place = self.place(path)
        if place is None or self.files.get(place) != DIRECTORY:
            raise Status("any")
        inside = [name for name in self.files if os.path.dirname(name) == place and name != place]
        names = [os.path.basename(name) for name in inside if self.files[name] != DIRECTORY]
        return sorted(names, key=lambda name: name.encode("utf-8", "surrogateescape"))
