// SPDX-License-Identifier: Apache-2.0

// Schemes, widths and accessibility.

import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { checkPage, openEverything, overflow, settle, shoot } from './browser.mjs';
import { clean, flawed, placed, sample } from './pages.mjs';

const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf-8');
const widths = [1280, 768, 360, 320];

const checkFit = (name, make, colorScheme) => checkPage(
  `${name} page, ${colorScheme}: fits at ${widths.join(', ')}`, make, { colorScheme }, async (page) => {
    for (const isOpen of [false, true]) {
      if (isOpen) await openEverything(page);
      for (const width of widths) {
        await page.setViewportSize({ width, height: 1000 });
        assert.equal(await overflow(page), 0, `it scrolls sideways at ${width}, ${isOpen ? 'open' : 'as it is'}`);
        await shoot(page, `${name}-${colorScheme}-${width}${isOpen ? '-open' : ''}`);
      }
    }
  });

// The pictures are those of the README.
const checkScheme = (colorScheme) => checkPage(
  `${colorScheme} scheme shows in the page's own colours`, sample, { colorScheme, viewport: { width: 1180, height: 820 } },
  async (page) => {
    const background = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
    const brightness = background.match(/\d+/g).map(Number);
    assert.ok(brightness.every((part) => (colorScheme === 'dark' ? part < 50 : part > 200)), background);
    await page.locator('.finding', { hasText: 'frame_err_sticky' }).locator('.turn').click();
    await page.evaluate(() => document.activeElement.blur());
    await page.mouse.move(0, 0);
    await shoot(page, `report-${colorScheme}`);
    assert.equal(await page.locator('.caret').count(), 1);
  });

const viewport = { width: 360, height: 800 };
checkPage('a small window breaks no line number and cuts no message', sample, { viewport }, async (page) => {
  const broken = await page.locator('.position').evaluateAll((list) =>
    list.filter((each) => each.getClientRects().length > 1).map((each) => each.textContent));
  assert.deepEqual(broken, []);
  const cut = await page.locator('.message').evaluateAll((list) =>
    list.filter((each) => each.scrollHeight > each.clientHeight + 2).map((each) => each.textContent));
  assert.deepEqual(cut, []);
});

checkPage('a small window has marks next to severities', placed, { viewport }, async (page) => {
  const top = (selector) => page.locator(`.row:has(.mark) ${selector}`).evaluateAll((list) =>
    list.map((each) => each.getBoundingClientRect().top));
  assert.deepEqual(await top('.mark'), await top('.level'));
  await shoot(page, 'baseline-360');
});

// What a browser says when a judge looks at what is out of sight.
const isAboutJudge = (fault) =>
  fault.startsWith('console: Rendering was performed in a subtree hidden by content-visibility.');

const judge = async (page) => {
  const { passes, violations } = await page.evaluate(() => window.axe.run());
  assert.ok(passes.length > 15, `only ${passes.length} rules apply`);
  assert.deepEqual(violations.map(({ id, nodes }) => `${id}: ${nodes.map(({ html }) => html).join(' ')}`), []);
};

const checkAccess = (name, make, colorScheme, width) => checkPage(
  `${name} page, ${colorScheme}, ${width} pixels: accessible, open and without a match`, make,
  { colorScheme, viewport: { width, height: 900 } }, async (page, faults) => {
    await page.evaluate(axe);
    await openEverything(page);
    await judge(page);
    await page.fill('#query', 'no such text');
    await settle(page);
    await judge(page);
    faults.push(...faults.splice(0).filter((fault) => !isAboutJudge(fault)));
  });

checkPage('forced colours leave what colours say as borders', sample, { forcedColors: 'active' }, async (page) => {
  for (const selector of ['.chip', '.arg']) {
    const border = await page.locator(selector).first().evaluate((element) => getComputedStyle(element).borderStyle);
    assert.equal(border, 'solid', selector);
  }
  await shoot(page, 'forced-colours');
});

for (const [name, make] of Object.entries({ clean, flawed, sample })) checkFit(name, make, 'light');
checkFit('sample', sample, 'dark');
for (const colorScheme of ['light', 'dark']) checkScheme(colorScheme);
checkAccess('sample', sample, 'light', 1280);
checkAccess('sample', sample, 'dark', 320);
checkAccess('flawed', flawed, 'light', 320);
checkAccess('compared', placed, 'dark', 1280);
