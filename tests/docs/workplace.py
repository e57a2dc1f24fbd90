"""The directory in which the documents' examples run.

    archives/sensor-arm7.pkg, sensor-arm64.pkg, module-ombix.pkg    upgrade archives of version 6.1.2.57
    host/bin/win64/TaQor.exe                                        an installation directory, the same version
    packages/lane-counter.tar, dust-filter.tar, lane-counter/       the sample packages, one unpacked as well
    edge-detector.so                                                a library

The programs are on the search path, installed as the packages install them: links to a directory of their own, in which
tar.exe and sample_config.xml lie beside them. In host/bin/win64 lies the same once more, as beside the host software.
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
PROGRAMS = ("TaVekUtil", "TaVekInspect")
PACKAGES = ("lane-counter", "dust-filter")


def prepare(root, program):
    """Fills the empty directory `root`; answers the environment for commands that run in its `work`. The other programs
    are taken from beside `program`, as far as they are built."""
    installed = root / "lib/tavekutil/bin"
    install(installed, pathlib.Path(program).parent)
    (root / "bin").mkdir()
    for path in installed.glob("TaVek*"):
        (root / "bin" / path.name).symlink_to(f"../lib/tavekutil/bin/{path.name}")
    lay_out(root / "work")
    install(root / "work/host/bin/win64", installed)
    sanitizers = {key: os.environ[key] for key in ("ASAN_OPTIONS", "UBSAN_OPTIONS") if key in os.environ}
    settings = {"LC_ALL": "C.UTF-8", "TZ": "UTC", "HOME": str(root)}
    return {"PATH": f"{root}/bin:{os.environ['PATH']}", **settings, **sanitizers}


def install(directory, built):
    directory.mkdir(parents=True, exist_ok=True)
    for name in PROGRAMS:
        if (built / name).exists():
            shutil.copy(built / name, directory)
    shutil.copy(REPOSITORY / "samples/sample_config.xml", directory)
    (directory / "tar.exe").symlink_to(shutil.which("tar"))


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
