// What the page says of the result as a whole.

import assert from 'node:assert/strict';

export const checkSummary = async (checks, { clean, flawed }) => {
  await checks.checkPage('a result that contradicts itself is not taken for good news', flawed, {}, async (page) => {
    assert.ok(await page.locator('.problems').isVisible());
    assert.equal(await page.locator('.clean').count(), 0);
  });
  await checks.checkPage('a clean result is good news', clean, {}, async (page) => {
    assert.match(await page.locator('.clean .verdict').textContent(), /No violations/);
  });
};
