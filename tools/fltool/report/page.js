'use strict';
(() => {
// Whatever comes from a file becomes text of the document and never markup.
const data = JSON.parse(document.getElementById('data').textContent);
const rows = data.rows;
const state = {language: data.language === 'zh' ? 0 : 1, theme: 'auto', search: '', tables: {}, zoom: {}, measure: {}};
const details = data.details.slice();
const waiting = {};
let updaters = [];  // what follows the search

// ---------------------------------------------------------------- words and numbers

const fill = (text, values) => text.replace(/\{(\d)\}/g, (place, i) => i < values.length ? values[i] : place);
const t = (name, ...values) => fill((data.texts[name] || [name, name])[state.language], values);
const has = name => Object.hasOwn(data.texts, name);
/** A word with its value behind it, as the language has it. */
const labelled = (name, value) => t('labelled', t(name), value);
const locale = () => state.language === 0 ? 'zh-CN' : 'en';
// A format takes a browser as long as some hundred numbers.
const formats = {};
const formatted = (value, digits) => (formats[locale() + digits] ||= new Intl.NumberFormat(locale(), {maximumFractionDigits: digits})).format(value);
const number = value => typeof value === 'number' ? formatted(value, 3) : '';
function size(bytes) {
  let unit = 0;
  while (bytes >= 1024 && unit < 4) { bytes /= 1024; ++unit; }
  return formatted(bytes, unit && bytes < 100 ? 1 : 0) + ' ' + ['B', 'KB', 'MB', 'GB', 'TB'][unit];
}
const kindName = kind => has(kind) ? t(kind) : kind.replace(/^FLT_/, '').toLowerCase().replace(/_/g, ' ');
const revision = value => value ? (value / 100).toFixed(value % 10 ? 2 : 1) : '';
/** Characters that cannot be seen, or that turn the text around them, as what they are. */
function visible(text) {
  return String(text).replace(/[\u0000-\u0009\u000b-\u001f\u007f-\u009f\u061c\u200b-\u200f\u2028-\u202e\u2066-\u2069\ufeff]/g, character => {
    const code = character.charCodeAt(0);
    if (code < 0x20) return String.fromCharCode(0x2400 + code);
    return '\u27e8U+' + code.toString(16).toUpperCase().padStart(4, '0') + '\u27e9';
  });
}
const oneLine = text => visible(text).replace(/\n/g, '\u21b5');
const shortened = (text, most) => { const all = [...text]; return all.length > most ? all.slice(0, Math.max(most - 1, 1)).join('') + '\u2026' : text; };
/** As much of the text as goes into that many pixels, about. */
function fitted(text, room) {
  const wide = character => character.codePointAt(0) >= 0x1100 ? 12.5 : 7;
  const all = [...text];
  let width = 0, fits = 0;
  while (fits < all.length && width + wide(all[fits]) <= room) width += wide(all[fits++]);
  return fits === all.length ? text : shortened(text, Math.max(fits, 2));
}

// ---------------------------------------------------------------- elements

function put(element, attributes, children) {
  for (const [name, value] of Object.entries(attributes || {})) {
    if (value === undefined || value === null || value === false) continue;
    if (name.startsWith('on')) element.addEventListener(name.slice(2), value);
    else element.setAttribute(name, value === true ? '' : value);
  }
  for (const child of children.flat(3)) if (child !== null && child !== undefined && child !== false) element.append(child);
  return element;
}
const el = (tag, attributes, ...children) => put(document.createElement(tag), attributes, children);
const svg = (tag, attributes, ...children) => put(document.createElementNS('http://www.w3.org/2000/svg', tag), attributes, children);
const tip = document.getElementById('tip');
function showTip(text, box) {
  tip.textContent = text;
  tip.hidden = false;
  const own = tip.getBoundingClientRect();
  tip.style.left = Math.max(4, Math.min(box.left + 8, innerWidth - own.width - 8)) + 'px';
  tip.style.top = (box.bottom + own.height + 8 < innerHeight ? box.bottom + 4 : Math.max(4, box.top - own.height - 4)) + 'px';
}
const hideTip = () => { tip.hidden = true; };
const matches = (text, words) => words.every(word => text.includes(word));
const wordsOf = text => text.toLowerCase().split(/\s+/).filter(Boolean);
/** The text with what is searched for marked. */
function marked(text) {
  const shown = visible(text), words = wordsOf(state.search);
  const first = words.length ? shown.toLowerCase().indexOf(words[0]) : -1;
  if (first < 0 || shown.toLowerCase().length !== shown.length) return el('bdi', {}, shown);
  return el('bdi', {}, shown.slice(0, first), el('mark', {}, shown.slice(first, first + words[0].length)), shown.slice(first + words[0].length));
}

// ---------------------------------------------------------------- tables

const kRows = 25;
/**
 * A table that sorts and filters. A column has a key of the rows, or `value(row)`; `number` and
 * `size` are shown as such, `show(row)` gives an element.
 */
function table(id, columns, list, sortBy) {
  const kept = state.tables[id] ||= {sort: sortBy ? sortBy.replace('-', '') : '', down: !!sortBy && sortBy[0] === '-', filter: '', shown: kRows};
  const valueOf = (column, row) => column.value ? column.value(row) : row[column.key];
  const searchable = [];  // of each row, once something is searched for
  const textOf = i => searchable[i] ??= columns.map(column => {
    const value = valueOf(column, list[i]);
    return value === undefined || value === null ? '' : column.text ? column.text(list[i]) : visible(value);
  }).join('\n').toLowerCase();
  const body = el('tbody'), count = el('span', {class: 'faint', role: 'status'});
  const more = el('button', {onclick: () => { kept.shown += 40 * kRows; update(); }}, t('showMore'));
  const heads = columns.map(column => el('th', {class: column.number || column.size ? 'number' : null, scope: 'col'},
    el('button', {'data-sort': column.key, onclick: () => {
      if (kept.sort === column.key) kept.down = !kept.down;
      else { kept.sort = column.key; kept.down = !!(column.number || column.size); }
      update();
    }}, t(column.title || column.key))));
  function cell(column, row) {
    if (column.show) return column.show(row);
    const value = valueOf(column, row);
    if (value === undefined || value === null) return '';
    if (column.size) return size(value);
    return typeof value === 'number' ? number(value) : marked(value);
  }
  function update() {
    const words = wordsOf(state.search + ' ' + kept.filter);
    const order = [];
    for (let i = 0; i < list.length; ++i) if (!words.length || matches(textOf(i), words)) order.push(i);
    const column = columns.find(each => each.key === kept.sort);
    if (column) {
      const keys = list.map(row => { const value = valueOf(column, row); return value === undefined || value === null ? '' : value; });
      const compare = (a, b) => typeof a === 'number' && typeof b === 'number' ? a - b : String(a) < String(b) ? -1 : String(a) > String(b) ? 1 : 0;
      order.sort((a, b) => (kept.down ? compare(keys[b], keys[a]) : compare(keys[a], keys[b])) || a - b);
    }
    columns.forEach((each, i) => heads[i].setAttribute('aria-sort', each.key !== kept.sort ? 'none' : kept.down ? 'descending' : 'ascending'));
    body.replaceChildren(...order.slice(0, kept.shown).map(i => el('tr', {}, columns.map(each =>
      el('td', {class: each.number || each.size ? 'number' : each.kind || null}, cell(each, list[i]))))));
    count.textContent = t('rowsShown', number(Math.min(order.length, kept.shown)), number(list.length));
    more.hidden = order.length <= kept.shown;
  }
  updaters.push(update);
  update();
  const filter = el('input', {type: 'search', placeholder: t('filter'), 'aria-label': t('filter'), value: kept.filter,
    oninput: event => { kept.filter = event.target.value; update(); }});
  return el('div', {id: 'table-' + id}, el('div', {class: 'tools'}, list.length > 8 && filter, count),
    el('div', {class: 'scroll'}, el('table', {}, el('thead', {}, el('tr', {}, heads)), body)), more);
}

// ---------------------------------------------------------------- charts

const kKinds = ['FLT_GROUP', 'FLT_OBJECT', 'FLT_LOD', 'FLT_SWITCH', 'FLT_EXTERNAL_REF', 'FLT_DOF'];
const kindClass = kind => { const i = kKinds.indexOf(kind); return i < 0 ? kKinds.length : i; };

/** The hierarchy as an icicle: one row for each level, widths as faces or bytes. */
function icicle(id, hierarchy) {
  const [kParent, kKind, kName, , kFaces, kBytes, kAllFaces, kAllBytes] = [0, 1, 2, 3, 4, 5, 6, 7];
  const nodes = hierarchy.rows, children = nodes.map(() => []);
  for (let i = 1; i < nodes.length; ++i) children[nodes[i][kParent]].push(i);
  state.measure[id] ||= nodes[0][kAllFaces] ? 'faces' : 'bytes';
  const all = i => nodes[i][state.measure[id] === 'faces' ? kAllFaces : kAllBytes];
  const own = i => nodes[i][state.measure[id] === 'faces' ? kFaces : kBytes];
  const kWidth = 1000, kRow = 24, kLevels = 12, kLeast = .8;
  const picture = svg('svg', {class: 'icicle', role: 'tree', 'aria-label': t('hierarchy')});
  const path = el('div', {class: 'tools', 'data-path': ''});
  let groups = {};
  const withOwn = (all, own) => t('aside', all, t('ownFaces') + ' ' + own);
  const describe = i => [t('aside', oneLine(nodes[i][kName]) || t('none'), kindName(nodes[i][kKind])),
    labelled('faces', withOwn(number(nodes[i][kAllFaces]), number(nodes[i][kFaces]))),
    labelled('bytes', withOwn(size(nodes[i][kAllBytes]), size(nodes[i][kBytes]))), labelled('offset', nodes[i][3])].join('\n');
  const parentOf = i => nodes[i][kParent];
  function zoom(i) {
    state.zoom[id] = i;
    hideTip();
    draw();
    focus(i);
  }
  function focus(i) {
    if (!groups[i]) return;
    for (const group of Object.values(groups)) group.setAttribute('tabindex', '-1');
    groups[i].setAttribute('tabindex', '0');
    groups[i].focus({preventScroll: true});
  }
  function onKey(event, i) {
    const siblings = (i ? children[parentOf(i)] : [0]).filter(each => groups[each]);
    const at = siblings.indexOf(i);
    const next = {ArrowRight: siblings[at + 1], ArrowLeft: siblings[at - 1], ArrowUp: i === state.zoom[id] ? undefined : parentOf(i),
      ArrowDown: children[i].find(each => groups[each]), Home: siblings[0], End: siblings[siblings.length - 1]}[event.key];
    if (event.key === 'Enter' || event.key === ' ') zoom(i);
    else if (event.key === 'Escape' || event.key === 'Backspace') zoom(parentOf(state.zoom[id]));
    else if (next !== undefined) focus(next);
    else if (!event.key.startsWith('Arrow')) return;
    event.preventDefault();
  }
  function draw() {
    const root = state.zoom[id] ||= 0, words = wordsOf(state.search);
    groups = {};
    const boxes = [];
    let deepest = 0;
    const open = [[root, 0, kWidth, 0]];
    while (open.length && boxes.length < 6000) {
      const [i, left, width, level] = open.pop();
      boxes.push([i, left, width, level]);
      deepest = Math.max(deepest, level);
      if (level + 1 >= kLevels || !all(i)) continue;
      let at = left + width * own(i) / all(i);
      for (const child of children[i]) {
        const share = width * all(child) / all(i);
        if (share >= kLeast) open.push([child, at, share, level + 1]);
        at += share;
      }
    }
    picture.setAttribute('viewBox', `0 0 ${kWidth} ${(deepest + 1) * kRow + 2}`);
    picture.replaceChildren(...boxes.map(([i, left, width, level]) => {
      const name = oneLine(nodes[i][kName]) || kindName(nodes[i][kKind]);
      const isMatch = words.length && matches(name.toLowerCase(), words);
      return groups[i] = svg('g', {class: isMatch ? 'match' : null, role: 'treeitem', 'aria-level': level + 1, tabindex: i === root ? 0 : -1,
        'aria-label': describe(i), 'data-node': i, onclick: () => zoom(i), onkeydown: event => onKey(event, i),
        onfocus: event => showTip(describe(i), event.currentTarget.getBoundingClientRect()), onblur: hideTip,
        onmousemove: event => showTip(describe(i), {left: event.clientX, top: event.clientY, bottom: event.clientY + 12}), onmouseleave: hideTip},
        svg('rect', {class: 'k' + kindClass(nodes[i][kKind]), x: left, y: level * kRow + 1, width: Math.max(width, .5), height: kRow - 1}),
        width > 34 && svg('text', {x: left + 4, y: level * kRow + 17}, fitted(name, width - 8)));
    }));
    const way = [];
    for (let i = root; ; i = parentOf(i)) { way.unshift(i); if (i === 0) break; }
    path.replaceChildren(el('button', {disabled: root === 0, 'data-action': 'out', onclick: () => zoom(parentOf(root))}, t('zoomOut')),
      el('button', {disabled: root === 0, 'data-action': 'all', onclick: () => zoom(0)}, t('zoomAll')),
      ...['faces', 'bytes'].map(each => el('button', {'aria-pressed': state.measure[id] === each ? 'true' : 'false', 'data-measure': each,
        onclick: () => { state.measure[id] = each; draw(); path.querySelector(`[data-measure=${each}]`).focus(); }}, t(each === 'faces' ? 'byFaces' : 'byBytes'))),
      el('span', {class: 'faint'}, way.map((i, at) => [at ? ' \u203a ' : '', el('bdi', {}, oneLine(nodes[i][kName]) || kindName(nodes[i][kKind]))])));
  }
  draw();
  updaters.push(draw);
  const find = () => {
    const words = wordsOf(state.search);
    const found = words.length ? nodes.findIndex(node => matches(oneLine(node[kName]).toLowerCase(), words)) : -1;
    if (found >= 0) { zoom(found); picture.scrollIntoView({block: 'center'}); }
  };
  const count = () => { const words = wordsOf(state.search); return words.length ? nodes.filter(node => matches(oneLine(node[kName]).toLowerCase(), words)).length : 0; };
  const legend = el('p', {class: 'legend'}, [...kKinds, ''].map((kind, i) => nodes.some(node => kindClass(node[kKind]) === i) &&
    el('span', {}, el('i', {class: 'i' + i}), kind ? kindName(kind) : '\u2026')));
  return {element: el('div', {id: 'icicle'}, el('p', {class: 'faint'}, t('hierarchyHint')), path, picture, legend,
    hierarchy.leftOut > 0 && el('p', {class: 'faint'}, t('leftOut', number(hierarchy.leftOut)))), find, count};
}

const tidy = most => { const step = 10 ** Math.floor(Math.log10(most || 1)); return [1, 2, 5, 10].map(each => each * step).find(each => each >= most / 5) || step; };

/** How many faces show at each distance. */
function stepChart(steps) {
  const kWidth = 1000, kHeight = 240, kLeft = 70, kBottom = 26, kTop = 10;
  const most = Math.max(...steps.map(step => step.faces), 1), last = steps[steps.length - 1].distance;
  const end = last * 1.25 || 1;
  const nearest = steps.find(step => step.distance > 0)?.distance || 1;
  const isLog = end / nearest > 40;
  const x = distance => kLeft + (kWidth - kLeft - 10) * (isLog ? Math.log1p(distance / nearest) / Math.log1p(end / nearest) : distance / end);
  const y = faces => kTop + (kHeight - kTop - kBottom) * (1 - faces / most);
  const parts = [];
  const rise = Math.max(tidy(most) * (tidy(most) * 5 < most ? 2 : 1), 1);
  for (let faces = 0; faces <= most; faces += rise)
    parts.push(svg('line', {class: 'axis', x1: kLeft, x2: kWidth - 10, y1: y(faces), y2: y(faces)}), svg('text', {class: 'faint', x: kLeft - 6, y: y(faces) + 4, 'text-anchor': 'end'}, number(faces)));
  let free = -Infinity;
  steps.forEach((step, i) => {
    const from = x(step.distance), to = x(i + 1 < steps.length ? steps[i + 1].distance : end);
    const range = `${t('from')} ${number(step.distance)}${i + 1 < steps.length ? ` ${t('to')} ${number(steps[i + 1].distance)}` : ''}`;
    const text = t('labelled', range, `${number(step.faces)} ${t('faces')}`);
    parts.push(svg('rect', {class: 'step', x: from, y: y(step.faces), width: Math.max(to - from - .5, .5), height: Math.max(kHeight - kBottom - y(step.faces), 0), tabindex: 0, 'aria-label': text,
      onfocus: event => showTip(text, event.currentTarget.getBoundingClientRect()), onblur: hideTip,
      onmousemove: event => showTip(text, {left: event.clientX, top: event.clientY, bottom: event.clientY + 12}), onmouseleave: hideTip}));
    if (from < free) return;
    free = from + 60;
    parts.push(svg('text', {class: 'faint', x: from, y: kHeight - 8, 'text-anchor': i ? 'middle' : 'start'}, number(Math.round(step.distance * 10) / 10)));
  });
  return svg('svg', {viewBox: `0 0 ${kWidth} ${kHeight}`, role: 'img', 'aria-label': t('steps'), id: 'steps-chart'}, parts);
}

/** Bars with a word before each: [word, value, shown value]. */
function bars(list, label) {
  const kWidth = 460, kRow = 20, kLeft = 150, most = Math.max(...list.map(each => each[1]), 1);
  return svg('svg', {class: 'bars', viewBox: `0 0 ${kWidth} ${list.length * kRow + 4}`, role: 'img', 'aria-label': label},
    list.map(([word, value, shown, href], i) => {
      const text = svg('text', {x: kLeft - 6, y: i * kRow + 15, 'text-anchor': 'end'}, shortened(word, 22), svg('title', {}, word));
      return [href ? svg('a', {href}, text) : text,
        svg('rect', {x: kLeft, y: i * kRow + 3, width: Math.max((kWidth - kLeft - 80) * value / most, value ? 1 : 0), height: kRow - 5}),
        svg('text', {class: 'faint', x: kLeft + (kWidth - kLeft - 80) * value / most + 5, y: i * kRow + 15}, shown)];
    }));
}

/** How many models have how much, in steps of four times as much each. */
function histogram(values, word) {
  const counts = [];
  for (const value of values) { const step = value < 1 ? 0 : 1 + Math.floor(Math.log2(value) / 2); counts[step] = (counts[step] || 0) + 1; }
  const first = counts.findIndex(Boolean);
  return first < 0 ? [] : Array.from(counts).map((count, step) => [step ? `${word(4 ** (step - 1))} \u2026` : '0', count || 0, number(count || 0)]).slice(first);
}

// ---------------------------------------------------------------- all models

const folder = (() => {
  let common = rows.length > 1 ? rows[0].path.replace(/[^/]*$/, '') : '';
  for (const row of rows) while (!row.path.startsWith(common)) common = common.replace(/[^/]*\/$/, '');
  return common;
})();
const nameOf = i => visible(rows[i].path.slice(folder.length));
const ending = (text, most) => { const all = [...text]; return all.length > most ? '\u2026' + all.slice(1 - most).join('') : text; };
const link = i => el('a', {href: '#m' + i}, marked(rows[i].path.slice(folder.length)));
const models = rows.map((row, i) => ({...row, number: i}));
const faults = row => (row.errors || 0) + (row.damage || 0) + (row.failure ? 1e9 : 0);

const kInGraph = 80;
/**
 * The models that the graph shows, where they are too many: of each level below those that nothing
 * refers to about as many, first what a model refers to that is shown, then what has most references.
 */
function pickLinked(linked, into, degree) {
  if (linked.length <= kInGraph) return linked;
  const below = rows.map(() => -1), levels = [];
  const walk = starts => {
    for (const start of starts) below[start] = 0;
    for (let level = starts; level.length;) {
      const next = [];
      for (const i of level) for (const to of rows[i].references || []) if (below[to] < 0) { below[to] = below[i] + 1; next.push(to); }
      level = next;
    }
  };
  walk(linked.filter(i => !into[i]));
  walk(linked.filter(i => below[i] < 0));  // rings
  for (const i of linked) (levels[below[i]] ||= []).push(i);
  // Small levels are shown whole, and leave their room to the others.
  const room = [];
  let left = kInGraph;
  levels.map((level, at) => at).sort((a, b) => levels[a].length - levels[b].length).forEach((at, done) => {
    room[at] = Math.min(levels[at].length, Math.ceil(left / (levels.length - done)));
    left -= room[at];
  });
  const isReferred = rows.map(() => false), shown = [];
  levels.forEach((level, at) => {
    level.sort((a, b) => isReferred[b] - isReferred[a] || degree(b) - degree(a) || (rows[b].faces || 0) - (rows[a].faces || 0) || a - b);
    for (const i of level.slice(0, room[at])) {
      shown.push(i);
      for (const to of rows[i].references || []) isReferred[to] = true;
    }
  });
  return shown.sort((a, b) => a - b);
}
function graph() {
  const into = rows.map(() => 0);
  for (const row of rows) for (const to of row.references || []) ++into[to];
  const linked = rows.map((row, i) => i).filter(i => into[i] || (rows[i].references || []).length);
  if (!linked.length) return el('p', {class: 'faint'}, t('graphNone'));
  const degrees = rows.map((row, i) => into[i] + (row.references || []).length), degree = i => degrees[i];
  const shown = pickLinked(linked, into, degree);
  const isShown = new Set(shown), edges = shown.flatMap(i => [...new Set(rows[i].references)].filter(to => isShown.has(to) && to !== i).map(to => [i, to]));
  // The longest way from what nothing refers to; what refers back to itself ends at its number of models.
  const level = new Map(shown.map(i => [i, 0]));
  for (let pass = 0, changed = true; changed && pass < 24; ++pass) {
    changed = false;
    for (const [a, b] of edges) if (level.get(b) < level.get(a) + 1 && level.get(a) < 23) { level.set(b, level.get(a) + 1); changed = true; }
  }
  const kColumn = 230, kRow = 18, columns = [];
  for (const i of shown) (columns[level.get(i)] ||= []).push(i);
  const filled = columns.filter(Boolean), height = Math.max(...filled.map(each => each.length)) * kRow + 16, place = new Map();
  filled.forEach((column, at) => column.forEach((i, row) => place.set(i, [14 + at * kColumn, 16 + (row + .5) * (height - 16) / column.length])));
  const lines = edges.map(([a, b]) => {
    const [x1, y1] = place.get(a), [x2, y2] = place.get(b), middle = (x1 + x2) / 2;
    return Object.assign(svg('path', {d: `M${x1} ${y1}C${middle} ${y1} ${middle} ${y2} ${x2} ${y2}`}), {ends: [a, b]});
  });
  const light = i => lines.forEach(line => line.classList.toggle('on', line.ends.includes(i)));
  const dots = shown.map(i => svg('a', {href: '#m' + i, class: faults(rows[i]) ? 'bad' : null, 'aria-label': nameOf(i), onmouseenter: () => light(i), onmouseleave: () => light(-1), onfocus: () => light(i), onblur: () => light(-1)},
    svg('circle', {cx: place.get(i)[0], cy: place.get(i)[1], r: 3 + Math.min(5, Math.sqrt(into[i]))}), svg('text', {x: place.get(i)[0] + 11, y: place.get(i)[1] + 4}, ending(nameOf(i), 28)),
    svg('title', {}, `${nameOf(i)}\n${number(rows[i].faces || 0)} ${t('faces')}`)));
  const width = filled.length * kColumn;
  return el('div', {}, el('p', {class: 'faint'}, t('ended', shown.length < linked.length ? t('joined', t('graphHint'), t('graphPart', number(shown.length), number(linked.length))) : t('graphHint'))),
    el('div', {class: 'graph', id: 'graph', tabindex: 0}, svg('svg', {width, height, viewBox: `0 0 ${width} ${height}`}, lines, dots)));
}

const card = (value, word, kind) => el('div', {class: 'card'}, el('b', {class: kind}, value), el('span', {}, word));
const cards = (figures, isAll) => el('div', {class: 'cards'},
  isAll && card(number(figures.models), t('models')), isAll && figures.unreadable > 0 && card(number(figures.unreadable), t('unreadable'), 'error'),
  card(size(figures.bytes), t('size')), card(number(figures.nodes), t('nodes')), card(number(figures.faces), t('faces')),
  !isAll && card(number(figures.depth), t('depth')), card(size(figures.textureBytes), t('textureMemory')), card(number(figures.lightPoints), t('lightPoints')),
  card(number(figures.errors), t('errors'), figures.errors ? 'error' : null), card(number(figures.warnings), t('warnings'), figures.warnings ? 'warning' : null),
  card(number(figures.hints), t('hints'), figures.hints ? 'hint' : null), figures.damage > 0 && card(number(figures.damage), t('damage'), 'error'),
  figures.missing > 0 && card(number(figures.missing), t('missing'), 'error'));
const section = (id, title, ...content) => content.flat().some(Boolean) && el('section', {}, el('h2', {id}, title), content);

function overview() {
  const readable = models.filter(row => !row.failure);
  const revisions = new Map();
  for (const row of readable) revisions.set(row.revision, (revisions.get(row.revision) || 0) + 1);
  const heavy = readable.slice().sort((a, b) => b.faces - a.faces || b.bytes - a.bytes).slice(0, 12);
  const faulty = models.filter(row => faults(row) || row.warnings).sort((a, b) => faults(b) - faults(a) || (b.warnings || 0) - (a.warnings || 0)).slice(0, 12);
  const rules = (data.totals.rules || []).slice().sort((a, b) => b.count - a.count).slice(0, 14);
  const columns = [{key: 'path', kind: 'path', value: row => row.path.slice(folder.length), show: row => link(row.number)}, {key: 'bytes', title: 'size', size: true}, {key: 'revision', show: row => revision(row.revision)},
    ...['nodes', 'faces', 'depth', 'levels', 'textures'].map(key => ({key, number: true})), {key: 'textureBytes', title: 'textureMemory', size: true},
    ...['lightPoints', 'errors', 'warnings', 'hints'].map(key => ({key, number: true})),
    ...['damage', 'missing'].filter(key => data.totals[key]).map(key => ({key, number: true}))];
  if (models.some(row => row.failure)) columns.push({key: 'failure', title: 'unreadable'});
  return [el('h1', {}, el('bdi', {}, visible(folder) || t('models'))), el('p', {class: 'faint'}, t('madeBy', data.version, visible(data.target))), cards(data.totals, true),
    section('distributions', t('distributions'), el('div', {class: 'columns'},
      el('div', {}, el('h3', {}, t('facesPerModel')), bars(histogram(readable.map(row => row.faces), number), t('facesPerModel'))),
      el('div', {}, el('h3', {}, t('bytesPerModel')), bars(histogram(readable.map(row => row.bytes), size), t('bytesPerModel'))),
      el('div', {}, el('h3', {}, t('byRevision')), bars([...revisions].sort((a, b) => a[0] - b[0]).map(([value, count]) => [revision(value) || t('none'), count, number(count)]), t('byRevision'))),
      el('div', {}, el('h3', {}, t('byRule')), rules.length ? bars(rules.map(rule => [rule.code, rule.count, number(rule.count)]), t('byRule')) : el('p', {class: 'faint'}, t('noFaults'))))),
    el('div', {class: 'columns'},
      section('heaviest', t('heaviest'), bars(heavy.map(row => [ending(nameOf(row.number), 21), row.faces, number(row.faces), '#m' + row.number]), t('heaviest'))),
      section('faulty', t('faulty'), faulty.length ? el('ul', {}, faulty.map(row => el('li', {}, link(row.number), ' ', row.failure ? el('span', {class: 'error'}, t('unreadable')) :
        el('span', {class: 'faint'}, ['errors', 'damage', 'warnings'].filter(key => key !== 'damage' || row.damage).map(key => labelled(key, number(row[key]))).reduce((a, b) => t('listed', a, b)))))) : el('p', {class: 'faint'}, t('noFaults')))),
    section('graph-section', t('graph'), graph()), section('models', t('allModels'), table('models', columns, models))];
}

// ---------------------------------------------------------------- one model

const place = values => values ? values.map(value => number(value)).join(', ') : '';
function pairs(list) { return el('dl', {}, list.filter(([, value]) => value !== '' && value !== undefined).map(([word, value]) => [el('dt', {}, word), el('dd', {}, value)])); }
const severityOf = value => el('span', {class: value}, t(value));
const kinds = {key: 'kind', value: row => kindName(row.kind)};
const yesNo = {key: 'found', value: row => t(row.found ? 'yes' : 'no'), show: row => el('span', {class: row.found ? null : 'error'}, t(row.found ? 'yes' : 'no'))};
const sentence = row => row.texts ? row.texts[state.language] : fill((data.sentences[row.code] || ['', ''])[state.language], row.values.map(visible));
const target = i => (rows[i].references || []);

function modelView(i, facts) {
  const row = rows[i], header = facts.header, statistics = facts.statistics, parts = [], ownIcicle = facts.hierarchy.rows.length ? icicle('m' + i, facts.hierarchy) : null;
  finder = ownIcicle;
  const add = (id, title, ...content) => { const made = section(id, title, ...content); if (made) parts.push([id, title, made]); };
  add('pictures', t('pictures'), facts.pictures.length ? el('div', {class: 'pictures'}, facts.pictures.map(picture => {
    const words = t('view_' + picture.view, number(picture.distance));
    return el('figure', {}, el('img', {src: picture.picture, alt: words, width: 480, height: 320, style: 'height:auto'}), el('figcaption', {}, words));
  })) : el('p', {class: 'faint'}, t('noPictures')));
  if (ownIcicle) add('hierarchy', t('hierarchy'), ownIcicle.element);
  add('steps', t('steps'), facts.steps.length > 1 ? [stepChart(facts.steps), el('p', {class: 'faint'}, t('stepsHint'))] : el('p', {class: 'faint'}, t('noSteps', number(row.faces))),
    facts.levelsOfDetail.length > 0 && table('levels' + i, [{key: 'node'}, {key: 'in', title: 'switchIn', number: true}, {key: 'out', title: 'switchOut', number: true}, {key: 'faces', number: true}, {key: 'offset', number: true}], facts.levelsOfDetail));
  add('findings', t('findings'), facts.findings.length ? table('findings' + i, [{key: 'severity', value: each => ['error', 'warning', 'hint'].indexOf(each.severity), text: each => t(each.severity), show: each => severityOf(each.severity)},
    {key: 'code', kind: 'code'}, {key: 'node'}, {key: 'sentence', value: sentence}, {key: 'offset', number: true}], facts.findings, 'severity') : el('p', {class: 'faint'}, t('noFaults')),
    (() => { const listed = facts.findings.length, all = facts.rules.reduce((sum, rule) => sum + rule.count, 0); return all > listed && el('p', {class: 'faint'}, t('leftOut', number(all - listed))); })());
  add('damage', t('damage'), facts.damageList.length > 0 && table('damage' + i, [{key: 'offset', number: true}, {key: 'text', title: 'sentence'}], facts.damageList));
  add('textures', t('textures'), facts.textureTable.length > 0 && table('textures' + i, [...(facts.textureTable.some(each => each.thumbnail) ? [{key: 'thumbnail', title: 'picture', text: () => '', show: each => each.thumbnail ? el('img', {src: each.thumbnail, alt: ''}) : ''}] : []),
    {key: 'index', number: true}, {key: 'name'}, yesNo, {key: 'width', number: true}, {key: 'height', number: true}, {key: 'memory', size: true}, {key: 'fileBytes', title: 'size', size: true}, {key: 'users', number: true}], facts.textureTable, '-users'));
  const entries = ['materials', 'lightSources', 'mappings', 'lightPointAppearances', 'lightPointAnimations'].flatMap(palette => facts.palettes[palette].map(entry => ({...entry, palette})));
  add('palettes', t('palettes'), facts.palettes.colors > 0 && el('p', {class: 'faint'}, t('colorCount', number(facts.palettes.colors))),
    entries.length > 0 && table('palettes' + i, [{key: 'palette', value: each => t(each.palette)}, {key: 'index', number: true}, {key: 'name'}, {key: 'color', text: () => '', value: each => each.color && each.color.join(), show: each => each.color ? swatch(each.color) : ''}, {key: 'users', number: true}], entries));
  const lights = facts.lightPointTable.rows;
  add('lightPoints', t('lightPoints'), lights.length > 0 && table('lights' + i, [{key: 'node'}, kinds, {key: 'points', number: true}, {key: 'intensity', number: true}, {key: 'direction', value: each => each.kind === 'FLT_LIGHT_POINT' ? t('direction' + each.directional) : ''},
    {key: 'appearance', number: true, value: each => each.appearance < 0 ? undefined : each.appearance}, {key: 'offset', number: true}], lights),
    facts.lightPointTable.leftOut > 0 && el('p', {class: 'faint'}, t('leftOut', number(facts.lightPointTable.leftOut))));
  add('references', t('references'), facts.references.length > 0 && table('references' + i, [{key: 'name', title: 'file'}, yesNo, {key: 'count', number: true}, {key: 'offset', number: true}], facts.references),
    rows.length > 1 && target(i).length > 0 && el('p', {}, target(i).map(to => [link(to), ' '])));
  add('comments', t('comments'), facts.comments.rows.length > 0 && table('comments' + i, [{key: 'node'}, {key: 'text', kind: 'long'}, {key: 'offset', number: true}], facts.comments.rows),
    facts.comments.leftOut > 0 && el('p', {class: 'faint'}, t('leftOut', number(facts.comments.leftOut))));
  add('kinds', t('kinds'), table('kinds' + i, [kinds, {key: 'count', number: true}], facts.kinds, '-count'));
  add('header', t('headerSection'), header && pairs([[t('name'), el('bdi', {}, visible(header.id))], [t('revision'), revision(header.revision)], [t('editRevision'), number(header.editRevision)], [t('date'), el('bdi', {}, visible(header.date))],
    [t('units'), has('unit' + header.units) ? t('unit' + header.units) : number(header.units)], [t('vertexStorage'), number(header.vertexStorage)], [t('origin'), number(header.origin)], [t('projection'), number(header.projection)], [t('ellipsoid'), number(header.ellipsoid)],
    [t('southWest'), place(header.southWest)], [t('northEast'), place(header.northEast)], [t('originPlace'), place(header.originPlace)], [t('lowest'), place(statistics.lowest)], [t('highest'), place(statistics.highest)]]));
  const users = rows.length > 1 ? rows.map((each, j) => j).filter(j => target(j).includes(i)) : [];
  return [heading(i), cards(row, false), users.length > 0 && el('p', {class: 'faint'}, labelled('usedBy', ''), users.slice(0, 20).map(j => [link(j), ' ']), users.length > 20 ? '\u2026' : ''),
    el('nav', {class: 'contents', 'aria-label': t('contents')}, parts.map(([id, title]) => el('a', {href: '#m' + i + '/' + id}, title))), parts.map(([, , made]) => made)];
}
function swatch(color) {
  const [red, green, blue, alpha] = color.map(value => Math.round(255 * Math.min(Math.max(Number.isFinite(value) ? value : 0, 0), 1)));
  return [el('span', {class: 'swatch', style: `background: rgb(${red} ${green} ${blue} / ${alpha / 255})`}), `${red} ${green} ${blue} ${alpha}`];
}
const heading = i => [rows.length > 1 && el('p', {}, el('a', {href: '#'}, '\u2190 ' + t('allModels'))), el('h1', {}, el('bdi', {}, visible(rows[i].path.slice(folder.length)))), el('p', {class: 'faint'}, t('madeBy', data.version, visible(data.target)))];

// Of many models the details are scripts beside the page, some models in each, since a page from a disk
// may load nothing else.
const partOf = i => data.parts.findLastIndex(first => first <= i);
const fileOf = part => '/' + part + '.js';
window.fltoolDetails = (i, path, facts) => {
  details[i] = path === rows[i]?.path ? {facts} : {problem: t('otherReport', data.folder + fileOf(partOf(i)))};
};
function load(i) {
  const part = partOf(i);
  if (waiting[part]) return;
  waiting[part] = true;
  const done = () => {
    delete waiting[part];
    details[i] ||= {problem: t('noDetails', data.folder + fileOf(part))};
    if (partOf(current().model) === part) show();
  };
  document.head.append(el('script', {src: encodeURIComponent(data.folder) + fileOf(part), onerror: done, onload: done}));
}
function model(i) {
  if (rows[i].failure) return [heading(i), el('p', {class: 'error'}, t('failure', visible(rows[i].failure)))];
  if (!data.folder) return modelView(i, details[i]);
  if (details[i]?.problem) return [heading(i), cards(rows[i], false), el('p', {class: 'error'}, details[i].problem)];
  if (details[i]) return modelView(i, details[i].facts);
  load(i);
  return [heading(i), cards(rows[i], false), el('p', {class: 'faint', role: 'status'}, t('loading'))];
}

// ---------------------------------------------------------------- the whole

let finder = null;
function current() {
  const named = /^#m(\d+)(?:\/([a-zA-Z]+))?$/.exec(location.hash);
  if (named && +named[1] < rows.length) return {model: +named[1], part: named[2]};
  return {model: rows.length === 1 ? 0 : -1};
}
const searchCount = el('span', {class: 'faint', role: 'status', id: 'matches'});
const countMatches = () => { searchCount.textContent = finder && wordsOf(state.search).length ? t('matches', number(finder.count())) : ''; };
function search(text) {
  state.search = text;
  for (const update of updaters) update();
  countMatches();
}
function applyTheme() {
  const dark = state.theme === 'dark' || (state.theme === 'auto' && matchMedia('(prefers-color-scheme: dark)').matches);
  document.documentElement.dataset.theme = dark ? 'dark' : 'light';
}
function bar() {
  const themes = ['auto', 'light', 'dark'], names = {auto: 'themeAuto', light: 'themeLight', dark: 'themeDark'};
  const input = el('input', {id: 'search', type: 'search', placeholder: t('searchHint'), 'aria-label': t('search'), value: state.search, oninput: event => search(event.target.value),
    onkeydown: event => { if (event.key === 'Enter' && finder) finder.find(); if (event.key === 'Escape') { event.target.value = ''; search(''); } }});
  document.getElementById('bar').replaceChildren(el('strong', {}, t('title')), el('span', {class: 'grow'}, input, searchCount),
    el('button', {id: 'theme', onclick: () => { state.theme = themes[(themes.indexOf(state.theme) + 1) % 3]; applyTheme(); bar(); document.getElementById('theme').focus(); }}, labelled('theme', t(names[state.theme]))),
    el('span', {role: 'group', 'aria-label': t('languageSwitch')}, ['zh', 'en'].map((each, i) => el('button', {id: 'language-' + each, lang: each, 'aria-pressed': state.language === i ? 'true' : 'false',
      onclick: () => { state.language = i; bar(); show(); document.getElementById('language-' + each).focus(); }}, i ? 'English' : '\u4e2d\u6587'))),
    el('button', {onclick: () => print()}, t('print')));
}
let shownModel = null;
function show() {
  const {model: which, part} = current();
  updaters = [];
  finder = null;
  hideTip();
  document.documentElement.lang = state.language ? 'en' : 'zh-CN';
  document.title = (which < 0 ? visible(folder) : visible(rows[which].path.replace(/.*\//, ''))) + ' \u2013 ' + t('title');
  document.getElementById('main').replaceChildren(...(which < 0 ? overview() : model(which)).flat(4).filter(Boolean));
  countMatches();
  if (part) document.getElementById(part)?.scrollIntoView();
  else if (shownModel !== null && shownModel !== which) { scrollTo(0, 0); document.getElementById('main').focus({preventScroll: true}); }
  shownModel = which;
}
addEventListener('hashchange', () => {
  const {model: which, part} = current();
  if (which === shownModel && part) document.getElementById(part)?.scrollIntoView();
  else show();
});
addEventListener('keydown', event => {
  if (event.key !== '/' || event.ctrlKey || event.metaKey || event.altKey || event.target.matches('input')) return;
  event.preventDefault();
  document.getElementById('search').focus();
});
addEventListener('scroll', hideTip, {passive: true});
// A printed table has no button that shows more.
addEventListener('beforeprint', () => { for (const kept of Object.values(state.tables)) kept.shown = Math.max(kept.shown, 80 * kRows); for (const update of updaters) update(); });
matchMedia('(prefers-color-scheme: dark)').addEventListener('change', applyTheme);
applyTheme();
bar();
show();
})();
