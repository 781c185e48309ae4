// SPDX-License-Identifier: Apache-2.0

// The page when it is printed, and without its script.

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { join } from 'node:path';
import { settle, visible } from './browser.mjs';

const printed = async (page, path) => {
  await page.pdf({ path, format: 'A4' });
  return execFileSync('pdftotext', ['-layout', path, '-'], { encoding: 'utf-8' });
};

// For a page to evaluate: the messages of all findings that a filter leaves.
const messages = () => Array.from(document.querySelectorAll('.finding:not([hidden]) .message'))
  .filter((message) => !message.closest('.block[hidden], .group[hidden], .list[hidden]'))
  .map((message) => message.textContent);

const squeezed = (text) => text.replace(/\s+/g, '');

const assertPrinted = (text, wanted) => {
  const paper = squeezed(text);
  for (const message of wanted) assert.ok(paper.includes(squeezed(message)), message);
};

const checkPrint = async (checks, { sample }) => {
  await checks.checkPage('on paper everything is open and there are no controls', sample,
    { colorScheme: 'dark' }, async (page) => {
      await page.click('#collapse');
      await page.emulateMedia({ media: 'print', colorScheme: 'dark' });
      assert.equal(await visible(page, '.finding'), 20);
      assert.equal(await visible(page, '#toolbar, button:not(.fold), input, .skip'), 0);
      assert.equal(await page.evaluate(() => getComputedStyle(document.body).backgroundColor), 'rgb(255, 255, 255)');
      await checks.shoot(page, 'print', { fullPage: true });
    });
  await checks.checkPage('a PDF has all findings, folded ones too', sample, {}, async (page) => {
    await page.click('#collapse');
    const all = await page.evaluate(messages);
    assert.equal(all.length, 20);
    const text = await printed(page, join(checks.shots, 'print.pdf'));
    assertPrinted(text, all);
    assert.match(text, /First release/, 'more about a rule is not there');
    assert.doesNotMatch(text, /Collapse all|Skip to|Search/);
    assert.equal(await page.locator('details[open]').count(), 0, 'what printing opened stays open');
  });
  await checks.checkPage('a PDF of a filtered page has what is shown, and says so', sample, {}, async (page) => {
    await page.fill('#query', 'latch');
    await settle(page);
    const left = await page.evaluate(messages);
    assert.equal(left.length, 2);
    const text = await printed(page, join(checks.shots, 'print-filtered.pdf'));
    assertPrinted(text, left);
    assert.match(text, /2 of 20 findings shown/);
    assert.doesNotMatch(text, /CDC-1/);
  });
};

const checkWithoutScript = async (checks, { sample }) => {
  const options = { javaScriptEnabled: false };
  await checks.checkPage('without script the page shows everything and no controls', sample, options, async (page) => {
    assert.ok(await page.locator('#toolbar').isHidden());
    assert.equal(await visible(page, '.finding'), 20);
    assert.equal(await page.locator('button:enabled:visible').count(), 0);
    await checks.shoot(page, 'without-script');
  });
  await checks.checkPage('without script a PDF has all findings', sample, options, async (page) => {
    assertPrinted(await printed(page, join(checks.shots, 'print-without-script.pdf')), await page.evaluate(messages));
  });
};

export const checkPaper = async (checks, pages) => {
  await checkPrint(checks, pages);
  await checkWithoutScript(checks, pages);
};
