"""Reads ZIP files field by field, independently of the program and of Python's zipfile.

A walk accepts no byte it cannot account for: members lie in the directory's order without gaps.
"""

import struct
import zlib
from dataclasses import dataclass

CENTRAL_FIELDS = ("made_by", "needed", "flags", "method", "time", "date", "crc", "packed", "size")
LOCAL_FIELDS = ("needed", "flags", "method", "time", "date", "crc", "packed", "size")
ADDED_EXTERNAL = 0o100644 << 16
DATE_1980_01_01 = 0x0021


@dataclass
class Entry:
    """A member as it lies in the file; the header fields are in dictionaries by name."""

    name: bytes
    central: dict
    local: dict
    raw: bytes
    descriptor: bytes

    def data(self):
        """The content; None for a method that is not known here."""
        if self.central["flags"] & 1 or self.central["method"] not in (0, 8):
            return None
        return self.raw if self.central["method"] == 0 else zlib.decompress(self.raw, -15)

    def carried_fields(self):
        return {
            "name": self.name,
            "central": self.central,
            "local": self.local,
            "raw": self.raw,
            "descriptor": self.descriptor,
        }


@dataclass
class Added:
    """A member that the program itself puts in."""

    name: bytes
    content: bytes

    def differences(self, entry):
        central = entry.central
        wanted = {
            "method": 0,
            "time": 0,
            "date": DATE_1980_01_01,
            "crc": zlib.crc32(self.content),
            "packed": len(self.content),
            "size": len(self.content),
            "flags": 0 if self.name.isascii() else 0x0800,
            "external": ADDED_EXTERNAL,
            "extra": b"",
            "comment": b"",
        }
        found = {key: central[key] for key in wanted}
        wanted["system"], found["system"] = 3, central["made_by"] >> 8
        wanted["local"], found["local"] = wanted["crc"], entry.local["crc"]
        wanted["raw"], found["raw"] = self.content, entry.raw
        return {key: (wanted[key], found[key]) for key in wanted if wanted[key] != found[key]}


class Contents:
    """The members an archive is expected to hold, in order: start from a file, then put and delete."""

    def __init__(self, blob):
        self.comment, self.items = walk(blob)

    def delete(self, name):
        self.items = [item for item in self.items if item.name != name.encode()]
        return self

    def put(self, name, content):
        """The member `name` now holds `content`; as one that the program added it stands last."""
        self.delete(name)
        self.items.append(Added(name.encode(), content.encode() if isinstance(content, str) else content))
        return self

    def differences(self, blob):
        """What sets the archive `blob` apart from the expected one, as a list of lines; [] when nothing does."""
        comment, entries = walk(blob)
        names, expected = [entry.name for entry in entries], [item.name for item in self.items]
        if names != expected:
            return [f"members {names}, expected {expected}"]
        lines = [] if comment == self.comment else [f"comment {comment!r}, expected {self.comment!r}"]
        for item, entry in zip(self.items, entries):
            if isinstance(item, Added):
                lines += [
                    f"{item.name!r}: {key} {found!r}, expected {wanted!r}"
                    for key, (wanted, found) in item.differences(entry).items()
                ]
            elif item.carried_fields() != entry.carried_fields():
                lines.append(f"{item.name!r} is not carried as it was:\n  {item}\n  {entry}")
        return lines


class Malformed(Exception):
    pass


def require(condition, sentence):
    if not condition:
        raise Malformed(sentence)


def walk(blob):
    """The archive comment and the list of entries of the ZIP file `blob`."""
    end = blob.rfind(b"PK\5\6")
    require(end >= 0, "no end record")
    disk, start, here, count, size, offset, length = struct.unpack_from("<HHHHIIH", blob, end + 4)
    require(disk == start == 0 and here == count, "several disks")
    require(end + 22 + length == len(blob), "bytes behind the end record")
    directory_end, count, size, offset = zip64_end(blob, end) or (end, count, size, offset)
    require(offset + size == directory_end, "the directory does not end where the end record begins")
    entries, at, expected_offset = [], offset, 0
    for _ in range(count):
        central, at = central_header(blob, at)
        entry, expected_offset = member(blob, central, expected_offset)
        entries.append(entry)
    require(at == directory_end and expected_offset == offset, "bytes that belong to no member")
    return blob[end + 22 :], entries


def zip64_end(blob, end):
    """Where the directory ends, its count, size and offset as the ZIP64 records tell; None without such."""
    if blob[end - 20 : end - 16] != b"PK\6\7":
        return None
    (at,) = struct.unpack_from("<Q", blob, end - 12)
    require(blob[at : at + 4] == b"PK\6\6", "the locator names no ZIP64 end record")
    count, size, offset = struct.unpack_from("<QQQ", blob, at + 32)
    return at, count, size, offset


def central_header(blob, at):
    require(blob[at : at + 4] == b"PK\1\2", "no central header")
    header = dict(zip(CENTRAL_FIELDS, struct.unpack_from("<HHHHHHIII", blob, at + 4)))
    name, extra, comment, disk, internal, external, offset = struct.unpack_from("<HHHHHII", blob, at + 28)
    require(disk == 0, "a member on another disk")
    names = at + 46
    header.update(
        name=blob[names : names + name],
        extra=blob[names + name : names + name + extra],
        comment=blob[names + name + extra : names + name + extra + comment],
        internal=internal,
        external=external,
        offset=offset,
    )
    return header, names + name + extra + comment


def member(blob, central, offset):
    require(central.pop("offset") == offset, "members with a gap, or out of order")
    require(blob[offset : offset + 4] == b"PK\3\4", "no local header")
    local = dict(zip(LOCAL_FIELDS, struct.unpack_from("<HHHHHIII", blob, offset + 4)))
    name_length, extra_length = struct.unpack_from("<HH", blob, offset + 26)
    data = offset + 30 + name_length + extra_length
    name = central.pop("name")
    require(blob[offset + 30 : offset + 30 + name_length] == name, "names that differ")
    local["extra"] = blob[data - extra_length : data]
    end = data + packed_size(central)
    descriptor = b""
    if central["flags"] & 8:
        length = 12 if zip64_record(local["extra"]) is None else 20
        descriptor = blob[end : end + length + (4 if blob[end : end + 4] == b"PK\7\x08" else 0)]
    return Entry(name, central, local, blob[data:end], descriptor), end + len(descriptor)


def packed_size(central):
    if central["packed"] != 0xFFFFFFFF:
        return central["packed"]
    record = zip64_record(central["extra"])
    require(record is not None, "no ZIP64 size")
    return struct.unpack_from("<Q", record, 8 if central["size"] == 0xFFFFFFFF else 0)[0]


def zip64_record(extra):
    """What the ZIP64 record among the extra fields holds; None without one."""
    at = 0
    while at + 4 <= len(extra):
        tag, length = struct.unpack_from("<HH", extra, at)
        if tag == 1:
            return extra[at + 4 : at + 4 + length]
        at += 4 + length
    return None
