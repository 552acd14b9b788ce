// The search tree of nodes.

/** Nodes of a set that are near to a point, to a node or in a box. free() it. */
export class NodeDetector {
  #call;
  #handle;
  #instance;

  constructor(instance, call, coords, ids) {
    this.#instance = instance;
    this.#call = call;
    this.#handle = instance.exports.detector();
    try {
      call.detectorReinit(this.#handle, coords, ...(ids === undefined ? [] : [ids]));
    } catch (error) {
      this.free();
      throw error;
    }
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
