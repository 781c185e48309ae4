// SPDX-License-Identifier: Apache-2.0

// The page when it is printed, and without its script.

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { join } from 'node:path';
import { checkPage, pictures, settle, shoot, visible } from './browser.mjs';
import { many, sample } from './pages.mjs';

const large = many(6000, 3);

const printed = async (page, path) => {
  await page.pdf({ path, format: 'A4' });
  return execFileSync('pdftotext', [path, '-'], { encoding: 'utf-8' });
};

const messages = (page) => page.locator('.finding .message').allTextContents();

const squeezed = (text) => text.replace(/\s+/g, '');

const assertPrinted = (text, wanted) => {
  const paper = squeezed(text);
  for (const message of wanted) assert.ok(paper.includes(squeezed(message)), message);
};

const all = async (page) => {
  await page.click('#expand');
  const texts = await messages(page);
  await page.click('#collapse');
  return texts;
};

checkPage('on paper everything is open and there are no controls', sample,
  { colorScheme: 'dark' }, async (page) => {
    await page.click('#collapse');
    await page.evaluate(() => dispatchEvent(new Event('beforeprint')));
    await page.emulateMedia({ media: 'print', colorScheme: 'dark' });
    assert.equal(await visible(page, '.finding'), 20);
    assert.equal(await visible(page, 'button:not(.fold), input, select, .skip'), 0);
    assert.equal(await page.evaluate(() => getComputedStyle(document.body).backgroundColor), 'rgb(255, 255, 255)');
    await shoot(page, 'print', { fullPage: true });
  });

checkPage('a PDF has all findings, folded ones too', sample, {}, async (page) => {
  const texts = await all(page);
  assert.equal(texts.length, 20);
  const text = await printed(page, join(pictures, 'print.pdf'));
  assertPrinted(text, texts);
  assert.match(text, /A synchroniser on every crossing/, 'the rule is not there');
  assert.doesNotMatch(text, /Collapse all|Skip to|Search|are printed/);
  assert.equal(await visible(page, '.finding'), 0, 'what printing opened stays open');
});

checkPage('a PDF of a filtered page has what is shown, and says so', sample, {}, async (page) => {
  await page.fill('#query', 'latch');
  await settle(page);
  const texts = await messages(page);
  assert.equal(texts.length, 2);
  const text = await printed(page, join(pictures, 'print-filtered.pdf'));
  assertPrinted(text, texts);
  assert.match(text, /2 of 20 findings/);
  assert.doesNotMatch(text, /CDC-1/);
});

checkPage('of too many findings, paper has the first 5,000 and says so', large, {}, async (page) => {
  await page.evaluate(() => dispatchEvent(new Event('beforeprint')));
  assert.equal(await page.locator('.finding').count(), 5000);
  assert.equal(await page.locator('#unprinted').innerText(), 'Printed: the first 5,000 of 6,000 findings.');
  await page.evaluate(() => dispatchEvent(new Event('afterprint')));
  assert.equal(await page.locator('.finding').count(), 0);
  assert.ok(await page.locator('#unprinted').isHidden());
});

const options = { javaScriptEnabled: false };
checkPage('without script the page shows everything and no controls', sample, options, async (page) => {
  assert.equal(await visible(page, '.finding'), 20);
  assert.equal(await visible(page, 'button, input, select'), 0);
  await shoot(page, 'without-script', { fullPage: true });
  assertPrinted(await printed(page, join(pictures, 'print-without-script.pdf')), await messages(page));
});

checkPage('without script a large page says what it needs', large, options, async (page) => {
  assert.match(await page.locator('main').innerText(), /more than 5,000 findings and needs its script/);
});
