// The worker that reads, measures and writes. What it answers to anything older than the last file is not listened to.

export class Session {
  #receive;
  #worker;
  #ready;
  #module;
  #id = 0;

  /** `receive` has a function for each message of the worker; `lost` is told the words when there is no worker. */
  constructor(receive) {
    this.#receive = receive;
    this.restart();
  }

  restart() {
    this.#id += 1;
    this.#worker?.terminate();
    this.#ready = this.#start();
  }

  async #start() {
    this.#worker = new Worker('worker.mjs', { type: 'module' });
    this.#worker.addEventListener('message', ({ data }) => data.id === this.#id && this.#receive[data.is]?.(data));
    this.#worker.addEventListener('error', () => this.#receive.lost('The worker of this page did not start; reload the page.'));
    this.#module ??= WebAssembly.compile(await (await fetch('page.wasm')).arrayBuffer());
    this.#worker.postMessage({ do: 'start', module: await this.#module });
  }

  open(file) {
    this.#id += 1;
    this.ask('open', { file });
  }

  /** A task with the file that is open. */
  ask(task, message = {}) {
    const id = this.#id;
    this.#ready.then(() => id === this.#id && this.#worker.postMessage({ do: task, id, ...message }), (error) => this.#receive.lost(error.message));
  }
}
