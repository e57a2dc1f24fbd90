"""The directory in which the documents' examples run.

    archives/sensor-arm7.pkg, sensor-arm64.pkg, module-ombix.pkg    upgrade archives of version 6.1.2.57
    host/bin/win64/TaQor.exe                                        an installation directory, the same version
    packages/lane-counter.tar, dust-filter.tar, lane-counter/       the sample packages, one unpacked as well
    edge-detector.so                                                a library

The program is on the search path, installed as the packages install it: a link to a directory of its own, in which
tar.exe and sample_config.xml lie beside it.
"""

import os
import pathlib
import shutil
import subprocess
import sys

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(REPOSITORY / "tests/e2e"))

from harness import documents, executable, zip_builder  # noqa: E402

ARCHIVES = {"sensor-arm7.pkg": "linux_arm7", "sensor-arm64.pkg": "linux_arm64", "module-ombix.pkg": "ombix"}
PACKAGES = ("lane-counter", "dust-filter")


def prepare(root, program):
    """Fills the empty directory `root`; answers the environment for commands that run in its `work`."""
    installed = root / "lib/tavekutil/bin"
    installed.mkdir(parents=True)
    (root / "bin").mkdir()
    (root / "bin/TaVekUtil").symlink_to("../lib/tavekutil/bin/TaVekUtil")
    shutil.copy(program, installed / "TaVekUtil")
    shutil.copy(REPOSITORY / "samples/sample_config.xml", installed)
    (installed / "tar.exe").symlink_to(shutil.which("tar"))
    lay_out(root / "work")
    return {"PATH": f"{root}/bin:{os.environ['PATH']}", "LC_ALL": "C.UTF-8", "TZ": "UTC", "HOME": str(root)}


def lay_out(work):
    (work / "archives").mkdir(parents=True)
    for name, platform in ARCHIVES.items():
        (work / "archives" / name).write_bytes(archive(platform))
    (work / "host/bin/win64").mkdir(parents=True)
    (work / "host/bin/win64/TaQor.exe").write_bytes(executable.executable((6, 1, 2, 57)))
    (work / "packages").mkdir()
    for name in PACKAGES:
        sample = REPOSITORY / "samples" / name
        subprocess.run(["tar", "-C", sample, "-cf", work / "packages" / f"{name}.tar", "."], check=True)
    shutil.copytree(REPOSITORY / "samples/lane-counter", work / "packages/lane-counter")
    (work / "edge-detector.so").write_bytes(b"\x7fELF edge detector\n")


def archive(platform):
    script = documents.host_script(platform)
    members = [
        zip_builder.Member("host/app", b"host software " * 400, zip_builder.DEFLATED),
        zip_builder.Member("host/lib.so", b"\x7fELF host library"),
        zip_builder.Member("script.xml", script, zip_builder.DEFLATED),
    ]
    return zip_builder.build(members)
