// A painter in a worker, called as one in the page.

export class DistantPainter {
  #worker;
  #restored;

  constructor(worker, restored) {
    this.#worker = worker;
    this.#restored = restored;
  }

  /** Rejects where workers cannot draw; the canvas may be of no more use then. */
  static async on(canvas, restored) {
    const distant = canvas.transferControlToOffscreen();
    const worker = new Worker('painter_worker.mjs', { type: 'module' });
    const painter = new DistantPainter(worker, restored);
    try {
      await painter.#ask({ canvas: distant }, [distant]);
    } catch (error) {
      worker.terminate();
      throw error;
    }
    return painter;
  }

  show(arrays) {
    return this.#ask({ arrays }, Object.values(arrays).map((array) => array.buffer));
  }

  draw(scene) {
    this.#worker.postMessage({ scene });
  }

  #ask(message, transferred) {
    return new Promise((resolve, reject) => {
      this.#worker.onmessage = ({ data: { is, message: words } }) => {
        if (is === 'restored') this.#restored();
        else if (is === 'failed') reject(new Error(words));
        else resolve();
      };
      this.#worker.onerror = () => reject(new Error('the worker did not start'));
      this.#worker.postMessage(message, transferred);
    });
  }
}
