#!/usr/bin/env python3
"""Draws what tests/load/load.py saw of a long batch: load_chart.py SAMPLES.json > CHART.svg

Three lines over the time of the run: archives saved, resident memory, open files; each from 0 to its greatest value.
"""

import json
import pathlib
import sys

LEFT, TOP, WIDTH, HEIGHT, GAP = 60, 40, 620, 110, 50
STYLE = """text { font: 13px sans-serif; fill: #222 } .title { font-weight: bold }
polyline { fill: none; stroke: #2a7ab0; stroke-width: 1.5 } .frame { fill: none; stroke: #b9c4cc } .back { fill: #fff }
@media (prefers-color-scheme: dark) {
text { fill: #ddd } polyline { stroke: #4d9fd6 } .frame { stroke: #66737c } .back { fill: #16191c } }"""
LINES = (("saved", "archives saved", 1), ("resident", "resident memory, MiB", 1024), ("files", "open files", 1))


def line(samples, key, title, unit, top):
    """The shapes of one line, its frame's upper edge at `top`."""
    longest, greatest = samples[-1]["seconds"], max(sample[key] for sample in samples)
    points = " ".join(
        f"{LEFT + sample['seconds'] / longest * WIDTH:.1f},{top + HEIGHT - sample[key] / greatest * HEIGHT:.1f}"
        for sample in samples)
    yield f'<text class="title" x="{LEFT}" y="{top - 8}">{title}</text>'
    yield f'<rect class="frame" x="{LEFT}" y="{top}" width="{WIDTH}" height="{HEIGHT}"/>'
    yield f'<polyline points="{points}"/>'
    yield f'<text x="{LEFT - 8}" y="{top + 10}" text-anchor="end">{greatest / unit:.3g}</text>'
    yield f'<text x="{LEFT - 8}" y="{top + HEIGHT}" text-anchor="end">0</text>'
    yield f'<text x="{LEFT + WIDTH}" y="{top + HEIGHT + 16}" text-anchor="end">{longest:.1f} s</text>'


def thinned(samples, most=400):
    step = max(1, len(samples) // most)
    return samples[::step] + samples[-1:]


def main():
    samples = thinned(json.loads(pathlib.Path(sys.argv[1]).read_text()))
    height = TOP + len(LINES) * (HEIGHT + GAP)
    print(f'<svg xmlns="http://www.w3.org/2000/svg" width="{LEFT + WIDTH + 20}" height="{height}" role="img">')
    print(f"<title>Memory and open files while one batch saves many archives</title>\n<style>{STYLE}</style>")
    print('<rect class="back" width="100%" height="100%"/>')
    for number, (key, title, unit) in enumerate(LINES):
        print("\n".join(line(samples, key, title, unit, TOP + number * (HEIGHT + GAP))))
    print("</svg>")


if __name__ == "__main__":
    main()
