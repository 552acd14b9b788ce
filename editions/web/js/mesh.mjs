// A mesh in the memory of a module.
import { typeNames } from './elements.mjs';
import { GridworkError, sourceOf } from './instance.mjs';
import { formatOf } from './names.mjs';
import { readSlot, slotSize } from './slots.mjs';

const arrays = { coords: 0, freeEdges: 1, sharedEdges: 2, positions: 3, surface: 4, qualities: 5, pieces: 6, outlines: 7 };
const firstBlock = 16;
const arrayTypes = { coords: Float64Array, positions: Float32Array, qualities: Float32Array, outlines: Uint8Array };
const aliases = { triangles: 'TRIA3', quads: 'QUAD4' };

// Meshes that nobody freed.
const forgotten = new FinalizationRegistry(({ instance, handle }) => instance.exports.release(handle));

export class Mesh {
  #instance;
  #handle;

  constructor(instance) {
    this.#instance = instance;
    this.#handle = instance.exports.mesh();
    forgotten.register(this, { instance, handle: this.#handle }, this);
  }

  free() {
    if (this.#handle === 0) return;
    forgotten.unregister(this);
    this.#instance.exports.release(this.#handle);
    this.#handle = 0;
  }

  #call(name, ...rest) {
    if (this.#handle === 0) throw new GridworkError(name, -1, 'the mesh is freed');
    const result = this.#instance.exports[name](this.#handle, ...rest);
    if (result >= 0) return result;
    const { fault } = this.#instance.files;
    throw new GridworkError(name, result, fault === undefined ? this.#text() : `the file was not read: ${fault.message}`, fault);
  }

  #text() {
    return this.#instance.text(this.#instance.exports.mesh_text(this.#handle));
  }

  /** Reads a file: a path in node, a File or Blob, or bytes. */
  async read(given, { format, onProgress } = {}) {
    const kind = format ?? formatOf(typeof given === 'string' ? given : given.name);
    if (kind === undefined) throw new GridworkError('mesh_read', -1, 'the format is not known');
    const source = await sourceOf(given);
    const { files } = this.#instance;
    files.give('in', source);
    files.onRead = onProgress ?? null;
    try {
      this.#instance.withText('in', (path) => this.#instance.withText(kind, (f) => this.#call('mesh_read', path, f)));
    } finally {
      files.onRead = null;
      files.forget('in');
      source.close?.();
    }
    return this;
  }

  /** The file that a format makes of the mesh, in parts, as `new Blob(parts)` takes them. */
  write(format, { text = false } = {}) {
    const { files } = this.#instance;
    try {
      this.#instance.withText('out', (path) =>
        this.#instance.withText(format, (f) => this.#call('mesh_write', path, f, text ? 1 : 0)),
      );
    } catch (error) {
      files.take('out');
      throw error;
    }
    return files.take('out');
  }

  /** Merges nodes that are within the tolerance of one another; how many. */
  merge(tolerance = 0, mode = 0) {
    return this.#call('mesh_merge', tolerance, mode);
  }

  /** Removes elements that hold a node twice; how many. */
  removeDegenerated() {
    return this.#call('mesh_remove_degenerated');
  }

  /** Removes nodes that no element uses; how many. */
  simplify() {
    return this.#call('mesh_simplify');
  }

  /** Everything that `gridwork info --json` tells, with histogram and worst elements of each type in `shapes`. */
  report() {
    this.#call('mesh_measure');
    return JSON.parse(this.#text());
  }

  topology() {
    const { topology, used_nodes, measured_elements } = this.report();
    if (topology === undefined) throw new GridworkError('topology', -1, 'elements have nodes that are not there');
    return {
      dim: topology.dim,
      edges: topology.sides,
      freeEdges: topology.open,
      sharedEdges: topology.non_manifold,
      pieces: topology.pieces,
      unusedNodes: topology.unused_nodes,
      euler: used_nodes + measured_elements - topology.sides,
    };
  }

  /** Of one type of elements; without its name of that with the most elements. */
  quality(type) {
    const { shapes } = this.report();
    const most = shapes.reduce((a, b) => (a && a.elements >= b.elements ? a : b), undefined);
    const found = type === undefined ? most : shapes.find((s) => s.type === type);
    if (found === undefined) return undefined;
    const { min, mean, max, histogram, worst, inverted, reversed } = found;
    return { type: found.type, least: min, mean, most: max, histogram, worst, inverted, reversed };
  }

  /** Types and counts of the blocks of elements. */
  get blocks() {
    return this.#blocks().map(({ type, rows, elements }) => ({ type, rows, elements }));
  }

  #blocks() {
    const blocks = [];
    for (let k = firstBlock; ; ++k) {
      const slot = this.#slot(k);
      if (slot === undefined) return blocks;
      blocks.push({ type: typeNames[slot.number], rows: slot.rows, elements: slot.cols, slot });
    }
  }

  #slot(which) {
    if (this.#handle === 0) throw new GridworkError('view', -1, 'the mesh is freed');
    const address = this.#instance.take(slotSize);
    try {
      const found = this.#instance.exports.mesh_array(this.#handle, which, address);
      return found ? readSlot(this.#instance.buffer, address) : undefined;
    } finally {
      this.#instance.exports.drop(address);
    }
  }

  #prepare(name) {
    if (name === 'freeEdges' || name === 'sharedEdges') this.#call('mesh_measure');
  }

  #find(name) {
    if (name in arrays) return this.#slot(arrays[name]);
    const type = aliases[name] ?? name;
    return this.#blocks().find((b) => b.type === type)?.slot;
  }

  /** Computes what a viewer draws: the arrays positions, surface, qualities, pieces and outlines. */
  draw() {
    this.#call('mesh_draw');
  }

  /** An array in the memory of the module, not copied: valid until the next call of any function of it. */
  view(name) {
    this.#prepare(name);
    const slot = this.#find(name);
    const Type = arrayTypes[name] ?? Uint32Array;
    if (slot === undefined || slot.cols === 0) return new Type();
    return new Type(this.#instance.buffer, slot.data, slot.rows * slot.cols);
  }

  /** An array of its own, which can be transferred. */
  copy(name) {
    return this.view(name).slice();
  }
}

// `using mesh = gw.mesh()` where the engine knows it.
if (Symbol.dispose) Mesh.prototype[Symbol.dispose] = Mesh.prototype.free;
