// The package in node: numbers and files against those of the command-line tool, made in the same run.
import assert from 'node:assert/strict';
import { readFileSync, readdirSync } from 'node:fs';
import { basename, join } from 'node:path';
import test from 'node:test';
import { setTimeout as wait } from 'node:timers/promises';
import { setFlagsFromString } from 'node:v8';
import { runInNewContext } from 'node:vm';
import { bracket, hasTool, meshFiles, packageFolder, pageFolder, repository, scratch, toolJson } from './folders.mjs';

const { load, GridworkError, Matrix, formatOf } = await import(join(packageFolder, 'gridwork.mjs'));
const { findChains } = await import(join(packageFolder, 'chains.mjs'));
const gw = await load();
const tetrahedron = new Uint32Array([0, 1, 2, 0, 3, 1, 1, 3, 2, 0, 2, 3]);

const endings = { stl: '.stl', obj: '.obj', medit: '.mesh', vtk: '.vtk', nastran: '.bdf', femap: '.neu' };

async function reportOf(file) {
  const mesh = gw.mesh();
  try {
    await mesh.read(file);
    const { used_nodes, measured_elements, shapes, ...report } = mesh.report();
    return report;
  } catch (error) {
    assert(error instanceof GridworkError, String(error));
    return { error: error.message };
  } finally {
    mesh.free();
  }
}

test('every file is told of as by the tool, in numbers and in words', { skip: !hasTool && 'no tool is built' }, async () => {
  for (const file of meshFiles()) {
    const { schema, command, file: name, error, ...expected } = toolJson('info', file);
    const found = await reportOf(file);
    if (error) assert.equal(found.error, error.message, file);
    else assert.deepEqual(found, expected, file);
  }
});

test('written files are the native ones, byte for byte', { skip: !hasTool && 'no tool is built' }, async () => {
  const mesh = gw.mesh();
  for (const [format, ending] of Object.entries(endings)) {
    for (const file of [bracket, ...meshFiles().filter((_, k) => k % 12 === 1)]) {
      const out = join(scratch, `${basename(file)}${ending}`);
      const answer = toolJson('convert', file, out);
      const written = await mesh.read(file).then(() => mesh.write(format)).catch(() => undefined);
      if (answer.error) assert.equal(written, undefined, `${file} as ${format}`);
      else assert(Buffer.concat(written).equals(readFileSync(out)), `${file} as ${format}`);
    }
  }
  mesh.free();
});

test('elements of nodes that are not there are not written', async () => {
  const mesh = await gw.mesh().read(Buffer.from('v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 -9\n'), { format: 'obj' });
  for (const format of Object.keys(endings)) assert.throws(() => mesh.write(format), /nodes that are not there/, format);
  mesh.free();
});

test('a mesh with faults', async () => {
  const mesh = await gw.mesh().read(join(pageFolder, 'sample.stl'));
  const before = mesh.topology();
  assert(before.freeEdges > 0 && before.sharedEdges > 0);
  assert.equal(mesh.copy('freeEdges').length, 2 * before.freeEdges);
  assert.equal(mesh.copy('sharedEdges').length, 2 * before.sharedEdges);
  const [block] = mesh.blocks;
  assert.deepEqual([block.type, block.rows], ['TRIA3', 3]);
  assert.equal(mesh.view('triangles').length, 3 * block.elements);
  assert.equal(mesh.quality().histogram.reduce((a, b) => a + b), block.elements);
  assert.equal(mesh.quality().worst.length, 10);
  const nodes = mesh.view('coords').length / 3;
  assert.deepEqual([mesh.merge(2) > 0, mesh.removeDegenerated() > 0, mesh.simplify() > 0], [true, true, true]);
  assert(mesh.view('coords').length / 3 < nodes);
  mesh.free();
  assert.throws(() => mesh.report(), { name: 'GridworkError', message: 'the mesh is freed' });
});

test('what is drawn lies round the middle, one quality and one piece a triangle', async () => {
  const mesh = await gw.mesh().read(bracket);
  mesh.draw();
  const positions = mesh.copy('positions');
  const [least, most] = [Math.min(...positions), Math.max(...positions)];
  assert(Math.abs(least + most) < 1e-3 * most);
  assert.deepEqual(mesh.copy('surface'), mesh.copy('triangles'));
  assert.equal(mesh.view('qualities').length, mesh.view('triangles').length / 3);
  assert.equal(new Set(mesh.view('pieces')).size, mesh.topology().pieces);
  mesh.free();
});

test('sides that no element has are not outlined; of solids the boundary is drawn, and is no free edge', async () => {
  const read = (text, format) => gw.mesh().read(new TextEncoder().encode(text), { format });
  const faces = await read('v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 2 0 0\nf 1 2 3 4\nf 2 5 3\n', 'obj');
  faces.draw();
  assert.deepEqual([...faces.copy('surface')], [1, 4, 2, 0, 1, 2, 0, 2, 3]);
  assert.deepEqual([...faces.copy('outlines')], [7, 5, 3]);
  const nodes = 'Vertices 4 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 0';
  const solid = await read(`MeshVersionFormatted 1 Dimension 3 ${nodes} Tetrahedra 1 1 2 3 4 0 End`, 'medit');
  solid.draw();
  assert.equal(solid.copy('surface').length, 12);
  assert.deepEqual([solid.copy('freeEdges').length, solid.topology().freeEdges], [0, 4]);
  for (const mesh of [faces, solid]) mesh.free();
});

test('chains are edges with common nodes', () => {
  const positions = new Float32Array([0, 0, 0, 2, 0, 0, 2, 4, 0, 9, 9, 9, 8, 8, 8]);
  const { count, longest } = findChains(new Uint32Array([4, 3, 2, 0, 1, 2, 0, 1]), positions);
  assert.equal(count, 2);
  assert.deepEqual(longest, [{ edges: 3, middle: [1, 2, 0] }, { edges: 1, middle: [8.5, 8.5, 8.5] }]);
  assert.deepEqual(findChains(new Uint32Array(), positions), { count: 0, longest: [] });
});

test('files are bytes, blobs or paths, and tell of progress', async () => {
  const bytes = readFileSync(bracket);
  const mesh = gw.mesh();
  let last = 0;
  await mesh.read(new Blob([bytes]), { format: 'stl', onProgress: (position, size) => (last = position / size) });
  assert.equal(last, 1);
  const fromBlob = mesh.report();
  await mesh.read(new Uint8Array(bytes), { format: 'stl' });
  assert.deepEqual(mesh.report(), fromBlob);
  await assert.rejects(mesh.read(new Uint8Array(bytes)), { message: 'the format is not known' });
  await assert.rejects(mesh.read(join(scratch, 'absent.stl')), { code: 'ENOENT' });
  assert.equal(formatOf('A.B/part.STL'), 'stl');
  mesh.free();
});

test('what a source or its listener throws ends the reading, and is the cause', async () => {
  const mesh = gw.mesh();
  const fail = (message) => () => {
    throw new Error(message);
  };
  const thrown = (words) => ({ name, message, cause }) =>
    name === 'GridworkError' && cause.message === words && message === `the file was not read: ${words}`;
  await assert.rejects(mesh.read({ size: 1e6, read: fail('gone') }, { format: 'stl' }), thrown('gone'));
  await assert.rejects(mesh.read(bracket, { onProgress: fail('enough') }), thrown('enough'));
  assert.throws(() => gw.stlInput({ size: 1e6, read: fail('gone') }), ({ cause }) => cause.message === 'gone');
  await mesh.read(bracket);
  assert.throws(() => mesh.write('none'), ({ cause }) => cause === undefined);
  mesh.free();
});

test('memory is given back', async () => {
  const mesh = await gw.mesh().read(bracket);
  mesh.free();
  const before = gw.memory;
  for (let k = 0; k < 30; ++k) {
    const one = await gw.mesh().read(bracket);
    one.report();
    one.free();
    gw.getNeighbors(tetrahedron, 'TRIA3', false);
  }
  assert.equal(gw.memory, before);
});

test('a mesh that nobody freed is freed when it is forgotten', async () => {
  setFlagsFromString('--expose-gc');
  const collect = runInNewContext('gc');
  const another = await load();
  const readSome = async () => {
    for (let k = 0; k < 20; ++k) await another.mesh().read(bracket);
    collect();
    await wait(50);
  };
  await readSome();
  const before = another.memory;
  for (let k = 0; k < 3; ++k) await readSome();
  assert(another.memory < 1.5 * before, `${before}, then ${another.memory}`);
});

test('arrays for which the memory has to move', async () => {
  const another = await load();
  const mesh = await another.mesh().read(bracket);
  const [view, copy] = [mesh.view('coords'), mesh.copy('coords')];
  assert.equal(another.maxID(new Uint32Array(20_000_000).fill(7)), 7);
  assert(another.memory > 80_000_000);
  assert.equal(view.length, 0);
  assert.deepEqual(mesh.view('coords'), copy);
});

test('functions on typed arrays', () => {
  const { result, neighbors } = gw.getNeighbors(tetrahedron, 'TRIA3', false);
  assert.equal(result, 0);
  assert.deepEqual([...neighbors.column(0)].sort(), [1, 2, 3]);
  const merged = gw.merge(new Float64Array([0, 0, 0, 1, 0, 0, 1, 0, 0]), 1e-6);
  assert.deepEqual([merged.result, ...merged.newIDs], [1, 0, 1, 1]);
  assert.equal(gw.maxID(tetrahedron), 3);
  assert.equal(gw.checkIDs(gw.matrix(3, tetrahedron), 'TRIA3', 4), true);
  assert.deepEqual([...gw.uniqueIndices(new Uint32Array([5, 1, 5])).ids], [5, 1]);
  const two = [gw.matrix(3, tetrahedron), gw.matrix(2, new Uint32Array([0, 4]))];
  assert.equal(gw.copyEdges(two, [6, 3]).edges.cols, 7);
  assert.equal(gw.hShock(1, 1, 2).shock > 1, true);
  assert.deepEqual([...gw.translate(new Float64Array([0, 0, 0]), [1, 2, 3]).coords.data], [1, 2, 3]);
  assert.deepEqual([...gw.eigenPairs([2, 0, 3]).w].sort(), [2, 3]);
  const box = gw.incBoundingBox(new Float64Array([0, 5, -1]), [0, 0, 0], [0, 0, 0]);
  assert.deepEqual([...box.boxMin, ...box.boxMax], [0, 0, -1, 0, 5, 0]);
});

test('numbers, histograms and lists of matrices come back changed', () => {
  const coords = new Float64Array([0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1e-9]);
  const { result, h } = gw.edgeQualities(coords, tetrahedron, 'TRIA3', new Float64Array(5).fill(1));
  assert.deepEqual([result, h.min, h.max, h.below, h.above, h.notANumber], [6, 1, Math.SQRT2, 0, 0, 0]);
  assert(Math.abs(h.mean - (1 + Math.SQRT2) / 2) < 1e-15);
  assert.deepEqual([...h.bins.entries()].filter(([, n]) => n > 0), [[10, 3], [14, 3]]);
  const parts = [gw.matrix(3, tetrahedron), gw.matrix(2, new Uint32Array([0, 4]))];
  const merged = gw.merge(coords, parts, 1e-6);
  assert.deepEqual(merged.connectivities.map((part) => [...part.data]), [[...tetrahedron], [0, 1]]);
  assert.deepEqual([...merged.newIDs], [0, 1, 2, 3, 1]);
  const { qmin, jmin } = gw.minQuality(coords, tetrahedron, 'TRIA3');
  assert(jmin === 0 && qmin > 0.7 && qmin < 0.72);
});

test('mixed elements: what is no node stays no node', () => {
  const faces = gw.matrix(4, new Uint32Array([0, 1, 2, ~0, 1, 3, 4, 2]));
  assert.deepEqual([...gw.getNeighbors(faces, 'FACE_MIX', false).neighbors.data].filter((n) => n < 2).sort(), [0, 1]);
});

test('nodes are found', () => {
  const detector = gw.nodeDetector(new Float64Array([0, 0, 0, 1, 0, 0, 5, 0, 0]));
  assert.equal(detector.size, 3);
  assert.equal(detector.findClosest([4, 0, 0]), 2);
  assert.equal(detector.findClosest(0), 1);
  assert.deepEqual([...detector.findInBox([-1, -1, -1], [2, 2, 2])].sort(), [0, 1]);
  detector.free();
  assert.throws(() => detector.size, { name: 'GridworkError', message: 'the detector is freed' });
});

test('files by functions', () => {
  const { coords, connectivity } = gw.stlInput(readFileSync(bracket));
  const parts = gw.stlOutput(coords, connectivity, false);
  assert.equal(Buffer.concat(parts).length, 84 + 50 * connectivity.cols);
  assert.deepEqual(gw.stlInput(Buffer.concat(parts)).connectivity.data, connectivity.data);
});

test('what is refused has a code and words', () => {
  const message = 'the connectivity has not the row count of its type';
  assert.throws(() => gw.getNeighbors(gw.matrix(4, new Uint32Array(4)), 'TRIA3', false), { name: 'GridworkError', code: -1, message });
  assert.throws(() => gw.getNeighbors(1), { name: 'TypeError', message: /takes \(connectivity, type, pairNonManifold\)/ });
  assert.throws(() => new Matrix(3, new Float64Array(4)), RangeError);
});

test('the table has every function of the headers', () => {
  const folder = join(repository, 'include/qel/gridwork');
  const known = new Set(Object.keys(gw).map((name) => name.toLowerCase()));
  const formats = readdirSync(join(folder, 'io')).map((file) => `io/${file.replace('.h', '')}`);
  for (const header of ['elements', 'ids', ...formats, 'metrics', 'quality', 'search', 'topology', 'transforms']) {
    const text = readFileSync(join(folder, `${header}.h`), 'utf8').replace(/\/\/[^\n]*/g, '');
    const free = text.replace(/class \w+ \{[^]*?\n\};/g, '');
    for (const [, name] of free.matchAll(/QEL_GRIDWORK_API\s+[\w:]+\s+(\w+)\(/g)) {
      assert(known.has(name.replaceAll('_', '').toLowerCase()), name);
    }
  }
});
