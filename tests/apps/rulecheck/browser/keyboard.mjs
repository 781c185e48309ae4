// SPDX-License-Identifier: Apache-2.0

// The page without a mouse.

import assert from 'node:assert/strict';
import { checkPage, settle, statusOf } from './browser.mjs';
import { sample } from './pages.mjs';

// For a page to evaluate: what can have the focus, in the order of the page.
const controls = () => {
  const all = document.querySelectorAll('a[href], button:enabled, input:enabled, select, summary, [tabindex="0"]');
  return Array.from(all).filter((element) => element.checkVisibility()).map((element) => element.outerHTML);
};

// For a page to evaluate: what has the focus, and how that shows.
const focused = () => {
  const element = document.activeElement;
  const { outlineStyle, outlineWidth } = getComputedStyle(element);
  const [box] = element.getClientRects();
  const x = box.left + Math.min(box.width, 8) / 2;
  const onTop = document.elementFromPoint(x, box.top + box.height / 2);
  return {
    html: element.outerHTML,
    outline: `${outlineStyle} ${outlineWidth}`,
    isInSight: element.contains(onTop) || onTop?.contains(element),
  };
};

const walk = async (page, key, count) => {
  const seen = [];
  for (let i = 0; i < count; i += 1) {
    await page.keyboard.press(key);
    const { html, outline, isInSight } = await page.evaluate(focused);
    assert.equal(outline, 'solid 2px', html);
    assert.ok(isInSight, `out of sight: ${html}`);
    seen.push(html);
  }
  return seen;
};

for (const viewport of [{ width: 1280, height: 900 }, { width: 320, height: 600 }]) {
  checkPage(`each control has its turn and shows it, ${viewport.width} pixels`, sample,
    { viewport }, async (page) => {
      await page.evaluate(() => document.querySelector('.turn').click());
      const expected = await page.evaluate(controls);
      assert.ok(expected.length > 60, `only ${expected.length} controls`);
      assert.deepEqual(await walk(page, 'Tab', expected.length), expected);
      assert.deepEqual(await walk(page, 'Shift+Tab', expected.length - 1), expected.slice(0, -1).reverse());
    });
}

checkPage('the keyboard alone filters', sample, {}, async (page) => {
  await page.keyboard.press('/');
  assert.equal(await page.evaluate(() => document.activeElement.id), 'query');
  await page.keyboard.type('LATCH/');
  await page.keyboard.press('Backspace');
  await settle(page);
  assert.equal(await statusOf(page), '2 of 20 findings');
  for (const [key, name] of [['ArrowDown', 'fold'], ['ArrowDown', 'turn'], ['ArrowUp', 'fold'], ['ArrowUp', '']]) {
    await page.keyboard.press(key);
    assert.equal(await page.evaluate(() => document.activeElement.className), name);
  }
  assert.equal(await page.evaluate(() => document.activeElement.id), 'query');
});

checkPage('groups and rows fold by keyboard', sample, {}, async (page) => {
  const focusedClass = () => page.evaluate(() => document.activeElement.className);
  await page.locator('.fold').first().focus();
  for (const count of [0, 1]) {
    await page.keyboard.press(count === 0 ? 'Enter' : 'Space');
    assert.equal(await page.locator('.group').first().locator('.finding').count(), count);
  }
  await page.keyboard.press('ArrowDown');
  assert.equal(await focusedClass(), 'turn');
  for (const count of [1, 0]) {
    await page.keyboard.press('Enter');
    assert.equal(await page.locator('.more').count(), count);
  }
  await page.keyboard.press('ArrowUp');
  assert.equal(await focusedClass(), 'fold');
});

checkPage('the skip link leads to the findings of the search', sample, {}, async (page) => {
  await page.fill('#query', 'LATCH');
  await settle(page);
  await page.locator('.skip').focus();
  await page.keyboard.press('Enter');
  assert.equal(await page.evaluate(() => document.activeElement.id), 'findings');
  await page.reload();
  assert.equal(await statusOf(page), '2 of 20 findings');
});
