// The page script, last part: the sortable, filterable hit table, and the start.
// Plain browser JavaScript without libraries, so that the file stands alone.
#include "report/ReportPage.h"

const char* const kScriptHitTable = R"JS(
const COLUMNS = [
  ['#', C.rank, true], ['query', C.query], ['peptide', C.sequence], ['modifications', C.mods],
  ['z', C.charge, true], ['glycan (Hex-HexNAc-NeuAc-NeuGc-dHex)', C.glycan], ['site', C.site], ['protein', C.protein],
  ['score', C.score, true], ['FDR', C.fdr, true], ['T/D', C.td], ['b/y', C.pepIons, true],
  ['Y', C.yIons, true]];
// With q-values the glycopeptide q leads; the FDR column is the target-decoy estimate beside it.
if (data.qvalues) COLUMNS.splice(9, 1, ['glycopeptide q', C.glycopeptideQ, true], ['FDR (target-decoy)', C.fdr, true]);
const CUTS = data.qvalues ? [['glycopeptide q ≤ ', C.glycopeptideQ], ['FDR ≤ ', C.fdr]] : [['FDR ≤ ', C.fdr]];
const numbers = COLUMNS.filter(c => c[2]).map(c => c[1]);
const numeric = hits.map(r => { const o = {}; for (const k of numbers) o[k] = parseFloat(r[k]); return o; });
const PAGE = 500;
let view = hits.map((_, i) => i), page = 0, sortKey = data.followsQ ? C.glycopeptideQ : C.rank, sortUp = true, openIndex = -1;
const filters = {};
function buildControls() {
  const box = document.getElementById('hitcontrols');
  html('span', { id: 'hitcount' }, box);
  for (const [label, key] of [['peptide', C.sequence], ['protein', C.protein], ['glycan', C.glycan], ['query', C.query]]) {
    const l = html('label', { textContent: label + ' ' }, box);
    const input = html('input', { type: 'text', placeholder: 'contains' }, l);
    input.addEventListener('input', () => { filters[key] = input.value.trim().toUpperCase(); refresh(); });
  }
  for (const [label, key] of CUTS) {
    const l = html('label', { textContent: label }, box);
    const cut = html('input', { type: 'number', step: '0.001', min: '0', max: '1' }, l);
    cut.addEventListener('input', () => { filters['cut' + key] = cut.value === '' ? null : +cut.value; refresh(); });
  }
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
    for (const [, key] of CUTS) if (filters['cut' + key] != null && !(numeric[i][key] <= filters['cut' + key])) keep = false;
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
)JS";
