"""Compares a written document with the model's: what was not touched byte for byte, what was added by its content.

What is demanded: every node that was read has its own bytes; the white space between two nodes that were neighbours
and still are is what it was; a copy is the same text, moved to where it stands now; a document that is laid out line by
line throughout stays so.
"""

from reference.failures import Status
from reference.xml_document import Document, is_blank, resolved, tree, unix_lines

STYLES = [(unit, end) for end in ("\n", "\r\n", "\r") for unit in ("  ", "    ", "\t", " ", "")] + [
    (None, "")
]


def document_differences(expected, data):
    """What sets the bytes `data` apart from the model's document, as a list of lines."""
    try:
        found = Document(data)
    except Status:
        return [f"not well-formed: {data!r}"]
    if found.mark != expected.mark or found.encoding != expected.encoding:
        return [f"encoding {found.encoding}, expected {expected.encoding}"]
    lines = []
    if expected.source is not None:
        for name in ("before", "behind"):
            ours = [node.raw for node in getattr(expected, name)]
            theirs = [node.raw for node in getattr(found, name)]
            if ours != theirs:
                lines.append(f"{name} the root: {theirs}, expected {ours}")
    lines += node_differences(expected.root, found.root, "")
    if lines:
        return lines
    return layout_differences(expected, found)


def solid(node):
    """The children without white space; adjoining text as one."""
    return [child for child in node.children if not is_blank(child)]


def node_differences(expected, found, path):
    path = f"{path}/{found.name or found.kind}"
    if expected.kind != found.kind:
        return [f"{path}: {found.raw!r}, expected {expected.kind} {expected.raw!r} {expected.name}"]
    if expected.kind != "element":
        return leaf_differences(expected, found, path)
    if expected.lead is not None:
        return []  # with its surroundings
    if expected.fresh:
        ours = (expected.name, list(expected.attributes.items()))
        theirs = (found.name, list(found.attributes.items()))
    else:
        ours, theirs = (expected.raw, expected.end), (found.raw, found.end)
    if ours != theirs:
        return [f"{path}: {theirs}, expected {ours}"]
    return child_differences(expected, found, path)


def leaf_differences(expected, found, path):
    if expected.fresh:
        same = expected.value() == found.value()
    elif expected.kind == "text":  # of mixed content a line may have gone
        same = expected.raw.split() == found.raw.split()
    else:
        same = expected.raw == found.raw
    return [] if same else [f"{path}: {found.raw!r}, expected {expected.raw!r}"]


def child_differences(expected, found, path):
    ours, theirs = joined(solid(expected)), joined(solid(found))
    if len(ours) != len(theirs):
        return [f"{path}: {len(theirs)} children, expected {len(ours)}: {[node.raw for node in theirs]}"]
    lines = []
    for our, their in zip(ours, theirs):
        lines += node_differences(our, their, path)
    return lines or copy_differences(ours, found, path) + gap_differences(expected, found, path)


def joined(nodes):
    """Text that an edit brought together is one text."""
    result = []
    for node in nodes:
        if result and node.kind == result[-1].kind == "text" and not node.fresh:
            merged = type(node)("text", result[-1].raw + node.raw)
            result[-1] = merged
        else:
            result.append(node)
    return result


def gaps(node):
    """Of each solid child, and of the end tag, the white space in front."""
    result, gap = [], ""
    for child in node.children:
        if is_blank(child):
            gap += child.raw
        else:
            result.append((child, gap))
            gap = ""
    return result + [(None, gap)]


def gap_differences(expected, found, path):
    if expected.fresh or expected.end is None:
        return []
    ours, theirs = gaps(expected), gaps(found)
    if len(ours) != len(theirs):
        return []
    lines, before = [], None
    for (our, our_gap), (their, their_gap) in zip(ours, theirs):
        kept = expected.last is before if our is None else not our.fresh and our.neighbour is before
        if kept and our_gap != their_gap:
            lines.append(
                f"{path}: white space {their_gap!r}, expected {our_gap!r}, before {their and their.raw}"
            )
        before = our
    return lines


# ---- Copies ----------------------------------------------------------------------------------------------


def copy_differences(ours, found, path):
    lines = []
    for our, (their, gap) in zip(ours, gaps(found)):
        if our.lead is None:
            continue
        their.lead = gap
        old, new = line_of(our.lead), line_of(gap)
        moved = (old, new) if old is not None and new is not None else ("", "")
        wanted, text = shifted(our, *moved), shifted(their, "", "")
        if resolved(wanted) != resolved(text):
            lines.append(f"{path}: copied {text!r}, expected {wanted!r}")
    return lines


def line_of(gap):
    """The blanks before an element that stands first on its line; None for another."""
    lines = unix_lines(gap).split("\n")
    return lines[-1] if len(lines) > 1 else None


def shifted(node, old, new):
    """The text of an element, its lines moved from the indentation `old` to `new`, and ended by LF."""
    if node.kind != "element":
        return unix_lines(node.raw)
    text, is_mixed = unix_lines(node.raw), any(child.kind in ("text", "cdata") for child in solid(node))
    for child in node.children:
        if is_blank(child) and not is_mixed:
            text += unix_lines(child.raw).replace("\n" + old, "\n" + new)
        else:
            text += shifted(child, old, new)
    return text + (node.end or "")


# ---- House style -----------------------------------------------------------------------------------------


def layout_differences(expected, found):
    """When the source is laid out regularly, the result must be so as well. Not beside text in the root: there, elements
    are added without white space, which would be text, too."""
    if any(child.kind in ("text", "cdata") for child in solid(expected.root)):
        return []
    if expected.source is None:
        style = ("  ", "\n")
        before = '<?xml version="1.0" encoding="UTF-8"?>\n'
        behind = "\n"
    else:
        first, root, last = tree(expected.source)
        before, behind = "".join(n.raw for n in first), "".join(n.raw for n in last)
        source = expected.source[len(before) : len(expected.source) - len(behind)]
        style = next((s for s in STYLES if laid_out(root, *s) == source), None)
    if style is None:
        return []
    text = before + laid_out(found.root, *style) + behind
    if text != found.source and not emptied(expected.root):
        return [
            f"not in the layout of the document (unit {style[0]!r}, line end {style[1]!r}): {found.source!r}"
        ]
    return []


def emptied(node):
    """Whether an element that was read lost all of its children."""
    if not node.fresh and node.end and node.last is not None and not solid(node):
        return True
    return any(emptied(child) for child in node.elements())


def laid_out(node, unit, end, depth=0):
    """The element the way people write it: each child on a line of its own, text on the line of its tags."""
    if node.end is None:
        return node.raw
    if node.lead is not None:
        return whole(node)
    children = solid(node)
    inline = any(child.kind in ("text", "cdata") for child in children)
    if not children or inline or unit is None:
        kept = node.children if inline else children
        return node.raw + "".join(laid_out_child(child, unit, end, depth) for child in kept) + node.end
    lines = "".join(
        end + unit * (depth + 1) + laid_out_child(child, unit, end, depth + 1) for child in children
    )
    return node.raw + lines + end + unit * depth + node.end


def whole(node):
    return node.raw + "".join(whole(child) for child in node.children) + (node.end or "")


def laid_out_child(child, unit, end, depth):
    return laid_out(child, unit, end, depth) if child.kind == "element" else child.raw
