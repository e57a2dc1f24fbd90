"""Turns the Markdown of the documents into mdoc, the language of manual pages.

Knows what the documents use: headings, paragraphs, bullets and numbered items (one level, with paragraphs and fenced
blocks in between), tables, fenced blocks, and within lines code, strong text and links.
"""

import re
import textwrap

SPAN = re.compile(r"`([^`]+)`|\*\*(.+?)\*\*|\*([^*\s][^*]*)\*|!?\[([^\]]*)\]\(([^)\s]+)\)")
ITEM = re.compile(r"^(-|\d+\.) +")
LINE_LENGTH = 78
OF_WHAT = re.compile(r":| (of|to)$")
RULE = re.compile(r"^\|[-| :]+\|$")


class Converter:
    """`links` gives the page for a document's file name, `headings` the customary names of sections that the
    documents call otherwise. A section without content of its own is left out."""

    def __init__(self, links, headings):
        self.links = links
        self.headings = headings
        self.lines = []

    def convert(self, text):
        blocks = re.split(
            r"\n{2,}", protect_fences(re.sub(r"<!--.*?-->\n?", "", text, flags=re.S)).strip("\n")
        )
        for block in blocks:
            self.block(block)
        return tidy(self.lines)

    def block(self, block):
        lines = block.split("\n")
        if lines[0].startswith("#"):
            self.heading(lines[0])
            if lines[1:]:
                self.block("\n".join(lines[1:]))
        elif block.startswith("\0"):
            self.literal(lines)
        elif lines[0].startswith("|"):
            self.table(lines)
        elif ITEM.match(lines[0]):
            self.items(lines)
        else:
            self.paragraph(" ".join(line.strip() for line in lines))

    def heading(self, line):
        level, title = line.split(" ", 1)
        title = self.headings.get(title, title)
        self.lines.append(f".Ss {plain(title)}" if len(level) > 2 else f".Sh {plain(title).upper()}")

    def paragraph(self, text):
        self.lines += [".Pp", *self.inline(text)]

    def literal(self, lines):
        body = [escape(line).rstrip() for line in lines[1:-1]]
        self.lines += [".Bd -literal -offset indent", *(guard(line) for line in body), ".Ed"]

    def items(self, lines):
        kind = "-bullet" if lines[0].startswith("-") else "-enum"
        self.lines.append(f".Bl {kind}")
        text = []
        for line in [*lines, None]:
            if text and (line is None or ITEM.match(line)):
                self.lines += [".It", *self.inline(" ".join(text))]
                text = []
            if line is not None:
                text.append(ITEM.sub("", line).strip())
        self.lines.append(".El")

    def table(self, lines):
        """A list with the first cells as its tags; more than two cells are named after their columns. A first heading
        that says what the table is of ("Local header: offset, size", "Adding one package to") stands before the list."""
        rows = [
            [cell.strip() for cell in line.strip("|").split("|")] for line in lines if not RULE.match(line)
        ]
        head, rows = rows[0], rows[1:]
        if OF_WHAT.search(head[0]):
            self.paragraph(head[0])
        self.lines.append(".Bl -tag -width Ds")
        for cells in rows:
            self.lines.append(f".It {argument(self.spans(cells[0]))}")
            self.lines += self.inline(" ".join(self.cell_texts(head, cells)))
        self.lines.append(".El")

    def cell_texts(self, head, cells):
        if len(cells) == 2:
            return [cells[1]]
        return [
            f"*{plain(name)}*: {cell}." if not cell.endswith(".") else f"*{plain(name)}*: {cell}"
            for name, cell in zip(head[1:], cells[1:])
            if cell
        ]

    def inline(self, text):
        """The text as lines of mdoc: a new one for each sentence, none too long."""
        return [
            guard(line)
            for sentence in sentences(self.spans(text))
            for line in textwrap.wrap(sentence, LINE_LENGTH, break_long_words=False, break_on_hyphens=False)
        ]

    def spans(self, text):
        parts, end = [], 0
        for match in SPAN.finditer(text):
            parts.append(escape(text[end : match.start()]))
            parts.append(self.span(match))
            end = match.end()
        return "".join(parts) + escape(text[end:])

    def span(self, match):
        code, strong, emphasis, label, target = match.groups()
        if code is not None:
            return f"\\fB{escape(code)}\\fR"
        if strong is not None:
            return f"\\fB{plain_span(strong)}\\fR"
        if emphasis is not None:
            return f"\\fI{escape(emphasis)}\\fR"
        page = self.links.get(target.split("#")[0].rsplit("/", 1)[-1])
        return (
            f"{escape(plain(label))} (\\fB{page.name}\\fR({page.section}))" if page else escape(plain(label))
        )


def protect_fences(text):
    """Makes each fenced block one block that begins with a zero character, whatever blank lines it holds."""

    def protect(match):
        return "\n\n\0" + match.group(0).replace("\n\n", "\n\1\n").replace("\n\n", "\n\1\n") + "\n\n"

    return re.sub(r"^```\w*\n.*?^```$", protect, text, flags=re.M | re.S)


def escape(text):
    return (
        text.replace("\\", "\\e")
        .replace("\1", "")
        .replace("-", "\\-")
        .replace("'", "\\(aq")
        .replace("`", "\\(ga")
    )


def plain(text):
    return SPAN.sub(lambda match: next(group for group in match.groups() if group), text)


def plain_span(text):
    return escape(plain(text))


def guard(line):
    """A line of text that no processor takes for a macro."""
    return "\\&" + line if line.startswith((".", "'")) else line


def argument(text):
    return '"' + text.replace('"', "\\(dq") + '"'


def sentences(text):
    return re.split(r"(?<=[A-Za-z0-9)][.:;])\s+(?=[A-Z\\])", text)


def tidy(lines):
    """Leaves out the paragraph breaks that macros bring along themselves, and sections without content."""
    kept = []
    for line in lines:
        if line == ".Pp" and kept[-1].startswith((".Sh", ".Ss")):
            continue
        if line.startswith(".Sh") and kept and kept[-1].startswith(".Sh"):
            kept.pop()
        kept.append(line)
    return kept
