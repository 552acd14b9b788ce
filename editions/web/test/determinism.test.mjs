// Every call of the library gives the same bits in WebAssembly as natively.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { closeSync, existsSync, openSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import test from 'node:test';
import { build, native, scratch } from './folders.mjs';

const here = join(build, 'editions/web/determinism.wasm');
const there = join(native, 'tests/determinism');
const skip = !existsSync(here) ? 'determinism.wasm is not built' : !existsSync(there) && 'tests/determinism is not built';

async function runModule(path, out) {
  const { WASI } = await import('node:wasi');
  const stdout = openSync(out, 'w');
  const wasi = new WASI({ version: 'preview1', preopens: { '.': scratch }, stdout });
  const { instance } = await WebAssembly.instantiate(readFileSync(path), { wasi_snapshot_preview1: wasi.wasiImport });
  wasi.start(instance);
  closeSync(stdout);
  return readFileSync(out, 'utf8');
}

const lines = (text) => text.trim().split('\n');

test('every call has the results of the native build', { skip }, async () => {
  const found = await runModule(here, join(scratch, 'determinism.txt'));
  const expected = execFileSync(there, { encoding: 'utf8', maxBuffer: 1 << 26 });
  assert(lines(expected).length > 100);
  assert.deepEqual(lines(found), lines(expected));
});
