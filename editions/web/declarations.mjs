// Types of the functions, made of the module's table.
const given = {
  M: 'Matrix<Float64Array> | Float64Array', m: 'Matrix<Uint32Array> | Uint32Array', V: 'Float64Array | number[]',
  v: 'Uint32Array | number[]', i: 'Int32Array | number[]', r: 'Matrix<Uint32Array>[]', t: 'ElementType', b: 'boolean',
  d: 'number', f: 'Source',
};
const returned = {
  ...given, M: 'Matrix<Float64Array>', m: 'Matrix<Uint32Array>', V: 'Float64Array', v: 'Uint32Array', i: 'Int32Array',
  h: 'Histogram',
};
const lengths = { 2: 'number, number', 3: 'number, number, number', 6: 'number, number, number, number, number, number' };

const typeGiven = (kind) =>
  kind[0] === 'p' ? `Float64Array | ${lengths[kind[1]] ? `[${lengths[kind[1]]}]` : 'number[]'}` : given[kind];
const typeReturned = (kind) => (kind[0] === 'p' ? 'Float64Array' : returned[kind]);

function resultOf(row) {
  const plain = { i: 'number', d: 'number', b: 'boolean', '-': 'undefined' }[row.result];
  const results = row.parameters.filter((p) => p.isResult);
  if (results.some((p) => p.kind === 'f')) return 'Bytes[]';
  if (results.length === 0) return plain;
  return `{ result: ${plain}; ${results.map((p) => `${p.name}: ${typeReturned(p.kind)}`).join('; ')} }`;
}

function declare(row) {
  const parameters = row.parameters.filter((p) => p.isGiven);
  const list = parameters.map((p) => `${p.name}${p.optional ? '?' : ''}: ${typeGiven(p.kind)}`);
  return `  ${row.name}(${list.join(', ')}): ${resultOf(row)};`;
}

export function declareFunctions(rows) {
  const shown = rows.filter((row) => !row.name.startsWith('detector'));
  return `// Made of the module's table of functions.
import type { Bytes, ElementType, Histogram, Matrix, Source } from './gridwork.js';

/** The library's functions: names, arguments and codes are those of its headers. */
export interface Functions {
${shown.map(declare).join('\n')}
}
`;
}
