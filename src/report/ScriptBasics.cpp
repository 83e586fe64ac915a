// The page script, first part: the embedded data, its columns and colours, and
// helpers that make SVG and HTML elements and chart frames.
// Plain browser JavaScript without libraries, so that the file stands alone.
#include "report/ReportPage.h"

const char* const kScriptBasics = R"JS(
const data = JSON.parse(document.getElementById('report-data').textContent);
const hits = data.hits;
// Columns of a hit row: the 28 of the ranked result file, the rank, and with a
// q-value file the hit's values of those columns (in the order of Q).
const C = { query: 0, library: 1, queryMH: 2, libraryMH: 3, charge: 4, sequence: 5, mods: 6,
  shift: 7, glycanMass: 8, glycan: 9, site: 10, motif: 11, candidates: 12, yIons: 13,
  pepIons: 15, dps: 17, ps: 18, score: 19, td: 20, dpsIons: 21, protein: 23, previous: 24,
  last: 25, start: 26, fdr: 27, rank: 28, q: 29, glycopeptideQ: 30 };
const Q = { peptide: 0, glycan: 1, glycopeptide: 2, isobaric: 3, siteProbability: 4, siteCandidates: 5,
  site: 6, massErrorPpm: 7, glycanName: 8 };
// The glycopeptide q-value as a column of its own, for the table to sort by.
if (data.qvalues) for (const row of hits) row.push(row[C.q][Q.glycopeptide]);
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
)JS";
