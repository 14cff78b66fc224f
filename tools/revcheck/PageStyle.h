#pragma once

namespace norvane {

/// How the page of HtmlReport looks: on a phone, on a screen in the light or in the dark, and on
/// paper, where whatever is folded is opened. It holds none of the characters that XML escapes in
/// text, "<" and "&".
inline constexpr char page_style[] = R"(
:root {
  --ink: #1a1f27; --soft: #5a6472; --page: #ffffff; --card: #f5f7f9; --rule: #d3d9e0;
  --good: #12703a; --revoked: #b01530; --no-check: #8a5300; --accent: #1f5fa8;
}
@media (prefers-color-scheme: dark) {
  :root {
    --ink: #e6e9ee; --soft: #a0a9b6; --page: #14181e; --card: #1d232b; --rule: #38414d;
    --good: #5fcf8d; --revoked: #ff8095; --no-check: #f0b35c; --accent: #82b6f2;
  }
}
@media print {
  :root {
    --ink: #000000; --soft: #444444; --page: #ffffff; --card: #ffffff; --rule: #999999;
    --good: #0b5a2c; --revoked: #98102a; --no-check: #6e4200; --accent: #124a87;
    color-scheme: light;
  }
}
* { box-sizing: border-box; }
html { background: var(--page); color: var(--ink); -webkit-text-size-adjust: 100%; }
body {
  margin: 0 auto; max-width: 72rem; padding: 1rem;
  font: 15px/1.45 system-ui, "Segoe UI", Roboto, "Liberation Sans", Arial, sans-serif;
}
h1, h2, h3, p, li, dt, dd, th, td, summary, .step, figcaption, code, .value {
  overflow-wrap: anywhere; unicode-bidi: isolate;
}
h1 { font-size: 1.6rem; margin: 0 0 .2rem; }
h2 { font-size: 1.2rem; margin: 0 0 .6rem; }
h3 { font-size: 1rem; margin: 1.6rem 0 .5rem; }
a { color: var(--accent); overflow-wrap: anywhere; }
section { border-top: 2px solid var(--rule); margin-top: 1.8rem; padding-top: 1.2rem; }
.note, figcaption, .reference { color: var(--soft); }
.note { margin: .2rem 0; }
.warning { border-left: 4px solid var(--no-check); padding-left: .7rem; }
ul.warning { padding-left: 1.8rem; }
.verdict { font-weight: 700; }
p.verdict {
  font-size: 1.25rem; margin: .4rem 0; padding: .4rem .8rem; border: 2px solid; border-radius: 6px;
  display: inline-block;
}
.good { color: var(--good); }
.revoked { color: var(--revoked); }
.no-check { color: var(--no-check); }
.overview { padding-left: 1.6rem; }
.reasons { padding-left: 1.2rem; margin: .4rem 0 .8rem; }
dl { display: grid; grid-template-columns: 11rem minmax(0, 1fr); gap: .25rem .8rem; margin: .6rem 0; }
dt { color: var(--soft); }
dd { margin: 0; max-height: 15rem; overflow: auto; }
.digest, code { font-family: ui-monospace, "DejaVu Sans Mono", "Liberation Mono", monospace; }
.digest { font-size: .8rem; color: var(--soft); overflow-wrap: anywhere; }
.paths { display: flex; flex-wrap: wrap; gap: 1rem 1.5rem; align-items: flex-start; }
figure { margin: 0; width: 340px; max-width: 100%; }
figcaption { font-size: .85rem; margin-bottom: .4rem; }
figure svg { display: block; width: 100%; height: auto; }
figure svg svg { height: unset; width: unset; }
svg text {
  fill: var(--ink); unicode-bidi: isolate; white-space: pre;
  font: 11px ui-monospace, "DejaVu Sans Mono", "Liberation Mono", monospace;
}
svg .role { font-weight: 700; }
svg .fact { fill: var(--soft); }
svg .failure { fill: var(--revoked); }
svg .last { text-anchor: end; }
.box { fill: var(--card); stroke: var(--soft); stroke-width: 1; }
.box.failed { stroke: var(--revoked); stroke-width: 2; }
.box.missing { fill: none; stroke-dasharray: 5 4; }
.arrow { fill: none; stroke: var(--soft); stroke-width: 1.2; }
.timeline { display: block; overflow: visible; margin-bottom: .8rem; }
.timeline text { paint-order: stroke; stroke: var(--page); stroke-width: 4px; }
.timeline .head { fill: var(--page); stroke: none; font-size: 12px; }
.bar { fill: var(--good); }
.bar.open { fill: var(--accent); }
.bar.early, .bar.late { fill: var(--revoked); }
.moment { stroke: var(--ink); stroke-width: 2; stroke-dasharray: 4 3; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; font-size: .88rem; }
th, td { border: 1px solid var(--rule); padding: .35rem .5rem; text-align: left; vertical-align: top; }
th { background: var(--card); font-weight: 600; }
.grid th, .grid td { min-width: 7.5rem; }
.grid th:first-child { min-width: 4rem; width: 5rem; }
.grid td span { display: block; font-size: .8rem; }
.used strong { color: var(--good); }
.closed strong { color: var(--no-check); }
.none { color: var(--soft); }
summary { cursor: pointer; }
.tree { font-size: .88rem; }
.tree details, .step { border-left: 1px solid var(--rule); padding: .1rem 0 .1rem .7rem; }
.tree summary { list-style-position: inside; margin-left: -.2rem; }
.tree details details details details details details details details details details details {
  padding-left: .15rem;
}
.tree small { display: block; color: var(--soft); font-size: .75rem; overflow-wrap: anywhere; }
.tree small code { color: var(--accent); }
.value, .reference { margin-left: .6rem; }
.grid .value, .grid .reference { margin-left: 0; }
details { margin: .3rem 0; }
.tree details { margin: 0; }
@media (max-width: 640px) {
  body { padding: .7rem; }
  dl { grid-template-columns: minmax(0, 1fr); gap: 0; }
  dd { margin-bottom: .4rem; }
  .cards thead { display: none; }
  .cards, .cards tbody, .cards tr, .cards td { display: block; }
  .cards tr { border: 1px solid var(--rule); margin-bottom: .5rem; padding: .3rem .5rem; }
  .cards td { border: 0; padding: .1rem 0; }
  .cards td:empty { display: none; }
  .cards td::before { content: attr(data-label) " "; color: var(--soft); }
}
@media print {
  body { font-size: 9.5pt; max-width: none; padding: 0; }
  a { color: inherit; text-decoration: none; }
  section + section { break-before: page; }
  h2, h3, summary { break-after: avoid; }
  figure, .timeline, tr { break-inside: avoid; }
  dd { max-height: none; overflow: visible; }
  .scroll { overflow: visible; }
  details::details-content { content-visibility: visible; display: block; height: auto; }
  .bar, .box, .box.failed { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
}
)";

} // namespace norvane
