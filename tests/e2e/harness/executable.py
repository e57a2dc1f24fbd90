"""A small Windows executable with a version resource, made from nothing."""

import struct

SECTION_ADDRESS, FILE_ALIGNMENT = 0x1000, 0x200
RT_VERSION = 16


def aligned(data, size):
    return data + b"\0" * (-len(data) % size)


def version_block(key, value=b"", value_length=None, text=False, children=b""):
    """One block of a version resource: length, value length, kind, key, value, children."""
    head = aligned(b"\0" * 6 + (key + "\0").encode("utf-16-le"), 4)
    body = aligned(head + value, 4) + children if children else head + value
    length = len(value) if value_length is None else value_length
    return struct.pack("<HHH", len(body), length, int(text)) + body[6:]


def version_resource(file_version, product_version):
    def words(version):
        major, minor, build, revision = version
        return (major << 16 | minor, build << 16 | revision)

    fixed = struct.pack(
        "<13I",
        0xFEEF04BD,
        0x10000,
        *words(file_version),
        *words(product_version),
        0x3F,
        0,
        0x40004,
        1,
        0,
        0,
        0
    )
    return version_block("VS_VERSION_INFO", fixed)


def resource_section(resource):
    """A resource directory of three levels (type, name, language) with the one resource as its leaf."""

    def directory(identifier, offset):
        return struct.pack("<IIHHHHII", 0, 0, 0, 0, 0, 1, identifier, offset)

    tree = directory(RT_VERSION, 0x80000000 | 24) + directory(1, 0x80000000 | 48) + directory(0x409, 72)
    leaf = struct.pack("<IIII", SECTION_ADDRESS + 88, len(resource), 0, 0)
    return tree + leaf + resource


def executable(file_version=None, product_version=(9, 9, 9, 9)):
    """A 64-bit Windows executable; without `file_version` it carries no version resource."""
    section = (
        b"" if file_version is None else resource_section(version_resource(file_version, product_version))
    )
    content = aligned(section or b"\0", FILE_ALIGNMENT)
    directories = [(0, 0)] * 16
    if section:
        directories[2] = (SECTION_ADDRESS, len(section))
    optional = struct.pack("<HBBIIIII", 0x20B, 14, 0, 0, len(content), 0, 0, SECTION_ADDRESS)
    optional += struct.pack(
        "<QIIHHHHHHIIIIHH",
        0x140000000,
        0x1000,
        FILE_ALIGNMENT,
        6,
        0,
        0,
        0,
        6,
        0,
        0,
        0x2000,
        FILE_ALIGNMENT,
        0,
        3,
        0,
    )
    optional += struct.pack("<QQQQII", 0x100000, 0x1000, 0x100000, 0x1000, 0, 16)
    optional += b"".join(struct.pack("<II", *directory) for directory in directories)
    coff = struct.pack("<HHIIIHH", 0x8664, 1, 0, 0, 0, len(optional), 0x22)
    name = b".rsrc\0\0\0"
    table = name + struct.pack(
        "<IIIIIIHHI",
        max(len(section), 1),
        SECTION_ADDRESS,
        len(content),
        FILE_ALIGNMENT,
        0,
        0,
        0,
        0,
        0x40000040,
    )
    dos = aligned(b"MZ" + b"\0" * 58 + struct.pack("<I", 64), 64)
    return aligned(dos + b"PE\0\0" + coff + optional + table, FILE_ALIGNMENT) + content
