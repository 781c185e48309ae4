// Looks at each page of the site in a browser.
//
//   node browser_check.mjs SITE
//
// Environment: CHROMIUM, the browser, /usr/bin/chromium if not set. Needs `npm ci` in tests.
// Prints what is wrong with a page, and exits with 1 if anything is.

import { readdirSync, readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join, resolve } from 'node:path';
import { pathToFileURL } from 'node:url';
import { chromium } from 'playwright-core';

if (process.argv.length !== 3) {
  console.error('usage: node browser_check.mjs SITE');
  process.exit(2);
}
const site = resolve(process.argv[2]);
const pages = readdirSync(site, { recursive: true }).filter((name) => name.endsWith('.html')).sort();
const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');

const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
  args: ['--no-sandbox'],
});

const overflow = (page) =>
  page.evaluate(() => document.documentElement.scrollWidth - document.documentElement.clientWidth);
const violations = (page) => page.evaluate(async () => {
  const found = await globalThis.axe.run({
    preload: false, runOnly: ['wcag2a', 'wcag2aa', 'best-practice'] });
  return found.violations.map(({ id, nodes }) => `${id}: ${nodes[0].html} (${nodes.length} in all)`);
});
const background = (page) => page.evaluate(() => getComputedStyle(document.body).backgroundColor);

// What is wrong with a page.
const faultsOf = async (name) => {
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 } });
  const page = await context.newPage();
  const faults = [];
  page.on('console', (message) => faults.push(`console: ${message.text()}`));
  page.on('request', (request) => {
    if (!request.url().startsWith(pathToFileURL(site).href)) faults.push(`request: ${request.url()}`);
  });
  await page.goto(pathToFileURL(join(site, name)).href);
  await page.evaluate(axe);
  for (const colorScheme of ['light', 'dark']) {
    await page.emulateMedia({ colorScheme });
    const brightness = (await background(page)).match(/\d+/g).map(Number);
    if (brightness.some((part) => (colorScheme === 'dark' ? part > 50 : part < 200))) {
      faults.push(`${colorScheme}: the background is ${brightness}`);
    }
    faults.push(...(await violations(page)).map((violation) => `${colorScheme}: ${violation}`));
  }
  for (const width of [1280, 768, 360]) {
    await page.setViewportSize({ width, height: 900 });
    if (await overflow(page) > 0) faults.push(`it scrolls sideways at ${width} pixels`);
  }
  await context.close();
  return faults;
};

let wrong = pages.length === 0 ? 1 : 0;
for (const name of pages) {
  for (const fault of await faultsOf(name)) {
    wrong += 1;
    console.log(`${name}: ${fault}`);
  }
}
await browser.close();
console.log(`${pages.length} pages, ${wrong} faults`);
process.exit(wrong === 0 ? 0 : 1);
