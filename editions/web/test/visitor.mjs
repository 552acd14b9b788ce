// What a visitor does with the page.
import { newPage, url } from './browser.mjs';

/** The page, ready; `prepare` is given it before it loads. */
export async function visit(options = {}, prepare = () => {}) {
  const page = await newPage(options);
  await prepare(page);
  await page.goto(url);
  await page.waitForSelector('body[data-ready]');
  return page;
}

/** Gives a file to the page, and waits for its report or its refusal. */
export async function open(page, file) {
  await page.evaluate(() => delete document.body.dataset.shown);
  await page.setInputFiles('#file', file);
  await page.waitForFunction(() => document.body.dataset.shown !== undefined || document.getElementById('error').textContent !== '');
}

/** The table of counts, by its names. */
export const counts = (page) =>
  page.$$eval('#counts tr', (rows) => Object.fromEntries(rows.map((row) => [row.cells[0].textContent, row.cells[1].textContent.replaceAll('\u202f', '')])));

/** A browser that draws nothing. */
export const blind = (page) =>
  page.addInitScript(() => {
    delete HTMLCanvasElement.prototype.transferControlToOffscreen;
    HTMLCanvasElement.prototype.getContext = () => null;
  });
