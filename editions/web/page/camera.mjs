// Where the picture is seen from: without perspective, round a point of the mesh.

const views = {
  1: [0, 0], 2: [Math.PI, 0], 3: [Math.PI / 2, 0], 4: [-Math.PI / 2, 0], 5: [0, Math.PI / 2], 6: [0, -Math.PI / 2],
  7: [-0.6, 0.5],
};

// Column by column: z is up, and towards the viewer at a pitch of a right angle.
function turnOf(yaw, pitch) {
  const [a, b, c, d] = [Math.cos(yaw), Math.sin(yaw), Math.cos(pitch), Math.sin(pitch)];
  return [a, -b * d, b * c, b, a * d, -a * c, 0, c, d];
}

const limit = (value, least, most) => Math.min(most, Math.max(least, value));

export class Camera {
  radius = 1; // of the mesh
  #yaw = 0;
  #pitch = 0;
  #zoom = 1;
  #target = [0, 0, 0];

  constructor() {
    this.look('7');
  }

  /** One of the standard views 1 to 7, of everything. */
  look(key) {
    [this.#yaw, this.#pitch] = views[key];
    this.#zoom = 1;
    this.#target = [0, 0, 0];
  }

  /** Brings a point, relative to the middle, close into view. */
  approach(point) {
    this.#target = point;
    this.#zoom = 12;
  }

  turn(x, y) {
    this.#yaw += x;
    this.#pitch = limit(this.#pitch + y, -Math.PI / 2, Math.PI / 2);
  }

  zoom(factor) {
    this.#zoom = limit(this.#zoom * factor, 0.1, 1e4);
  }

  /** The matrices of the programs, for a canvas of that width over height. Depths lie between -1 and 1. */
  matrices(aspect) {
    const turn = turnOf(this.#yaw, this.#pitch);
    const scale = this.#zoom / this.radius;
    const sizes = [scale / Math.max(1, aspect), scale * Math.min(1, aspect), -0.5 / this.radius];
    const camera = new Float32Array(16);
    for (let row = 0; row < 3; ++row) {
      for (let column = 0; column < 3; ++column) {
        camera[4 * column + row] = sizes[row] * turn[3 * column + row];
        camera[12 + row] -= camera[4 * column + row] * this.#target[column];
      }
    }
    camera[14] = limit(camera[14], -0.4, 0.4);
    camera[15] = 1;
    return { camera, turn };
  }
}
