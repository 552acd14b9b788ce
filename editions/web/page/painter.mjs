// Draws triangles and edges, as the module holds them, on a canvas: that of the page, or one of a worker.
import { makePrograms, width } from './shaders.mjs';

const red = [0.86, 0.08, 0.16];
const orange = [1, 0.55, 0];
const thickness = 3; // of edges, in pixels of the page

// Rows of `width` texels of `parts` entries each; the last one is filled up.
function makeTexture(gl, entries, parts, [internal, format, type]) {
  const count = entries.length / parts;
  const height = Math.max(1, Math.ceil(count / width));
  if (height > gl.getParameter(gl.MAX_TEXTURE_SIZE)) throw new Error('the mesh is too large for this graphics card');
  const texture = gl.createTexture();
  gl.bindTexture(gl.TEXTURE_2D, texture);
  gl.pixelStorei(gl.UNPACK_ALIGNMENT, 1);
  gl.texStorage2D(gl.TEXTURE_2D, 1, internal, width, height);
  const rows = Math.floor(count / width);
  if (rows > 0) gl.texSubImage2D(gl.TEXTURE_2D, 0, 0, 0, width, rows, format, type, entries);
  const rest = count - rows * width;
  if (rest > 0) gl.texSubImage2D(gl.TEXTURE_2D, 0, 0, rows, rest, 1, format, type, entries.subarray(rows * width * parts));
  gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MIN_FILTER, gl.NEAREST);
  gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MAG_FILTER, gl.NEAREST);
  return texture;
}

function valuesOf({ qualities, pieces, outlines }) {
  const values = new Uint8Array(3 * qualities.length);
  for (let k = 0; k < qualities.length; ++k) {
    values[3 * k] = 255 * Math.min(1, Math.max(0, qualities[k]));
    values[3 * k + 1] = pieces[k] & 255;
    values[3 * k + 2] = outlines[k];
  }
  return values;
}

export class Painter {
  #canvas;
  #gl;
  #programs;
  #textures = {};
  #counts = null;

  /** Throws where there is no WebGL 2. Graphics cards lose what they hold, as when a phone sleeps: `restored` is told then. */
  constructor(canvas, restored) {
    this.#canvas = canvas;
    this.#gl = canvas.getContext('webgl2', { antialias: true });
    if (this.#gl === null) throw new Error('WebGL 2 is missing');
    this.#programs = makePrograms(this.#gl);
    canvas.addEventListener('webglcontextlost', (event) => event.preventDefault()); // else it does not come back
    canvas.addEventListener('webglcontextrestored', () => {
      this.#programs = makePrograms(this.#gl);
      [this.#textures, this.#counts] = [{}, null];
      restored();
    });
  }

  show(arrays) {
    const gl = this.#gl;
    if (gl.isContextLost()) return;
    for (const texture of Object.values(this.#textures)) gl.deleteTexture(texture);
    this.#counts = null;
    const make = (entries, parts, ...form) => makeTexture(gl, entries, parts, form);
    const edges = (list) => make(list, 2, gl.RG32UI, gl.RG_INTEGER, gl.UNSIGNED_INT);
    this.#textures = {
      positions: make(arrays.positions, 3, gl.RGB32F, gl.RGB, gl.FLOAT),
      indices: make(arrays.surface, 3, gl.RGB32UI, gl.RGB_INTEGER, gl.UNSIGNED_INT),
      values: make(valuesOf(arrays), 3, gl.RGB8, gl.RGB, gl.UNSIGNED_BYTE),
      free: edges(arrays.freeEdges),
      shared: edges(arrays.sharedEdges),
    };
    this.#counts = { faces: arrays.surface.length, free: arrays.freeEdges.length, shared: arrays.sharedEdges.length };
  }

  /** `size` is the width and height of the canvas, `scale` how many of its pixels are one of the page. */
  draw({ size, scale, matrices, colouring, lines, cut }) {
    const gl = this.#gl;
    if (this.#canvas.width !== size[0]) this.#canvas.width = size[0];
    if (this.#canvas.height !== size[1]) this.#canvas.height = size[1];
    gl.viewport(0, 0, ...size);
    gl.clearColor(0, 0, 0, 0);
    gl.clear(gl.COLOR_BUFFER_BIT | gl.DEPTH_BUFFER_BIT);
    if (this.#counts === null) return;
    gl.enable(gl.DEPTH_TEST);
    this.#drawFaces({ ...matrices, colouring, lines, cut });
    const { free, shared } = this.#textures;
    const ribbons = { ...matrices, size, thickness: thickness * scale, cut };
    this.#drawEdges(free, this.#counts.free, { ...ribbons, base: red });
    this.#drawEdges(shared, this.#counts.shared, { ...ribbons, base: orange });
  }

  #use({ program, at }, textures, { camera, cut }) {
    const gl = this.#gl;
    gl.useProgram(program);
    Object.entries(textures).forEach(([name, texture], unit) => {
      gl.activeTexture(gl.TEXTURE0 + unit);
      gl.bindTexture(gl.TEXTURE_2D, texture);
      gl.uniform1i(at(name), unit);
    });
    gl.uniformMatrix4fv(at('camera'), false, camera);
    gl.uniform4fv(at('cut'), cut);
  }

  #drawFaces({ turn, colouring, lines, ...common }) {
    const gl = this.#gl;
    const { face } = this.#programs;
    const { positions, indices, values } = this.#textures;
    this.#use(face, { positions, indices, values }, common);
    gl.uniformMatrix3fv(face.at('turn'), false, turn);
    gl.uniform1i(face.at('colouring'), colouring);
    gl.uniform1f(face.at('lines'), lines ? 1 : 0);
    gl.drawArrays(gl.TRIANGLES, 0, this.#counts.faces);
  }

  #drawEdges(indices, entries, { size, thickness, base, ...common }) {
    const gl = this.#gl;
    const { edge } = this.#programs;
    if (entries === 0) return;
    this.#use(edge, { positions: this.#textures.positions, indices }, common);
    gl.uniform2fv(edge.at('size'), size);
    gl.uniform1f(edge.at('thickness'), thickness);
    gl.uniform3fv(edge.at('base'), base);
    gl.drawArrays(gl.TRIANGLES, 0, 3 * entries);
  }
}
