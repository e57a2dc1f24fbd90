"""What a run prints, as regular expressions: most of it is fixed text."""

import re


class Console:
    def __init__(self):
        self.stdout, self.stderr = "", ""

    def say(self, text):
        self.stdout += re.escape(text + "\n")

    def say_pattern(self, pattern):
        self.stdout += pattern

    def complain(self, text, pattern=""):
        """A line on standard error; `pattern` matches its rest."""
        self.stderr += re.escape(text) + pattern + "\n"

    def complain_pattern(self, pattern):
        self.stderr += pattern
