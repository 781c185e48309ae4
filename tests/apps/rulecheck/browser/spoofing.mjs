// SPDX-License-Identifier: Apache-2.0

// Names and texts that would cover or push away what is around them.

import assert from 'node:assert/strict';
import { checkPage, openEverything, overflow, shoot } from './browser.mjs';
import { spoofed } from './pages.mjs';

const marks = '\u0335\u0300\u0316'.repeat(200);
const texts = {
  lines: 'line\n'.repeat(2000),
  lines_below_the_limit: 'x\n'.repeat(90),
  word: 'W'.repeat(10000),
  words: 'many words '.repeat(900),
  marks: `a${marks}b`,
  wide: '\ufdfd\ua9c5\u{12219}\u2e3b'.repeat(300),
  unbreakable: 'a\u2060\u00a0'.repeat(3000),
  tabs: '\t'.repeat(3000) + 'end',
  directions: '\u202egpj.exe\u202c \u2067gpj.exe\u2069',
  right_to_left: '\u05d0\u05d1 (1) \u0627'.repeat(40),
};
const widths = [1280, 360];
// Not what labels categories, whose borders reach half a pixel into the picture.
const own = '.summary, .toolbar, .levels, .row .level, dt:not(:has(+ dd .tag))';

// The boxes of what is not of the text: the places of the page's own words.
const look = () => {
  const heightOf = (selector) => Math.max(0, ...Array.from(document.querySelectorAll(selector),
    (element) => element.getBoundingClientRect().height));
  return {
    summaryTop: document.querySelector('.summary').getBoundingClientRect().top,
    tallest: heightOf('h1, .description, dd, .row, .whole, .source, .bar'),
  };
};

for (const [name, text] of Object.entries(texts)) {
  checkPage(`${name} leaves the page its shape`, spoofed(name, text), {}, async (page) => {
    for (const width of widths) {
      await page.setViewportSize({ width, height: 800 });
      for (const isOpen of [false, true]) {
        if (isOpen) await openEverything(page);
        assert.equal(await overflow(page), 0, 'it scrolls sideways');
        const { summaryTop, tallest } = await page.evaluate(look);
        assert.ok(summaryTop < 500, `the counts begin at ${summaryTop}`);
        assert.ok(tallest <= 400, `something is ${tallest} high`);
      }
    }
    await shoot(page, `spoofed-${name}`);
    assert.doesNotMatch(await page.content(), /[\u202a-\u202e\u2066-\u2069]/);
  });
}

// The page's own words look as they do when the texts are hidden.
checkPage('marks cover no other line', spoofed('marked', texts.marks), {}, async (page) => {
  await openEverything(page);
  const shootOwn = async () => {
    const shots = [];
    for (const element of await page.locator(own).all()) {
      if (await element.isVisible()) shots.push((await element.screenshot()).toString('base64'));
    }
    return shots;
  };
  const before = await shootOwn();
  await page.evaluate((selector) => {
    for (const element of document.querySelectorAll(selector)) element.style.visibility = 'hidden';
  }, 'h1, .description, dd, .message, .place, .rule, .key, .name');
  const after = await shootOwn();
  assert.ok(before.length > 8);
  assert.deepEqual(before.map((shot, i) => shot === after[i]), before.map(() => true));
});
