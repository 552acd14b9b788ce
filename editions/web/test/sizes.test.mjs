// What a visitor has to load, compressed as servers send it, and what a user of the package does.
import assert from 'node:assert/strict';
import { readFileSync, readdirSync } from 'node:fs';
import { join } from 'node:path';
import test from 'node:test';
import { brotliCompressSync } from 'node:zlib';
import { packageFolder, pageFolder, repository } from './folders.mjs';

const compressed = (path) => brotliCompressSync(readFileSync(path)).length;

test('the page with its module', () => {
  const files = readdirSync(pageFolder).filter((name) => name !== 'sample.stl');
  const total = files.reduce((sum, name) => sum + compressed(join(pageFolder, name)), 0);
  assert(total < 111_700, `${total} bytes`);
});

test('the module with all functions', () => {
  const size = compressed(join(packageFolder, 'gridwork.wasm'));
  assert(size < 155_500, `${size} bytes`);
});

test('the package has the version of the library, and no dependency', () => {
  const header = readFileSync(join(repository, 'include/qel/gridwork/version.h'), 'utf8');
  const parts = ['MAJOR', 'MINOR', 'PATCH'].map((part) => new RegExp(`_VERSION_${part} (\\d+)`).exec(header)[1]);
  const shown = JSON.parse(readFileSync(join(packageFolder, 'package.json'), 'utf8'));
  assert.equal(shown.version, parts.join('.'));
  assert.equal(shown.dependencies ?? shown.devDependencies, undefined);
});
