// The two programs of the picture: faces, and edges as ribbons. Positions, indices and values are textures in which each
// vertex looks itself up, so that nothing is copied corner by corner.

export const width = 2048; // of the textures; a power of 2
const shift = 11;

const lookUp = `#version 300 es
precision highp float;
precision highp int;
uniform highp sampler2D positions;
uniform highp usampler2D indices;
uniform mat4 camera;
ivec2 at(int k) { return ivec2(k & ${width - 1}, k >> ${shift}); }
vec3 node(uint n) { return texelFetch(positions, at(int(n)), 0).xyz; }
out vec3 place;
`;

// What lies beyond the cutting plane is not drawn.
const cutAway = `
precision highp float;
in vec3 place;
uniform vec4 cut;
out vec4 colour;
void cutAway() { if (dot(place, cut.xyz) > cut.w) discard; }
`;

// A side of a triangle that is none of its element's, as the diagonal of a quadrangle, stays far away.
const faceVertex = `${lookUp}
uniform highp sampler2D values;
uniform int colouring;
flat out vec3 base;
out vec3 toSides;
vec3 ramp(float q) {
  vec3 bad = vec3(0.84, 0.24, 0.10), middle = vec3(0.96, 0.86, 0.55), good = vec3(0.17, 0.47, 0.71);
  return q < 0.5 ? mix(bad, middle, clamp(2.0 * q, 0.0, 1.0)) : mix(middle, good, clamp(2.0 * q - 1.0, 0.0, 1.0));
}
vec3 hue(float k) { return 0.62 + 0.3 * cos(6.2832 * (k * 0.61803 + vec3(0.5, 0.83, 0.17))); }
void main() {
  int triangle = gl_VertexID / 3, corner = gl_VertexID % 3;
  place = node(texelFetch(indices, at(triangle), 0)[corner]);
  vec3 value = texelFetch(values, at(triangle), 0).xyz;
  int sides = int(value.z * 255.0 + 0.5);
  toSides = vec3(corner == 0, corner == 1, corner == 2) + 9.0 * vec3((sides & 1) == 0, (sides & 2) == 0, (sides & 4) == 0);
  base = colouring == 1 ? ramp(value.x) : colouring == 2 ? hue(value.y * 255.0) : vec3(0.72, 0.75, 0.79);
  gl_Position = camera * vec4(place, 1.0);
}`;

// Where triangles are hardly larger than pixels, lines would be all that is seen.
const faceFragment = `#version 300 es${cutAway}
flat in vec3 base;
in vec3 toSides;
uniform mat3 turn;
uniform float lines;
void main() {
  cutAway();
  vec3 normal = turn * normalize(cross(dFdx(place), dFdy(place)));
  float light = 0.38 + 0.62 * abs(dot(normalize(normal), normalize(vec3(0.25, 0.35, 1.0))));
  vec3 pixel = max(fwidth(toSides), 1e-6), near = smoothstep(vec3(0.1), vec3(0.8), toSides / pixel);
  float line = 1.0 - min(near.x, min(near.y, near.z));
  line *= lines * (1.0 - smoothstep(0.15, 0.5, max(pixel.x, max(pixel.y, pixel.z))));
  colour = vec4(base * light * (1.0 - 0.55 * line), 1.0);
}`;

// An edge is a ribbon of two triangles, and lies a little before its faces.
const edgeVertex = `${lookUp}
uniform vec2 size;
uniform float thickness;
void main() {
  uvec4 ends = texelFetch(indices, at(gl_VertexID / 6), 0);
  int corner = int[6](0, 1, 2, 2, 1, 3)[gl_VertexID % 6];
  vec3 first = node(ends.x), second = node(ends.y);
  vec4 a = camera * vec4(first, 1.0), b = camera * vec4(second, 1.0);
  vec2 along = (b.xy - a.xy) * size;
  vec2 across = length(along) > 0.0 ? normalize(vec2(-along.y, along.x)) : vec2(1.0, 0.0);
  place = corner < 2 ? first : second;
  float side = (corner & 1) == 0 ? -1.0 : 1.0;
  gl_Position = (corner < 2 ? a : b) + vec4(side * across * thickness / size, -0.002, 0.0);
}`;

const edgeFragment = `#version 300 es${cutAway}
uniform vec3 base;
void main() {
  cutAway();
  colour = vec4(base, 1.0);
}`;

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

export const makePrograms = (gl) => ({
  face: compile(gl, faceVertex, faceFragment),
  edge: compile(gl, edgeVertex, edgeFragment),
});
