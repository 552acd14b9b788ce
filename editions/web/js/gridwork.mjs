// Finite-element mesh utilities in WebAssembly.
import { elementTypes } from './elements.mjs';
import { bindFunctions } from './functions.mjs';
import { Instance, compile, GridworkError } from './instance.mjs';
import { Matrix } from './matrix.mjs';
import { Mesh } from './mesh.mjs';
import { formatOf } from './names.mjs';

export { GridworkError, Matrix, elementTypes, formatOf };

/**
 * Loads the module: from beside this file, or what is given: bytes, a response, a URL or a compiled module.
 * Nothing else here reads the network.
 */
export async function load(source = new URL('./gridwork.wasm', import.meta.url)) {
  const instance = await Instance.of(await compile(source));
  return {
    ...bindFunctions(instance),
    mesh: () => new Mesh(instance),
    matrix: (rows, data) => new Matrix(rows, data),
    /** Bytes that the module's memory has grown to. */
    get memory() {
      return instance.buffer.byteLength;
    },
  };
}
