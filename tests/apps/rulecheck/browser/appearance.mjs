// SPDX-License-Identifier: Apache-2.0

// Schemes, widths and accessibility.

import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { openEverything, overflow, settle } from './browser.mjs';

const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf-8');
const widths = [1280, 768, 360, 320];

const checkFit = (checks, name, place, colorScheme) => checks.checkPage(
  `${name} page, ${colorScheme}: fits at ${widths.join(', ')}`, place, { colorScheme }, async (page) => {
    for (const isOpen of [false, true]) {
      if (isOpen) await openEverything(page);
      for (const width of widths) {
        await page.setViewportSize({ width, height: 1000 });
        assert.equal(await overflow(page), 0, `it scrolls sideways at ${width}, ${isOpen ? 'open' : 'as it is'}`);
        await checks.shoot(page, `${name}-${colorScheme}-${width}${isOpen ? '-open' : ''}`);
      }
    }
  });

// The pictures are those of the README.
const checkScheme = (checks, place, colorScheme) => checks.checkPage(
  `${colorScheme} scheme shows in the page's own colours`, place, { colorScheme, viewport: { width: 1180, height: 820 } },
  async (page) => {
    const background = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
    const brightness = background.match(/\d+/g).map(Number);
    assert.ok(brightness.every((part) => (colorScheme === 'dark' ? part < 50 : part > 200)), background);
    await page.locator('.finding', { hasText: 'frame_err_sticky' }).locator('.turn').click();
    await page.evaluate(() => document.activeElement.blur());
    await page.mouse.move(0, 0);
    await checks.shoot(page, `report-${colorScheme}`);
    assert.equal(await page.locator('.caret').count(), 1);
  });

const checkSmall = async (checks, { sample, placed }) => {
  const viewport = { width: 360, height: 800 };
  await checks.checkPage('a small window breaks no line number and cuts no message', sample, { viewport }, async (page) => {
    const broken = await page.locator('.position').evaluateAll((list) =>
      list.filter((each) => each.getClientRects().length > 1).map((each) => each.textContent));
    assert.deepEqual(broken, []);
    const cut = await page.locator('.message').evaluateAll((list) =>
      list.filter((each) => each.scrollHeight > each.clientHeight + 2).map((each) => each.textContent));
    assert.deepEqual(cut, []);
  });
  await checks.checkPage('a small window has marks next to severities', placed, { viewport }, async (page) => {
    const top = (selector) => page.locator(`.row:has(.mark) ${selector}`).evaluateAll((list) =>
      list.map((each) => each.getBoundingClientRect().top));
    assert.deepEqual(await top('.mark'), await top('.level'));
    await checks.shoot(page, 'baseline-360');
  });
};

// What a browser says when a judge looks at what is out of sight.
const isAboutJudge = (fault) =>
  fault.startsWith('console: Rendering was performed in a subtree hidden by content-visibility.');

const judge = async (page) => {
  const { passes, violations } = await page.evaluate(() => window.axe.run());
  assert.ok(passes.length > 15, `only ${passes.length} rules apply`);
  assert.deepEqual(violations.map(({ id, nodes }) => `${id}: ${nodes.map(({ html }) => html).join(' ')}`), []);
};

const checkAccess = (checks, name, place, colorScheme, width) => checks.checkPage(
  `${name} page, ${colorScheme}, ${width} pixels: accessible, open and without a match`, place,
  { colorScheme, viewport: { width, height: 900 } }, async (page, faults) => {
    await page.evaluate(axe);
    await openEverything(page);
    await judge(page);
    await page.fill('#query', 'no such text');
    await settle(page);
    await judge(page);
    faults.push(...faults.splice(0).filter((fault) => !isAboutJudge(fault)));
  });

const checkForcedColours = (checks, place) => checks.checkPage(
  'forced colours leave what colours say as borders', place, { forcedColors: 'active' }, async (page) => {
    for (const selector of ['.chip', '.arg']) {
      const border = await page.locator(selector).first().evaluate((element) => getComputedStyle(element).borderStyle);
      assert.equal(border, 'solid', selector);
    }
    await checks.shoot(page, 'forced-colours');
  });

export const checkAppearance = async (checks, pages) => {
  const { sample, clean, flawed, placed } = pages;
  for (const [name, place] of Object.entries({ clean, flawed })) await checkFit(checks, name, place, 'light');
  for (const colorScheme of ['light', 'dark']) {
    await checkFit(checks, 'sample', sample, colorScheme);
    await checkScheme(checks, sample, colorScheme);
  }
  await checkAccess(checks, 'sample', sample, 'light', 1280);
  await checkAccess(checks, 'sample', sample, 'dark', 320);
  await checkAccess(checks, 'flawed', flawed, 'light', 320);
  await checkAccess(checks, 'compared', placed, 'dark', 1280);
  await checkSmall(checks, pages);
  await checkForcedColours(checks, sample);
};
