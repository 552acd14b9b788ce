// The page in Chromium: as a visitor meets it.
import assert from 'node:assert/strict';
import { existsSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join } from 'node:path';
import test, { after, before } from 'node:test';
import { serve } from '../serve.mjs';
import { build, pageFolder } from './folders.mjs';

const executablePath = process.env.CHROMIUM ?? '/usr/bin/chromium';
const library = join(build, 'node_modules/playwright-core');
const skip = !existsSync(executablePath) ? 'Chromium is not installed' : !existsSync(library) && 'playwright-core is not installed';
const args = ['--no-sandbox', '--disable-dev-shm-usage', '--use-angle=swiftshader', '--enable-unsafe-swiftshader'];

const patience = 100_000; // ms, for machines that do much else

let server;
let browser;
let url;

before(async () => {
  if (skip) return;
  const { chromium } = createRequire(join(build, 'node_modules/'))('playwright-core');
  server = await serve(pageFolder);
  url = `http://127.0.0.1:${server.address().port}/`;
  browser = await chromium.launch({ executablePath, args });
});

after(async () => {
  await browser?.close();
  server?.close();
});

async function visit(options = {}, prepare = () => {}) {
  const context = await browser.newContext(options);
  const page = await context.newPage();
  page.setDefaultTimeout(patience);
  page.faults = [];
  page.requests = [];
  page.on('pageerror', (error) => page.faults.push(error.message));
  page.on('console', (message) => message.type() === 'error' && page.faults.push(message.text()));
  page.on('request', (request) => page.requests.push(request.url()));
  await prepare(page);
  await page.goto(url);
  await page.waitForSelector('body[data-ready]');
  return page;
}

const pageTest = (name, run) => test(name, { skip, timeout: 240_000 }, run);

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
