// The page in Chromium: numbers, words and files, held against the command-line tool.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { basename, join } from 'node:path';
import { browse, pageTest } from './browser.mjs';
import { bracket, hasTool, meshFiles, pageFolder, scratch, toolJson } from './folders.mjs';
import { counts, open, visit } from './visitor.mjs';

browse(pageFolder);

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
  await page.click('.places button');
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
  await page.fill('#tolerance', 'much');
  await page.click('#repair button');
  assert.match(await page.textContent('#cleaned'), /no number/);
  await page.fill('#tolerance', '2');
  await page.click('#repair button');
  await page.waitForFunction(() => document.getElementById('cleaned').textContent.startsWith('Merged'));
  assert.match(await page.textContent('#cleaned'), /^Merged \d+ nodes; removed \d+ elements and \d+ nodes\.$/);
  await page.waitForFunction(() => /^ *Before/.test(document.getElementById('counts').textContent));
  assert.match(await page.textContent('#counts'), /Free edges16\d+/);
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
  await open(page, given('damaged.obj', 'v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 9\n'));
  assert.match(await page.textContent('#verdict'), /^Damaged/);
  await page.click('#repair button');
  assert.match(await page.textContent('#cleaned'), /cannot be repaired/);
  await open(page, bracket);
  assert.equal(await page.textContent('#error'), '');
  assert.equal(await page.textContent('#cleaned'), '');
  assert.equal(await page.textContent('#verdict'), 'Closed: no free edges.');
  await page.context().close();
});
