"""What other programs say of an archive: Info-ZIP's unzip, 7-Zip, python's zipfile, and perl's zipdetails, which
lists every record and every byte between them."""

import re
import shutil
import subprocess
import zipfile
import zlib

PROGRAMS = {"unzip": ["unzip", "-tqq"], "7z": ["7z", "t", "-bd", "-bso0", "-psecret"]}


def missing():
    """Programs that are not installed."""
    return [name for name in (*PROGRAMS, "zipdetails") if shutil.which(name) is None]


def verdict(program, path):
    """The exit status of a program that tests the archive."""
    command = PROGRAMS[program] + [str(path)]
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, check=False).returncode


def members(path):
    """Name to (method, size, CRC) for each member, in order; each one that python can read is read in pieces, and so
    its size and checksum are known to be true."""
    found = {}
    with zipfile.ZipFile(path) as archive:
        for info in archive.infolist():
            try:
                crc = size = 0
                with archive.open(info) as stream:
                    while piece := stream.read(1 << 20):
                        crc, size = zlib.crc32(piece, crc), size + len(piece)
                assert (crc, size) == (info.CRC, info.file_size), info.filename
            except (NotImplementedError, RuntimeError, UnicodeDecodeError):
                pass  # encrypted, or of a method that python does not have
            found[info.filename] = (info.compress_type, info.file_size, info.CRC)
    return found


def listing(path):
    """The records that zipdetails finds, by name, each with how often; it must find nothing that it wonders about."""
    done = subprocess.run(["zipdetails", str(path)], capture_output=True, check=False)
    text = done.stdout.decode(errors="replace") + done.stderr.decode(errors="replace")
    if done.returncode != 0 or re.search(r"unexpected|warning|error|trailing|gap|padding", text, re.I):
        raise AssertionError(f"zipdetails on {path}:\n{text[-3000:]}")
    counts = {}
    for record in re.findall(r"^[0-9A-F]+ (LOCAL HEADER|CENTRAL HEADER|ZIP64 END CENTRAL DIR|END CENTRAL HEADER)\b.* [0-9A-F]{8}$",
                             text, re.M):
        counts[record] = counts.get(record, 0) + 1
    return counts
