// SPDX-License-Identifier: Apache-2.0

// What the filter shows and says, and what folds.

import assert from 'node:assert/strict';
import { settle, statusOf, visible } from './browser.mjs';

const found = {
  'cdc-1': 4, 'clock domain': 5, 'pix_clk cfg_clk': 2, 'next_state': 1, '#12': 1, 'critical warning': 2,
  'board_a_debug': 1, '  ': 20,
};

const checkSearches = async (checks, { sample }) => {
  for (const [query, count] of Object.entries(found)) {
    await checks.checkPage(`a search for "${query}" finds ${count}`, sample, {}, async (page) => {
      await page.click('#expand');
      await page.fill('#query', query);
      await settle(page);
      assert.equal(await statusOf(page), `${count} of 20 findings shown`);
      assert.equal(await visible(page, '.finding'), count);
    });
  }
};

const checkKinds = async (checks, { sample }) => {
  await checks.checkPage('a click on a severity hides and shows its findings', sample, {}, async (page) => {
    await page.click('label.kind.warning');
    await settle(page);
    assert.equal(await statusOf(page), '15 of 20 findings shown');
    assert.equal(await visible(page, '.finding.warning'), 0);
    assert.equal(await visible(page, '.finding.error'), 2);
    await page.click('label.kind.warning');
    await settle(page);
    assert.equal(await statusOf(page), '20 of 20 findings shown');
    assert.equal(await visible(page, '.finding.warning'), 5);
  });
};

const checkNothing = async (checks, { sample, empty }) => {
  await checks.checkPage('a search without a match says so, and can be cleared', sample, {}, async (page) => {
    await page.fill('#query', '<script>');
    await settle(page);
    assert.equal(await statusOf(page), '0 of 20 findings shown');
    assert.ok(await page.locator('#nothing').isVisible());
    assert.equal(await visible(page, '.findings h2, .empty, .finding'), 0);
    await checks.shoot(page, 'nothing');
    await page.click('#clear');
    assert.equal(await statusOf(page), '20 of 20 findings shown');
    assert.ok(await page.locator('#nothing').isHidden());
    assert.equal(await page.evaluate(() => document.activeElement.id), 'query');
  });
  await checks.checkPage('without findings there is no filter', empty, {}, async (page) => {
    assert.ok(await page.locator('#toolbar').isHidden());
    assert.ok(await page.locator('#nothing').isHidden());
  });
};

const checkFolding = async (checks, { sample }) => {
  await checks.checkPage('all groups expand and collapse', sample, {}, async (page) => {
    assert.equal(await visible(page, '#waived .finding'), 0);
    await page.click('#collapse');
    assert.equal(await visible(page, '.finding'), 0);
    await page.focus('#expand');
    await page.keyboard.press('Enter');
    assert.equal(await visible(page, '.finding'), 20);
  });
  await checks.checkPage('a click on its bar folds a group', sample, {}, async (page) => {
    const group = page.locator('#violations .group').first();
    const button = group.locator('.fold');
    for (const open of ['false', 'true']) {
      await group.locator('.levels').click();
      assert.equal(await button.getAttribute('aria-expanded'), open);
      assert.equal(String(await page.locator('#violation-1').isVisible()), open);
    }
    await button.click();
    assert.ok(await page.locator('#violation-1').isHidden());
  });
};

export const checkFiltering = async (checks, pages) => {
  await checkKinds(checks, pages);
  await checkSearches(checks, pages);
  await checkNothing(checks, pages);
  await checkFolding(checks, pages);
};
