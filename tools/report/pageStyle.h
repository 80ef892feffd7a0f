#pragma once

namespace vdrdump {

// For screens in light and dark, and for paper. Panels come with colours of their own, which are
// made for white.
inline constexpr char kPageStyle[] = R"(
:root {
  color-scheme: light dark;
  --page: #ffffff; --card: #f5f7f9; --text: #1b1f24; --soft: #59626d; --line: #d5dbe1;
  --lost: #c81e2b; --event: #8a5a00; --number: #0f1720;
  --f0: #7fa3cf; --f1: #b3c8e0; --f2: #74b0a5; --f3: #b4d4cd;
}
@media screen and (prefers-color-scheme: dark) {
  :root {
    --page: #15181c; --card: #1e2329; --text: #e3e7eb; --soft: #9aa5b1; --line: #363e47;
    --lost: #ff5a5f; --event: #e0a93b; --number: #0f1720;
    --f0: #5b86bb; --f1: #8ba6c8; --f2: #4f968a; --f3: #86b5ac;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0; background: var(--page); color: var(--text);
  font: 15px/1.5 system-ui, "Segoe UI", Roboto, "Noto Sans", "DejaVu Sans", sans-serif;
}
main { max-width: 1160px; margin: 0 auto; padding: 24px 20px 40px; }
h1 { font-size: 24px; line-height: 1.3; margin: 0 0 12px; overflow-wrap: anywhere; }
h2 { font-size: 18px; line-height: 1.35; margin: 36px 0 10px; overflow-wrap: anywhere; }
h3 { font-size: 15px; margin: 26px 0 6px; }
a { color: inherit; }
p, ol { margin: 8px 0; }
.note, figcaption { color: var(--soft); font-size: 13px; }
code, pre { font: 12.5px/1.5 ui-monospace, "DejaVu Sans Mono", Consolas, monospace; }
pre {
  background: var(--card); border-radius: 6px; padding: 10px 12px; margin: 6px 0 12px;
  white-space: pre-wrap; overflow-wrap: anywhere;
}
table { border-collapse: collapse; width: 100%; }
th, td { text-align: left; vertical-align: top; padding: 3px 0; overflow-wrap: anywhere; }
tr + tr > * { border-top: 1px solid var(--line); }
th {
  font-weight: 600; white-space: nowrap; overflow-wrap: normal; padding-right: 20px; width: 1%;
  color: var(--soft);
}
section.loss + section.loss { border-top: 3px double var(--line); margin-top: 40px; }
figure { margin: 10px 0; }
.wide { overflow-x: auto; }
.wide > svg { display: block; width: 100%; min-width: 760px; height: auto; }
.panels { background: #ffffff; color: #000000; border-radius: 6px; }
.record pre { white-space: pre; overflow-x: auto; scroll-margin-top: 40px; }
summary { cursor: pointer; padding: 3px 0; }
details.records > summary, details.more > summary { font-weight: 600; }
details.record { border-top: 1px solid var(--line); margin-left: 18px; }
details.record.lost > summary { color: var(--lost); font-weight: 600; }
.timeline { font: 11.5px system-ui, "Segoe UI", Roboto, "Noto Sans", "DejaVu Sans", sans-serif; }
.timeline text { fill: var(--text); }
.timeline .frame, .timeline .tick, .timeline .number { text-anchor: middle; }
.timeline .frame, .timeline .tick { fill: var(--soft); }
.timeline .end { text-anchor: end; }
.timeline line { stroke: var(--soft); stroke-width: 1; }
.timeline line.grid { stroke: var(--line); }
.timeline line.lost, .timeline line.missing { stroke-dasharray: 4 3; }
.timeline line.lost, .timeline line.frame.lost { stroke: var(--lost); stroke-width: 1.5; }
.timeline text.lost { fill: var(--lost); font-weight: 700; }
.timeline text.missing { fill: var(--lost); }
.timeline .row { fill: var(--card); }
.timeline .event { fill: var(--event); }
.timeline .f0 rect { fill: var(--f0); }
.timeline .f1 rect { fill: var(--f1); }
.timeline .f2 rect { fill: var(--f2); }
.timeline .f3 rect { fill: var(--f3); }
.timeline .bar.lost rect { fill: var(--lost); }
.timeline .bar .out { stroke: var(--text); stroke-width: 1.5; }
.timeline .bar text { fill: var(--number); }
.timeline .bar.lost text { fill: #ffffff; font-weight: 700; }
.timeline .stuck { stroke: var(--text); stroke-width: 2; fill: none; }
.timeline .way { stroke: var(--lost); stroke-width: 1; fill: none; opacity: 0.7; }
@media (max-width: 640px) {
  main { padding: 14px 12px 28px; }
  h1 { font-size: 20px; }
  th { white-space: normal; padding-right: 10px; }
}
@page { margin: 14mm; }
@media print {
  body { font-size: 9.5pt; print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  main { max-width: none; padding: 0; }
  h1 { font-size: 15pt; }
  h2 { font-size: 12pt; margin-top: 14pt; }
  h2, h3 { break-after: avoid; }
  .note { font-size: 8.5pt; }
  code, pre { font-size: 8pt; }
  .record pre { white-space: pre-wrap; }
  figure, tr, footer { break-inside: avoid; }
  details.more:not([open]), section:has(> details.records:not([open])) { display: none; }
  .wide { overflow: visible; }
  .wide > svg { min-width: 0; max-height: 240mm; }
  section.loss + section.loss { break-before: page; border-top: none; }
}
)";

}  // namespace vdrdump
