"""The texts that the program can show, as they stand in its sources."""

import re

from workplace import REPOSITORY

CODE = re.compile(r'"(?:[^"\\\n]|\\.)*"|\'(?:[^\'\\\n]|\\.)\'|//[^\n]*|/\*.*?\*/', re.S)
ESCAPES = {"\\n": "\n", "\\t": "\t", '\\"': '"', "\\\\": "\\"}

# Literals with the look of a sentence that no user ever sees, and why.
NEVER_SHOWN = {
    "TaVekUtil/cli/command_line.cpp": "the usage text, which command-line.md is about",
    "TaVekUtil/cli/controller_names.cpp": "names of models",
    "platform/base/status.cpp": "phrases, which have a test of their own",
}


def literals(text):
    """String literals of a C++ source, neighbours joined, escapes resolved."""
    joined, end = [], None
    for match in CODE.finditer(text):
        if not match.group().startswith('"'):
            continue
        value = re.sub(r'\\[nt"\\]', lambda escape: ESCAPES[escape.group()], match.group()[1:-1])
        if end is not None and not text[end : match.start()].strip():
            joined[-1] += value
        else:
            joined.append(value)
        end = match.end()
    return joined


def is_sentence(literal):
    """Words with a space between them, and no piece of XML."""
    if literal.startswith("<?"):
        return False
    return re.search(r"[A-Za-z]{2,} +[A-Za-z]", literal) is not None or re.search(
        r"[a-z]{3,}[:.]? $", literal
    )


def shown():
    """{literal: name of its source} of every text that may reach a user."""
    found = {}
    for top in ("TaVekUtil", "platform"):
        for path in sorted((REPOSITORY / top).rglob("*.cpp")):
            name = path.relative_to(REPOSITORY).as_posix()
            if name in NEVER_SHOWN:
                continue
            source = re.sub(r"^\s*#.*$", "", path.read_text(), flags=re.M)
            for literal in literals(source):
                if is_sentence(literal):
                    found.setdefault(literal.strip(), name)
    return found
