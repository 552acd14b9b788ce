// The picture of a mesh: what is seen, from where. A worker draws it or, where browsers do not let it, the page itself.
import { Camera } from './camera.mjs';
import { DistantPainter } from './distant_painter.mjs';
import { listen } from './gestures.mjs';
import { Painter } from './painter.mjs';

const directions = { x: [1, 0, 0], y: [0, 1, 0], z: [0, 0, 1] };
const notCut = [0, 0, 0, 1];

export class Viewer {
  #canvas;
  #painter;
  #camera = new Camera();
  #half = [0, 0, 0]; // the size of the mesh from its middle on
  #scene = { colouring: 0, lines: false, cut: notCut };
  #isPlanned = false;

  /** Throws where there is no WebGL 2. `restored` is told when the mesh has to be shown again. */
  static async on(canvas, restored) {
    try {
      return new Viewer(canvas, await DistantPainter.on(canvas, restored));
    } catch {
      const another = canvas.cloneNode();
      canvas.replaceWith(another);
      return new Viewer(another, new Painter(another, restored));
    }
  }

  constructor(canvas, painter) {
    this.#canvas = canvas;
    this.#painter = painter;
    listen(canvas, this);
    new ResizeObserver(() => this.#plan()).observe(canvas);
  }

  /** A mesh, from the middle of its box on. It is looked at anew, unless it is the same, changed. */
  async show(arrays, { half, radius, isChanged }) {
    await this.#painter.show(arrays);
    this.#half = half;
    this.#camera.radius = radius;
    if (isChanged) this.#plan();
    else this.look('7');
  }

  /** 0: plain, 1: by quality, 2: by piece. */
  colour(colouring) {
    this.#scene.colouring = colouring;
    this.#plan();
  }

  /** Whether the edges of all elements are drawn. */
  drawLines(lines) {
    this.#scene.lines = lines;
    this.#plan();
  }

  /** Leaves out what lies beyond a part, from 0 to 1, of the mesh along x, y or z; nothing along ''. */
  cut(along, part) {
    const most = 1.001 * this.#half['xyz'.indexOf(along)]; // nothing is cut at 1
    this.#scene.cut = along === '' ? notCut : [...directions[along], (2 * part - 1) * most];
    this.#plan();
  }

  look(view) {
    this.#camera.look(view);
    this.#plan();
  }

  approach(point) {
    this.#camera.approach(point);
    this.#plan();
  }

  turn(x, y) {
    this.#camera.turn(x, y);
    this.#plan();
  }

  zoom(factor) {
    this.#camera.zoom(factor);
    this.#plan();
  }

  #plan() {
    if (this.#isPlanned) return;
    this.#isPlanned = true;
    requestAnimationFrame(() => {
      this.#isPlanned = false;
      this.#draw();
    });
  }

  #draw() {
    const { clientWidth, clientHeight } = this.#canvas;
    const scale = devicePixelRatio;
    const size = [clientWidth, clientHeight].map((length) => Math.max(1, Math.round(length * scale)));
    this.#painter.draw({ ...this.#scene, size, scale, matrices: this.#camera.matrices(size[0] / size[1]) });
  }
}
