// SPDX-License-Identifier: Apache-2.0

// Search, filter, groups, and their place in the address.

import assert from 'node:assert/strict';
import { addressOf, checkPage, settle, statusOf, titles, visible } from './browser.mjs';
import { empty, many, placed, sample } from './pages.mjs';

const found = {
  'cdc-1': 4, 'clock domain': 5, '"clock domain"': 5, '"domain clock': 0, 'pix_clk cfg_clk': 2, 'next_state': 1,
  '#12': 1, 'critical warning': 2, 'board_a_debug': 1, 'frame_writer.v:97': 1, '-latch': 18,
  'latch -next_state': 1, '-"clock domain"': 15, '  ': 20, '-': 20, 'LATCH': 2,
};

checkPage('a search finds words, phrases, and what has no such word', sample, {}, async (page) => {
  const counts = {};
  for (const query of Object.keys(found)) {
    await page.fill('#query', query);
    await settle(page);
    counts[query] = Number((await statusOf(page)).split(' ')[0]);
    if (query.trim()) assert.equal(await visible(page, '.finding'), counts[query], query);
  }
  assert.deepEqual(counts, found);
});

checkPage('a click on a severity hides and shows its findings', sample, {}, async (page) => {
  for (const [status, warnings] of [['15 of 20 findings', 0], ['20 findings', 5]]) {
    await page.click('.chip.warning');
    await settle(page);
    assert.equal(await statusOf(page), status);
    assert.equal(await visible(page, '.finding.warning'), warnings);
    assert.equal(await visible(page, '.finding.error'), 2);
  }
});

checkPage('a search without a match says so, and can be cleared', sample, {}, async (page) => {
  await page.fill('#query', '<script>');
  await settle(page);
  assert.equal(await statusOf(page), '0 of 20 findings');
  assert.ok(await page.locator('#nothing').isVisible());
  await page.click('#clear');
  assert.equal(await statusOf(page), '20 findings');
  assert.ok(await page.locator('#nothing').isHidden());
  assert.equal(await page.evaluate(() => document.activeElement.id), 'query');
});

checkPage('without findings there is no filter', empty, {}, async (page) => {
  assert.ok(await page.locator('#toolbar').isHidden());
  assert.ok(await page.locator('#nothing').isHidden());
});

// The order of groups, with the rows of each in the order of their places.
const groups = {
  rule: ['R 0', 'R 1', 'fixed'],
  file: ['rtl/core/a.v', 'rtl/core/b.v', 'rtl/missing.v', 'No file named', 'fixed'],
  module: ['No module or instance named', 'fixed'],
  severity: ['warning', 'fixed'],
};

checkPage('findings are grouped, and sorted by place', placed, {}, async (page) => {
  for (const [name, expected] of Object.entries(groups)) {
    await page.selectOption('#group', name);
    await settle(page);
    assert.deepEqual((await titles(page)).map((title) => title.trim()), expected);
  }
  assert.deepEqual(await page.locator('.rows').first().locator('.place').allTextContents(),
    ['', 'rtl/core/a.v:3:5', 'rtl/core/a.v:4:2', 'rtl/core/b.v:1:1', 'rtl/core/b.v:1:1', 'rtl/missing.v:7:3']);
  await page.selectOption('#group', 'file');
  await settle(page);
  assert.equal(await page.locator('.levels').first().innerText(), 'warning 2');
  assert.equal(await page.locator('.group .folder').first().innerText(), 'rtl/core/');
});

checkPage('a rule is described once', sample, {}, async (page) => {
  assert.equal(await page.getByText('A synchroniser on every crossing').count(), 1);
  await page.selectOption('#group', 'file');
  await settle(page);
  assert.equal(await page.getByText('A synchroniser on every crossing').count(), 0);
  await page.locator('.turn').first().click();
  assert.equal(await page.locator('.more .about').count(), 1);
});

checkPage('the address has the filter and the groups', sample, {}, async (page) => {
  await page.fill('#query', '"clock domain" -pix & more');
  await page.fill('#query', 'cdc');
  await page.selectOption('#group', 'file');
  await page.click('.chip.error');
  await settle(page);
  const expected = '#q=cdc&group=file&hide=error';
  assert.equal(page.url(), addressOf(sample()) + expected);
  const shown = [await statusOf(page), await titles(page)];
  await page.reload();
  assert.deepEqual([await statusOf(page), await titles(page)], shown);
  await page.evaluate(() => { location.hash = '#q=%22clock%20domain%22&group=constructor&hide=nosuch'; });
  await settle(page);
  assert.equal(await statusOf(page), '5 of 20 findings');
  assert.equal(await page.locator('#group').inputValue(), 'rule');
});

checkPage('Back leads to the filter before', sample, {}, async (page) => {
  await page.locator('#query').pressSequentially('cdc');
  await settle(page);
  await page.selectOption('#group', 'file');
  await settle(page);
  for (const expected of ['#q=cdc', '']) {
    await page.goBack();
    await settle(page);
    assert.equal(page.url(), addressOf(sample()) + expected);
    assert.equal(await page.locator('#query').inputValue(), expected.slice(3));
    assert.equal(await page.locator('#group').inputValue(), 'rule');
  }
  assert.equal(await statusOf(page), '20 findings');
});

checkPage('an address with the fragment of an element shows all findings', sample, {}, async (page) => {
  const shown = await titles(page);
  for (const fragment of ['#findings', '#x']) {
    await page.goto(addressOf(sample()) + fragment);
    await page.reload();
    assert.equal(await statusOf(page), '20 findings', fragment);
    assert.deepEqual(await titles(page), shown, fragment);
  }
});

checkPage('groups and rows fold', sample, {}, async (page) => {
  assert.equal(await visible(page, '.finding.waived'), 0);
  await page.click('#collapse');
  assert.equal(await visible(page, '.finding'), 0);
  await page.click('#expand');
  assert.equal(await visible(page, '.finding'), 20);
  const group = page.locator('.group').first();
  for (const count of [0, 1]) {
    await group.locator('.levels').click();
    assert.equal(await group.locator('.finding').count(), count);
  }
  for (const count of [1, 0]) {
    await group.locator('.level').last().click();
    assert.equal(await group.locator('.more').count(), count);
  }
});

checkPage('many findings are shown a part at a time', many(6000, 3), {}, async (page) => {
  assert.equal(await visible(page, '.finding'), 0);
  await page.locator('.fold').first().click();
  for (const count of [500, 1000, 1500, 2000]) {
    assert.equal(await visible(page, '.finding'), count);
    if (count < 2000) await page.locator('.further').click();
  }
  assert.equal(await page.locator('.further').count(), 0);
  await page.click('#expand');
  assert.equal(await visible(page, '.finding'), 1000);
  assert.match(await page.locator('.further').first().innerText(), /^Show 500 more of 2,000 findings$/);
});
