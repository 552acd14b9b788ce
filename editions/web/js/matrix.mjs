// Matrices on typed arrays.

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
