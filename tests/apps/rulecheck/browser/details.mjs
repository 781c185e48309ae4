// SPDX-License-Identifier: Apache-2.0

// What a row shows when it is open, where its links lead, the baseline, and waivers.

import assert from 'node:assert/strict';
import { test } from 'node:test';
import { addressOf, checkPage, settle, shoot, statusOf, visible } from './browser.mjs';
import { alike, demo, placed, sample } from './pages.mjs';

const row = (page, text) => page.locator('.finding', { hasText: text });

checkPage('a row shows the lines around its place, with a caret', placed, {}, async (page) => {
  const sources = {
    'text 0': '     1 one\n     2 two\n     3 \twire gone;\n       \t   ^\n     4 wire gone;\n     5 <b>five</b>\n',
    'text 2': '     7 wire gone;\n         ^\n',
  };
  for (const [text, source] of Object.entries(sources)) {
    await row(page, text).locator('.turn').click();
    assert.equal(await row(page, text).locator('.source').textContent(), source);
  }
  const [caret, place] = await page.locator('.caret, .at .line').first().evaluateAll(() => {
    const left = (node, at) => {
      const range = document.createRange();
      range.setStart(node, at);
      range.setEnd(node, at + 1);
      return range.getBoundingClientRect().left;
    };
    const mark = document.querySelector('.caret').firstChild;
    const line = document.querySelector('.at').lastChild;
    return [left(mark, mark.data.indexOf('^')), left(line, line.data.indexOf('e'))];
  });
  assert.ok(Math.abs(caret - place) < 1, `the caret is at ${caret}, the column at ${place}`);
  await row(page, 'text 3').locator('.turn').click();
  assert.equal(await row(page, 'text 3').locator('.source').count(), 0);
});

checkPage('a link to a finding opens it, also one that the filter hides', placed, {}, async (page) => {
  const links = [];
  for (const turn of await page.locator('.turn').all()) await turn.click();
  for (const link of await page.locator('.more dd a[href^="#finding="]').all()) links.push(await link.getAttribute('href'));
  assert.equal(links.length, 6);
  assert.equal(new Set(links).size, 6);
  for (const link of links) {
    await page.fill('#query', 'no such text');
    await settle(page);
    await page.evaluate((hash) => { location.hash = hash; }, link);
    await page.locator('.target').waitFor();
    assert.equal(await page.locator(`.target a[href="${link}"]`).count(), 1);
    assert.ok(await page.evaluate(() => document.querySelector('.target').contains(document.activeElement)));
  }
  await page.goto(addressOf(placed()) + '#finding=nosuch');
  assert.equal(await page.locator('.target').count(), 0);
  const gone = page.locator('#gone');
  assert.equal(await gone.innerText(), 'The finding that the address of this page names is not in this result.');
  for (const leave of [() => page.fill('#query', 'text'), () => page.evaluate((hash) => { location.hash = hash; }, links[0])]) {
    await leave();
    await settle(page);
    assert.ok(await gone.isHidden());
    await page.goto(addressOf(placed()) + '#finding=nosuch');
    assert.ok(await gone.isVisible());
  }
});

checkPage('a link opens the group of what was waived', sample, {}, async (page) => {
  await page.click('#expand');
  await page.locator('.finding.waived .turn').first().click();
  const link = await page.locator('.finding.waived .more dd a[href^="#finding="]').getAttribute('href');
  await page.click('#collapse');
  await page.evaluate((hash) => { location.hash = hash; }, link);
  assert.ok(await page.locator('.finding.waived.target').isVisible());
});

const hrefs = (page) => page.locator('.rows').first().locator('a.place').evaluateAll((links) => links.map((link) => link.href));

checkPage('places lead where the reader wants', placed, {}, async (page) => {
  const first = async () => (await hrefs(page)).find((href) => href.includes('a.v'));
  const use = async (template) => {
    await page.fill('#template', template);
    await settle(page);
  };
  assert.equal(await first(), 'https://host/blob/rtl/core/a.v#L4');
  await page.click('#choose');
  await use('vscode://file{absolute}:{line}:{column}');
  assert.match(await first(), /^vscode:\/\/file\/.*\/rtl\/core\/a\.v:4:2$/);
  for (const bad of ['javascript:alert({line})', 'https://{path}/', '{path}', 'data:,{path}', '']) {
    await use(bad);
    assert.match(await first(), /^file:\/\/\/.*\/rtl\/core\/a\.v#L4C2$/, bad);
  }
  await use('https://code/{path}');
  await page.reload();
  assert.equal(await first(), 'https://code/rtl/core/a.v');
});

checkPage('a place leads to its file', sample, { leadsTo: /^file:.*\.v(#|$)/ }, async (page) => {
  const link = page.locator('a.place[href^="file:"]').first();
  const href = await link.getAttribute('href');
  await link.click();
  await page.waitForURL(href);
  assert.match(await page.locator('body').textContent(), /This is \w+\.v/);
});

checkPage('what is new, moved and fixed since the baseline', placed, {}, async (page) => {
  assert.deepEqual(await page.locator('.mark').allTextContents(), ['new', 'moved', 'new', 'new', 'new']);
  await shoot(page, 'baseline');
  await page.locator('.chip.new').click();
  await settle(page);
  assert.equal(await statusOf(page), '3 of 7 findings');
  await page.locator('.chip.unchanged').click();
  await page.locator('.chip.moved').click();
  await settle(page);
  assert.equal(await statusOf(page), '1 of 7 findings');
  await page.click('#expand');
  assert.equal(await page.locator('.finding .message').innerText(), 'gone');
  assert.equal(await visible(page, '.finding.fixed'), 1);
});

const waivers = (page) => page.locator('#waivers').inputValue();

checkPage('ticked findings become lines of waivers', placed, { permissions: ['clipboard-read'] }, async (page) => {
  assert.ok(await page.locator('#selection').isHidden());
  await row(page, 'text 0').locator('input').check();
  await row(page, 'text 3').locator('input').check();
  await page.fill('#reason', 'see #12');
  const lines = 'R?1 rtl/core/a.v:3 -- see #12\n';
  const unnamed = '# no waiver for a finding of R?0 that names no file\n';
  assert.equal(await waivers(page), unnamed + lines);
  await page.click('#copy');
  assert.equal(await page.evaluate(() => navigator.clipboard.readText()), unnamed + lines);
  await page.fill('#query', 'rtl/core');
  await settle(page);
  await row(page, 'text 0').locator('input').uncheck();
  await page.click('#select-all');
  assert.equal((await waivers(page)).split('\n').length, 5);
  await page.click('#deselect');
  assert.ok(await page.locator('#selection').isHidden());
  assert.equal(await page.locator('.row input:checked').count(), 0);
});

checkPage('lines without a reason are not copied', placed, { permissions: ['clipboard-read'] }, async (page) => {
  await row(page, 'text 0').locator('input').check();
  const before = await page.evaluate(() => navigator.clipboard.readText());
  await page.fill('#reason', ' ');
  assert.equal(await waivers(page), 'R?1 rtl/core/a.v:3 -- \n');
  await page.click('#copy');
  assert.equal(await page.evaluate(() => navigator.clipboard.readText()), before);
  assert.equal(await page.evaluate(() => document.activeElement.id), 'reason');
});

checkPage('only violations can be ticked', sample, {}, async (page) => {
  await page.click('#expand');
  assert.equal(await page.locator('.rows.special .row input:enabled').count(), 0);
  await page.locator('.row input').first().check();
  await page.click('#select-all');
  assert.equal(await page.locator('.row input:checked').count(), 14);
});

checkPage('a line names the message if another one of the rule is there', alike, {}, async (page) => {
  const [first, second, inFolder] = await page.locator('.row input').all();
  await first.check();
  const message = String.raw`match=^Bits${'\u3000'}\[3:0\].of.a\.\*b.\(not\).\$used\\\?\^\|\+\{1\}$`;
  assert.equal(await waivers(page), `R a.v:3 ${message} -- \n`);
  await second.check();
  const refused = '# no waiver for R a.v:3: it would accept one that is not ticked\n';
  assert.equal(await waivers(page), `R a.v:3 ${message} -- \n${refused}`);
  await inFolder.check();
  assert.equal(await waivers(page), 'R a.v:3 -- \nR lib/a.v:3 -- \n');
  await first.uncheck();
  await second.uncheck();
  assert.equal(await waivers(page), 'R lib/a.v:3 -- \n');
});

if (process.env.VERILATOR) {
  const lines = [];
  checkPage('the lines of violations of the demo', () => demo('').page, {}, async (page) => {
    await row(page, 'do_push').locator('input').check();
    lines.push(await waivers(page));
    await page.fill('#reason', 'see #12');
    lines.push(await waivers(page));
    await page.click('#select-all');
    lines.push(await waivers(page));
    assert.ok(lines[2].split('\n').length > 20);
  });

  test('lint accepts the lines, and each waives a finding', async () => {
    const [unexplained, one, all] = lines.map(demo);
    assert.match(unexplained.error, /waivers:1: expected RULE FILE/);
    assert.deepEqual([one.waived, one.unused], [1, false]);
    assert.deepEqual([all.waived, all.unused], [27, false]);
  });
}
