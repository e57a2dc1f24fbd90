"""Random documents: scripts, manifests, configurations, in every layout and encoding, some of them broken."""

from xml.sax.saxutils import escape, quoteattr

MODELS = {
    "linux_arm7": ("R2", "R4", "R4-mc"),
    "linux_arm64": ("R6", "R8"),
    "ombix": ("TX2", "Xavier NX", "Orin NX", "AGX Orin"),
}
ENCODINGS = (
    ("UTF-8", "utf-8"),
    ("utf-8", "utf-8"),
    ("ISO-8859-1", "latin-1"),
    ("windows-1252", "cp1252"),
    ("UTF-16", "utf-16"),
)
FAULTS = (
    lambda text: text[: len(text) // 2],
    lambda text: text + "<more/>",
    lambda text: text.replace(">", " x>", 1) if not text.startswith("<?") else text.replace("<?", "<??", 1),
    lambda text: text.replace("</", "</x", 1),
    lambda text: text + "&",
    lambda text: text.replace('="', '="<', 1),
    lambda text: text.replace("</", "&nope;</", 1),
    lambda text: "text" + text,
    lambda text: "",
    lambda text: text + "\x01",
)


class Layout:
    """How a document is written down: unit of indentation, line ends, quotes, and how regular it is."""

    def __init__(self, dice):
        self.dice = dice
        self.unit = dice.choice(["  ", "  ", "    ", "\t", "", None])
        self.end = dice.choice(["\n", "\n", "\n", "\r\n", "\r"])
        self.is_regular = dice.random() < 0.6
        self.single_quotes = dice.random() < 0.1

    def irregular(self, share=0.3):
        return not self.is_regular and self.dice.random() < share

    def gap(self, depth):
        if self.irregular():
            return self.dice.choice(["", " ", "\n", "\n\n  ", "\t", " \r\n "])
        return "" if self.unit is None else self.end + self.unit * depth

    def element(self, item, depth=0):
        """`item` is (name, attributes, content): a text, a list of items, or None; a bare text is written as it is."""
        if isinstance(item, str):
            return item
        name, attributes, content = item
        start = name + "".join(self.attribute(key, value) for key, value in attributes.items())
        if content is None:
            return self.dice.choice([f"<{start}/>", f"<{start} />", f"<{start}></{name}>"])
        if isinstance(content, str):
            return f"<{start}>{self.text(content)}</{name}>"
        parts = [self.gap(depth + 1) + self.decorated(child, depth + 1) for child in content]
        return f"<{start}>{''.join(parts)}{self.gap(depth) if parts else ''}</{name}>"

    def decorated(self, child, depth):
        text = self.element(child, depth)
        if self.irregular(0.1):
            text += self.dice.choice(["<!-- note -->", "<?note?>", " <!-- a > b --> "])
        if self.dice.random() < 0.03:
            text = "<!-- about this -->" + self.gap(depth) + text
        return text

    def attribute(self, key, value):
        quoted = quoteattr(value, {"\n": "&#10;", "\t": "&#9;"})
        if self.single_quotes and "'" not in value and '"' not in value:
            quoted = "'" + quoted[1:-1] + "'"
        blank = self.dice.choice([" ", "  ", "\n"]) if self.irregular(0.1) else " "
        return f"{blank}{key}{' = ' if self.irregular(0.1) else '='}{quoted}"

    def text(self, content):
        if content and self.irregular(0.1) and "]]>" not in content:
            return f"<![CDATA[{content}]]>"
        if content and self.irregular(0.1):
            return f"&#{ord(content[0])};" + escape(content[1:])
        return escape(content)


def document(dice, root, trouble=0.0, plain=False):
    """The bytes of a document; with a chance of `trouble` no well-formed one. `plain` keeps it in UTF-8."""
    layout = Layout(dice)
    declared, encoding = dice.choice(ENCODINGS) if dice.random() < 0.1 and not plain else ("UTF-8", "utf-8")
    body = layout.element(root)
    head = f'<?xml version="1.0" encoding="{declared}"?>' + layout.end
    if encoding == "utf-8" and dice.random() < 0.2:
        head = ""
    if dice.random() < 0.05:
        head += "<!-- head -->" + layout.end
    if dice.random() < 0.03:
        head += f"<!DOCTYPE {root[0]}>" + layout.end
    text = head + body + dice.choice([layout.end, layout.end, "", layout.end + "<!-- end -->" + layout.end])
    if dice.random() < trouble:
        text = dice.choice(FAULTS)(text)
    data = text.encode(encoding, "xmlcharrefreplace")
    if encoding == "utf-8" and dice.random() < 0.05:
        data = b"\xef\xbb\xbf" + data
    if dice.random() < 0.02 * (trouble > 0):
        data += dice.choice([b"\0", b"\0 more", b"\xff"])
    return data


# ---- Elements --------------------------------------------------------------------------------------------


def script_file(dice, name, source, models):
    tests = [("Eq", {"property": "Controller", "value": model}, None) for model in models]
    attributes = {"name": name, "source": source}
    if dice.random() < 0.04:
        attributes.pop(dice.choice(["name", "source"]))
    if dice.random() < 0.05:
        attributes["mode"] = "0755"
    kind = "File" if dice.random() < 0.93 else dice.choice(["Directory", "file", "Link"])
    return (kind, attributes, [("Or", {}, tests or None)])


def package_file(dice, kind, source, destination, lacking):
    children = [("Source", {}, source), ("Destination", {}, destination or None)]
    if dice.random() < lacking / 2:
        children.pop(dice.randrange(2))
    if dice.random() < 0.1:
        children.append(("Remark", {"lang": "en"}, "for <all>"))
    if dice.random() < 0.05:
        children.reverse()
    attributes = {"type": kind}
    if dice.random() < lacking:
        attributes = {}
    if dice.random() < 0.1:
        attributes["since"] = 'a "quoted" & <odd> value'
    return (dice.choice(["File", "File", "Item"]), attributes, children)


def listing(name, items):
    return (name, {}, [("Path", {}, item or None) for item in items] or None)
