// The page in Chromium: as a visitor meets it, held against the command-line tool.
import assert from 'node:assert/strict';
import { closeSync, openSync, readFileSync, writeFileSync, writeSync } from 'node:fs';
import { basename, join } from 'node:path';
import { browse, browser, newPage, pageTest, url } from './browser.mjs';
import { hasTool, meshFiles, pageFolder, repository, scratch, toolJson } from './folders.mjs';

const bracket = join(repository, 'examples/data/bracket.stl');

browse(pageFolder);

async function visit(options = {}, prepare = () => {}) {
  const page = await newPage(options);
  await prepare(page);
  await page.goto(url);
  await page.waitForSelector('body[data-ready]');
  return page;
}

/** Gives a file to the page, and waits for its report or its refusal. */
async function open(page, file) {
  await page.evaluate(() => delete document.body.dataset.shown);
  await page.setInputFiles('#file', file);
  await page.waitForFunction(() => document.body.dataset.shown !== undefined || document.getElementById('error').textContent !== '');
}

const counts = (page) =>
  page.$$eval('#counts tr', (rows) => Object.fromEntries(rows.map((row) => [row.cells[0].textContent, row.cells[1].textContent.replaceAll('\u202f', '')])));

function compare(shown, told, file) {
  const expected = { Nodes: told.nodes, ...told.elements };
  if (told.valid) Object.assign(expected, { Pieces: told.topology.pieces, 'Unused nodes': told.topology.unused_nodes });
  if (told.topology?.dim === 2) Object.assign(expected, { Edges: told.topology.sides, 'Free edges': told.topology.open, 'Edges of 3 or more elements': told.topology.non_manifold });
  if (told.topology?.dim === 3) Object.assign(expected, { Faces: told.topology.sides, 'Faces on the boundary': told.topology.open });
  for (const [name, value] of Object.entries(expected)) assert.equal(Number(shown[name]), value, `${file}: ${name}`);
}

pageTest('the sample is shown with its faults', async () => {
  const page = await visit();
  await page.click('#sample');
  await page.waitForSelector('body[data-shown]');
  assert.match(await page.textContent('#verdict'), /^Open: \d+ free edges, \d+ edges? of 3 or more elements\.$/);
  const painted = await page.$eval('#canvas', (canvas) => new Promise((resolve) => {
    requestAnimationFrame(() => requestAnimationFrame(() => resolve(canvas.width > 300)));
  }));
  assert(painted);
  await page.click('.worst button');
  assert.deepEqual(page.faults, []);
  await page.context().close();
});

pageTest('numbers and words of every file are the tool\'s', async (t) => {
  if (!hasTool) return t.skip('no tool is built');
  const page = await visit();
  for (const file of meshFiles()) {
    const told = toolJson('info', file);
    await open(page, file);
    const error = await page.textContent('#error');
    if (told.error) assert.equal(error, `${basename(file)}: ${told.error.message}.`);
    else assert.equal(error, '', file);
    if (!told.error) compare(await counts(page), told, file);
  }
  assert.deepEqual(page.faults, []);
  await page.context().close();
});

pageTest('saved files are the tool\'s, byte for byte', async (t) => {
  if (!hasTool) return t.skip('no tool is built');
  const page = await visit({ acceptDownloads: true });
  await open(page, bracket);
  for (const [name, ending] of [['STL', 'stl'], ['OBJ', 'obj'], ['VTK', 'vtk'], ['MEDIT', 'mesh'], ['NASTRAN', 'bdf'], ['FEMAP', 'neu']]) {
    const [download] = await Promise.all([page.waitForEvent('download'), page.click(`#save button:text-is("${name}")`)]);
    const expected = join(scratch, `saved.${ending}`);
    toolJson('convert', bracket, expected);
    assert.equal(download.suggestedFilename(), `bracket.${ending}`);
    assert(readFileSync(await download.path()).equals(readFileSync(expected)), name);
  }
  await page.context().close();
});

pageTest('files are dropped and repaired; names are text, not markup', async () => {
  const page = await visit();
  const bytes = readFileSync(join(pageFolder, 'sample.stl')).toString('base64');
  await page.evaluate((encoded) => {
    const data = new DataTransfer();
    data.items.add(new File([Uint8Array.from(atob(encoded), (c) => c.charCodeAt(0))], '<img src=x onerror=alert(1)>.stl'));
    dispatchEvent(new DragEvent('drop', { dataTransfer: data }));
  }, bytes);
  await page.waitForSelector('body[data-shown]');
  assert.equal(await page.textContent('#name'), '<img src=x onerror=alert(1)>.stl');
  assert.equal(await page.$('img'), null);
  await page.fill('#tolerance', '2');
  await page.click('#repair button');
  await page.waitForFunction(() => document.getElementById('cleaned').textContent !== '');
  assert.match(await page.textContent('#cleaned'), /^Merged \d+ nodes; removed \d+ elements and \d+ nodes\.$/);
  assert.deepEqual(page.faults, []);
  await page.context().close();
});

pageTest('what is no mesh is refused in words, and the next file is read', async () => {
  const page = await visit();
  const given = (name, text) => ({ name, mimeType: 'application/octet-stream', buffer: Buffer.from(text) });
  for (const [file, words] of [
    [given('letter.txt', 'Dear all'), /the format is not known/],
    [given('letter.stl', 'Dear all'), /this is not an STL file/],
    [given('empty.obj', ''), /the file is empty/],
    [given('half.stl', 'solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0'), /cut short/],
  ]) {
    await open(page, file);
    assert.match(await page.textContent('#error'), words);
  }
  await open(page, bracket);
  assert.equal(await page.textContent('#error'), '');
  assert.equal(await page.textContent('#verdict'), 'Closed: no free edges.');
  await page.context().close();
});

pageTest('no request goes out once the page is there; it works offline', async () => {
  const page = await visit();
  await page.evaluate(() => navigator.serviceWorker.ready);
  await page.waitForFunction(() => navigator.serviceWorker.controller !== null);
  const before = page.requests.length;
  await open(page, bracket);
  await page.click('#save button');
  assert.equal(page.requests.slice(before).filter((request) => !request.startsWith('blob:')).length, 0);
  assert(page.requests.every((request) => request.startsWith(url) || request.startsWith('blob:')));
  await page.context().setOffline(true);
  await page.reload();
  await page.click('#sample');
  await page.waitForSelector('body[data-shown]');
  await page.context().close();
});

pageTest('without WebGL there are the numbers', async () => {
  const page = await visit({}, (p) => p.addInitScript(() => (HTMLCanvasElement.prototype.getContext = () => null)));
  await open(page, bracket);
  assert(await page.isVisible('#blind'));
  assert.equal((await counts(page)).TRIA3, '4904');
  assert.deepEqual(page.faults, []);
  await page.context().close();
});

// All that can be reached has a name, by the keyboard in the order of the page.
const controls = (page) =>
  page.$$eval('button, input, select, canvas', (all) => all.filter((e) => e.checkVisibility()).map((e) => ({
    tag: e.tagName, height: (e.closest('label.button') ?? e).getBoundingClientRect().height,
    name: e.getAttribute('aria-label') ?? e.labels?.[0]?.textContent ?? e.textContent,
  })));

pageTest('controls have names, a phone has room for them, and the keyboard reaches all', async () => {
  const page = await visit({ viewport: { width: 375, height: 700 }, isMobile: true, hasTouch: true });
  await open(page, bracket);
  const all = await controls(page);
  for (const { tag, name, height } of all) {
    assert(name?.trim(), tag);
    assert(height >= 44, `${name}: ${height}`);
  }
  assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), 375);
  const seen = [];
  await page.focus('#file');
  for (let k = 0; k < all.length; ++k) {
    seen.push(await page.evaluate(() => document.activeElement.tagName));
    await page.keyboard.press('Tab');
  }
  assert.deepEqual(seen, all.map(({ tag }) => tag));
  await page.focus('#canvas');
  for (const key of ['ArrowLeft', 'ArrowUp', '+', '-', '3', 'Home']) await page.keyboard.press(key);
  assert.deepEqual(page.faults, []);
  await page.context().close();
});

// A wavy sheet of 2 n n triangles as binary STL.
function writeSheet(path, n) {
  const file = openSync(path, 'w');
  const header = Buffer.alloc(84);
  header.writeUInt32LE(2 * n * n, 80);
  writeSync(file, header);
  const row = Buffer.alloc(100 * n);
  const put = (at, i, j) => [i, j, Math.sin(i / 50) * Math.cos(j / 50) * 20].forEach((x, k) => row.writeFloatLE(x, at + 4 * k));
  for (let j = 0; j < n; ++j) {
    for (let i = 0; i < n; ++i) {
      [[0, 0], [1, 0], [0, 1]].forEach(([a, b], k) => put(100 * i + 12 * (k + 1), i + a, j + b));
      [[1, 0], [1, 1], [0, 1]].forEach(([a, b], k) => put(100 * i + 50 + 12 * (k + 1), i + a, j + b));
    }
    writeSync(file, row);
  }
  closeSync(file);
}

async function rendererPeak(page) {
  const session = await browser.newBrowserCDPSession();
  const { processInfo } = await session.send('SystemInfo.getProcessInfo');
  const peaks = processInfo.filter((p) => p.type === 'renderer').map((p) => {
    const status = readFileSync(`/proc/${p.id}/status`, 'utf8');
    return Number(/VmHWM:\s+(\d+)/.exec(status)[1]) / 1024;
  });
  return Math.max(...peaks);
}

pageTest('200 MB: cancelled at once, then read within 800 MiB, the page never waiting', async (t) => {
  const large = join(scratch, 'large.stl');
  writeSheet(large, 1414);
  const page = await visit({}, (p) => p.addInitScript(() => (HTMLCanvasElement.prototype.getContext = () => null)));
  await page.setInputFiles('#file', large);
  await page.click('#cancel');
  assert.equal(await page.textContent('#error'), 'Cancelled.');
  await page.evaluate(() => {
    window.pause = 0;
    let last = performance.now();
    setInterval(() => {
      window.pause = Math.max(window.pause, performance.now() - last);
      last = performance.now();
    }, 5);
  });
  await open(page, large);
  assert.equal((await counts(page)).TRIA3, String(2 * 1414 * 1414));
  const [peak, pause] = [await rendererPeak(page), await page.evaluate(() => window.pause)];
  t.diagnostic(`renderer ${peak.toFixed(0)} MiB, longest pause ${pause.toFixed(0)} ms, ${await page.textContent('#times')}`);
  assert(peak < 800, `${peak} MiB`);
  writeFileSync(large, '');
  await page.context().close();
});
