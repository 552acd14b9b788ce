// A mesh in a worker of its own. Messages in: {do, id, ...}; out: {is, id, ...}, arrays transferred.
//   start {module}                  -> ready
//   open {file, format}             -> progress {position, size} ..., report {report, times, memory},
//                                      mesh {arrays, chains, radius}
//   clean {tolerance}               -> cleaned {...counts}, report, mesh
//   draw {}                         -> mesh, if there is one
//   write {format, text}            -> file {parts}
// Where one fails: failed {message, code}. To cancel is to terminate the worker and start another one.
import { findChains } from './chains.mjs';
import { Instance, compile } from './instance.mjs';
import { Mesh } from './mesh.mjs';
import { formatOf } from './names.mjs';

const progressInterval = 100; // ms

let instance;
let mesh;

function send(id, is, message = {}, transferred = []) {
  postMessage({ ...message, id, is }, transferred);
}

function every(interval, report) {
  let last = performance.now();
  return (...values) => {
    const now = performance.now();
    if (now - last < interval) return;
    last = now;
    report(...values);
  };
}

// Engines start with slow code, and go on in it as long as a loop runs: a small mesh makes the fast one ready.
async function warmUp() {
  const triangles = new Uint8Array(84 + 50 * 2000);
  const view = new DataView(triangles.buffer);
  view.setUint32(80, 2000, true);
  for (let k = 0; k < 2000 * 9; ++k) view.setFloat32(84 + 50 * Math.floor(k / 9) + 12 + 4 * (k % 9), Math.sin(k % 6007), true);
  const end = performance.now() + 200;
  while (performance.now() < end) {
    const small = new Mesh(instance);
    await small.read(triangles, { format: 'stl' });
    small.report();
    small.free();
  }
}

async function start({ id, module }) {
  instance = await Instance.of(await compile(module));
  send(id, 'ready');
  await warmUp();
}

// Of the ball round the middle that holds all nodes.
function radiusOf(positions) {
  let most = 0;
  for (let k = 0; k < positions.length; k += 3) {
    most = Math.max(most, positions[k] ** 2 + positions[k + 1] ** 2 + positions[k + 2] ** 2);
  }
  return Number.isFinite(most) && most > 0 ? Math.sqrt(most) : 1;
}

function show(id) {
  mesh.draw();
  const names = ['positions', 'surface', 'qualities', 'pieces', 'outlines', 'freeEdges', 'sharedEdges'];
  const arrays = Object.fromEntries(names.map((name) => [name, mesh.copy(name)]));
  const { positions, freeEdges, sharedEdges } = arrays;
  const chains = { free: findChains(freeEdges, positions), shared: findChains(sharedEdges, positions) };
  const message = { arrays, chains, radius: radiusOf(positions) };
  send(id, 'mesh', message, Object.values(arrays).map((array) => array.buffer));
}

function tell(id, times) {
  const begin = performance.now();
  const report = mesh.report();
  const measured = performance.now();
  send(id, 'report', { report, times: { ...times, measured: measured - begin }, memory: instance.buffer.byteLength });
  show(id);
}

async function open({ id, file, format }) {
  mesh?.free();
  mesh = new Mesh(instance);
  const begin = performance.now();
  const onProgress = every(progressInterval, (position, size) => send(id, 'progress', { position, size }));
  await mesh.read(file, { format: format ?? formatOf(file.name), onProgress });
  tell(id, { read: performance.now() - begin });
}

function clean({ id, tolerance }) {
  const merged = mesh.merge(tolerance);
  const removedElements = mesh.removeDegenerated();
  const removedNodes = mesh.simplify();
  send(id, 'cleaned', { merged, removedElements, removedNodes });
  tell(id, {});
}

function draw({ id }) {
  if (mesh !== undefined) show(id);
}

function write({ id, format, text }) {
  const parts = mesh.write(format, { text });
  send(id, 'file', { parts, format }, parts.map((part) => part.buffer));
}

const tasks = { start, open, clean, draw, write };
let turn = Promise.resolve();

addEventListener('message', ({ data }) => {
  turn = turn.then(() => tasks[data.do](data)).catch((error) => {
    send(data.id, 'failed', { message: error.message, code: error.code ?? null, ended: !(error.name === 'GridworkError') });
  });
});
