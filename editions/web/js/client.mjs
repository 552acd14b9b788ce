// The worker's mesh as promises, for pages that must not wait for it.
import { GridworkError } from './instance.mjs';

export class Client {
  #worker;
  #waiting = new Map();
  #next = 0;

  /** A worker with the package's module, or with the one that is given: a URL, bytes or a compiled module. */
  static async start(module = new URL('./gridwork.wasm', import.meta.url), worker = undefined) {
    const client = new Client();
    client.#worker = worker ?? new Worker(new URL('./worker.mjs', import.meta.url), { type: 'module' });
    client.#worker.addEventListener('message', ({ data }) => client.#receive(data));
    client.#worker.addEventListener('error', (event) => client.#fail(event.message || 'the worker did not start'));
    await client.#ask('start', { module: module instanceof URL ? module.href : module }, 'ready');
    return client;
  }

  /** Reads a file: its report, and the arrays of its picture. */
  open(file, { format, onProgress } = {}) {
    return this.#ask('open', { file, format }, 'mesh', onProgress);
  }

  /** Merges nodes, removes degenerate elements and unused nodes. */
  clean(tolerance = 0) {
    return this.#ask('clean', { tolerance }, 'mesh');
  }

  write(format, { text = false } = {}) {
    return this.#ask('write', { format, text }, 'file').then(({ parts }) => parts);
  }

  /** Stops whatever goes on; the client is of no use then. */
  cancel() {
    this.#worker.terminate();
    this.#fail('cancelled');
  }

  #ask(task, message, last, onProgress) {
    const id = this.#next++;
    return new Promise((resolve, reject) => {
      this.#waiting.set(id, { resolve, reject, last, onProgress, found: {} });
      this.#worker.postMessage({ ...message, do: task, id });
    });
  }

  #receive({ id, is, ...message }) {
    const one = this.#waiting.get(id);
    if (one === undefined) return;
    if (is === 'progress') {
      one.onProgress?.(message.position, message.size);
      return;
    }
    Object.assign(one.found, message);
    if (is !== one.last && is !== 'failed') return;
    this.#waiting.delete(id);
    if (is === 'failed') one.reject(new GridworkError('worker', message.code, message.message));
    else one.resolve(one.found);
  }

  #fail(words) {
    for (const { reject } of this.#waiting.values()) reject(new GridworkError('worker', -1, words));
    this.#waiting.clear();
  }
}
