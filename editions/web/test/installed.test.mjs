// What `npm pack` packs, installed into an empty project: used by node and by a page of somebody else.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { copyFileSync, existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import test, { before } from 'node:test';
import { browse, newPage, pageTest, url } from './browser.mjs';
import { bracket, build, packageFolder, scratch } from './folders.mjs';

const project = join(scratch, 'project');
const run = (command, args, cwd) => execFileSync(command, args, { cwd, encoding: 'utf8', stdio: ['ignore', 'pipe', 'inherit'] });

before(() => {
  mkdirSync(project);
  writeFileSync(join(project, 'package.json'), '{ "name": "somebody", "private": true, "type": "module" }');
  const [{ filename }] = JSON.parse(run('npm', ['pack', '--json', '--pack-destination', project], packageFolder));
  run('npm', ['install', '--offline', '--no-audit', '--no-fund', join(project, filename)], project);
});

const program = `import { readFileSync } from 'node:fs';
import { load, GridworkError } from 'qel-gridwork';
import 'qel-gridwork/client';
const gw = await load();
const again = await load(readFileSync(new URL(import.meta.resolve('qel-gridwork/gridwork.wasm'))));
const mesh = await again.mesh().read(process.argv[2]);
console.log(gw.maxID(new Uint32Array([0, 7, 1])), mesh.topology().edges, GridworkError.name);
`;

test('node imports it by its name', () => {
  writeFileSync(join(project, 'use.mjs'), program);
  assert.equal(run('node', ['use.mjs', bracket], project), '7 7356 GridworkError\n');
});

const compiler = join(build, 'node_modules/typescript/bin/tsc');

test('its types allow its uses', { skip: !existsSync(compiler) && 'typescript is not installed' }, () => {
  copyFileSync(new URL('use.ts', import.meta.url), join(project, 'use.ts'));
  const options = '--strict --noEmit --module nodenext --target es2022 --lib es2022,dom'.split(' ');
  run('node', [compiler, ...options, 'use.ts'], project);
});

browse(project);

async function useClient(encoded) {
  const { Client } = await import('/node_modules/qel-gridwork/client.mjs');
  const file = new File([Uint8Array.from(atob(encoded), (c) => c.charCodeAt(0))], 'bracket.stl');
  const client = await Client.start();
  const { report, arrays } = await client.open(file);
  const parts = await client.write('stl');
  const refused = await client.open(new File(['Dear all'], 'letter.stl')).catch(({ name, message }) => `${name}: ${message}`);
  const pending = client.open(file).catch(({ message }) => message);
  client.cancel();
  return { report, corners: arrays.surface.length, bytes: new Blob(parts).size, refused, cancelled: await pending };
}

pageTest('a plain page loads it, and its worker reads, writes, refuses and is cancelled', async () => {
  const page = await newPage();
  writeFileSync(join(project, 'use.html'), '<!doctype html><title>waits</title><script type="module" src="page.mjs"></script>');
  writeFileSync(join(project, 'page.mjs'), `import { load } from './node_modules/qel-gridwork/gridwork.mjs';
document.title = (await load()).maxID(new Uint32Array([0, 7, 1]));`);
  await page.goto(`${url}use.html`);
  await page.waitForFunction(() => document.title === '7');
  const { report, corners, bytes, refused, cancelled } = await page.evaluate(useClient, readFileSync(bracket, 'base64'));
  assert.equal(report.elements.TRIA3, 4904);
  assert.equal(corners, 3 * 4904);
  assert.equal(bytes, 84 + 50 * 4904);
  assert.match(refused, /^GridworkError: this is not an STL file/);
  assert.equal(cancelled, 'cancelled');
  await page.context().close();
});
