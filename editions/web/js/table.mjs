// The module's table of functions: names, kinds of parameters, and which overload a call means.
import { elementTypes } from './elements.mjs';
import { Matrix } from './matrix.mjs';

/** Types of the arrays that kinds of parameters stand for. */
export const arrayOf = { M: Float64Array, m: Uint32Array, V: Float64Array, v: Uint32Array, i: Int32Array };
export const isListed = (kind) => kind === 'V' || kind === 'v' || kind === 'i';
export const isMatrix = (kind) => kind === 'M' || kind === 'm';

/** "get_neighbors" as getNeighbors, "STL_input" as stlInput. */
export function camelCase(name) {
  const [first, ...rest] = name.split('_');
  const begin = /^[A-Z0-9]+s?$/.test(first) ? first.toLowerCase() : first[0].toLowerCase() + first.slice(1);
  return begin + rest.map((word) => word[0].toUpperCase() + word.slice(1)).join('');
}

function parseParameter(word, kind) {
  const [, direction, name, optional] = /^([>+]?)(\w+)(\??)$/.exec(word);
  const isGiven = direction !== '>';
  return { name: camelCase(name), kind, isGiven, isResult: direction !== '', optional: optional !== '' };
}

/** The rows of the table: names, kinds and parameters of the functions. */
export function parseTable(text) {
  return text.trimEnd().split('\n').map((line, row) => {
    const [name, kinds, words] = line.split('|');
    const [result, ...kindList] = kinds.split(',');
    return { row, name: camelCase(name), result, parameters: words.split(' ').map((w, k) => parseParameter(w, kindList[k])) };
  });
}

/** Overloads together, by name. */
export function groupRows(rows) {
  const groups = new Map();
  for (const row of rows) {
    if (!groups.has(row.name)) groups.set(row.name, []);
    groups.get(row.name).push(row);
  }
  return groups;
}

function accepts(kind, value, strictly) {
  if (isMatrix(kind)) return value instanceof Matrix ? value.data instanceof arrayOf[kind] || value.data.length === 0
    : !strictly && value instanceof arrayOf[kind];
  if (isListed(kind)) return value instanceof arrayOf[kind] || (!strictly && Array.isArray(value) && typeof value[0] !== 'object');
  if (kind === 'r') return Array.isArray(value) && value.every((m) => m instanceof Matrix);
  if (kind[0] === 'p') return typeof value !== 'number' && value?.length === Number(kind[1]);
  if (kind === 't') return typeof value === 'number' || value in elementTypes;
  if (kind === 'b') return typeof value === 'boolean';
  if (kind === 'd') return typeof value === 'number';
  return kind === 'o' || kind === 'f';
}

function fits(row, values, strictly) {
  const given = row.parameters.filter((p) => p.isGiven);
  if (values.length > given.length) return false;
  return given.every((p, k) => (k < values.length ? accepts(p.kind, values[k], strictly) : p.optional));
}

/** The row that values fit: arrays of its types at first, then what can be copied into them. */
export function choose(rows, values) {
  const row = rows.find((r) => fits(r, values, true)) ?? rows.find((r) => fits(r, values, false));
  if (row !== undefined) return row;
  const forms = rows.map((r) => `(${r.parameters.filter((p) => p.isGiven).map((p) => p.name).join(', ')})`);
  throw new TypeError(`${rows[0].name}() takes ${[...new Set(forms)].join(' or ')}`);
}
