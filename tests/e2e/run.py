#!/usr/bin/env python3
"""Runs end-to-end test modules against a built program.

    run.py --program build/debug/bin/TaVekUtil [--emulator wine] [--tar TAR] [MODULE...] [-v] [-k PATTERN]

Without modules all of them run.
"""

import argparse
import os
import pathlib
import sys
import unittest


def main():
    parser = argparse.ArgumentParser(description="Runs end-to-end tests.")
    parser.add_argument("--program", required=True, help="the program under test")
    parser.add_argument(
        "--inspector", default="", help="TaVekInspect, to foretell each batch; not when not given"
    )
    parser.add_argument("--emulator", default="", help="what starts a Windows program here")
    parser.add_argument(
        "--tar", default="", help="the tar program to lay beside it; the system's when not given"
    )
    parser.add_argument("-k", dest="pattern", help="run the tests whose name matches only")
    parser.add_argument("-v", dest="verbosity", action="store_const", const=2, default=1)
    parser.add_argument("modules", nargs="*", help="such as injection or command_line")
    options = parser.parse_args()

    here = pathlib.Path(__file__).parent
    sys.dont_write_bytecode = True
    sys.path.insert(0, str(here))
    os.environ["TAVEK_PROGRAM"] = os.path.abspath(options.program)
    os.environ["TAVEK_INSPECTOR"] = os.path.abspath(options.inspector) if options.inspector else ""
    os.environ["TAVEK_EMULATOR"] = options.emulator
    os.environ["TAVEK_TAR"] = options.tar
    modules = options.modules or sorted(path.stem[:-5] for path in here.glob("*_test.py"))

    loader = unittest.TestLoader()
    if options.pattern:
        loader.testNamePatterns = [f"*{options.pattern}*"]
    suite = loader.loadTestsFromNames([module + "_test" for module in modules])
    outcome = unittest.TextTestRunner(verbosity=options.verbosity).run(suite)
    return 0 if outcome.wasSuccessful() and outcome.testsRun else 1


if __name__ == "__main__":
    sys.exit(main())
