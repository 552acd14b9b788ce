// The page in Chromium, as visitors meet it: offline, without a picture, on a phone, by the keyboard, with a large file.
import assert from 'node:assert/strict';
import { cpSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { policy, serve } from '../serve.mjs';
import { browse, browser, newPage, pageTest, url } from './browser.mjs';
import { bracket, pageFolder, scratch } from './folders.mjs';
import { writeSheet } from './sheet.mjs';
import { blind, counts, open, visit } from './visitor.mjs';

browse(pageFolder);

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

pageTest('neither other hosts nor scripts within the page are let in', async () => {
  const page = await newPage();
  const answer = await page.goto(url);
  assert.equal(answer.headers()['content-security-policy'], policy);
  const written = await page.getAttribute('meta[http-equiv]', 'content');
  assert.equal(`${written}; frame-ancestors 'none'`, policy);
  const refused = await page.evaluate(async () => {
    const all = new Set();
    addEventListener('securitypolicyviolation', ({ effectiveDirective }) => all.add(effectiveDirective));
    const script = document.createElement('script');
    script.textContent = 'document.title = "taken"';
    document.head.append(script);
    await fetch('https://example.org/').catch(() => {});
    await new Promise((resolve) => setTimeout(resolve, 100));
    return [...all, document.title];
  });
  assert.deepEqual(refused, ['script-src-elem', 'connect-src', 'QEL Gridwork: check and repair a mesh']);
  await page.context().close();
});

pageTest('a new version is offered, and taken when it is asked for', async () => {
  const folder = join(scratch, 'versions');
  cpSync(pageFolder, folder, { recursive: true });
  const change = (name, from, to) => writeFileSync(join(folder, name), readFileSync(join(folder, name), 'utf8').replace(from, to));
  const server = await serve(folder);
  const page = await newPage();
  await page.goto(`http://127.0.0.1:${server.address().port}/`);
  await page.waitForFunction(() => navigator.serviceWorker.controller !== null);
  change('index.html', '<title>', '<title>New ');
  change('service_worker.mjs', 'gridwork-', 'gridwork-new-');
  await page.reload();
  await page.waitForSelector('#news button');
  assert.match(await page.title(), /^QEL/);
  await page.click('#news button');
  await page.waitForFunction(() => document.title.startsWith('New'));
  assert.deepEqual(page.faults, []);
  await page.context().close();
  server.close();
});

pageTest('dark as the browser is, until the visitor chooses', async () => {
  const page = await visit({ colorScheme: 'dark' });
  const brightness = () => page.evaluate(() => Number(/\d+/.exec(getComputedStyle(document.body).backgroundColor)[0]));
  assert(await brightness() < 50);
  assert.equal(await page.getAttribute('#theme', 'aria-pressed'), 'true');
  await page.click('#theme');
  assert(await brightness() > 200);
  assert.equal(await page.getAttribute('#theme', 'aria-pressed'), 'false');
  await page.context().close();
});

pageTest('without WebGL there are the numbers', async () => {
  const page = await visit({}, blind);
  await open(page, bracket);
  assert(await page.isVisible('#blind'));
  assert.equal((await counts(page)).TRIA3, '4904');
  assert.deepEqual(page.faults, []);
  await page.context().close();
});

pageTest('that workers, their script or the module are not there is told', async () => {
  const without = await visit({}, (p) => p.addInitScript(() => delete window.Worker));
  for (const file of [undefined, bracket]) {
    if (file !== undefined) await without.setInputFiles('#file', file);
    assert.match(await without.textContent('#error'), /has no workers/);
    assert(await without.isHidden('#busy'));
  }
  await without.context().close();
  for (const [file, words] of [['page.wasm', /WebAssembly/], ['worker.mjs', /^The worker of this page (did not start|failed)/]]) {
    const page = await visit({}, (p) => p.route(`**/${file}`, (route) => route.fulfill({ body: 'no', contentType: 'text/javascript' })));
    await page.setInputFiles('#file', bracket);
    await page.waitForFunction(() => document.getElementById('error').textContent !== '');
    assert.match(await page.textContent('#error'), words);
    await page.context().close();
  }
});

// All that can be reached has a name, by the keyboard in the order of the page.
const controls = (page) =>
  page.$$eval('button, input, select, canvas', (all) => all.filter((e) => e.checkVisibility()).map((e) => ({
    tag: e.tagName, height: (e.closest('label.button') ?? e).getBoundingClientRect().height,
    name: e.getAttribute('aria-label') ?? e.labels?.[0]?.textContent ?? e.textContent,
  })));

pageTest('controls have names, a phone has room for them, and the keyboard reaches all', async () => {
  const page = await visit({ viewport: { width: 360, height: 700 }, isMobile: true, hasTouch: true });
  await open(page, bracket);
  const all = await controls(page);
  for (const { tag, name, height } of all) {
    assert(name?.trim(), tag);
    assert(height >= 44, `${name}: ${height}`);
  }
  assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), 360);
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

async function rendererPeak(page) {
  const session = await browser.newBrowserCDPSession();
  const { processInfo } = await session.send('SystemInfo.getProcessInfo');
  const peaks = processInfo.filter((p) => p.type === 'renderer').map((p) => {
    const status = readFileSync(`/proc/${p.id}/status`, 'utf8');
    return Number(/VmHWM:\s+(\d+)/.exec(status)[1]) / 1024;
  });
  return Math.max(...peaks);
}

pageTest('200 MB: cancelled at once, or for another file', async () => {
  const large = join(scratch, 'large.stl');
  writeSheet(large, 1414);
  const page = await visit({}, blind);
  await page.setInputFiles('#file', large);
  await page.click('#cancel');
  assert.equal(await page.textContent('#error'), 'Cancelled.');
  await page.setInputFiles('#file', large);
  const [another] = await Promise.all([page.waitForEvent('worker'), open(page, bracket)]);
  assert.match(another.url(), /\/worker\.mjs$/);
  assert.equal((await counts(page)).TRIA3, '4904');
  writeFileSync(large, '');
  await page.context().close();
});

// On a page of its own: the memory of workers that were ended is given back some time later.
pageTest('200 MB: read within 800 MiB, the page never waiting', async (t) => {
  const large = join(scratch, 'large.stl');
  writeSheet(large, 1414);
  const page = await visit({}, blind);
  await page.evaluate(() => {
    [window.pause, window.progress] = [0, new Set()];
    let last = performance.now();
    setInterval(() => {
      window.progress.add(document.getElementById('progress').value);
      window.pause = Math.max(window.pause, performance.now() - last);
      last = performance.now();
    }, 5);
  });
  await open(page, large);
  assert.equal((await counts(page)).TRIA3, String(2 * 1414 * 1414));
  const [pause, progress] = await page.evaluate(() => [window.pause, [...window.progress]]);
  assert(progress.filter((value) => value > 0 && value < 1).length > 1, progress.join());
  const peak = await rendererPeak(page);
  t.diagnostic(`renderer ${peak.toFixed(0)} MiB, longest pause ${pause.toFixed(0)} ms, ${await page.textContent('#times')}`);
  assert(peak < 800, `${peak} MiB`);
  writeFileSync(large, '');
  await page.context().close();
});
