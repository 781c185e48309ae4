// SPDX-License-Identifier: Apache-2.0

// Schemes, widths and accessibility.

import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { overflow, settle } from './browser.mjs';

const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf-8');
const schemes = ['light', 'dark'];

const openEverything = async (page) => {
  await page.click('#expand');
  await page.evaluate(() => {
    for (const details of document.querySelectorAll('details')) details.open = true;
  });
  await settle(page);
};

const checkFit = (checks, name, place, colorScheme, width) => checks.checkPage(
  `${name} page, ${colorScheme}, ${width} pixels: fits`, place,
  { colorScheme, viewport: { width, height: 1400 } }, async (page) => {
    assert.equal(await overflow(page), 0, 'it scrolls sideways');
    await checks.shoot(page, `${name}-${colorScheme}-${width}`);
    await openEverything(page);
    assert.equal(await overflow(page), 0, 'it scrolls sideways when all is open');
  });

const checkScheme = (checks, place, colorScheme) => checks.checkPage(
  `${colorScheme} scheme shows in the page's own colours`, place, { colorScheme }, async (page) => {
    const background = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
    const brightness = background.match(/\d+/g).map(Number);
    assert.ok(brightness.every((part) => (colorScheme === 'dark' ? part < 50 : part > 200)), background);
  });

// What a browser says when a judge looks at what is folded or out of sight.
const isAboutJudge = (fault) =>
  fault.startsWith('console: Rendering was performed in a subtree hidden by content-visibility.');

const judge = async (page) => {
  const { passes, violations } = await page.evaluate(() => window.axe.run());
  assert.ok(passes.length > 15, `only ${passes.length} rules apply`);
  assert.deepEqual(violations.map(({ id, nodes }) => `${id}: ${nodes.map(({ html }) => html).join(' ')}`), []);
};

const checkAccess = (checks, name, place, colorScheme, width) => checks.checkPage(
  `${name} page, ${colorScheme}, ${width} pixels: accessible, filtered or not`, place,
  { colorScheme, viewport: { width, height: 900 } }, async (page, faults) => {
    await page.evaluate(axe);
    await judge(page);
    await openEverything(page);
    for (const query of ['the', 'no such text']) {
      await page.fill('#query', query);
      await settle(page);
      await judge(page);
    }
    faults.push(...faults.splice(0).filter((fault) => !isAboutJudge(fault)));
  });

const checkForcedColours = (checks, place) => checks.checkPage(
  'forced colours leave what colours say as borders', place, { forcedColors: 'active' }, async (page) => {
    for (const selector of ['.level', '.tile', '.arg']) {
      const border = await page.locator(selector).first().evaluate((element) => getComputedStyle(element).borderStyle);
      assert.equal(border, 'solid', selector);
    }
    await checks.shoot(page, 'forced-colours');
  });

export const checkAppearance = async (checks, { sample, clean, flawed, demo }) => {
  for (const colorScheme of schemes) {
    for (const [name, place] of Object.entries({ sample, clean, flawed })) {
      for (const width of [1280, 768, 320]) await checkFit(checks, name, place, colorScheme, width);
    }
    await checkScheme(checks, sample, colorScheme);
    for (const [name, place] of Object.entries({ sample, clean, flawed, demo })) {
      for (const width of place ? [1280, 320] : []) await checkAccess(checks, name, place, colorScheme, width);
    }
  }
  await checkForcedColours(checks, sample);
};
