// The search tree of nodes.
import { GridworkError } from './instance.mjs';

/** Nodes of a set that are near to a point, to a node or in a box. free() it. */
export class NodeDetector {
  #functions;
  #handle;
  #instance;

  constructor(instance, functions, coords, ids) {
    this.#instance = instance;
    this.#functions = functions;
    this.#handle = instance.exports.detector();
    try {
      this.#call('detectorReinit', coords, ...(ids === undefined ? [] : [ids]));
    } catch (error) {
      this.free();
      throw error;
    }
  }

  #call(name, ...values) {
    if (this.#handle === 0) throw new GridworkError(name, -1, 'the detector is freed');
    return this.#functions[name](this.#handle, ...values);
  }

  get size() {
    return this.#call('detectorSize');
  }

  insert(ids) {
    return this.#call('detectorInsert', ids);
  }

  /** The node closest to a point, or to another node; 4294967295 when there is none. */
  findClosest(pointOrNode) {
    return this.#call('detectorFindClosest', pointOrNode);
  }

  findInBox(lower, upper) {
    return this.#call('detectorFindInBox', lower, upper).ids;
  }

  free() {
    if (this.#handle !== 0) this.#instance.exports.release(this.#handle);
    this.#handle = 0;
  }
}

if (Symbol.dispose) NodeDetector.prototype[Symbol.dispose] = NodeDetector.prototype.free;
