// SPDX-License-Identifier: Apache-2.0

// Where links lead.

import assert from 'node:assert/strict';
import { addressOf } from './browser.mjs';

const fileLink = '#violations .finding a[href^="file:"]';

const checkFileLink = (checks, name, file) => checks.checkPage(`${name}: a link to a file leads there`, file,
  { leadsTo: /^file:.*\.v(#|$)/ }, async (page) => {
    const link = page.locator(fileLink).first();
    const href = await link.getAttribute('href');
    await link.click();
    await page.waitForURL(href);
    assert.match(await page.locator('body').textContent(), /module|This is \w+\.v/);
    await page.goBack();
    assert.ok(await link.isVisible());
  });

const checkFragments = async (checks, { sample }) => {
  await checks.checkPage('the number of a finding is a link to it', sample, {}, async (page) => {
    await page.locator('#violation-4 .id').click();
    assert.equal(page.url(), `${addressOf(sample)}#violation-4`);
    assert.ok(await page.locator('#violation-4').evaluate((element) => element.matches(':target')));
  });
  await checks.checkPage('a link to a finding finds it where it is folded', sample, {}, async (page) => {
    const finding = page.locator('#waived .finding').first();
    const group = page.locator('#waived .group').first();
    assert.ok(await finding.isHidden());
    const id = await finding.getAttribute('id');
    await page.evaluate((fragment) => { location.hash = fragment; }, id);
    await finding.waitFor({ state: 'visible' });
    assert.equal(await group.locator('.fold').getAttribute('aria-expanded'), 'true');
  });
};

export const checkLinks = async (checks, pages) => {
  for (const [name, file] of Object.entries({ sample: pages.sample, demo: pages.demo })) {
    if (file) await checkFileLink(checks, `${name} page`, file);
  }
  await checkFragments(checks, pages);
};
