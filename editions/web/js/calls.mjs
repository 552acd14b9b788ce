// The library's functions on typed arrays, made of the module's table of them.
import { GridworkError, readySource } from './instance.mjs';
import { elementTypes } from './mesh.mjs';
import { readSlot, slotSize, writeSlot } from './slots.mjs';

/** Entries column after column. */
export class Matrix {
  constructor(rows, data) {
    if (!(rows >= 0) || (rows === 0 ? data.length !== 0 : data.length % rows !== 0)) {
      throw new RangeError(`${data.length} entries make no columns of ${rows}`);
    }
    this.rows = rows;
    this.data = data;
  }

  get cols() {
    return this.rows === 0 ? 0 : this.data.length / this.rows;
  }

  column(k) {
    return this.data.subarray(k * this.rows, (k + 1) * this.rows);
  }
}

const arrayOf = { M: Float64Array, m: Uint32Array, V: Float64Array, v: Uint32Array, i: Int32Array };
const isListed = (kind) => kind === 'V' || kind === 'v' || kind === 'i';
const isMatrix = (kind) => kind === 'M' || kind === 'm';
const defaultRows = 3; // of an array in place of a matrix: points in space, triangles

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

// One call: slots and copies of arrays in the module's memory, freed at the end.
class Call {
  #instance;
  #blocks = [];
  #owners = [];

  constructor(instance) {
    this.#instance = instance;
  }

  take(bytes) {
    const address = this.#instance.take(bytes);
    this.#blocks.push(address);
    return address;
  }

  copyIn(entries) {
    const data = this.take(entries.byteLength);
    new entries.constructor(this.#instance.buffer, data, entries.length).set(entries);
    return data;
  }

  fill(address, kind, value) {
    writeSlot(this.#instance.buffer, address, this.#contents(kind, value));
  }

  #contents(kind, value) {
    if (kind === 'f') return { data: this.copyIn(new TextEncoder().encode('file\0')) };
    if (value === undefined) return { rows: 0 };
    if (isMatrix(kind)) return this.#matrix(kind, value);
    if (isListed(kind)) return { data: this.copyIn(arrayOf[kind].from(value)), rows: 1, cols: value.length };
    if (kind[0] === 'p') return { data: this.copyIn(Float64Array.from(value)), rows: 1, cols: value.length };
    if (kind === 'r') return this.#range(value);
    if (kind === 'o') return { data: value };
    return { number: kind === 't' && typeof value === 'string' ? elementTypes[value] : Number(value) };
  }

  #matrix(kind, value) {
    const { rows, cols, data } = value instanceof Matrix ? value : new Matrix(defaultRows, value);
    return { data: this.copyIn(arrayOf[kind].from(data)), rows, cols };
  }

  #range(matrices) {
    const data = this.take(matrices.length * slotSize);
    matrices.forEach((matrix, k) => this.fill(data + k * slotSize, 'm', matrix));
    return { data, cols: matrices.length };
  }

  readBack(address, kind) {
    const slot = readSlot(this.#instance.buffer, address);
    if (slot.owner !== 0) this.#owners.push(slot.owner);
    if (kind === 'r') return Array.from({ length: slot.cols }, (_, k) => this.readBack(slot.data + k * slotSize, 'm'));
    if (kind === 'h') return histogram(this.#entries(Float64Array, slot));
    if (kind === 'd' || kind === 't') return slot.number;
    if (kind === 'b') return slot.number !== 0;
    const entries = this.#entries(arrayOf[kind] ?? Float64Array, slot);
    return isMatrix(kind) ? new Matrix(slot.cols === 0 ? 0 : slot.rows, entries) : entries;
  }

  #entries(Type, { data, rows, cols, stride }) {
    const entries = new Type(rows * cols);
    if (entries.length === 0) return entries;
    const all = new Type(this.#instance.buffer, data, stride * (cols - 1) + rows);
    if (stride === rows) entries.set(all);
    else for (let k = 0; k < cols; ++k) entries.set(all.subarray(k * stride, k * stride + rows), k * rows);
    return entries;
  }

  finish() {
    this.#owners.forEach((owner) => this.#instance.exports.release(owner));
    this.#blocks.forEach((block) => this.#instance.exports.drop(block));
  }
}

function histogram([lower, upper, min, max, mean, below, above, notANumber, ...bins]) {
  return { lower, upper, min, max, mean, below, above, notANumber, bins };
}

function results(row, call, slots, result) {
  const found = { result };
  row.parameters.forEach((p, k) => {
    if (p.isResult && p.kind !== 'f') found[p.name] = call.readBack(slots + k * slotSize, p.kind);
  });
  return found;
}

function invoke(instance, row, values) {
  const call = new Call(instance);
  try {
    const slots = call.take(row.parameters.length * slotSize);
    let next = 0;
    row.parameters.forEach((p, k) => call.fill(slots + k * slotSize, p.kind, p.isGiven ? values[next++] : undefined));
    const result = instance.exports.call(row.row, slots);
    const found = results(row, call, slots, row.result === 'b' ? result !== 0 : result);
    if (row.result === 'i' && result < 0) {
      throw new GridworkError(row.name, result, instance.text(instance.exports.call_message(row.row, result)));
    }
    return row.parameters.some((p) => p.isResult) ? found : found.result;
  } finally {
    call.finish();
  }
}

function choose(rows, values) {
  const row = rows.find((r) => fits(r, values, true)) ?? rows.find((r) => fits(r, values, false));
  if (row !== undefined) return row;
  const forms = rows.map((r) => `(${r.parameters.filter((p) => p.isGiven).map((p) => p.name).join(', ')})`);
  throw new TypeError(`${rows[0].name}() takes ${[...new Set(forms)].join(' or ')}`);
}

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

/** Nodes of a set that are near to a point, to a node or in a box. free() it. */
class NodeDetector {
  #call;
  #handle;
  #instance;

  constructor(instance, call, coords, ids) {
    this.#instance = instance;
    this.#call = call;
    this.#handle = instance.exports.detector();
    if (ids === undefined) call.detectorReinit(this.#handle, coords);
    else call.detectorReinit(this.#handle, coords, ids);
  }

  get size() {
    return this.#call.detectorSize(this.#handle);
  }

  insert(ids) {
    return this.#call.detectorInsert(this.#handle, ids);
  }

  /** The node closest to a point, or to another node; 4294967295 when there is none. */
  findClosest(pointOrNode) {
    return this.#call.detectorFindClosest(this.#handle, pointOrNode);
  }

  findInBox(lower, upper) {
    return this.#call.detectorFindInBox(this.#handle, lower, upper).ids;
  }

  free() {
    if (this.#handle !== 0) this.#instance.exports.release(this.#handle);
    this.#handle = 0;
  }
}

if (Symbol.dispose) NodeDetector.prototype[Symbol.dispose] = NodeDetector.prototype.free;

/** All functions of a module, by name. */
export function bindFunctions(instance) {
  const all = {};
  for (const [name, rows] of group(parseTable(instance.text(instance.exports.functions())))) all[name] = bind(instance, rows);
  const detector = (coords, ids) => new NodeDetector(instance, all, coords, ids);
  const shown = Object.fromEntries(Object.entries(all).filter(([name]) => !name.startsWith('detector')));
  return { ...shown, nodeDetector: detector };
}

function group(rows) {
  const groups = new Map();
  for (const row of rows) {
    if (!groups.has(row.name)) groups.set(row.name, []);
    groups.get(row.name).push(row);
  }
  return groups;
}
