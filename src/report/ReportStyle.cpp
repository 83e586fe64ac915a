// The report page's style sheet, embedded so that the file stands alone.
#include "report/ReportPage.h"

const char* const kReportStyle = R"CSS(
body { font: 14px/1.4 system-ui, -apple-system, "Segoe UI", Roboto, sans-serif; margin: 0 1.5em 2em; color: #222; }
header h1 { font-size: 1.4em; margin: .6em 0 .2em; }
nav { position: sticky; top: 0; background: #fff; padding: .3em 0; border-bottom: 1px solid #ddd; z-index: 2; }
nav a { margin-right: 1.2em; }
h2 { font-size: 1.15em; margin: 1.2em 0 .4em; }
code { font-size: .92em; }
.note { background: #fff4e0; border-left: 4px solid #f0a030; padding: .3em .6em; }
.headline { font-size: 1.1em; }
.tables { display: flex; flex-wrap: wrap; gap: 1.5em; align-items: flex-start; }
table.facts { border-collapse: collapse; }
table.facts caption { text-align: left; font-weight: 600; padding-bottom: .2em; }
table.facts th { text-align: left; font-weight: normal; color: #555; padding: 1px 1em 1px 0; }
table.facts td { text-align: right; padding: 1px 0; word-break: break-all; }
details { margin-top: .8em; }
.figures { display: flex; flex-wrap: wrap; gap: 1em; }
figure { margin: 0; }
figure svg, #hit svg { font: 11px system-ui, sans-serif; }
.axis line, .axis path { stroke: #444; }
.axis line.grid { stroke: #e4e4e4; }
#hitcontrols { display: flex; flex-wrap: wrap; gap: .8em; align-items: center; margin-bottom: .4em; }
#hitcontrols input[type=text] { width: 9em; }
#hitcontrols input[type=number] { width: 5em; }
#hittable { border-collapse: collapse; width: 100%; font-size: 13px; }
#hittable th { position: sticky; top: 2em; background: #f3f3f3; cursor: pointer; text-align: left; padding: 3px 6px; border-bottom: 1px solid #bbb; white-space: nowrap; user-select: none; }
#hittable th.sorted-asc::after { content: " \25B2"; font-size: .8em; }
#hittable th.sorted-desc::after { content: " \25BC"; font-size: .8em; }
#hittable td { padding: 2px 6px; border-bottom: 1px solid #eee; white-space: nowrap; }
#hittable td.num { text-align: right; font-variant-numeric: tabular-nums; }
#hittable tbody tr { cursor: pointer; }
#hittable tbody tr:hover { background: #eef5ff; }
#hittable tbody tr.open { background: #dbeaff; }
#hittable tr.decoy td { color: #a33; }
#pager { margin: .5em 0; }
#pager button { margin: 0 .3em; }
#hit { position: fixed; top: 2.4em; left: 1em; right: 1em; bottom: .8em; overflow: auto; z-index: 5; border: 1px solid #bbb; border-radius: 6px; padding: .4em 1em 1em; background: #fff; box-shadow: 0 4px 24px rgba(0,0,0,.25); }
#hit h2 { margin-top: .2em; display: flex; gap: .6em; align-items: center; flex-wrap: wrap; }
#hit h2 .grow { flex: 1; }
.hitmeta { display: flex; gap: 2em; align-items: flex-start; justify-content: space-between; }
.hitmeta table.facts { font-size: 12.5px; }
.hitmeta table.facts th { white-space: nowrap; }
.glycanbox { display: flex; gap: 1em; align-items: center; }
.legend { display: flex; flex-wrap: wrap; gap: 1em; font-size: 12px; color: #444; margin: .3em 0; }
.legend span::before { content: ""; display: inline-block; width: 12px; height: 3px; margin-right: 4px; vertical-align: middle; background: var(--c); }
.mirror { width: 100%; max-width: 1200px; height: auto; cursor: crosshair; }
.hint { color: #777; font-size: 12px; }
.ions { word-break: break-all; }
)CSS";
