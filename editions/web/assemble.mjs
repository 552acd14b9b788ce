// Puts the package and the page together: node assemble.mjs BUILD, with the modules in BUILD/editions/web.
import { copyFile, cp, mkdir, readFile, readdir, rm, writeFile } from 'node:fs/promises';
import { execFileSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import { join, resolve } from 'node:path';
import { pathToFileURL } from 'node:url';

const here = import.meta.dirname ?? new URL('.', import.meta.url).pathname;
const build = resolve(process.argv[2] ?? join(here, '../../build/web'));
const modules = join(build, 'editions/web');
const from = (...path) => join(here, ...path);

async function startFolder(name) {
  const folder = join(build, name);
  await rm(folder, { recursive: true, force: true });
  await mkdir(folder, { recursive: true });
  return folder;
}

async function copyAll(sources, folder) {
  for (const source of sources) await cp(source, join(folder, source.split('/').at(-1)));
}

// The types of the functions come from the module's own table.
async function describeFunctions(folder) {
  const { declareFunctions } = await import(from('declarations.mjs'));
  const { Instance } = await import(pathToFileURL(join(folder, 'instance.mjs')));
  const { parseTable } = await import(pathToFileURL(join(folder, 'table.mjs')));
  const instance = await Instance.of(await WebAssembly.compile(await readFile(join(folder, 'gridwork.wasm'))));
  await writeFile(join(folder, 'functions.d.ts'), declareFunctions(parseTable(instance.text(instance.exports.functions()))));
}

async function assemblePackage() {
  const folder = await startFolder('package');
  const scripts = (await readdir(from('js'))).map((name) => from('js', name));
  await copyAll([...scripts, join(modules, 'gridwork.wasm'), from('README.md'), from('../../LICENSE')], folder);
  const { devDependencies, ...shown } = JSON.parse(await readFile(from('package.json'), 'utf8'));
  await writeFile(join(folder, 'package.json'), JSON.stringify(shown, null, 2) + '\n');
  await describeFunctions(folder);
}

// The bracket with a hole, and with a wall inside: something to be found.
async function makeSample(path) {
  const { load } = await import(pathToFileURL(join(build, 'package/gridwork.mjs')));
  const gw = await load();
  const { coords, connectivity } = gw.stlInput(await readFile(from('../../examples/data/bracket.stl')));
  const [first, last] = [1200, 1212];
  const kept = [...connectivity.data.subarray(0, 3 * first), ...connectivity.data.subarray(3 * last)];
  const wall = [...connectivity.data.subarray(0, 2), connectivity.data[3 * 2000]];
  await writeFile(path, gw.stlOutput(coords, gw.matrix(3, Uint32Array.from([...kept, ...wall])), false));
}

// Scripts and the style sheet as small as can be, with what they import. What two scripts share is a file of its own.
function shrink(staged, folder, names, ...options) {
  execFileSync('esbuild', [
    ...names, '--minify', '--out-extension:.js=.mjs', `--outdir=${folder}`, '--log-level=warning', ...options,
  ], { cwd: staged });
}

// The service worker keeps what it lists under a name that changes with any byte of it.
async function addServiceWorker(staged, folder) {
  const names = (await readdir(folder)).sort();
  const hash = createHash('sha256');
  for (const name of names) hash.update(await readFile(join(folder, name)));
  const script = await readFile(join(staged, 'service_worker.mjs'), 'utf8');
  const filled = script.replace("'VERSION'", `'${hash.digest('hex').slice(0, 16)}'`).replace("['FILES']", JSON.stringify(names));
  await writeFile(join(staged, 'service_worker.mjs'), filled);
  shrink(staged, folder, ['service_worker.mjs']);
}

async function assemblePage() {
  const staged = await startFolder('page_sources');
  const folder = await startFolder('page');
  await cp(from('page'), staged, { recursive: true });
  await cp(from('js'), staged, { recursive: true });
  const loaded = ['page.mjs', 'worker.mjs', 'painter_worker.mjs', 'page.css'];
  shrink(staged, folder, loaded, '--bundle', '--splitting', '--format=esm', '--external:./node.mjs');
  await copyAll(['index.html', 'icon.svg', 'manifest.json'].map((name) => join(staged, name)), folder);
  await copyFile(join(modules, 'page.wasm'), join(folder, 'page.wasm'));
  await makeSample(join(folder, 'sample.stl'));
  await addServiceWorker(staged, folder);
}

await assemblePackage();
await assemblePage();
