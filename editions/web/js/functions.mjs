// The library's functions on typed arrays, made of the module's table of them.
import { invoke } from './calls.mjs';
import { NodeDetector } from './detector.mjs';
import { readySource } from './instance.mjs';
import { choose, groupRows, parseTable } from './table.mjs';

function bind(instance, rows) {
  const reads = rows[0].parameters.some((p) => p.kind === 'f' && p.isGiven);
  const writes = rows[0].parameters.some((p) => p.kind === 'f' && !p.isGiven);
  return (...values) => {
    const row = choose(rows, values);
    if (reads) instance.files.give('file', readySource(values[0]));
    try {
      const result = invoke(instance, row, values);
      return writes ? instance.files.take('file') : result;
    } finally {
      instance.files.forget('file');
      instance.files.take('file');
    }
  };
}

/** All functions of a module, by name. */
export function bindFunctions(instance) {
  const all = {};
  for (const [name, rows] of groupRows(parseTable(instance.text(instance.exports.functions())))) all[name] = bind(instance, rows);
  const detector = (coords, ids) => new NodeDetector(instance, all, coords, ids);
  const shown = Object.fromEntries(Object.entries(all).filter(([name]) => !name.startsWith('detector')));
  return { ...shown, nodeDetector: detector };
}
