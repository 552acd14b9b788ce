// The worker that reads, measures and writes. What it answers to anything older than the last file is not listened to.

const lastAnswers = ['mesh', 'file', 'failed'];

export class Session {
  #receive;
  #worker;
  #ready;
  #module;
  #id = 0;
  #isBusy = false;

  /** `receive` has a function for each message of the worker; `lost` is told the words when there is no worker. */
  constructor(receive) {
    this.#receive = receive;
    this.restart();
  }

  restart() {
    this.#id += 1;
    this.#isBusy = false;
    this.#worker?.terminate();
    this.#ready = this.#start();
    this.#ready.catch(() => {}); // who asks is told
  }

  async #start() {
    const worker = new Worker('worker.mjs', { type: 'module' });
    this.#worker = worker;
    worker.addEventListener('message', ({ data }) => data.id === this.#id && this.#hear(data));
    const started = new Promise((resolve, reject) => {
      worker.addEventListener('error', () => {
        reject(new Error('The worker of this page did not start; reload the page.'));
        this.#receive.lost('The worker of this page failed; reload the page.');
      });
      worker.addEventListener('message', ({ data: { is, id, message } }) => {
        if (is === 'ready') resolve();
        if (is === 'failed' && id === undefined) reject(new Error(`The module did not start: ${message}.`));
      });
    });
    this.#module ??= WebAssembly.compile(await (await fetch('page.wasm')).arrayBuffer());
    worker.postMessage({ do: 'start', module: await this.#module });
    return started;
  }

  #hear(data) {
    if (lastAnswers.includes(data.is)) this.#isBusy = false;
    this.#receive[data.is]?.(data);
  }

  /** A file, instead of what goes on. */
  open(file) {
    if (this.#isBusy) this.restart();
    this.#id += 1;
    this.ask('open', { file });
  }

  /** A task with the file that is open. */
  ask(task, message = {}) {
    const id = this.#id;
    this.#isBusy = true;
    this.#ready.then(() => id === this.#id && this.#worker.postMessage({ do: task, id, ...message }), (error) => this.#receive.lost(error.message));
  }
}
