// Large files.
import { closeSync, openSync, writeSync } from 'node:fs';

/** Writes a wavy sheet of 2 n n triangles as binary STL. */
export function writeSheet(path, n) {
  const file = openSync(path, 'w');
  const header = Buffer.alloc(84);
  header.writeUInt32LE(2 * n * n, 80);
  writeSync(file, header);
  const row = Buffer.alloc(100 * n);
  const put = (at, i, j) => [i, j, Math.sin(i / 50) * Math.cos(j / 50) * 20].forEach((x, k) => row.writeFloatLE(x, at + 4 * k));
  for (let j = 0; j < n; ++j) {
    for (let i = 0; i < n; ++i) {
      [[0, 0], [1, 0], [0, 1]].forEach(([a, b], k) => put(100 * i + 12 * (k + 1), i + a, j + b));
      [[1, 0], [1, 1], [0, 1]].forEach(([a, b], k) => put(100 * i + 50 + 12 * (k + 1), i + a, j + b));
    }
    writeSync(file, row);
  }
  closeSync(file);
}
