// How fast the package and the page are, beside the native library, three.js and meshoptimizer, at a million triangles:
// scripts/web.sh --speed. Times are the least of several, in milliseconds: of the processor beside the native library, of the
// clock in pages.
import { execFileSync } from 'node:child_process';
import { writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { newPage, start, stop, url } from '../test/browser.mjs';
import { build, packageFolder } from '../test/folders.mjs';
import { writeSheet } from '../test/sheet.mjs';
import { open } from '../test/visitor.mjs';

const { load } = await import(join(packageFolder, 'gridwork.mjs'));
const native = join(build, 'native');
const rounds = 5;
const files = { binary: join(build, 'large.stl'), text: join(build, 'large_text.stl'), OBJ: join(build, 'large.obj') };

// Of the processor's time, which is what the native program tells of itself.
async function leastOf(count, run) {
  let least = Infinity;
  for (let k = 0; k < count; ++k) {
    const begin = process.cpuUsage();
    await run();
    const { user, system } = process.cpuUsage(begin);
    least = Math.min(least, (user + system) / 1000);
  }
  return least;
}

async function writeFiles(gw) {
  writeSheet(files.binary, 708);
  const mesh = await gw.mesh().read(files.binary);
  writeFileSync(files.text, Buffer.concat(mesh.write('stl', { text: true })));
  writeFileSync(files.OBJ, Buffer.concat(mesh.write('obj')));
  mesh.free();
}

const line = (name, ours, theirs, goal) => {
  const ratio = ours / theirs;
  console.log(`${name.padEnd(58)} ${ours.toFixed(0).padStart(6)} ${theirs.toFixed(0).padStart(6)} ${ratio.toFixed(2).padStart(6)}  ${goal}`);
};

async function besideNative(gw) {
  const mesh = gw.mesh();
  for (const [name, file] of Object.entries(files)) {
    const theirs = Number(execFileSync(native, [file]));
    line(`read and merge, ${name}: node : native`, await leastOf(rounds + 2, () => mesh.read(file)), theirs, '<= 1.5');
  }
  mesh.free();
}

// In a page: the package's worker, then what others do with the same bytes.
async function readWithOthers(count) {
  const least = async (run) => {
    let best = Infinity;
    for (let k = 0; k < count; ++k) {
      const begin = performance.now();
      await run();
      best = Math.min(best, performance.now() - begin);
    }
    return best;
  };
  const get = async (path) => (await fetch(path)).arrayBuffer();
  const [binary, text] = [await get('/large.stl'), await get('/large_text.stl')];
  const { Client } = await import('/package/client.mjs');
  const { STLLoader } = await import('three/addons/loaders/STLLoader.js');
  const { mergeVertices } = await import('three/addons/utils/BufferGeometryUtils.js');
  const { MeshoptEncoder, MeshoptSimplifier } = await import('meshoptimizer');
  await MeshoptSimplifier.ready;
  const client = await Client.start();
  const ours = async (bytes) => {
    const file = new File([bytes], 'large.stl'); // one: browsers hold few copies of it
    let best = Infinity;
    for (let k = 0; k < count; ++k) {
      const { times } = await client.open(file);
      best = Math.min(best, times.read);
    }
    return best;
  };
  const parse = (bytes) => new STLLoader().parse(bytes).deleteAttribute('normal');
  // As much of meshoptimizer as does the same: equal positions become one.
  const remap = () => {
    const view = new DataView(binary);
    const triangles = view.getUint32(80, true);
    const positions = new Float32Array(9 * triangles);
    for (let t = 0; t < triangles; ++t) {
      for (let k = 0; k < 9; ++k) positions[9 * t + k] = view.getFloat32(96 + 50 * t + 4 * k, true);
    }
    return MeshoptSimplifier.generatePositionRemap(positions, 3);
  };
  return {
    ours: await ours(binary), oursText: await ours(text), three: await least(() => mergeVertices(parse(binary), 1e-6)),
    threeText: await least(() => parse(text)), meshoptimizer: await least(remap),
  };
}

const imports = '{"imports":{"three":"/node_modules/three/build/three.module.js","three/addons/":"/node_modules/three/examples/jsm/","meshoptimizer":"/node_modules/meshoptimizer/index.js"}}';

async function besideOthers() {
  writeFileSync(join(build, 'speed.html'), `<!doctype html><title>speed</title><script type="importmap">${imports}</script>`);
  const page = await newPage({ bypassCSP: true });
  await page.goto(`${url}speed.html`);
  const found = await page.evaluate(readWithOthers, rounds);
  line('read and merge, binary: the worker : three.js', found.ours, found.three, '<= 0.25');
  line('read and merge, text: the worker : three.js, which only reads', found.oursText, found.threeText, '<= 0.33');
  line('read and merge, binary: the worker : meshoptimizer, equal nodes', found.ours, found.meshoptimizer, '<= 2');
  await page.context().close();
}

async function watchPauses(page) {
  await page.evaluate(() => {
    window.pause = 0;
    let last = performance.now();
    setInterval(() => {
      window.pause = Math.max(window.pause, performance.now() - last);
      last = performance.now();
    }, 4);
  });
}

// From the file that is given to the numbers on the screen, each time in a new visit.
async function inThePage() {
  const found = { numbers: [], pauses: [] };
  for (let k = 0; k < rounds; ++k) {
    const page = await newPage();
    await page.goto(`${url}page/`);
    await page.waitForSelector('body[data-ready]');
    await page.waitForTimeout(1000);
    await watchPauses(page);
    const begin = performance.now();
    await open(page, files.binary);
    found.numbers.push(performance.now() - begin);
    await page.waitForTimeout(3000);
    found.pauses.push(await page.evaluate(() => window.pause));
    await page.context().close();
  }
  line('the page: file to numbers, first file of a visit, at most', Math.max(...found.numbers), 1000, '<= 1');
  line('the page: longest pause, with the picture', Math.max(...found.pauses), 100, '<= 1');
}

const gw = await load();
await writeFiles(gw);
console.log(`${'a million triangles, ms'.padEnd(58)} ${'ours'.padStart(6)} ${'theirs'.padStart(6)} ${'ratio'.padStart(6)}  goal`);
await besideNative(gw);
await start(build);
await besideOthers();
await inThePage();
await stop();
