// The page script: one hit, drawn when opened from the embedded spectra: the
// annotated mirror plot, the peptide with its ion ladder, the glycan in symbols.
// Plain browser JavaScript without libraries, so that the file stands alone.
#include "report/ReportPage.h"

const char* const kScriptHitPanel = R"JS(
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
  const kind = row[C.td] === 'D' ? ' — decoy hit' : ' — target hit';
  const q = data.qvalues ? row[C.q] : null;
  if (q) {
    fact('glycopeptide q', (q[Q.glycopeptide] || '—') + kind);
    fact('q-values', `peptide ${q[Q.peptide] || '—'}, glycan ${q[Q.glycan] || '—'}`);
    fact('FDR (target-decoy estimate)', row[C.fdr]);
    if (q[Q.isobaric]) fact('isobaric glycans', q[Q.isobaric]);
  } else {
    fact('FDR', row[C.fdr] + kind);
  }
  // The site: the q-values' choice where they made one, with its probability
  // and the positions the spectrum can't tell from it.
  if (q && q[Q.siteProbability]) {
    const site = q[Q.site] && q[Q.site] !== row[C.site] ? `${q[Q.site]} (the result line says ${row[C.site]})` : row[C.site];
    fact('site', `${site}, probability ${q[Q.siteProbability]}` +
      (q[Q.siteCandidates] ? `; not told apart from ${q[Q.siteCandidates].split(';').join(', ')}` : '; no other sequon fits as well'));
  }
  const errorPpm = (parseFloat(row[C.shift]) - parseFloat(row[C.glycanMass])) / parseFloat(row[C.queryMH]) * 1e6;
  let massError = Number.isFinite(errorPpm) ? `${errorPpm.toFixed(2)} ppm (${row[C.glycan]})` : '—';
  if (q && q[Q.glycanName] && q[Q.glycanName] !== row[C.glycan] && q[Q.massErrorPpm])
    massError += `; the q-values call ${q[Q.glycanName]}: ${q[Q.massErrorPpm]} ppm`;
  fact('glycan mass error', massError);
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
)JS";
