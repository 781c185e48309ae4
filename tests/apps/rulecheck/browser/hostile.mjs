// SPDX-License-Identifier: Apache-2.0

// Pages whose every text would do harm if it were taken for markup.

import assert from 'node:assert/strict';
import { checkPage, openEverything, overflow, settle } from './browser.mjs';
import { hostile } from './pages.mjs';

// Those that a script could mistake. page_structure_test.py looks at all.
const names = ['script-HTTP', 'end_of_double_quotes-FILE', 'end_of_script-DATA_html', 'javascript_address-MAILTO',
  'javascript_address_in_disguise-HTTP'];

const own = 'head > script:only-of-type, body > #data';
const alien = `img, svg, iframe, object, embed, base, form, script:not(${own})`;

// For a page to evaluate. ":" is what a browser says of an address that leads
// nowhere, such as one with a bad host.
const look = (selector) => ({
  aliens: document.querySelectorAll(selector).length,
  handlers: Array.from(document.querySelectorAll('*:not(#findings)')).filter((element) =>
    element.getAttributeNames().some((name) => /^on|^style$/.test(name))).length,
  addresses: Array.from(document.links, (link) => link.protocol)
    .filter((protocol) => !['http:', 'https:', 'file:', 'mailto:', ':'].includes(protocol)),
  findings: document.querySelectorAll('.finding').length,
});

for (const name of names) {
  checkPage(`hostile texts stay texts: ${name}`, hostile(name), { viewport: { width: 360, height: 800 } },
    async (page) => {
      for (const grouping of ['rule', 'file']) {
        await page.selectOption('#group', grouping);
        await settle(page);
        await openEverything(page);
        const { findings, ...harm } = await page.evaluate(look, alien);
        assert.ok(findings > 100);
        assert.deepEqual(harm, { aliens: 0, handlers: 0, addresses: [] });
        assert.equal(await overflow(page), 0, 'it scrolls sideways');
      }
    });
}
