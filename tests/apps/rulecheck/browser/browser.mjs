// SPDX-License-Identifier: Apache-2.0

// A browser, and what can be asked of a page in it. The tests are programs:
//
//   RULECHECK=.../rulecheck node details.mjs FOLDER_FOR_PICTURES
//
// Further environment: PYTHON, python3 if not set; CHROMIUM, /usr/bin/chromium if not set;
// VERILATOR for the demo's waivers, which are left out without it. Needs `npm ci` in tests,
// and pdftotext.

import assert from 'node:assert/strict';
import { mkdirSync } from 'node:fs';
import { join } from 'node:path';
import { after, test } from 'node:test';
import { pathToFileURL } from 'node:url';
import { chromium } from 'playwright-core';

export const pictures = process.argv[2];
mkdirSync(pictures, { recursive: true });

const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM || '/usr/bin/chromium',
  args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--disable-background-networking'],
});
after(() => browser.close());

export const addressOf = (file) => pathToFileURL(file).href;

// Nothing but the page itself gets through, and what it leads to on purpose.
const guard = (context, address, leadsTo, faults) => context.route('**/*', (route) => {
  const url = route.request().url();
  if (url.split('#')[0] === address.split('#')[0] || leadsTo.test(url)) return route.continue();
  faults.push(`request: ${url}`);
  return route.abort();
});

const watch = (page, faults) => {
  page.on('console', (message) => faults.push(`console: ${message.text()}`));
  page.on('pageerror', (error) => faults.push(`error: ${error.message}`));
  page.on('dialog', (dialog) => {
    faults.push(`dialog: ${dialog.message()}`);
    dialog.dismiss();
  });
  return page.addInitScript(() => {
    document.addEventListener('securitypolicyviolation', (event) => {
      console.error(`policy: ${event.effectiveDirective} ${event.blockedURI}`);
    });
  });
};

// Opens a page, with a list of everything that it should not do. The script runs before its own.
export const open = async (file, { leadsTo = /^$/, script = () => {}, ...options } = {}) => {
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 }, ...options });
  const page = await context.newPage();
  const faults = [];
  const address = addressOf(file);
  await guard(context, address, leadsTo, faults);
  await watch(page, faults);
  await page.addInitScript(script);
  await page.goto(address);
  if (options.javaScriptEnabled !== false) await ready(page);
  return { page, faults, close: () => context.close() };
};

// A test of what the body sees of a page, which must do nothing that it should not do.
export const checkPage = (name, make, options, body) => test(name, async () => {
  const { page, faults, close } = await open(make(), options);
  try {
    await body(page, faults);
    assert.deepEqual(faults, []);
  } finally {
    await close();
  }
});

export const shoot = (page, name, options = {}) =>
  page.screenshot({ path: join(pictures, `${name}.png`), ...options });

const ready = (page) => page.waitForFunction(() => document.getElementById('status').textContent);

export const statusOf = (page) => page.locator('#status').textContent();

// Two frames, and what the page left for later.
export const settle = (page) => page.evaluate(() => new Promise((done) => {
  requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(done, 50)));
}));

// Elements that are shown, also where they are out of sight.
export const visible = (page, selector) => page.evaluate((list) =>
  Array.from(document.querySelectorAll(list)).filter((element) => element.checkVisibility()).length, selector);

export const titles = (page) => page.locator('.group h2').allTextContents();

export const overflow = (page) =>
  page.evaluate(() => document.documentElement.scrollWidth - document.documentElement.clientWidth);

// Opens, selects and unfolds all that a page has.
export const openEverything = async (page) => {
  await page.evaluate(() => {
    document.getElementById('expand').click();
    for (const turn of document.querySelectorAll('.turn[aria-expanded=false]')) turn.click();
    document.querySelector('#choose[aria-expanded=false]')?.click();
    document.querySelector('.row input').click();
    for (const details of document.querySelectorAll('details')) details.open = true;
  });
  await settle(page);
};
