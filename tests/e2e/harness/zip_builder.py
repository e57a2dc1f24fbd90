"""Builds ZIP files byte by byte, sound ones and broken ones."""

import struct
import zlib
from dataclasses import dataclass, field

STORED, DEFLATED, BZIP2, LZMA = 0, 8, 12, 14
HAS_DESCRIPTOR, IS_ENCRYPTED, IS_UTF8 = 0x0008, 0x0001, 0x0800


@dataclass
class Member:
    """A member to be written; what is left None is computed from the rest."""

    name: str
    data: bytes
    method: int = STORED
    raw: bytes = None  # the bytes as they lie in the file
    crc: int = None
    size: int = None
    flags: int = None
    time: int = 0x6C2B
    date: int = 0x58D3
    made_by: int = 0x0314
    needed: int = 20
    extra: bytes = b""
    local_extra: bytes = None
    comment: bytes = b""
    internal: int = 0
    external: int = 0o100644 << 16
    local: dict = field(default_factory=dict)  # fields in which the local header lies
    descriptor_signature: bool = True

    def __post_init__(self):
        if isinstance(self.data, str):
            self.data = self.data.encode()
        if self.raw is None:
            self.raw = deflated(self.data) if self.method == DEFLATED else self.data
        if self.crc is None:
            self.crc = zlib.crc32(self.data)
        if self.size is None:
            self.size = len(self.data)
        if self.flags is None:
            self.flags = 0 if self.name.isascii() else IS_UTF8
        if self.local_extra is None:
            self.local_extra = self.extra


def deflated(data):
    packer = zlib.compressobj(9, zlib.DEFLATED, -15)
    return packer.compress(data) + packer.flush()


def local_record(member):
    described = bool(member.flags & HAS_DESCRIPTOR)
    fields = {
        "needed": member.needed,
        "flags": member.flags,
        "method": member.method,
        "time": member.time,
        "date": member.date,
        "crc": 0 if described else member.crc,
        "packed": 0 if described else len(member.raw),
        "size": 0 if described else member.size,
        "name": member.name,
        **member.local,
    }
    name = fields.pop("name").encode()
    head = struct.pack("<IHHHHHIII", 0x04034B50, *fields.values())
    record = (
        head + struct.pack("<HH", len(name), len(member.local_extra)) + name + member.local_extra + member.raw
    )
    if described:
        signature = struct.pack("<I", 0x08074B50) if member.descriptor_signature else b""
        record += signature + struct.pack("<III", member.crc, len(member.raw), member.size)
    return record


def central_record(member, offset):
    name = member.name.encode()
    head = struct.pack(
        "<IHHHHHHIII",
        0x02014B50,
        member.made_by,
        member.needed,
        member.flags,
        member.method,
        member.time,
        member.date,
        member.crc,
        len(member.raw),
        member.size,
    )
    lengths = struct.pack(
        "<HHHHHII",
        len(name),
        len(member.extra),
        len(member.comment),
        0,
        member.internal,
        member.external,
        offset,
    )
    return head + lengths + name + member.extra + member.comment


def end_record(count, size, offset, comment=b""):
    return struct.pack("<IHHHHIIH", 0x06054B50, 0, 0, count, count, size, offset, len(comment)) + comment


def build(members, comment=b"", gap=b""):
    """A ZIP file of `members`, which lie in it in this order; `gap` stands behind each of them."""
    body, directory = b"", b""
    for member in members:
        directory += central_record(member, len(body))
        body += local_record(member) + gap
    return body + directory + end_record(len(members), len(directory), len(body), comment)
