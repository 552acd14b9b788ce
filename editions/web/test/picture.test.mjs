// What the picture shows, told by the colours that are on the screen.
import assert from 'node:assert/strict';
import { writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { browse, pageTest } from './browser.mjs';
import { bracket, pageFolder, scratch } from './folders.mjs';
import { open, visit } from './visitor.mjs';

browse(pageFolder);

// How many pixels of the canvas are painted, how many of them are red, orange, dark or of any other colour, and how many
// such colours there are.
async function countColours(encoded) {
  const bytes = Uint8Array.from(atob(encoded), (c) => c.charCodeAt(0));
  const bitmap = await createImageBitmap(new Blob([bytes], { type: 'image/png' }));
  const context = new OffscreenCanvas(bitmap.width, bitmap.height).getContext('2d');
  context.drawImage(bitmap, 0, 0);
  const { data } = context.getImageData(0, 0, bitmap.width, bitmap.height);
  const edge = 4 * (10 * bitmap.width + Math.floor(bitmap.width / 2)); // of the canvas, away from its round corners
  const background = data.slice(edge, edge + 3);
  const found = { painted: 0, red: 0, orange: 0, dark: 0, coloured: 0 };
  const hues = new Set();
  for (let k = 0; k < data.length; k += 4) {
    const [r, g, b] = data.subarray(k, k + 3);
    if (r === background[0] && g === background[1] && b === background[2]) continue;
    const isRed = r > 190 && g < 60 && b < 80;
    const isOrange = r > 230 && g > 110 && g < 170 && b < 60;
    found.painted += 1;
    found.red += isRed;
    found.orange += isOrange;
    found.dark += r + g + b < 200;
    if (isRed || isOrange || Math.max(r, g, b) - Math.min(r, g, b) < 30) continue;
    found.coloured += 1;
    hues.add([r > g, g > b, b > r].join());
  }
  return { ...found, hues: hues.size };
}

// Of a picture that does not change any more.
async function look(page) {
  let last = '';
  for (;;) {
    await page.waitForTimeout(150);
    const next = (await page.locator('#canvas').screenshot()).toString('base64');
    if (next === last) return page.evaluate(countColours, next);
    last = next;
  }
}

pageTest('free edges are red, shared ones orange, and only those', async () => {
  const page = await visit({ colorScheme: 'light' });
  await page.click('#sample');
  await page.waitForSelector('body[data-shown]');
  const sample = await look(page);
  assert(sample.painted > 10_000 && sample.red > 10 && sample.orange > 5, JSON.stringify(sample));
  await page.click('#chains button >> nth=0');
  const near = await look(page);
  assert(near.red > 2 * sample.red, JSON.stringify(near));
  await open(page, bracket);
  const closed = await look(page);
  assert(closed.painted > 10_000, JSON.stringify(closed));
  assert.deepEqual([closed.red, closed.orange, closed.coloured], [0, 0, 0]);
  assert.deepEqual(page.faults, []);
  await page.context().close();
});

pageTest('colours, mesh edges, a cut and views change the picture', async () => {
  const page = await visit({ colorScheme: 'light' });
  const two = join(scratch, 'two.obj');
  writeFileSync(two, 'v 0 0 0\nv 4 0 0\nv 0 4 0\nv 5 5 0\nv 9 5 0\nv 5 9 0\nf 1 2 3\nf 4 5 6\n');
  await open(page, two);
  await page.focus('#canvas');
  await page.keyboard.press('5');
  const plain = await look(page);
  assert(plain.coloured < 0.1 * plain.painted, JSON.stringify(plain)); // the brims of free edges
  await page.selectOption('#colouring', '2');
  const pieces = await look(page);
  assert(pieces.coloured > plain.painted / 2 && pieces.hues > 1, JSON.stringify(pieces));
  await page.selectOption('#along', 'x');
  await page.fill('#part', '0.5');
  const cut = await look(page);
  assert(cut.painted > 0.3 * plain.painted && cut.painted < 0.7 * plain.painted, JSON.stringify({ plain, cut }));
  await page.selectOption('#along', '');
  const whole = await look(page);
  assert(Math.abs(whole.painted - plain.painted) < 0.01 * plain.painted, JSON.stringify({ plain, whole }));
  await open(page, bracket);
  await page.selectOption('#colouring', '1');
  const qualities = await look(page);
  assert(qualities.coloured > qualities.painted / 2, JSON.stringify(qualities));
  await page.click('#lines');
  const lines = await look(page);
  assert(lines.dark > qualities.dark + 500, JSON.stringify({ qualities, lines }));
  assert.deepEqual(page.faults, []);
  await page.context().close();
});

// Two fingers, so far left and right of the middle of the canvas.
async function spread(page, [across, down], from, to) {
  const session = await page.context().newCDPSession(page);
  const points = (apart) => [-apart, apart].map((x, id) => ({ x: across + x, y: down, id }));
  await session.send('Input.dispatchTouchEvent', { type: 'touchStart', touchPoints: points(from) });
  await session.send('Input.dispatchTouchEvent', { type: 'touchMove', touchPoints: points(to) });
  await session.send('Input.dispatchTouchEvent', { type: 'touchEnd', touchPoints: [] });
}

async function drag(page, [across, down]) {
  await page.mouse.move(across, down);
  await page.mouse.down();
  await page.mouse.move(across + 90, down + 30);
  await page.mouse.up();
}

pageTest('mouse, wheel, fingers and keys turn and zoom', async () => {
  const page = await visit({ colorScheme: 'light', hasTouch: true });
  await open(page, bracket);
  const { x, y, width, height } = await page.locator('#canvas').boundingBox();
  const middle = [x + width / 2, y + height / 2];
  const painted = async () => (await look(page)).painted;
  const whole = await painted();
  await page.focus('#canvas');
  const isTurned = (count) => Math.abs(count - whole) > 0.01 * whole;
  const isLarger = (count) => count > 1.2 * whole;
  for (const [act, isSo] of [
    [() => drag(page, middle), isTurned], [() => page.keyboard.press('ArrowLeft'), isTurned],
    [() => page.mouse.wheel(0, -200), isLarger], [() => spread(page, middle, 30, 60), isLarger],
  ]) {
    await act();
    const changed = await painted();
    assert(isSo(changed), `${act}: ${whole}, then ${changed}`);
    await page.keyboard.press('Home');
    assert.equal(await painted(), whole);
  }
  await page.context().close();
});

// The graphics card loses what it holds, and comes back.
async function loseCard() {
  const canvas = document.getElementById('canvas');
  const card = canvas.getContext('webgl2').getExtension('WEBGL_lose_context');
  const told = (name) => new Promise((resolve) => canvas.addEventListener(name, resolve, { once: true }));
  const [lost, restored] = [told('webglcontextlost'), told('webglcontextrestored')];
  card.loseContext();
  await lost;
  await new Promise((resolve) => setTimeout(resolve, 100)); // it comes back only after all have heard of it
  card.restoreContext();
  await restored;
}

const cannotDraw = {
  'no canvas can be handed over': (page) => page.addInitScript(() => delete HTMLCanvasElement.prototype.transferControlToOffscreen),
  'the worker does not start': (page) => page.route('**/painter_worker.mjs', (route) => route.abort()),
};
for (const [why, prepare] of Object.entries(cannotDraw)) {
  pageTest(`where workers cannot draw, the page does: ${why}`, async () => {
    const page = await visit({ colorScheme: 'light' }, prepare);
    await page.click('#sample');
    await page.waitForSelector('body[data-shown]');
    const { painted, red, orange } = await look(page);
    assert(painted > 10_000 && red > 10 && orange > 5);
    await page.focus('#canvas');
    await page.keyboard.press('+');
    const near = await look(page);
    assert(near.painted > painted);
    await page.evaluate(loseCard);
    let again = await look(page);
    for (let k = 0; k < 50 && again.painted !== near.painted; ++k) again = await look(page);
    assert.deepEqual(again, near);
    await page.context().close();
  });
}
