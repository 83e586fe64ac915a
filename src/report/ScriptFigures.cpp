// The page script: the score histogram and the FDR and q-value curves.
// Plain browser JavaScript without libraries, so that the file stands alone.
#include "report/ReportPage.h"

const char* const kScriptFigures = R"JS(
function drawHistogram() {
  const h = data.histogram, fig = document.getElementById('histogram');
  const svg = el('svg', { viewBox: '0 0 520 300', width: 520, height: 300, role: 'img' }, fig);
  const bins = h.targets.length;
  const top = Math.max(1, ...h.targets, ...h.decoys);
  const box = { left: 55, top: 15, width: 445, height: 230 };
  const f = frame(svg, box, h.edges[0], h.edges[bins], 0, top, 'score', 'result lines');
  const bars = (counts, color, cls) => counts.forEach((n, i) => {
    if (n === 0) return;
    const r = el('rect', { class: cls, x: f.sx(h.edges[i]) + 0.5, y: f.sy(n),
      width: Math.max(1, f.sx(h.edges[i + 1]) - f.sx(h.edges[i]) - 1), height: f.sy(0) - f.sy(n),
      fill: color, 'fill-opacity': 0.55 }, svg);
    el('title', {}, r).textContent = `${fmt(h.edges[i])}–${fmt(h.edges[i + 1])}: ${n}`;
  });
  bars(h.targets, '#1f77b4', 'target');
  bars(h.decoys, '#d62728', 'decoy');
  legend(svg, box.left + box.width - 90, box.top + 12, [['targets', '#1f77b4'], ['decoys', '#d62728']]);
  html('figcaption', { textContent: 'Score distribution of target and decoy hits' }, fig);
}

function drawFdrCurve() {
  const fig = document.getElementById('fdrcurve');
  // With q-values GlycopeptideQ leads, drawn strongest; the FDR column is the target-decoy estimate.
  const curves = [];
  const qColors = { PeptideQ: '#1f77b4', GlycanQ: '#2ca02c', GlycopeptideQ: '#9467bd' };
  if (data.qvalues && data.qvalues.GlycopeptideQ) curves.push(['GlycopeptideQ', data.qvalues.GlycopeptideQ, qColors.GlycopeptideQ, 2.6]);
  if (data.qvalues) for (const k in data.qvalues) if (k !== 'GlycopeptideQ') curves.push([k, data.qvalues[k], qColors[k] || '#888', 1.2]);
  curves.push([data.qvalues ? 'FDR (target-decoy estimate)' : 'FDR', data.fdr, '#333', data.qvalues ? 1.2 : 1.6]);
  const control = html('label', { textContent: 'FDR axis up to ' }, fig);
  const choice = html('select', {}, control);
  for (const v of ['0.05', '0.1', '0.25', '1']) html('option', { value: v, textContent: v * 100 + ' %' }, choice);
  choice.value = '0.1';
  let svg = null;
  const draw = () => {
    if (svg) svg.remove();
    svg = el('svg', { viewBox: '0 0 520 300', width: 520, height: 300, role: 'img' });
    fig.insertBefore(svg, control);
    const yMax = +choice.value;
    let xMax = 1;
    for (const c of curves) if (c[1].length) xMax = Math.max(xMax, c[1][c[1].length - 1][0]);
    const box = { left: 55, top: 15, width: 445, height: 230 };
    const f = frame(svg, box, 0, xMax, 0, yMax, 'accepted hits', 'FDR / q-value');
    el('clipPath', { id: 'fdrclip' }, svg).appendChild(el('rect', { x: box.left, y: box.top - 1, width: box.width, height: box.height + 1 }));
    for (const level of [0.01, 0.05]) if (level < yMax)
      el('line', { x1: box.left, x2: box.left + box.width, y1: f.sy(level), y2: f.sy(level),
        stroke: '#999', 'stroke-dasharray': '4 3' }, svg);
    curves.forEach(([name, points, color, width]) => {
      if (!points.length) return;
      let d = `M${f.sx(0)},${f.sy(points[0][1])}`;
      for (const [n, v] of points) d += `H${f.sx(n)}V${f.sy(v)}`;
      el('path', { d: d, fill: 'none', stroke: color, 'stroke-width': width, 'clip-path': 'url(#fdrclip)', class: 'curve' }, svg);
    });
    legend(svg, box.left + 12, box.top + 12, curves.map(c => [c[0], c[2]]));
  };
  choice.addEventListener('change', draw);
  draw();
  html('figcaption', { textContent: (data.qvalues ? 'q-values and the FDR column (the target-decoy estimate)' : 'FDR') +
    ' against the number of accepted hits (dashed: 1 % and 5 %)' }, fig);
}
)JS";
