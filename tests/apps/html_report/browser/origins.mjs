// The page from disk and from a server, and where its links lead.

import assert from 'node:assert/strict';
import { addressOf, settle, statusOf } from './browser.mjs';
import { serve } from './server.mjs';

const fileLink = '#violations .finding a[href^="file:"]';

const total = (page) => page.locator('.finding').count();

const checkUse = (checks, name, place) => checks.checkPage(`${name}: filters and folds`, place, {}, async (page) => {
  const all = await total(page);
  assert.ok(all > 0);
  assert.equal(await statusOf(page), `${all} of ${all} findings shown`);
  await page.click('#collapse');
  await page.click('#expand');
  await page.fill('#query', 'no such text');
  await settle(page);
  assert.equal(await statusOf(page), `0 of ${all} findings shown`);
});

const checkLinkFromDisk = (checks, name, file) => checks.checkPage(`${name}: a link to a file leads there`, file,
  { leadsTo: /^file:.*\.v(#|$)/ }, async (page) => {
    const link = page.locator(fileLink).first();
    const href = await link.getAttribute('href');
    await link.click();
    await page.waitForURL(href);
    assert.match(await page.locator('body').textContent(), /module|This is \w+\.v/);
    await page.goBack();
    assert.ok(await link.isVisible());
  });

// A browser does not let a page from elsewhere open the reader's files.
const checkLinkFromServer = (checks, name, address) => checks.checkPage(`${name}: a link to a file leads nowhere`,
  address, {}, async (page, faults) => {
    await page.locator(fileLink).first().click();
    await settle(page);
    assert.equal(page.url(), address);
    assert.equal(faults.length, 1);
    assert.match(faults.pop(), /^console: Not allowed to load local resource: file:/);
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

export const checkOrigins = async (checks, pages) => {
  const { sample, demo } = pages;
  for (const [name, file] of Object.entries({ sample, demo })) {
    if (!file) continue;
    const { address, close } = await serve(file);
    await checkUse(checks, `${name} page from disk`, file);
    await checkUse(checks, `${name} page from a server`, address);
    await checkLinkFromDisk(checks, `${name} page from disk`, file);
    await checkLinkFromServer(checks, `${name} page from a server`, address);
    await close();
  }
  await checkFragments(checks, pages);
};
