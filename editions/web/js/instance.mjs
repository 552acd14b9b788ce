// A module that runs: its memory, its files, and texts and arrays in it.
import { Files, blobSource, bytesSource } from './files.mjs';

/** A call that the library refused: its result code, the name of the function, the words for it, what a source threw. */
export class GridworkError extends Error {
  constructor(operation, code, message, cause) {
    super(message, cause && { cause });
    this.name = 'GridworkError';
    this.operation = operation;
    this.code = code;
  }
}

/** A module from what `load()` takes: bytes, a response, a URL or a compiled module. */
export async function compile(source) {
  if (source instanceof WebAssembly.Module) return source;
  if (source instanceof ArrayBuffer || ArrayBuffer.isView(source)) return WebAssembly.compile(source);
  if (source instanceof URL && source.protocol === 'file:') {
    const { readFile } = await import('./node.mjs');
    return WebAssembly.compile(await readFile(source));
  }
  const response = await (source instanceof URL || typeof source === 'string' ? fetch(source) : source);
  if (!response.ok) throw new Error(`the module is not there: ${response.status}`);
  // Servers that do not know the type of modules must not break this.
  return WebAssembly.compile(await response.arrayBuffer());
}

export class Instance {
  files = new Files();
  #exports;

  static async of(module) {
    const instance = new Instance();
    const imports = {
      wasi_snapshot_preview1: instance.files.imports,
      gridwork: { shortest_number: (value, address) => instance.#write(String(value), address) },
    };
    const { exports } = await WebAssembly.instantiate(module, imports);
    instance.#exports = exports;
    instance.files.attach(exports.memory);
    exports._initialize();
    return instance;
  }

  get exports() {
    return this.#exports;
  }

  get buffer() {
    return this.#exports.memory.buffer;
  }

  #write(text, address) {
    return new TextEncoder().encodeInto(text, new Uint8Array(this.buffer, address, 32)).written;
  }

  text(address) {
    const bytes = new Uint8Array(this.buffer, address);
    return new TextDecoder().decode(bytes.subarray(0, bytes.indexOf(0)));
  }

  /** Memory of the module, to be given back by `exports.drop`. */
  take(bytes) {
    const address = this.#exports.take(Math.max(bytes, 1));
    if (address === 0) throw new GridworkError('take', -199, 'memory ran out');
    return address;
  }

  /** A copy of a text in memory of the module, while `use` runs. */
  withText(text, use) {
    const bytes = new TextEncoder().encode(text);
    const address = this.take(bytes.length + 1);
    try {
      const copy = new Uint8Array(this.buffer, address, bytes.length + 1);
      copy.set(bytes);
      copy[bytes.length] = 0;
      return use(address);
    } finally {
      this.#exports.drop(address);
    }
  }
}

/** A source of the module's files that needs no waiting: bytes, a Blob in a worker, or what has size and read(). */
export function readySource(given) {
  if (given instanceof Uint8Array) return bytesSource(given);
  if (given instanceof ArrayBuffer) return bytesSource(new Uint8Array(given));
  if (typeof FileReaderSync !== 'undefined' && given instanceof Blob) return blobSource(given);
  if (typeof given?.read === 'function') return given;
  throw new TypeError('a file is bytes, or has size and read()');
}

/** A source of the module's files: also a path in node, and a Blob outside of workers, which is loaded first. */
export async function sourceOf(given) {
  if (typeof given === 'string') return (await import('./node.mjs')).pathSource(given);
  if (typeof FileReaderSync === 'undefined' && given instanceof Blob) return bytesSource(new Uint8Array(await given.arrayBuffer()));
  return readySource(given);
}
