// Calls of the library's functions: arrays go into the module's memory and come back.
import { elementTypes } from './elements.mjs';
import { GridworkError } from './instance.mjs';
import { Matrix } from './matrix.mjs';
import { readSlot, slotSize, writeSlot } from './slots.mjs';
import { arrayOf, isListed, isMatrix } from './table.mjs';

const defaultRows = 3; // of an array in place of a matrix: points in space, triangles

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
    const contents = this.#contents(kind, value); // may move the memory
    writeSlot(this.#instance.buffer, address, contents);
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

  // Notes what a call has left in its slots, to be released at the end.
  own(slots, count) {
    for (let k = 0; k < count; ++k) {
      const { owner } = readSlot(this.#instance.buffer, slots + k * slotSize);
      if (owner !== 0) this.#owners.push(owner);
    }
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

/** Calls the function of a row; its result, or an object of results. */
export function invoke(instance, row, values) {
  const call = new Call(instance);
  try {
    const slots = call.take(row.parameters.length * slotSize);
    let next = 0;
    row.parameters.forEach((p, k) => call.fill(slots + k * slotSize, p.kind, p.isGiven ? values[next++] : undefined));
    const result = instance.exports.call(row.row, slots);
    call.own(slots, row.parameters.length);
    const found = results(row, call, slots, row.result === 'b' ? result !== 0 : result);
    if (row.result === 'i' && result < 0) {
      const words = instance.text(instance.exports.call_message(row.row, result));
      throw new GridworkError(row.name, result, words, instance.files.fault);
    }
    return row.parameters.some((p) => p.isResult) ? found : found.result;
  } finally {
    call.finish();
  }
}
