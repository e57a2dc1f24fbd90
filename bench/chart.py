#!/usr/bin/env python3
"""Draws the results of program_bench.py as a bar chart: chart.py RESULTS.json > CHART.svg

One group of bars a scenario, one bar a program: its median time relative to TaVekUtil's, which is 1.
"""

import html
import json
import pathlib
import statistics
import sys

BAR, GAP, LEFT, WIDTH, LONGEST = 18, 14, 150, 900, 640
STYLE = """text { font: 13px sans-serif; fill: #222 } .title { font-weight: bold }
.own { fill: #2a7ab0 } .rival { fill: #b9c4cc } .back { fill: #fff }
@media (prefers-color-scheme: dark) { text { fill: #ddd } .rival { fill: #66737c } .back { fill: #16191c } }"""


def medians(runs):
    return {key: statistics.median(figures["seconds"]) for key, figures in runs.items()}


def bars(results):
    longest = max(value / next(iter(m.values())) for m in map(medians, results.values()) for value in m.values())
    y = GAP
    for name, runs in results.items():
        yield f'<text class="title" x="10" y="{y + 14}">{html.escape(name)}</text>'
        y += BAR + 4
        values = medians(runs)
        own = next(iter(values.values()))
        for key, value in values.items():
            length = max(1, value / own / longest * LONGEST)
            kind = "own" if value is own else "rival"
            yield f'<text x="20" y="{y + 13}">{html.escape(key)}</text>'
            yield f'<rect class="{kind}" x="{LEFT}" y="{y}" width="{length:.1f}" height="{BAR - 4}"/>'
            yield f'<text x="{LEFT + length + 6:.1f}" y="{y + 12}">{value / own:.2f}  ({value:.3f} s)</text>'
            y += BAR
        y += GAP
    yield y


def main():
    *shapes, height = bars(json.loads(pathlib.Path(sys.argv[1]).read_text()))
    print(f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" role="img">')
    print(f"<title>Time relative to TaVekUtil</title>\n<style>{STYLE}</style>")
    print('<rect class="back" width="100%" height="100%"/>')
    print("\n".join(shapes) + "\n</svg>")


if __name__ == "__main__":
    main()
