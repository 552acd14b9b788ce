// Draws triangles as the module holds them: positions, indices and values are textures in which each vertex looks itself
// up, so that nothing is copied corner by corner.

const width = 2048; // of the textures; a power of 2
const shift = 11;

const lookUp = `#version 300 es
precision highp float;
precision highp int;
uniform highp sampler2D positions;
uniform highp usampler2D indices;
uniform mat4 camera;
ivec2 at(int k) { return ivec2(k & ${width - 1}, k >> ${shift}); }
vec3 node(uint n) { return texelFetch(positions, at(int(n)), 0).xyz; }
`;

const faceVertex = `${lookUp}
uniform highp sampler2D values;
uniform int colouring;
out vec3 place;
flat out vec3 base;
vec3 ramp(float q) {
  vec3 bad = vec3(0.84, 0.24, 0.10), middle = vec3(0.96, 0.86, 0.55), good = vec3(0.17, 0.47, 0.71);
  return q < 0.5 ? mix(bad, middle, clamp(2.0 * q, 0.0, 1.0)) : mix(middle, good, clamp(2.0 * q - 1.0, 0.0, 1.0));
}
vec3 hue(float k) { return 0.62 + 0.3 * cos(6.2832 * (k * 0.61803 + vec3(0.5, 0.83, 0.17))); }
void main() {
  int triangle = gl_VertexID / 3;
  place = node(texelFetch(indices, at(triangle), 0)[gl_VertexID % 3]);
  vec2 value = texelFetch(values, at(triangle), 0).xy;
  base = colouring == 1 ? ramp(value.x) : colouring == 2 ? hue(value.y) : vec3(0.72, 0.75, 0.79);
  gl_Position = camera * vec4(place, 1.0);
}`;

const faceFragment = `#version 300 es
precision highp float;
in vec3 place;
flat in vec3 base;
uniform mat3 turn;
out vec4 colour;
void main() {
  vec3 normal = turn * normalize(cross(dFdx(place), dFdy(place)));
  float light = 0.38 + 0.62 * abs(dot(normalize(normal), normalize(vec3(0.25, 0.35, 1.0))));
  colour = vec4(base * light, 1.0);
}`;

// An edge is a ribbon of two triangles, and lies a little before its faces.
const edgeVertex = `${lookUp}
uniform vec2 size;
uniform float thickness;
void main() {
  uvec4 ends = texelFetch(indices, at(gl_VertexID / 6), 0);
  int corner = int[6](0, 1, 2, 2, 1, 3)[gl_VertexID % 6];
  vec4 a = camera * vec4(node(ends.x), 1.0), b = camera * vec4(node(ends.y), 1.0);
  vec2 along = (b.xy - a.xy) * size;
  vec2 across = length(along) > 0.0 ? normalize(vec2(-along.y, along.x)) : vec2(1.0, 0.0);
  vec4 end = corner < 2 ? a : b;
  float side = (corner & 1) == 0 ? -1.0 : 1.0;
  gl_Position = end + vec4(side * across * thickness / size, -0.002, 0.0);
}`;

const edgeFragment = `#version 300 es
precision highp float;
uniform vec3 base;
out vec4 colour;
void main() { colour = vec4(base, 1.0); }`;

function compile(gl, vertex, fragment) {
  const program = gl.createProgram();
  for (const [type, text] of [[gl.VERTEX_SHADER, vertex], [gl.FRAGMENT_SHADER, fragment]]) {
    const shader = gl.createShader(type);
    gl.shaderSource(shader, text);
    gl.compileShader(shader);
    gl.attachShader(program, shader);
  }
  gl.linkProgram(program);
  if (!gl.getProgramParameter(program, gl.LINK_STATUS)) throw new Error(gl.getProgramInfoLog(program) || 'WebGL failed');
  return { program, at: (name) => gl.getUniformLocation(program, name) };
}

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

function valuesOf(qualities, pieces) {
  const values = new Uint8Array(2 * qualities.length);
  for (let k = 0; k < qualities.length; ++k) {
    values[2 * k] = 255 * Math.min(1, Math.max(0, qualities[k]));
    values[2 * k + 1] = pieces[k] & 255;
  }
  return values;
}

const turnOf = (yaw, pitch) => {
  const [a, b, c, d] = [Math.cos(yaw), Math.sin(yaw), Math.cos(pitch), Math.sin(pitch)];
  // Column by column: z is up, and towards the viewer at a pitch of a right angle.
  return [a, -b * d, b * c, b, a * d, -a * c, 0, c, d];
};

const views = {
  1: [0, 0], 2: [Math.PI, 0], 3: [Math.PI / 2, 0], 4: [-Math.PI / 2, 0], 5: [0, Math.PI / 2], 6: [0, -Math.PI / 2],
  7: [-0.6, 0.5],
};

export class Viewer {
  #canvas;
  #gl;
  #face;
  #edge;
  #textures = [];
  #drawn = null;
  #colouring = 0;
  #camera = { yaw: -0.6, pitch: 0.5, zoom: 1, target: [0, 0, 0], radius: 1 };
  #planned = false;

  /** Throws where there is no WebGL 2. */
  constructor(canvas) {
    this.#canvas = canvas;
    this.#gl = canvas.getContext('webgl2', { antialias: true });
    if (this.#gl === null) throw new Error('WebGL 2 is missing');
    this.#face = compile(this.#gl, faceVertex, faceFragment);
    this.#edge = compile(this.#gl, edgeVertex, edgeFragment);
    this.#listen();
    new ResizeObserver(() => this.#plan()).observe(canvas);
  }

  show({ positions, surface, qualities, pieces, freeEdges, sharedEdges }) {
    const gl = this.#gl;
    for (const texture of this.#textures) gl.deleteTexture(texture);
    const make = (entries, parts, ...form) => makeTexture(gl, entries, parts, form);
    const edges = (list) => make(list, 2, gl.RG32UI, gl.RG_INTEGER, gl.UNSIGNED_INT);
    this.#drawn = {
      positions: make(positions, 3, gl.RGB32F, gl.RGB, gl.FLOAT),
      indices: make(surface, 3, gl.RGB32UI, gl.RGB_INTEGER, gl.UNSIGNED_INT),
      values: make(valuesOf(qualities, pieces), 2, gl.RG8, gl.RG, gl.UNSIGNED_BYTE),
      free: edges(freeEdges),
      shared: edges(sharedEdges),
      counts: { faces: surface.length, free: freeEdges.length, shared: sharedEdges.length },
    };
    this.#textures = Object.values(this.#drawn).slice(0, 5);
    this.#camera.radius = this.#radiusOf(positions);
    this.look('7');
  }

  #radiusOf(positions) {
    let most = 0;
    for (let k = 0; k < positions.length; k += 3) {
      most = Math.max(most, positions[k] ** 2 + positions[k + 1] ** 2 + positions[k + 2] ** 2);
    }
    return Number.isFinite(most) && most > 0 ? Math.sqrt(most) : 1;
  }

  /** 0: plain, 1: by quality, 2: by piece. */
  colour(colouring) {
    this.#colouring = colouring;
    this.#plan();
  }

  /** One of the standard views 1 to 7, of everything. */
  look(key) {
    const [yaw, pitch] = views[key];
    Object.assign(this.#camera, { yaw, pitch, zoom: 1, target: [0, 0, 0] });
    this.#plan();
  }

  /** Brings a point, relative to the middle, close into view. */
  approach(point) {
    Object.assign(this.#camera, { target: point, zoom: 12 });
    this.#plan();
  }

  #turn(x, y) {
    this.#camera.yaw += x;
    this.#camera.pitch = Math.min(Math.PI / 2, Math.max(-Math.PI / 2, this.#camera.pitch + y));
    this.#plan();
  }

  #zoom(factor) {
    this.#camera.zoom = Math.min(1e4, Math.max(0.1, this.#camera.zoom * factor));
    this.#plan();
  }

  #plan() {
    if (this.#planned) return;
    this.#planned = true;
    requestAnimationFrame(() => {
      this.#planned = false;
      this.#draw();
    });
  }

  // Without perspective; depths of the whole mesh lie between -1 and 1.
  #matrix(turn) {
    const { zoom, target, radius } = this.#camera;
    const aspect = this.#canvas.width / this.#canvas.height;
    const scale = zoom / radius;
    const sizes = [scale / Math.max(1, aspect), scale * Math.min(1, aspect), -0.5 / radius];
    const matrix = new Float32Array(16);
    for (let row = 0; row < 3; ++row) {
      for (let column = 0; column < 3; ++column) {
        matrix[4 * column + row] = sizes[row] * turn[3 * column + row];
        matrix[12 + row] -= matrix[4 * column + row] * target[column];
      }
    }
    matrix[14] = Math.max(-0.4, Math.min(0.4, matrix[14]));
    matrix[15] = 1;
    return matrix;
  }

  #draw() {
    const gl = this.#gl;
    const scale = devicePixelRatio;
    this.#canvas.width = Math.max(1, Math.round(this.#canvas.clientWidth * scale));
    this.#canvas.height = Math.max(1, Math.round(this.#canvas.clientHeight * scale));
    gl.viewport(0, 0, this.#canvas.width, this.#canvas.height);
    gl.clearColor(0, 0, 0, 0);
    gl.clear(gl.COLOR_BUFFER_BIT | gl.DEPTH_BUFFER_BIT);
    if (this.#drawn === null) return;
    gl.enable(gl.DEPTH_TEST);
    const turn = turnOf(this.#camera.yaw, this.#camera.pitch);
    const camera = this.#matrix(turn);
    this.#drawFaces(camera, turn);
    const { free, shared, counts } = this.#drawn;
    this.#drawEdges(camera, free, counts.free, [0.86, 0.08, 0.16]);
    this.#drawEdges(camera, shared, counts.shared, [1, 0.55, 0]);
  }

  #bind(program, textures) {
    const gl = this.#gl;
    gl.useProgram(program.program);
    Object.entries(textures).forEach(([name, texture], unit) => {
      gl.activeTexture(gl.TEXTURE0 + unit);
      gl.bindTexture(gl.TEXTURE_2D, texture);
      gl.uniform1i(program.at(name), unit);
    });
  }

  #drawFaces(camera, turn) {
    const gl = this.#gl;
    const { positions, indices, values, counts } = this.#drawn;
    this.#bind(this.#face, { positions, indices, values });
    gl.uniformMatrix4fv(this.#face.at('camera'), false, camera);
    gl.uniformMatrix3fv(this.#face.at('turn'), false, turn);
    gl.uniform1i(this.#face.at('colouring'), this.#colouring);
    gl.drawArrays(gl.TRIANGLES, 0, counts.faces);
  }

  #drawEdges(camera, indices, entries, colour) {
    const gl = this.#gl;
    if (entries === 0) return;
    this.#bind(this.#edge, { positions: this.#drawn.positions, indices });
    gl.uniformMatrix4fv(this.#edge.at('camera'), false, camera);
    gl.uniform2f(this.#edge.at('size'), this.#canvas.width, this.#canvas.height);
    gl.uniform1f(this.#edge.at('thickness'), 3 * devicePixelRatio);
    gl.uniform3fv(this.#edge.at('base'), colour);
    gl.drawArrays(gl.TRIANGLES, 0, 3 * entries);
  }

  #listen() {
    const fingers = new Map();
    const canvas = this.#canvas;
    const apart = () => {
      const [a, b] = [...fingers.values()];
      return Math.hypot(a.x - b.x, a.y - b.y);
    };
    canvas.addEventListener('pointerdown', (event) => {
      canvas.setPointerCapture(event.pointerId);
      fingers.set(event.pointerId, { x: event.clientX, y: event.clientY });
    });
    canvas.addEventListener('pointermove', (event) => {
      const finger = fingers.get(event.pointerId);
      if (finger === undefined) return;
      const before = fingers.size === 2 ? apart() : 0;
      const [dx, dy] = [event.clientX - finger.x, event.clientY - finger.y];
      Object.assign(finger, { x: event.clientX, y: event.clientY });
      if (fingers.size === 1) this.#turn(dx / 120, dy / 120);
      else if (before > 0) this.#zoom(apart() / before);
    });
    for (const end of ['pointerup', 'pointercancel']) canvas.addEventListener(end, (event) => fingers.delete(event.pointerId));
    canvas.addEventListener('wheel', (event) => {
      event.preventDefault();
      this.#zoom(Math.exp(-event.deltaY / 500));
    }, { passive: false });
    canvas.addEventListener('keydown', (event) => this.#press(event));
  }

  #press(event) {
    const step = 0.15;
    const keys = {
      ArrowLeft: () => this.#turn(-step, 0), ArrowRight: () => this.#turn(step, 0), ArrowUp: () => this.#turn(0, step),
      ArrowDown: () => this.#turn(0, -step), '+': () => this.#zoom(1.25), '-': () => this.#zoom(0.8),
      Home: () => this.look('7'),
    };
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const act = event.key in views ? () => this.look(event.key) : keys[event.key];
    if (act === undefined) return;
    event.preventDefault();
    act();
  }
}
