"""How the program under test is started: directly, or through an emulator for the Windows build."""

import contextlib
import os
import re
import resource
import shutil
import signal
import subprocess
from dataclasses import dataclass

PROGRAM = os.environ.get("TAVEK_PROGRAM", "")
INSPECTOR = os.environ.get("TAVEK_INSPECTOR", "")
EMULATOR = os.environ.get("TAVEK_EMULATOR", "").split()
TAR = os.environ.get("TAVEK_TAR", "") or shutil.which("tar")

# The one place that knows how the Windows build differs from outside.
ON_WINDOWS = PROGRAM.endswith(".exe")
SEPARATOR = "\\" if ON_WINDOWS else "/"
ABNORMAL_END = 3 if ON_WINDOWS else -signal.SIGABRT
NOBODY = 65534


def native(path):
    """An absolute path the way the program prints it."""
    return "Z:" + path.replace("/", "\\") if ON_WINDOWS else path


def combined(*parts):
    """What the program makes of paths that it joins."""
    return SEPARATOR.join(parts)


@dataclass
class Result:
    stdout: str
    stderr: str
    status: int


def environment():
    kept = ("PATH", "HOME", "WINEPREFIX", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LLVM_PROFILE_FILE")
    # Wine takes the arguments to be in the encoding of the locale.
    locale = "C.UTF-8" if ON_WINDOWS else "C"
    return {
        "LC_ALL": locale,
        "WINEDEBUG": "-all",
        **{key: os.environ[key] for key in kept if key in os.environ},
    }


def limits(file_size):
    def apply():
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if file_size is not None:
            resource.setrlimit(resource.RLIMIT_FSIZE, (file_size, file_size))

    return apply


def start(program, arguments, directory, file_size=None, unprivileged=False, merged=False, variables=None):
    """Runs the program in `directory`. `file_size` limits what a written file may hold, `merged` puts both
    output streams into one, `unprivileged` takes root's rights away when this is root, `variables` are added to
    the environment."""
    other_user = (
        {"user": NOBODY, "group": NOBODY, "extra_groups": []} if unprivileged and os.getuid() == 0 else {}
    )
    done = subprocess.run(
        EMULATOR + [program, *arguments],
        cwd=directory,
        env=environment() | (variables or {}),
        timeout=120,
        check=False,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT if merged else subprocess.PIPE,
        preexec_fn=limits(file_size),
        restore_signals=file_size is None,
        **other_user,
    )
    return Result(text(done.stdout), text(done.stderr or b""), done.returncode)


@contextlib.contextmanager
def holding(path, directory):
    """As long as it lasts, another program has the file `path` open for reading."""
    helper = os.path.join(os.path.dirname(PROGRAM), "process_helper" + (".exe" if ON_WINDOWS else ""))
    holder = subprocess.Popen(
        EMULATOR + [helper, "hold", path],
        cwd=directory,
        env=environment(),
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        text=True,
    )
    with holder:
        if holder.stdout.readline() != "holding\n":
            raise RuntimeError(f"{path} cannot be held")
        yield


# What the runtime of a coverage build says when it may not write its counts, as on a full disk: not the program's.
COVERAGE_CHATTER = re.compile(r"^(libgcov )?profiling( error)?:.*\n", re.MULTILINE)


def text(output):
    decoded = COVERAGE_CHATTER.sub("", output.decode("utf-8", "surrogateescape"))
    return decoded.replace("\r\n", "\n") if ON_WINDOWS else decoded


def install(directory):
    """Copies the program into `directory`, with the tar program beside it; answers the program's path."""
    os.makedirs(directory, exist_ok=True)
    program = lay(PROGRAM, directory)
    if INSPECTOR:
        lay(INSPECTOR, directory)
    if ON_WINDOWS:
        shutil.copy2(TAR, os.path.join(directory, "tar.exe"))
    else:
        os.symlink(TAR, os.path.join(directory, "tar.exe"))
    return program


def lay(original, directory):
    """Puts a program into `directory`; answers its path."""
    program = os.path.join(directory, os.path.basename(original))
    try:
        os.link(installed_once(original), program)
    except OSError:
        shutil.copy2(original, program)
    return program


_copies = {}


def installed_once(original):
    """One copy of a program where every user may run it; the tests' own are links to it."""
    if original not in _copies:
        copy = os.path.join(scratch_root(), os.path.basename(original))
        shutil.copy2(original, copy)
        os.chmod(copy, 0o755)
        _copies[original] = copy
    return _copies[original]


_scratch = None


def scratch_root():
    """The directory of this run's scratch directories; it goes when the tests end."""
    global _scratch
    if _scratch is None:
        import atexit
        import tempfile

        _scratch = tempfile.mkdtemp(prefix="tavek-e2e-")
        os.chmod(_scratch, 0o755)
        atexit.register(shutil.rmtree, _scratch, ignore_errors=True)
    return _scratch
