// A report in words and elements of the page. Text is never taken as markup.

const number = (value) => value.toLocaleString('en').replaceAll(',', '\u202f');
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

function countRow(name, value, isFault = false) {
  const row = make('tr');
  row.append(make('th', name, { scope: 'row' }), make('td', typeof value === 'number' ? number(value) : value, isFault && value > 0 ? { class: 'bad' } : {}));
  return row;
}

function topologyRows({ dim, sides, open, non_manifold: shared, pieces, unused_nodes: unused }, report) {
  const rows = [countRow('Pieces', pieces), countRow('Unused nodes', unused, true)];
  if (dim === 2) {
    rows.push(countRow('Edges', sides), countRow('Free edges', open, true), countRow('Edges of 3 or more elements', shared, true));
    rows.push(countRow('Nodes − edges + elements', report.used_nodes + report.measured_elements - sides));
  }
  if (dim === 3) rows.push(countRow('Faces', sides), countRow('Faces on the boundary', open), countRow('Faces of 3 or more solids', shared, true));
  return rows;
}

function countRows(report) {
  const rows = [countRow('Format', `${report.format}, ${report.encoding}`), countRow('Nodes', report.nodes)];
  for (const [type, count] of Object.entries(report.elements)) rows.push(countRow(type, count));
  if (report.elements_removed > 0) rows.push(countRow('Degenerate, not kept', report.elements_removed, true));
  if (report.elements_left_out > 0) rows.push(countRow('Of types that are not read', report.elements_left_out, true));
  if (report.includes_left_out > 0) rows.push(countRow('Other files named, not read', report.includes_left_out, true));
  if (report.box) rows.push(countRow('Size', report.box[1].map((high, k) => (high - report.box[0][k]).toPrecision(4)).join(' × ')));
  return report.valid ? rows.concat(topologyRows(report.topology, report)) : rows;
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

function worstList({ worst }, approach) {
  const list = make('ul', '', { class: 'worst' });
  for (const { element, quality, centre } of worst) {
    const shown = quality === null ? 'not a number' : quality.toFixed(4);
    const button = make('button', shown, { type: 'button', 'aria-label': `Element ${element}, quality ${shown}: bring into view` });
    button.addEventListener('click', () => approach(centre));
    const item = make('li');
    item.append(button);
    list.append(item);
  }
  return list;
}

function shapePart(shape, approach) {
  const spread = ['min', 'mean', 'max'].map((name) => (shape[name] === null ? '–' : shape[name].toFixed(3)));
  return [
    make('h3', `Quality of ${shape.type} (1 is ideal)`),
    make('p', `least ${spread[0]}, mean ${spread[1]}, most ${spread[2]}${shape.inverted > 0 ? `; ${number(shape.inverted)} inverted` : ''}`),
    histogram(shape),
    make('p', 'Worst elements; a click goes there:'),
    worstList(shape, approach),
  ];
}

/** Rows of the table of counts, and a part for each type of elements. `approach` is told where one is. */
export function reportParts(report, approach) {
  return { counts: countRows(report), shapes: (report.shapes ?? []).flatMap((shape) => shapePart(shape, approach)) };
}
