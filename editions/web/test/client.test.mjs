// The package's worker, as a page of somebody else uses it.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { browse, newPage, pageTest, url } from './browser.mjs';
import { packageFolder, repository } from './folders.mjs';

browse(packageFolder);

async function useClient(encoded) {
  const { Client } = await import('/client.mjs');
  const file = new File([Uint8Array.from(atob(encoded), (c) => c.charCodeAt(0))], 'bracket.stl');
  const client = await Client.start();
  const { report, arrays } = await client.open(file);
  const parts = await client.write('stl');
  const refused = await client.open(new File(['Dear all'], 'letter.stl')).catch(({ name, message }) => `${name}: ${message}`);
  const pending = client.open(file).catch(({ message }) => message);
  client.cancel();
  return { report, corners: arrays.surface.length, bytes: new Blob(parts).size, refused, cancelled: await pending };
}

pageTest('a worker reads, writes, refuses and is cancelled', async () => {
  const bracket = readFileSync(join(repository, 'examples/data/bracket.stl'));
  const page = await newPage();
  await page.goto(`${url}package.json`);
  const { report, corners, bytes, refused, cancelled } = await page.evaluate(useClient, bracket.toString('base64'));
  assert.equal(report.elements.TRIA3, 4904);
  assert.equal(corners, 3 * 4904);
  assert.equal(bytes, 84 + 50 * 4904);
  assert.match(refused, /^GridworkError: this is not an STL file/);
  assert.equal(cancelled, 'cancelled');
  await page.context().close();
});
