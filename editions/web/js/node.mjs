// Files by their path, in node.
import { closeSync, fstatSync, openSync, readSync } from 'node:fs';
export { readFile } from 'node:fs/promises';

/** A file that is read where it lies; close() it. */
export function pathSource(path) {
  const descriptor = openSync(path, 'r');
  return {
    size: fstatSync(descriptor).size,
    read: (position, target) => readSync(descriptor, target, 0, target.length, position),
    close: () => closeSync(descriptor),
  };
}
