#!/usr/bin/env python3
"""Draws the results of program_bench.py as a bar chart: chart.py RESULTS.json > CHART.svg

One group of bars a scenario, one bar a program or size: its median time, longest bar to the longest time of the group.
A mark on a rival's bar shows how much of it TaVekUtil may take at most.
"""

import html
import json
import pathlib
import statistics
import sys

BAR, GAP, LEFT, WIDTH, LONGEST = 18, 14, 170, 1120, 460
STYLE = """text { font: 13px sans-serif; fill: #222 } .title { font-weight: bold }
.own { fill: #2a7ab0 } .rival { fill: #b9c4cc } .target { stroke: #c0392b; stroke-width: 2 } .back { fill: #fff }
@media (prefers-color-scheme: dark) {
text { fill: #ddd } .own { fill: #4d9fd6 } .rival { fill: #66737c } .target { stroke: #ff7a66 } .back { fill: #16191c } }"""


def shown(seconds):
    return f"{seconds * 1000:.0f} ms" if seconds < 1 else f"{seconds:.2f} s"


def group(name, result, y):
    """The shapes of one scenario, from `y` downwards."""
    medians = {key: statistics.median(figures["seconds"]) for key, figures in result["runs"].items()}
    own_name, own = next(iter(result["runs"].items()))
    longest = max(medians.values())
    yield f'<text class="title" x="10" y="{y + 14}">{html.escape(name)}</text>'
    for row, (key, seconds) in enumerate(medians.items(), start=1):
        top = y + 4 + row * BAR
        is_rival, target = key in result["targets"], result["targets"].get(key)
        length = max(1, seconds / longest * LONGEST)
        note = shown(seconds)
        if is_rival:
            ratio = statistics.median(a / b for a, b in zip(own["seconds"], result["runs"][key]["seconds"]))
            note += f", {own_name.split()[0]} takes {ratio:.2f} times as long"
            note += "" if target is None else f" (at most {target:g} wanted)"
        yield f'<text x="20" y="{top + 12}">{html.escape(key)}</text>'
        kind = "rival" if is_rival else "own"
        yield f'<rect class="{kind}" x="{LEFT}" y="{top}" width="{length:.1f}" height="{BAR - 4}"/>'
        yield f'<text x="{LEFT + length + 8:.1f}" y="{top + 12}">{html.escape(note)}</text>'
        if target is not None and target <= 1:
            x = LEFT + length * target
            yield f'<line class="target" x1="{x:.1f}" y1="{top - 1}" x2="{x:.1f}" y2="{top + BAR - 3}"/>'


def main():
    results = json.loads(pathlib.Path(sys.argv[1]).read_text())
    shapes, y = [], GAP
    for name, result in results.items():
        shapes += group(name, result, y)
        y += 4 + (1 + len(result["runs"])) * BAR + GAP
    print(f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{y}" role="img">')
    print(f"<title>Times of TaVekUtil and of others doing the same work</title>\n<style>{STYLE}</style>")
    print('<rect class="back" width="100%" height="100%"/>')
    print("\n".join(shapes) + "\n</svg>")


if __name__ == "__main__":
    main()
