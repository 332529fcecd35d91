#include "app/Report/HtmlStyle.h"

namespace tarnwick {

namespace {

constexpr std::string_view styleSheet = R"(
:root { color-scheme: light dark; --paper: #ffffff; --ink: #1c2127; --soft: #59626d; --rule: #d8dde3; --faint: #eef1f4;
  --answer: #5b7fa6; --beyond: #2f4d6e; --loss: #b86200; --good: #9fd0ab; --degraded: #f2cf8f; --shaken: #f0a79f;
  --down: #c62a1e; --ground: #f3f5f7; --stripe: #c3cad2; }
@media screen and (prefers-color-scheme: dark) {
  :root { --paper: #15181c; --ink: #e7eaee; --soft: #a1abb7; --rule: #39414b; --faint: #22272e;
    --answer: #7ba3cf; --beyond: #d5e4f5; --loss: #ffab40; --good: #2f6b40; --degraded: #85621d; --shaken: #8a3a33;
    --down: #ff6b5e; --ground: #1d2126; --stripe: #444c57; }
}
* { box-sizing: border-box; }
html { background: var(--faint); -webkit-text-size-adjust: 100%; }
body { margin: 0 auto; max-width: 860px; padding: 32px 40px 40px; background: var(--paper); color: var(--ink);
  font: 15px/1.45 system-ui, "Segoe UI", Roboto, "Noto Sans", "DejaVu Sans", sans-serif;
  font-variant-numeric: tabular-nums; overflow-wrap: anywhere; }
h1 { margin: 0; font-size: 26px; line-height: 1.2; }
h1.long { font-size: 17px; }
h2 { margin: 26px 0 8px; font-size: 17px; line-height: 1.25; }
p { margin: 4px 0; }
.kind { margin: 0; color: var(--soft); }
.headline { display: flex; flex-wrap: wrap; align-items: center; gap: 4px 24px; }
.headline p { flex: 1 1 260px; }
.headline .large { flex: 0 1 auto; }
.large strong { font-size: 34px; line-height: 1.1; }
.tiles { display: flex; flex-wrap: wrap; gap: 8px; margin: 12px 0; }
.tiles div { flex: 1 1 110px; padding: 6px 10px; border: 1px solid var(--rule); border-radius: 6px; }
dt, th { font-weight: 600; }
.tiles dt { font-weight: normal; color: var(--soft); font-size: 13px; }
.tiles dd { margin: 0; font-weight: 600; }
table { width: 100%; border-collapse: collapse; font-size: 13px; line-height: 1.35; }
caption { text-align: left; color: var(--soft); padding: 2px 0 4px; }
th, td { text-align: left; vertical-align: top; padding: 3px 12px 3px 0; border-bottom: 1px solid var(--rule); }
thead th { color: var(--soft); }
tbody th { font-weight: normal; }
thead th, .parts tbody th, .days strong { overflow-wrap: normal; }
.parts tbody th, .parts td:nth-child(2), .parts td:nth-child(3), .days strong { white-space: nowrap; }
.outages { table-layout: fixed; }
.outages th:nth-child(1) { width: 8em; }
.outages th:nth-child(2) { width: 7em; }
.outages th:nth-child(4) { width: 14em; }
.pair { display: grid; grid-template-columns: 2fr 3fr; gap: 0 36px; }
.pair section:only-child { grid-column: 1 / 3; max-width: 24em; }
svg { display: block; width: 100%; height: auto; overflow: visible; }
svg text { font-size: 11px; fill: var(--soft); }
.patterns { position: absolute; width: 0; height: 0; }
.strip { height: 18px; border-radius: 3px; margin: 4px 0; }
.grid { stroke: var(--rule); stroke-width: 1; }
.mark { stroke: var(--rule); stroke-width: 1; stroke-dasharray: 2 3; }
.value { text-anchor: end; }
.time, .count, .number { text-anchor: middle; }
.ground { fill: var(--ground); }
.stripe { fill: var(--stripe); }
.answer { fill: var(--answer); }
.beyond { fill: var(--beyond); }
.loss { fill: var(--loss); }
.outage { fill: var(--down); }
rect.good { fill: var(--good); }
rect.degraded { fill: var(--degraded); }
rect.shaken { fill: var(--shaken); }
rect.down { fill: var(--down); }
rect.unwatched { fill: url(#hatching); }
svg .count { fill: var(--ink); font-weight: 600; }
svg rect.down + .count { fill: var(--paper); }
.legend, .days, .sums { list-style: none; display: flex; flex-wrap: wrap; gap: 2px 16px; margin: 4px 0; padding: 0; }
.months { margin-bottom: 8px; }
.legend { color: var(--soft); font-size: 13px; }
.sign { display: inline-block; width: 14px; height: 10px; margin-right: 6px; }
.days { gap: 8px; }
.days li { flex: 1 1 76px; padding: 5px 6px 6px; border: 1px solid var(--rule); border-top: 5px solid var(--good);
  font-size: 12px; line-height: 1.35; }
.days li * { display: block; }
.days li.degraded { border-top-color: var(--degraded); }
.days li.shaken { border-top-color: var(--shaken); }
.days li.down { border-top-color: var(--down); }
.days li.unwatched { border-top: 5px dotted var(--stripe); }
.days time { color: var(--soft); }
.method { display: grid; grid-template-columns: max-content 1fr; gap: 4px 16px; margin: 0; font-size: 13px; }
.method dd { margin: 0; }
@media screen and (max-width: 600px) {
  body { padding: 20px 16px 28px; }
  .method { grid-template-columns: 1fr; gap: 0; }
  .method dd { margin: 0 0 8px; }
  th, td { padding-right: 8px; }
  .pair { display: block; }
  .wide { overflow-x: auto; }
  .wide svg { min-width: 640px; }
  .days li { flex-basis: 96px; }
  .parts th:nth-child(3), .parts td:nth-child(3) { display: none; }
  .outages, .outages tbody, .outages tr, .outages tbody th, .outages td, .outages caption { display: block; }
  .outages thead { display: none; }
  .outages tr { padding: 6px 0; border-bottom: 1px solid var(--rule); }
  .outages tbody th, .outages td { padding: 0; border: 0; }
  .outages tbody th:nth-child(1), .outages td:nth-child(2) { display: inline; margin-right: 12px; }
}
@page { margin: 12mm 14mm; }
@media print {
  html, body { background: none; }
  body { max-width: none; padding: 0; font-size: 9.5pt; line-height: 1.35; }
  h1 { font-size: 17pt; }
  h1.long { font-size: 10.5pt; }
  h2 { font-size: 11.5pt; margin: 11pt 0 3pt; break-after: avoid; }
  .large strong { font-size: 23pt; }
  table, .legend, .method, .tiles dt { font-size: 8.5pt; line-height: 1.3; }
  th, td { padding-top: 2px; padding-bottom: 2px; }
  .days li { font-size: 8pt; }
  .second { break-before: page; }
  .second > section:first-child h2 { margin-top: 0; }
  tr, li, svg, .tiles { break-inside: avoid; }
}
)";

} // namespace

std::string_view htmlStyle() {
    return styleSheet;
}

} // namespace tarnwick
