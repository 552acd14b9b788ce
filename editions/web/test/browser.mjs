// Chromium, for the tests that need a browser.
import { existsSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join } from 'node:path';
import test, { after, before } from 'node:test';
import { serve } from '../serve.mjs';
import { build } from './folders.mjs';

const executablePath = process.env.CHROMIUM ?? '/usr/bin/chromium';
const library = join(build, 'node_modules/playwright-core');
const missing = [
  [!existsSync(executablePath), 'Chromium is not installed'],
  [!existsSync(library), 'playwright-core is not installed'],
  [parseInt(process.versions.node) < 20, 'playwright-core needs node 20'],  // Debian 12 has 18
];
const skip = missing.find(([is]) => is)?.[1] ?? false;
const args = ['--no-sandbox', '--disable-dev-shm-usage', '--use-angle=swiftshader', '--enable-unsafe-swiftshader'];
const patience = 100_000; // ms, for machines that do much else

export let browser;
export let url;

let server;

/** Serves a folder, and starts the browser. */
export async function start(folder) {
  const { chromium } = createRequire(join(build, 'node_modules/'))('playwright-core');
  server = await serve(folder);
  url = `http://127.0.0.1:${server.address().port}/`;
  browser = await chromium.launch({ executablePath, args });
}

export async function stop() {
  await browser?.close();
  server?.close();
}

/** Does so round the tests of a file. */
export function browse(folder) {
  before(() => (skip ? undefined : start(folder)));
  after(stop);
}

/** A page of its own, which notes its errors and requests. */
export async function newPage(options = {}) {
  const context = await browser.newContext(options);
  const page = await context.newPage();
  page.setDefaultTimeout(patience);
  page.faults = [];
  page.requests = [];
  page.on('pageerror', (error) => page.faults.push(error.message));
  page.on('console', (message) => message.type() === 'error' && page.faults.push(message.text()));
  page.on('request', (request) => page.requests.push(request.url()));
  return page;
}

export const pageTest = (name, run) => test(name, { skip, timeout: 240_000 }, run);
