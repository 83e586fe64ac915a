// The report page's script: draws the figures, the hit table and, on demand,
// the mirror plot of one hit as inline SVG from the data embedded in the page.
// Plain browser JavaScript without libraries, so that the file stands alone.
#include "report/ReportPage.h"

const char* const kReportScript = R"JS(
'use strict';
(function () {
const data = JSON.parse(document.getElementById('report-data').textContent);
const hits = data.hits;
// Columns of a hit row: the 28 of the ranked result file, the rank, and with a
// q-value file the hit's [PeptideQ, GlycanQ, GlycopeptideQ, IsobaricGlycans].
const C = { query: 0, library: 1, queryMH: 2, libraryMH: 3, charge: 4, sequence: 5, mods: 6,
  shift: 7, glycanMass: 8, glycan: 9, site: 10, motif: 11, candidates: 12, yIons: 13,
  pepIons: 15, dps: 17, ps: 18, score: 19, td: 20, dpsIons: 21, protein: 23, previous: 24,
  last: 25, start: 26, fdr: 27, rank: 28, q: 29, glycopeptideQ: 30 };
// The glycopeptide q-value as a column of its own, for the table to sort by.
if (data.qvalues) for (const row of hits) row.push(row[C.q][2]);
const NS = 'http://www.w3.org/2000/svg';
const COLORS = { b: '#1f77b4', bg: '#17becf', y: '#d62728', yg: '#e377c2', Y: '#2ca02c',
  o: '#ff7f0e', other: '#8c564b', none: '#b8b8b8' };
const ION_LETTERS = ['b', 'y', 'Y', 'o', 'u'];
// Oxonium ions the search takes out of a query, with the names they are known by.
const OXONIUM = [[109.0284, 'Hex-3H2O'], [126.0550, 'HexNAc frag.'], [127.0390, 'Hex-2H2O'],
  [138.0550, 'HexNAc frag.'], [144.0655, 'HexNAc frag.'], [145.0495, 'Hex-H2O'],
  [163.0601, 'Hex'], [168.0655, 'HexNAc-2H2O'], [186.0761, 'HexNAc-H2O'], [204.0866, 'HexNAc'],
  [274.0921, 'NeuAc-H2O'], [290.0870, 'NeuGc-H2O'], [292.1027, 'NeuAc'], [366.1395, 'HexHexNAc'],
  [454.1555, 'HexNeuAc'], [512.1974, 'HexHexNAcdHex'], [528.1923, 'Hex2HexNAc'],
  [657.2349, 'HexHexNAcNeuAc'], [673.2298, 'HexHexNAcNeuGc'], [690.2451, 'Hex3HexNAc'],
  [803.2928, 'HexHexNAcdHexNeuAc'], [893.3245, 'Hex3HexNAc2']];

function el(tag, attrs, parent) {
  const e = document.createElementNS(NS, tag);
  for (const k in attrs) e.setAttribute(k, attrs[k]);
  if (parent) parent.appendChild(e);
  return e;
}
function text(parent, x, y, s, attrs) {
  const t = el('text', Object.assign({ x: x, y: y }, attrs || {}), parent);
  t.textContent = s;
  return t;
}
function html(tag, props, parent) {
  const e = document.createElement(tag);
  Object.assign(e, props || {});
  if (parent) parent.appendChild(e);
  return e;
}
function ticks(lo, hi, count) {
  const span = hi - lo;
  if (!(span > 0)) return [lo];
  const raw = span / count, mag = Math.pow(10, Math.floor(Math.log10(raw)));
  const step = [1, 2, 5, 10].map(f => f * mag).find(s => s >= raw) || raw;
  const out = [];
  for (let v = Math.ceil(lo / step) * step; v <= hi + step * 1e-9; v += step) out.push(+v.toPrecision(12));
  return out;
}
function fmt(v) { return Math.abs(v) >= 1000 || Number.isInteger(v) ? String(Math.round(v)) : v.toPrecision(3).replace(/\.?0+$/, ''); }

// A chart frame: plot area, scales and axes with ticks.
function frame(svg, box, x0, x1, y0, y1, xLabel, yLabel) {
  const sx = v => box.left + (v - x0) / (x1 - x0 || 1) * (box.width);
  const sy = v => box.top + box.height - (v - y0) / (y1 - y0 || 1) * box.height;
  const axis = el('g', { class: 'axis' }, svg);
  for (const t of ticks(x0, x1, 6)) {
    el('line', { x1: sx(t), x2: sx(t), y1: box.top + box.height, y2: box.top + box.height + 4 }, axis);
    text(axis, sx(t), box.top + box.height + 15, fmt(t), { 'text-anchor': 'middle' });
  }
  for (const t of ticks(y0, y1, 5)) {
    el('line', { class: 'grid', x1: box.left, x2: box.left + box.width, y1: sy(t), y2: sy(t) }, axis);
    text(axis, box.left - 5, sy(t) + 4, fmt(t), { 'text-anchor': 'end' });
  }
  el('path', { d: `M${box.left},${box.top}V${box.top + box.height}H${box.left + box.width}`, fill: 'none' }, axis);
  text(axis, box.left + box.width / 2, box.top + box.height + 32, xLabel, { 'text-anchor': 'middle' });
  text(axis, 12, box.top + box.height / 2, yLabel,
    { 'text-anchor': 'middle', transform: `rotate(-90 12 ${box.top + box.height / 2})` });
  return { sx: sx, sy: sy };
}
function legend(svg, x, y, entries) {
  entries.forEach(([label, color], i) => {
    el('rect', { x: x, y: y + i * 16 - 9, width: 12, height: 10, fill: color, 'fill-opacity': 0.7 }, svg);
    text(svg, x + 17, y + i * 16, label);
  });
}

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
  const curves = [['FDR', data.fdr, '#333']];
  const qColors = { PeptideQ: '#1f77b4', GlycanQ: '#2ca02c', GlycopeptideQ: '#9467bd' };
  if (data.qvalues) for (const k in data.qvalues) curves.push([k, data.qvalues[k], qColors[k] || '#888']);
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
    curves.forEach(([name, points, color]) => {
      if (!points.length) return;
      let d = `M${f.sx(0)},${f.sy(points[0][1])}`;
      for (const [n, v] of points) d += `H${f.sx(n)}V${f.sy(v)}`;
      el('path', { d: d, fill: 'none', stroke: color, 'stroke-width': 1.6, 'clip-path': 'url(#fdrclip)', class: 'curve' }, svg);
    });
    legend(svg, box.left + 12, box.top + 12, curves.map(c => [c[0], c[2]]));
  };
  choice.addEventListener('change', draw);
  draw();
  html('figcaption', { textContent: 'FDR' + (data.qvalues ? ' and q-values' : '') +
    ' against the number of accepted hits (dashed: 1 % and 5 %)' }, fig);
}

// ---- the embedded spectra
let libraryLines = null, hitLines = null;
function linesOf(id) { return document.getElementById(id).textContent.split('\n').slice(1); }
function decodePeaks(textLine) {
  const peaks = [];
  if (!textLine) return peaks;
  let units = 0;
  for (const token of textLine.split(',')) {
    const dot = token.indexOf('.');
    const head = dot < 0 ? token : token.slice(0, dot);
    units += parseInt(head.slice(2), 36);
    const peak = { mz: units / 10000, rel: parseInt(head.slice(0, 2), 36) / 1000, type: 4, charge: 0, pos: 0 };
    if (dot >= 0) {
      const a = token.slice(dot + 1);
      peak.type = +a[0];
      peak.charge = parseInt(a[1], 36);
      peak.pos = parseInt(a.slice(2), 36);
    }
    peaks.push(peak);
  }
  return peaks;
}
function ionName(p) { return ION_LETTERS[p.type] + p.pos + '+'.repeat(p.charge); }
function ionColor(p, shifted) {
  if (p.type === 0) return shifted ? COLORS.bg : COLORS.b;
  if (p.type === 1) return shifted ? COLORS.yg : COLORS.y;
  if (p.type === 2) return COLORS.Y;
  return COLORS.other;
}
function oxoniumName(mz) {
  let best = null;
  for (const [m, name] of OXONIUM) if (Math.abs(m - mz) < 0.05) best = name;
  return best || mz.toFixed(2);
}
// The decoded spectra of hit i, or null when it has none.
function hitSpectra(i) {
  if (!hitLines) { hitLines = linesOf('hit-peaks'); libraryLines = linesOf('library-peaks'); }
  const line = hitLines[i];
  if (!line || line[0] === '!') return null;
  const parts = line.split('|');
  const library = decodePeaks(libraryLines[parseInt(parts[0], 36)]);
  const query = decodePeaks(parts[1]);
  const matches = parts[2] ? parts[2].split(',').map(m => m.split('.').map(v => parseInt(v, 36))) : [];
  const oxonium = parts[3] ? parts[3].split(',').map(v => parseInt(v, 36)) : [];
  return { library: library, query: query, matches: matches, oxonium: oxonium };
}

// ---- the mirror plot
// Labels go above (or below) their peak, moved further out until they overlap
// no label placed before; stronger peaks are placed first.
// A label stays inside the plot's width, [left, right].
function placeLabels(items, up, limit, left, right) {
  const placed = [];
  items.sort((a, b) => b.strength - a.strength);
  for (const it of items) {
    const w = it.label.length * 6.6 + 4, h = 11;
    it.lx = Math.min(Math.max(it.x, left + w / 2), right - w / 2);
    let y = up ? it.y - 3 : it.y + 11;
    for (let tries = 0; tries < 40; tries++) {
      const clash = placed.some(p => Math.abs(p.x - it.lx) * 2 < p.w + w && Math.abs(p.y - y) < h);
      if (!clash) break;
      y += up ? -h : h;
    }
    if (up) y = Math.max(y, limit); else y = Math.min(y, limit);
    placed.push({ x: it.lx, y: y, w: w });
    it.ly = y;
  }
}

function drawMirror(holder, i, range) {
  holder.textContent = '';
  const s = hitSpectra(i);
  if (!s) return;
  const row = hits[i];
  const shift = parseFloat(row[C.queryMH]) - parseFloat(row[C.libraryMH]);
  const W = 1100, H = 560, box = { left: 60, width: 1010 }, mid = 285, half = 215;
  const matchOfQuery = new Map(), matchOfLibrary = new Map();
  for (const [q, l, state] of s.matches) { matchOfQuery.set(q, [l, state]); matchOfLibrary.set(l, [q, state]); }
  const libX = (p, l) => {
    const m = matchOfLibrary.get(l);
    return m && m[1] === 2 && p.charge > 0 ? p.mz + shift / p.charge : p.mz;
  };
  let lo = range ? range[0] : Infinity, hi = range ? range[1] : -Infinity;
  if (!range) {
    for (const p of s.query) { lo = Math.min(lo, p.mz); hi = Math.max(hi, p.mz); }
    s.library.forEach((p, l) => { const x = libX(p, l); lo = Math.min(lo, x); hi = Math.max(hi, x); });
    if (!(hi > lo)) { lo = 0; hi = 2000; }
    const pad = (hi - lo) * 0.03 + 5;
    lo = Math.max(0, lo - pad); hi += pad;
  }
  const svg = el('svg', { class: 'mirror', id: 'mirror', viewBox: `0 0 ${W} ${H}`, width: W, height: H, role: 'img' }, holder);
  const sx = v => box.left + (v - lo) / (hi - lo) * box.width;
  const upY = r => mid - r * half, downY = r => mid + r * half;
  const axis = el('g', { class: 'axis' }, svg);
  for (const t of ticks(lo, hi, 10)) {
    text(axis, sx(t), H - 12, fmt(t), { 'text-anchor': 'middle' });
    el('line', { class: 'grid', x1: sx(t), x2: sx(t), y1: mid - half, y2: mid + half }, axis);
  }
  for (const r of [0.25, 0.5, 0.75, 1]) {
    text(axis, box.left - 5, upY(r) + 4, r * 100 + ' %', { 'text-anchor': 'end' });
    text(axis, box.left - 5, downY(r) + 4, r * 100 + ' %', { 'text-anchor': 'end' });
  }
  el('line', { x1: box.left, x2: box.left + box.width, y1: mid, y2: mid }, axis);
  const side = (label, y) => text(axis, 14, y, label, { 'text-anchor': 'middle', transform: `rotate(-90 14 ${y})` });
  side('query ' + row[C.query], mid - half / 2);
  side('library ' + row[C.library], mid + half / 2);
  text(axis, box.left + box.width + 4, mid + 4, 'm/z');
  el('clipPath', { id: 'mirrorclip' }, svg).appendChild(el('rect', { x: box.left, y: 0, width: box.width, height: H }));
  const peaksG = el('g', { 'clip-path': 'url(#mirrorclip)' }, svg);
  const inView = x => x >= lo && x <= hi;
  const oxonium = new Set(s.oxonium);
  const upLabels = [], downLabels = [];
  const stick = (x, y0, y1, color, width, tip) => {
    const line = el('line', { x1: x, x2: x, y1: y0, y2: y1, stroke: color, 'stroke-width': width }, peaksG);
    el('title', {}, line).textContent = tip;
  };
  // Unmatched peaks first, so that matched ones are drawn over them.
  const order = (n, isMatched) => [...Array(n).keys()].sort((a, b) => isMatched(a) - isMatched(b));
  for (const q of order(s.query.length, q => matchOfQuery.has(q) || oxonium.has(q))) {
    const p = s.query[q];
    if (!inView(p.mz)) continue;
    const x = sx(p.mz), m = matchOfQuery.get(q);
    if (m) {
      const lp = s.library[m[0]], shifted = m[1] === 2, color = ionColor(lp, shifted);
      stick(x, mid, upY(p.rel), color, 1.6, `${ionName(lp)}${shifted ? ' with the glycan' : ''}  m/z ${p.mz.toFixed(4)}  ${(p.rel * 100).toFixed(1)} %`);
      upLabels.push({ x: x, y: upY(p.rel), label: ionName(lp), color: color, cls: 'ion' + (shifted ? ' shifted' : ''), strength: p.rel + 2 });
    } else if (oxonium.has(q)) {
      stick(x, mid, upY(p.rel), COLORS.o, 1.6, `oxonium ion ${oxoniumName(p.mz)}  m/z ${p.mz.toFixed(4)}  ${(p.rel * 100).toFixed(1)} %`);
      upLabels.push({ x: x, y: upY(p.rel), label: oxoniumName(p.mz), color: COLORS.o, cls: 'oxo', strength: p.rel + 1 });
    } else {
      stick(x, mid, upY(p.rel), COLORS.none, 1, `m/z ${p.mz.toFixed(4)}  ${(p.rel * 100).toFixed(1)} %  (unmatched)`);
    }
  }
  for (const l of order(s.library.length, l => matchOfLibrary.has(l))) {
    const p = s.library[l], xm = libX(p, l);
    if (!inView(xm)) continue;
    const x = sx(xm), m = matchOfLibrary.get(l);
    const name = p.type < 4 ? ionName(p) : '';
    if (m) {
      const shifted = m[1] === 2, color = ionColor(p, shifted);
      stick(x, mid, downY(p.rel), color, 1.6, `${name}${shifted ? ` moved from m/z ${p.mz.toFixed(4)} by ${(shift / p.charge).toFixed(4)}` : ''}  m/z ${xm.toFixed(4)}  ${(p.rel * 100).toFixed(1)} %`);
      downLabels.push({ x: x, y: downY(p.rel), label: name, color: color, cls: 'libion' + (shifted ? ' shifted' : ''), strength: p.rel });
    } else {
      stick(x, mid, downY(p.rel), p.type < 4 ? '#ccc' : '#ddd', 1, `${name ? name + ' (not matched)' : '(unannotated)'}  m/z ${p.mz.toFixed(4)}  ${(p.rel * 100).toFixed(1)} %`);
    }
  }
  placeLabels(upLabels, true, 12, box.left, box.left + box.width);
  placeLabels(downLabels, false, H - 30, box.left, box.left + box.width);
  const labelG = el('g', {}, svg);
  for (const [items, up] of [[upLabels, true], [downLabels, false]]) for (const it of items) {
    if (Math.abs(it.ly - it.y) > 14 || it.lx !== it.x) el('line', { x1: it.x, x2: it.lx, y1: it.y + (up ? -1 : 1), y2: it.ly + (up ? 2 : -10), stroke: it.color, 'stroke-width': 0.5, 'stroke-dasharray': '2 2' }, labelG);
    text(labelG, it.lx, it.ly, it.label, { class: it.cls, fill: it.color, 'text-anchor': 'middle', 'font-size': 10 });
  }
  // Dragging across the plot zooms into that m/z range; a double click shows all.
  let start = null;
  const band = el('rect', { y: mid - half, height: 2 * half, width: 0, fill: '#1f77b4', 'fill-opacity': 0.12 }, svg);
  const toMz = ev => { const pt = svg.createSVGPoint(); pt.x = ev.clientX; pt.y = ev.clientY; const v = pt.matrixTransform(svg.getScreenCTM().inverse()); return lo + (v.x - box.left) / box.width * (hi - lo); };
  svg.addEventListener('mousedown', ev => { start = toMz(ev); ev.preventDefault(); });
  svg.addEventListener('mousemove', ev => { if (start === null) return; const a = sx(Math.min(start, toMz(ev))), b = sx(Math.max(start, toMz(ev))); band.setAttribute('x', a); band.setAttribute('width', b - a); });
  svg.addEventListener('mouseup', ev => { if (start === null) return; const end = toMz(ev), a = Math.min(start, end), b = Math.max(start, end); start = null; if (b - a > (hi - lo) / 200) drawMirror(holder, i, [a, b]); else band.setAttribute('width', 0); });
  svg.addEventListener('dblclick', () => drawMirror(holder, i, null));
}

// ---- peptide and glycan
function drawPeptide(holder, i) {
  const row = hits[i], seq = row[C.sequence], L = seq.length;
  const site = parseInt(row[C.site], 10);
  const mods = new Map();
  for (const m of row[C.mods].split(';')) { const c = m.indexOf(','); if (c > 0) mods.set(parseInt(m.slice(0, c), 10), m.slice(c + 1)); }
  const step = 26, left = 20, W = left * 2 + step * L, H = 96, base = 54;
  const svg = el('svg', { viewBox: `0 0 ${W} ${H}`, width: W, height: H, class: 'peptide', role: 'img' }, holder);
  // Matched b and y ions as ladder marks: b above, after residue i; y below.
  const s = hitSpectra(i), marks = new Map();
  if (s) for (const [, l, state] of s.matches) {
    const p = s.library[l];
    if (p.type > 1) continue;
    const cut = p.type === 0 ? p.pos : L - p.pos, key = p.type + ':' + cut;
    marks.set(key, (marks.get(key) || 0) | state);
  }
  for (const [key, states] of marks) {
    const [type, cut] = key.split(':').map(Number);
    if (cut < 1 || cut >= L) continue;
    const x = left + cut * step, color = type === 0 ? (states & 2 ? COLORS.bg : COLORS.b) : (states & 2 ? COLORS.yg : COLORS.y);
    const d = type === 0 ? `M${x},${base - 6}V${base - 24}h-9` : `M${x},${base - 6}V${base + 12}h9`;
    el('path', { d: d, stroke: color, fill: 'none', 'stroke-width': 2 }, svg);
  }
  for (let k = 0; k < L; k++) {
    const pos = k + 1, x = left + k * step + step / 2, letter = seq[k] === 'J' ? 'N' : seq[k];
    const t = text(svg, x, base, letter, { 'text-anchor': 'middle', 'font-size': 20, 'font-family': 'monospace' });
    if (pos === site) {
      t.setAttribute('font-weight', 'bold');
      t.setAttribute('fill', '#0072BC');
      el('rect', { x: x - 5, y: 6, width: 10, height: 10, fill: '#0072BC' }, svg);
      el('line', { x1: x, x2: x, y1: 16, y2: base - 20, stroke: '#555' }, svg);
    }
    if (mods.has(pos)) {
      t.setAttribute('text-decoration', 'underline');
      text(svg, x, base + 26, mods.get(pos).replace(/\[.*$/, '').slice(0, 6), { 'text-anchor': 'middle', 'font-size': 9, fill: '#555' });
    }
  }
  if (mods.has(0)) text(svg, 2, base + 26, 'N-term: ' + mods.get(0), { 'font-size': 9, fill: '#555' });
}

// Symbol nomenclature for glycans: the composition as symbols with counts.
const SNFG = [['HexNAc', 1, 'square', '#0072BC'], ['Hex', 0, 'circle', '#00A651'],
  ['dHex', 4, 'triangle', '#ED1C24'], ['NeuAc', 2, 'diamond', '#A54399'], ['NeuGc', 3, 'diamond', '#8FCCE9']];
function drawGlycan(holder, name) {
  const counts = name.split('-').map(v => parseInt(v, 10) || 0);
  const shown = SNFG.filter(g => counts[g[1]] > 0);
  const svg = el('svg', { viewBox: `0 0 ${Math.max(1, shown.length) * 78} 30`, width: Math.max(1, shown.length) * 78, height: 30, class: 'glycan', role: 'img' }, holder);
  shown.forEach(([label, at, shape, color], k) => {
    const x = 4 + k * 78, y = 5, s = 18, g = el('g', { class: 'snfg', 'data-residue': label }, svg);
    const look = { fill: color, stroke: '#000', 'stroke-width': 1 };
    if (shape === 'square') el('rect', Object.assign({ x: x, y: y, width: s, height: s }, look), g);
    else if (shape === 'circle') el('circle', Object.assign({ cx: x + s / 2, cy: y + s / 2, r: s / 2 }, look), g);
    else if (shape === 'triangle') el('path', Object.assign({ d: `M${x + s / 2},${y}L${x + s},${y + s}H${x}Z` }, look), g);
    else el('path', Object.assign({ d: `M${x + s / 2},${y}L${x + s},${y + s / 2}L${x + s / 2},${y + s}L${x},${y + s / 2}Z` }, look), g);
    el('title', {}, g).textContent = label;
    text(g, x + s + 4, y + 14, '×' + counts[at], { 'font-size': 13 });
  });
}

// ---- one hit
const byRank = new Map(hits.map((h, i) => [String(h[C.rank]), i]));
function openHit(i) {
  const started = performance.now();
  const row = hits[i], panel = document.getElementById('hit');
  panel.hidden = false;
  panel.textContent = '';
  const h = html('h2', {}, panel);
  html('span', { textContent: `Hit ${row[C.rank]}: ${row[C.sequence].replace(/J/g, 'N')}, glycan ${row[C.glycan]}, charge ${row[C.charge]}+` }, h);
  html('span', { className: 'grow' }, h);
  const at = view.indexOf(i);
  const prev = html('button', { textContent: '◀ previous', disabled: at <= 0 }, h);
  const next = html('button', { textContent: 'next ▶', disabled: at < 0 || at + 1 >= view.length }, h);
  prev.onclick = () => showHit(view[at - 1]);
  next.onclick = () => showHit(view[at + 1]);
  html('button', { textContent: 'close ✕', onclick: closeHit }, h);
  const meta = html('div', { className: 'hitmeta' }, panel);
  const left = html('div', {}, meta);
  const pep = html('div', {}, left);
  drawPeptide(pep, i);
  html('div', { className: 'hint', textContent: `site ${row[C.site]} (${row[C.motif] || 'no motif'}), modifications ${row[C.mods]}` }, pep);
  const gly = html('div', { className: 'glycanbox' }, left);
  drawGlycan(gly, row[C.glycan]);
  html('div', { className: 'hint', textContent: `composition Hex-HexNAc-NeuAc-NeuGc-dHex ${row[C.glycan]}, ${row[C.glycanMass]} Da` }, gly);
  const facts = html('table', { className: 'facts' }, meta);
  const fact = (k, v) => { const tr = html('tr', {}, facts); html('th', { textContent: k }, tr); html('td', { textContent: v }, tr); };
  fact('score (DPS × PS)', `${row[C.score]} (${row[C.dps]} × ${row[C.ps]})`);
  fact('FDR', row[C.fdr] + (row[C.td] === 'D' ? ' — decoy hit' : ' — target hit'));
  if (data.qvalues) {
    const [pq, gq, gpq, isobaric] = row[C.q];
    fact('q-values', `peptide ${pq || '—'}, glycan ${gq || '—'}, glycopeptide ${gpq || '—'}`);
    if (isobaric) fact('isobaric glycans', isobaric);
  }
  fact('query [M+H]+', row[C.queryMH]);
  fact('library [M+H]+', `${row[C.libraryMH]} (entry ${row[C.library]})`);
  fact('mass shift', row[C.shift]);
  fact('matched ions', `${row[C.pepIons]} b/y, ${row[C.yIons]} Y; ${row[C.candidates]} candidates`);
  fact('protein', `${row[C.protein] || '—'} ${row[C.start] !== '0' ? 'from ' + row[C.start] : ''}`);
  const note = data.notes[String(i)];
  if (note) html('p', { className: 'note', textContent: note }, panel);
  const lg = html('div', { className: 'legend' }, panel);
  for (const [label, color] of [['b', COLORS.b], ['b with glycan', COLORS.bg], ['y', COLORS.y], ['y with glycan', COLORS.yg],
    ['Y (peptide + glycan core)', COLORS.Y], ['oxonium', COLORS.o], ['unmatched', COLORS.none]]) {
    const sp = html('span', { textContent: label }, lg);
    sp.style.setProperty('--c', color);
  }
  const plot = html('div', {}, panel);
  drawMirror(plot, i, null);
  html('div', { className: 'hint', textContent: 'b/y ions matched with the glycan are drawn in the library spectrum where they matched: at their m/z + Δmass / z. Drag across the plot to zoom into an m/z range, double-click to see all; ← and → step through the hits, Esc closes. Query intensities relative to its base peak as read; peaks under 0.5 % of it are left out unless matched.' }, panel);
  html('div', { className: 'hint ions', textContent: 'DPSIon: ' + row[C.dpsIons] }, panel);
  markOpen(i);
  console.info(`QuorinGlyco report: hit ${row[C.rank]} drawn in ${Math.round(performance.now() - started)} ms`);
}
function showHit(i) { if (i !== undefined) location.hash = 'hit=' + hits[i][C.rank]; }
function openFromHash() {
  const m = /^#hit=(\d+)$/.exec(location.hash);
  if (!m || !byRank.has(m[1])) return;
  openHit(byRank.get(m[1]));
}
function closeHit() {
  history.replaceState(null, '', '#hits');
  document.getElementById('hit').hidden = true;
  markOpen(-1);
}

// ---- the hit table
const COLUMNS = [
  ['#', C.rank, true], ['query', C.query], ['peptide', C.sequence], ['modifications', C.mods],
  ['z', C.charge, true], ['glycan', C.glycan], ['site', C.site], ['protein', C.protein],
  ['score', C.score, true], ['FDR', C.fdr, true], ['T/D', C.td], ['b/y', C.pepIons, true],
  ['Y', C.yIons, true]];
if (data.qvalues) COLUMNS.splice(10, 0, ['q', C.glycopeptideQ, true]);
const numbers = COLUMNS.filter(c => c[2]).map(c => c[1]);
const numeric = hits.map(r => { const o = {}; for (const k of numbers) o[k] = parseFloat(r[k]); return o; });
const PAGE = 500;
let view = hits.map((_, i) => i), page = 0, sortKey = C.rank, sortUp = true, openIndex = -1;
const filters = {};
function buildControls() {
  const box = document.getElementById('hitcontrols');
  html('span', { id: 'hitcount' }, box);
  for (const [label, key] of [['peptide', C.sequence], ['protein', C.protein], ['glycan', C.glycan], ['query', C.query]]) {
    const l = html('label', { textContent: label + ' ' }, box);
    const input = html('input', { type: 'text', placeholder: 'contains' }, l);
    input.addEventListener('input', () => { filters[key] = input.value.trim().toUpperCase(); refresh(); });
  }
  const l = html('label', { textContent: 'FDR ≤ ' }, box);
  const fdr = html('input', { type: 'number', step: '0.001', min: '0', max: '1' }, l);
  fdr.addEventListener('input', () => { filters.fdr = fdr.value === '' ? null : +fdr.value; refresh(); });
  const td = html('select', {}, box);
  for (const [v, t] of [['', 'targets and decoys'], ['T', 'targets'], ['D', 'decoys']]) html('option', { value: v, textContent: t }, td);
  td.addEventListener('change', () => { filters.td = td.value; refresh(); });
  const head = document.querySelector('#hittable thead'), tr = html('tr', {}, head);
  for (const [label, key] of COLUMNS) {
    const th = html('th', { textContent: label }, tr);
    th.dataset.key = key;
    th.addEventListener('click', () => { if (sortKey === key) sortUp = !sortUp; else { sortKey = key; sortUp = true; } refresh(); });
  }
}
function refresh() {
  view = [];
  for (let i = 0; i < hits.length; i++) {
    const r = hits[i];
    let keep = true;
    for (const key of [C.sequence, C.protein, C.glycan, C.query]) {
      const f = filters[key];
      if (f && !(key === C.sequence ? r[key].replace(/J/g, 'N') : r[key]).toUpperCase().includes(f)) keep = false;
    }
    if (filters.fdr != null && !(numeric[i][C.fdr] <= filters.fdr)) keep = false;
    if (filters.td && r[C.td] !== filters.td) keep = false;
    if (keep) view.push(i);
  }
  const isNumber = numbers.includes(sortKey), sign = sortUp ? 1 : -1;
  view.sort((a, b) => {
    const x = isNumber ? numeric[a][sortKey] : hits[a][sortKey], y = isNumber ? numeric[b][sortKey] : hits[b][sortKey];
    return (x < y ? -1 : x > y ? 1 : 0) * sign || a - b;
  });
  page = Math.min(page, Math.max(0, Math.ceil(view.length / PAGE) - 1));
  renderPage();
}
function renderPage() {
  const body = document.querySelector('#hittable tbody');
  const rows = [];
  const first = page * PAGE, last = Math.min(view.length, first + PAGE);
  for (let k = first; k < last; k++) {
    const i = view[k], r = hits[i], tr = document.createElement('tr');
    tr.dataset.hit = i;
    if (r[C.td] === 'D') tr.className = 'decoy';
    if (i === openIndex) tr.classList.add('open');
    for (const [, key, isNumber] of COLUMNS) {
      const td = document.createElement('td');
      td.textContent = key === C.sequence ? r[key].replace(/J/g, 'N') : r[key];
      if (isNumber) td.className = 'num';
      tr.appendChild(td);
    }
    rows.push(tr);
  }
  body.replaceChildren(...rows);
  document.getElementById('hitcount').textContent = `${view.length} of ${hits.length} hits (${data.cut})`;
  for (const th of document.querySelectorAll('#hittable th'))
    th.className = +th.dataset.key === sortKey ? (sortUp ? 'sorted-asc' : 'sorted-desc') : '';
  const pager = document.getElementById('pager');
  pager.textContent = '';
  const pages = Math.ceil(view.length / PAGE);
  if (pages > 1) {
    html('button', { textContent: '◀', disabled: page === 0, onclick: () => { page--; renderPage(); } }, pager);
    html('span', { textContent: `rows ${first + 1}–${last} of ${view.length}` }, pager);
    html('button', { textContent: '▶', disabled: page + 1 >= pages, onclick: () => { page++; renderPage(); } }, pager);
  }
}
function markOpen(i) {
  openIndex = i;
  for (const tr of document.querySelectorAll('#hittable tbody tr.open')) tr.classList.remove('open');
  const tr = document.querySelector(`#hittable tbody tr[data-hit="${i}"]`);
  if (tr) tr.classList.add('open');
}
document.querySelector('#hittable tbody').addEventListener('click', ev => {
  const tr = ev.target.closest('tr');
  if (tr) showHit(+tr.dataset.hit);
});
document.addEventListener('keydown', ev => {
  if (openIndex < 0 || ev.target.tagName === 'INPUT') return;
  if (ev.key === 'Escape') closeHit();
  const at = view.indexOf(openIndex);
  if (ev.key === 'ArrowRight' && at + 1 < view.length) showHit(view[at + 1]);
  if (ev.key === 'ArrowLeft' && at > 0) showHit(view[at - 1]);
});

drawHistogram();
drawFdrCurve();
buildControls();
refresh();
window.addEventListener('hashchange', openFromHash);
// How long the page took to become usable, from the start of loading; the
// number is what a 20,000-hit report is measured by.
console.info(`QuorinGlyco report: ${hits.length} hits ready after ${Math.round(performance.now())} ms`);
openFromHash();
})();
)JS";
