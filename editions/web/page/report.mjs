// A report in words and elements of the page. Text is never taken as markup.

const number = (value) => value.toLocaleString('en').replaceAll(',', '\u202f').replace('-', '−');
const plural = (count, one, many) => `${number(count)} ${count === 1 ? one : many}`;

function make(tag, text = '', attributes = {}) {
  const element = document.createElement(tag);
  element.textContent = text;
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  return element;
}

/** One sentence, and whether it is a good one. */
export function verdictOf({ valid, topology, elements }) {
  if (!valid) return { words: 'Damaged: elements have nodes that are not there.', isGood: false };
  const { dim, open, non_manifold: shared, pieces } = topology;
  const several = pieces > 1 ? `, ${number(pieces)} pieces` : '';
  if (dim === 0) return { words: Object.keys(elements).length === 0 ? 'No element.' : `No faces or solids${several}.`, isGood: false };
  const bad = plural(shared, dim === 2 ? 'edge' : 'face', dim === 2 ? 'edges' : 'faces') + ' of 3 or more ' + (dim === 2 ? 'elements' : 'solids');
  if (dim === 3) return { words: `Solid: ${plural(open, 'face', 'faces')} on the boundary${shared > 0 ? `, ${bad}` : ''}${several}.`, isGood: shared === 0 };
  if (open + shared === 0) return { words: `Closed: no free edges${several}.`, isGood: true };
  const parts = [open > 0 ? plural(open, 'free edge', 'free edges') : '', shared > 0 ? bad : ''].filter((part) => part !== '');
  return { words: `${open > 0 ? 'Open' : 'Not manifold'}: ${parts.join(', ')}${several}.`, isGood: false };
}

// A line of the table of counts: faults are shown as such.
const line = (name, value, isFault = false) => ({ name, value, isFault });

function topologyLines({ dim, sides, open, non_manifold: shared, pieces, unused_nodes: unused }, report) {
  const lines = [line('Pieces', pieces), line('Unused nodes', unused, true)];
  const euler = line('Nodes − edges + elements', report.used_nodes + report.measured_elements - sides);
  if (dim === 2) lines.push(line('Edges', sides), line('Free edges', open, true), line('Edges of 3 or more elements', shared, true), euler);
  if (dim === 3) lines.push(line('Faces', sides), line('Faces on the boundary', open), line('Faces of 3 or more solids', shared, true));
  return lines;
}

function countLines(report) {
  const lines = [line('Format', `${report.format}, ${report.encoding}`), line('Nodes', report.nodes)];
  for (const [type, count] of Object.entries(report.elements)) lines.push(line(type, count));
  if (report.elements_removed > 0) lines.push(line('Degenerate, not kept', report.elements_removed, true));
  if (report.elements_left_out > 0) lines.push(line('Of types that are not read', report.elements_left_out, true));
  if (report.includes_left_out > 0) lines.push(line('Other files named, not read', report.includes_left_out, true));
  if (report.box) lines.push(line('Size', report.box[1].map((high, k) => (high - report.box[0][k]).toPrecision(4)).join(' × ')));
  return report.valid ? lines.concat(topologyLines(report.topology, report)) : lines;
}

function cellOf({ value, isFault } = { value: '–' }) {
  return make('td', typeof value === 'number' ? number(value) : value, isFault && value > 0 ? { class: 'bad' } : {});
}

// With another column of what was before a repair.
function countRows(report, before) {
  const head = make('tr');
  head.append(make('td'), ...['Before', 'Now'].map((name) => make('th', name, { scope: 'col' })));
  const past = before && new Map(countLines(before).map((one) => [one.name, one]));
  const rows = countLines(report).map((one) => {
    const row = make('tr');
    row.append(make('th', one.name, { scope: 'row' }), ...(past ? [cellOf(past.get(one.name))] : []), cellOf(one));
    return row;
  });
  return past ? [head, ...rows] : rows;
}

function histogram({ histogram: bins, inverted }) {
  const most = Math.max(1, ...bins);
  const words = bins.map((count, k) => `${number(count)} from ${k / 10} to ${(k + 1) / 10}`).filter((_, k) => bins[k] > 0);
  const bars = make('div', '', { class: 'bars', role: 'img', 'aria-label': `Qualities: ${words.join(', ')}${inverted > 0 ? `, ${number(inverted)} inverted` : ''}` });
  for (const count of bins) {
    const bar = make('span');
    bar.style.height = `${(100 * count) / most}%`;
    bars.append(bar);
  }
  return bars;
}

// Buttons, each of which brings a point into view.
function placeList(places, approach) {
  const list = make('ul', '', { class: 'places' });
  for (const { words, label, centre } of places) {
    const button = make('button', words, { type: 'button', 'aria-label': `${label}: bring into view` });
    button.addEventListener('click', () => approach(centre));
    const item = make('li');
    item.append(button);
    list.append(item);
  }
  return list;
}

function worstPlaces({ worst }) {
  return worst.map(({ element, quality, centre }) => {
    const words = quality === null ? 'not a number' : quality.toFixed(4);
    return { words, label: `Element ${element}, quality ${words}`, centre };
  });
}

function chainPart({ count, longest }, name, approach) {
  const places = longest.map(({ edges, middle }) => {
    const words = plural(edges, 'edge', 'edges');
    return { words, label: `${name}, ${words}`, centre: middle };
  });
  const some = count > longest.length ? `; the ${longest.length} longest of ${number(count)}` : '';
  return count === 0 ? [] : [make('h3', `${name}${some}`), placeList(places, approach)];
}

/** Chains of free edges, round holes, and of edges of three or more elements: one click brings each into view. */
export function chainParts({ free, shared }, approach) {
  return [...chainPart(free, 'Free edges', approach), ...chainPart(shared, 'Edges of 3 or more elements', approach)];
}

function shapePart(shape, approach) {
  const spread = ['min', 'mean', 'max'].map((name) => (shape[name] === null ? '–' : shape[name].toFixed(3)));
  return [
    make('h3', `Quality of ${shape.type} (1 is ideal)`),
    make('p', `least ${spread[0]}, mean ${spread[1]}, most ${spread[2]}${shape.inverted > 0 ? `; ${number(shape.inverted)} inverted` : ''}`),
    histogram(shape),
    make('p', 'Worst elements; a click goes there:'),
    placeList(worstPlaces(shape), approach),
  ];
}

/**
 * Rows of the table of counts, and a part for each type of elements. `approach` is told where one is, and `before` is the
 * report before a repair.
 */
export function reportParts(report, approach, before) {
  return { counts: countRows(report, before), shapes: (report.shapes ?? []).flatMap((shape) => shapePart(shape, approach)) };
}
