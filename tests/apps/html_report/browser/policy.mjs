// What the page's policy keeps from happening to a page that somebody has altered.

import assert from 'node:assert/strict';
import { settle, statusOf } from './browser.mjs';
import { altered } from './pages.mjs';

const act = "document.title = 'it acts'";
const attacks = {
  'a script': { directive: 'script-src-elem', html: `<script>${act}</script>` },
  'a handler': { directive: 'script-src-attr', html: `<button id="bait" onclick="${act}">x</button>` },
  'a handler of an error': { directive: 'img-src', html: `<img src="https://elsewhere.example/x.png" onerror="${act}">` },
  'a javascript link': { directive: 'script-src-elem', html: `<a id="bait" href="javascript:${act};void 0">x</a>` },
  'a script from elsewhere': { directive: 'script-src-elem', html: '<script src="https://elsewhere.example/x.js"></script>' },
  'a style': { directive: 'style-src-elem', html: '<style>body { opacity: 0.5 }</style>' },
  'a style attribute': { directive: 'style-src-attr', html: '<p style="position: fixed">x</p>' },
  'a frame': { directive: 'frame-src', html: '<iframe src="https://elsewhere.example/"></iframe>' },
  'a form': {
    directive: 'form-action',
    endsPage: true, // the browser leaves for a page of its own
    html: '<form action="https://elsewhere.example/"><button id="bait" type="submit">x</button></form>',
  },
  'a base': { directive: 'base-uri', html: '<base href="https://elsewhere.example/">' },
};

const takeBait = async (page) => {
  const bait = page.locator('#bait');
  if (await bait.count() > 0) await bait.evaluate((element) => element.click());
  await settle(page);
};

const checkAttack = (checks, page, name, { directive, html, endsPage }) => checks.checkPage(`the policy keeps out ${name}`, page, {},
  async (opened, faults) => {
    const title = await opened.title();
    await takeBait(opened);
    const policed = faults.splice(0);
    assert.ok(policed.some((fault) => fault.startsWith(`console: policy: ${directive} `)), `${html}: ${policed}`);
    assert.deepEqual(policed.filter((fault) => /^(request|dialog|error):/.test(fault)), []);
    if (endsPage) return;
    assert.equal(await opened.title(), title);
    assert.match(title, /rule check report$/);
    assert.equal(await opened.evaluate(() => getComputedStyle(document.body).opacity), '1');
    assert.equal(await statusOf(opened), '20 of 20 findings shown', "the page's own script does not run");
  });

// So that the checks above are worth something.
const checkWithout = (checks, page, name) => checks.checkPage(`without the policy, ${name} acts`, page, {},
  async (opened, faults) => {
    await takeBait(opened);
    faults.splice(0);
    assert.equal(await opened.title(), 'it acts');
  });

export const checkPolicy = async (checks, { sample }) => {
  const lax = altered(sample, 'lax', 'http-equiv="Content-Security-Policy"', 'name="none"');
  for (const [name, attack] of Object.entries(attacks)) {
    const file = name.replaceAll(' ', '-');
    await checkAttack(checks, altered(sample, file, '</main>', `${attack.html}</main>`), name, attack);
    if (!attack.html.includes(act)) continue;
    await checkWithout(checks, altered(lax, `lax-${file}`, '</main>', `${attack.html}</main>`), name);
  }
};
