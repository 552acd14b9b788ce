// The files of a module: names served by the ten calls of WASI that its C library makes.
// A source has a size and read(position, target), which returns how many bytes it put into the target.

const success = 0;
const badDescriptor = 8;
const ioError = 29;
const noEntry = 44;
const root = 3; // the descriptor of the only folder
const folderType = 3;
const fileType = 4;
const create = 1; // of the flags of path_open
const chunkSize = 4 << 20;

/** Bytes in memory. */
export function bytesSource(bytes) {
  return {
    size: bytes.length,
    read(position, target) {
      const part = bytes.subarray(position, position + target.length);
      target.set(part);
      return part.length;
    },
  };
}

/** A Blob, read in slices. Only workers can wait for them. */
export function blobSource(blob, sliceSize = 16 << 20) {
  const reader = new FileReaderSync();
  let start = 0;
  let slice = new Uint8Array();
  return {
    size: blob.size,
    read(position, target) {
      if (position < start || position >= start + slice.length) {
        start = position;
        slice.buffer.transfer?.(0); // gives its memory back at once
        slice = new Uint8Array(reader.readAsArrayBuffer(blob.slice(start, start + sliceSize)));
      }
      const part = slice.subarray(position - start, position - start + target.length);
      target.set(part);
      return part.length;
    },
  };
}

// What is written, in chunks.
class Sink {
  parts = [];
  #chunk = new Uint8Array(chunkSize);
  #used = 0;

  write(bytes) {
    for (let at = 0; at < bytes.length; ) {
      const part = bytes.subarray(at, at + chunkSize - this.#used);
      this.#chunk.set(part, this.#used);
      this.#used += part.length;
      at += part.length;
      if (this.#used === chunkSize) this.finish();
    }
    return bytes.length;
  }

  finish() {
    if (this.#used > 0) this.parts.push(this.#chunk.slice(0, this.#used));
    this.#used = 0;
  }
}

export class Files {
  onRead = null; // is told of positions and sizes
  fault; // what was thrown while a file was open: it must not run through the module
  #sources = new Map();
  #sinks = new Map();
  #open = new Map();
  #next = root + 1;
  #memory = null;

  attach(memory) {
    this.#memory = memory;
  }

  give(name, source) {
    this.#sources.set(name, source);
  }

  forget(name) {
    this.#sources.delete(name);
    this.fault = undefined;
  }

  /** The parts of a file that was written; it is forgotten. */
  take(name) {
    const parts = this.#sinks.get(name)?.parts ?? [];
    this.#sinks.delete(name);
    this.fault = undefined;
    return parts;
  }

  get #view() {
    return new DataView(this.#memory.buffer);
  }

  #openFile(name, flags) {
    if (!(flags & create)) return { source: this.#sources.get(name), position: 0 };
    const sink = new Sink();
    this.#sinks.set(name, sink);
    return { sink, position: 0 };
  }

  // Moves bytes between a file and the pieces of memory that a call lists, and writes how many.
  #transfer(file, vectors, count, result, move) {
    let total = 0;
    for (let k = 0; k < count; ++k) {
      const address = this.#view.getUint32(vectors + 8 * k, true);
      const length = this.#view.getUint32(vectors + 8 * k + 4, true);
      const moved = move(new Uint8Array(this.#memory.buffer, address, length));
      total += moved;
      file.position += moved;
      if (moved < length) break;
    }
    this.#view.setUint32(result, total, true);
  }

  #try(transfer) {
    try {
      transfer();
      return success;
    } catch (error) {
      this.fault = error;
      return ioError;
    }
  }

  /** What the module imports. */
  get imports() {
    return {
      path_open: (folder, _follow, path, length, flags, _rights, _inherited, _mode, result) => {
        const name = new TextDecoder().decode(new Uint8Array(this.#memory.buffer, path, length));
        const file = this.#openFile(name, flags);
        if (folder !== root || (!file.source && !file.sink)) return noEntry;
        this.#open.set(this.#next, file);
        this.#view.setUint32(result, this.#next++, true);
        return success;
      },
      fd_close: (descriptor) => {
        this.#open.get(descriptor)?.sink?.finish();
        return this.#open.delete(descriptor) ? success : badDescriptor;
      },
      fd_read: (descriptor, vectors, count, result) => {
        const file = this.#open.get(descriptor);
        if (!file?.source) return badDescriptor;
        return this.#try(() => {
          this.#transfer(file, vectors, count, result, (piece) => file.source.read(file.position, piece));
          this.onRead?.(file.position, file.source.size);
        });
      },
      fd_write: (descriptor, vectors, count, result) => {
        const file = this.#open.get(descriptor);
        if (!file?.sink) return badDescriptor;
        return this.#try(() => this.#transfer(file, vectors, count, result, (piece) => file.sink.write(piece)));
      },
      fd_seek: (descriptor, offset, whence, result) => {
        const file = this.#open.get(descriptor);
        if (!file) return badDescriptor;
        file.position = Number(offset) + [0, file.position, file.source?.size ?? file.position][whence];
        this.#view.setBigUint64(result, BigInt(file.position), true);
        return success;
      },
      fd_prestat_get: (descriptor, result) => {
        if (descriptor !== root) return badDescriptor;
        this.#view.setUint32(result, 0, true);
        this.#view.setUint32(result + 4, 1, true);
        return success;
      },
      fd_prestat_dir_name: (_descriptor, path) => {
        this.#view.setUint8(path, '/'.charCodeAt(0));
        return success;
      },
      fd_fdstat_get: (descriptor, result) => {
        this.#view.setUint32(result, descriptor === root ? folderType : fileType, true);
        this.#view.setBigUint64(result + 8, ~0n, true);
        this.#view.setBigUint64(result + 16, ~0n, true);
        return success;
      },
      fd_fdstat_set_flags: () => success,
      proc_exit: (code) => {
        throw new WebAssembly.RuntimeError(`the module ended with ${code}`);
      },
    };
  }
}
