#pragma once

/// The look of the report: light or dark as the reader's system is, and fit for paper.
inline constexpr const char* htmlStyle = R"css(
:root { --ink: #1c2430; --soft: #5b6675; --line: #dde3ea; --page: #f5f7fa; --card: #fff; --added: #1a7f43;
  --removed: #c0362c; --changed: #9a6700; --added-back: #e4f6ea; --removed-back: #fcebea; --bar: #6d8fc4; }
@media (prefers-color-scheme: dark) { :root { --ink: #dfe5ec; --soft: #94a0b0; --line: #323b47; --page: #14181d;
  --card: #1c2229; --added: #56c07e; --removed: #f0786d; --changed: #d9a93b; --added-back: #17301f;
  --removed-back: #3a1e1c; --bar: #4f6f9f; } }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 2rem 1.5rem 4rem; max-width: 76rem; background: var(--page); color: var(--ink);
  font: 15px/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "DejaVu Sans", sans-serif; }
h1 { font-size: 1.5rem; margin: 0 0 .25rem; } h2 { font-size: 1.1rem; margin: 2.2rem 0 .7rem; }
code, pre, td.name { font-family: ui-monospace, "DejaVu Sans Mono", Consolas, monospace; font-size: .87em; }
.soft { color: var(--soft); } .added { color: var(--added); } .removed { color: var(--removed); }
.changed { color: var(--changed); }
.cards { display: grid; grid-template-columns: repeat(auto-fit, minmax(13rem, 1fr)); gap: .8rem; margin-top: 1.4rem; }
.card, table, pre, .note { background: var(--card); border: 1px solid var(--line); border-radius: 8px; }
.card { padding: .8rem 1rem; } .card b { display: block; font-size: 1.25rem; }
.card .soft { font-size: .85em; text-transform: uppercase; letter-spacing: .04em; }
.note { padding: .7rem 1rem; margin: .8rem 0; border-left: 4px solid var(--removed); }
table { width: 100%; border-collapse: separate; border-spacing: 0; overflow: hidden; }
th, td { padding: .4rem .8rem; text-align: left; vertical-align: top; border-bottom: 1px solid var(--line); }
tr:last-child td { border-bottom: 0; } th { font-weight: 600; color: var(--soft); font-size: .85em; }
td.name { overflow-wrap: anywhere; } td.size, th.size { text-align: right; white-space: nowrap; }
td.mark { white-space: nowrap; font-weight: 600; } td.half { width: 45%; overflow-wrap: anywhere; }
td.half.added { background: var(--added-back); color: inherit; }
td.half.removed { background: var(--removed-back); color: inherit; }
td.bars { width: 26%; } .bar { display: block; height: .5rem; margin: .22rem 0; border-radius: 3px; min-width: 2px; }
.bar.old { background: var(--line); } .bar.new { background: var(--bar); }
.bar.new.added { background: var(--added); } .bar.old.removed { background: var(--removed); }
ul { margin: 0; padding-left: 1.1rem; }
pre { margin: .5rem 0 1rem; padding: .6rem 0; overflow-x: auto; line-height: 1.4; }
pre span { display: block; padding: 0 .9rem; min-width: max-content; }
pre .added { background: var(--added-back); } pre .removed { background: var(--removed-back); }
pre .at { color: var(--soft); } details { margin: .6rem 0; } summary { cursor: pointer; padding: .2rem 0; }
@media print { body { background: none; padding: 0; } details { break-inside: avoid; } }
)css";
