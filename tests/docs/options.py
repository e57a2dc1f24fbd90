"""What the tests of this directory were started with."""

import os
import shutil
import unittest


def program():
    """The built TaVekUtil."""
    return os.environ["TAVEK_PROGRAM"]


def tool(name):
    """The path of a test tool. Skips the test where it is missing, fails it when TAVEK_ALL_TOOLS is set."""
    path = shutil.which(name)
    if path is None and os.environ.get("TAVEK_ALL_TOOLS"):
        raise AssertionError(f"{name} is not installed")
    if path is None:
        raise unittest.SkipTest(f"{name} is not installed")
    return path
