// Looks at report pages in a browser.
//
//   node browser_check.mjs SCREENSHOT_FOLDER
//
// Environment: HTML_REPORT and MAKE_RESULTS, the programs that make the pages;
// CHROMIUM, the browser, /usr/bin/chromium if not set. Needs `npm ci` in tests.
// Prints a line per check, and exits with 1 if one fails.

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdirSync, mkdtempSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { basename, join, resolve } from 'node:path';
import { fileURLToPath, pathToFileURL } from 'node:url';
import { chromium } from 'playwright-core';

if (process.argv.length !== 3 || !process.env.HTML_REPORT || !process.env.MAKE_RESULTS) {
  console.error('usage: HTML_REPORT=... MAKE_RESULTS=... node browser_check.mjs SCREENSHOT_FOLDER');
  process.exit(2);
}
const shots = resolve(process.argv[2]);
mkdirSync(shots, { recursive: true });
const work = mkdtempSync(join(tmpdir(), 'html_report-'));

// The pages

const makePage = (input) => {
  const page = `${input}.html`;
  execFileSync(process.env.HTML_REPORT, [input, page]);
  return page;
};
const makeResults = (...args) => execFileSync(process.env.MAKE_RESULTS, args);
const pageOfText = (name, text) => {
  const input = join(work, `${name}.txtpb`);
  writeFileSync(input, text);
  return makePage(input);
};

const sampleInput = join(work, 'sample.pb');
makeResults('convert', fileURLToPath(new URL('sample.txtpb', import.meta.url)), sampleInput);
const sample = makePage(sampleInput);
const clean = pageOfText('clean', `
  session { name: "Camera pipeline, release" timestamp: 1773500966000 }
  affirmations { hashmap { key: 1 value { id: 1 rule_key: "RST-1"
    details { text: "All registers have a reset." } } } }`);
const flawed = pageOfText('flawed', `
  session { name: "${'A_name_without_any_place_to_break_'.repeat(8)}" } violation_count: 7
  violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR rule_key: "${'KEY'.repeat(60)}"
    details { text: "${'word'.repeat(2000)}" } expects: "${'x'.repeat(300)}" } } }`);
const manyCount = 20000;
const manyInput = join(work, 'many.pb');
makeResults('many', String(manyCount), manyInput);
const many = makePage(manyInput);
const hostileFolder = join(work, 'hostile');
mkdirSync(hostileFolder);
makeResults('hostile', hostileFolder);
const hostile = readdirSync(hostileFolder)
  .filter((name) => /-(HTTP|MAILTO|FTP|DATA_html)\.pb$/.test(name))
  .map((name) => makePage(join(hostileFolder, name)));

// The browser

const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
  args: ['--no-sandbox', '--disable-quic'],
});

// Opens a page, with a list of everything that it should not do.
const open = async (file, options = {}) => {
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 }, ...options });
  const page = await context.newPage();
  const faults = [];
  const address = pathToFileURL(file).href;
  page.on('console', (message) => faults.push(`console: ${message.text()}`));
  page.on('pageerror', (error) => faults.push(`error: ${error.message}`));
  page.on('dialog', (dialog) => {
    faults.push(`dialog: ${dialog.message()}`);
    dialog.dismiss();
  });
  page.on('request', (request) => {
    if (request.url() !== address && request.url() !== 'data:,') faults.push(`request: ${request.url()}`);
  });
  await page.addInitScript(() => {
    document.addEventListener('securitypolicyviolation', (event) => {
      console.error(`policy: ${event.violatedDirective} ${event.blockedURI}`);
    });
  });
  await page.goto(address);
  return { page, faults, close: () => context.close() };
};

const statusOf = (page) => page.locator('#status').textContent();
const settle = (page) =>
  page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
// Elements that are shown, also where they are out of sight.
const visible = (page, selector) => page.evaluate((list) =>
  Array.from(document.querySelectorAll(list)).filter((element) => element.checkVisibility()).length, selector);
const overflow = (page) =>
  page.evaluate(() => document.documentElement.scrollWidth - document.documentElement.clientWidth);

// Texts whose contrast with what is behind them is below WCAG's AA for small text.
const poorContrast = () => {
  const canvas = document.createElement('canvas').getContext('2d', { willReadFrequently: true });
  const paint = (colours) => {
    canvas.clearRect(0, 0, 1, 1);
    for (const colour of colours) {
      canvas.fillStyle = colour;
      canvas.fillRect(0, 0, 1, 1);
    }
    return Array.from(canvas.getImageData(0, 0, 1, 1).data).slice(0, 3);
  };
  const luminance = (rgb) => {
    const [r, g, b] = rgb.map((value) => {
      const part = value / 255;
      return part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4;
    });
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
  const behind = (element) => {
    const colours = [];
    for (let at = element; at; at = at.parentElement) colours.unshift(getComputedStyle(at).backgroundColor);
    return colours;
  };
  const poor = [];
  let looked = 0;
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (walker.nextNode()) {
    const element = walker.currentNode.parentElement;
    if (!walker.currentNode.data.trim() || !element.checkVisibility()) continue;
    const background = behind(element);
    const under = luminance(paint(background));
    const text = luminance(paint([...background, getComputedStyle(element).color]));
    const ratio = (Math.max(text, under) + 0.05) / (Math.min(text, under) + 0.05);
    looked += 1;
    if (ratio < 4.5) poor.push(`${element.className || element.tagName}: ${ratio.toFixed(2)}`);
  }
  return { looked, poor: Array.from(new Set(poor)) };
};

// The checks

let passed = 0;
let failed = 0;
const check = async (name, file, options, body) => {
  let opened;
  try {
    opened = await open(file, options);
    await body(opened.page);
    assert.deepEqual(opened.faults, []);
    passed += 1;
    console.log(`ok: ${name}`);
  } catch (error) {
    failed += 1;
    console.log(`FAILED: ${name}: ${error.message.replaceAll('\n', ' ')}`);
  } finally {
    await opened?.close();
  }
};
const shoot = (page, name) => page.screenshot({ path: join(shots, `${name}.png`) });

for (const colorScheme of ['light', 'dark']) {
  for (const [name, file] of Object.entries({ sample, clean, flawed })) {
    for (const width of [1280, 768, 360]) {
      await check(`${name} page, ${colorScheme}, ${width} pixels: fits, is readable`, file,
        { colorScheme, viewport: { width, height: 1400 } }, async (page) => {
          assert.equal(await overflow(page), 0, 'it scrolls sideways');
          await shoot(page, `${name}-${colorScheme}-${width}`);
          await page.click('#expand');
          await page.evaluate(() => {
            for (const details of document.querySelectorAll('details')) details.open = true;
          });
          assert.equal(await overflow(page), 0, 'it scrolls sideways when all is open');
          const { looked, poor } = await page.evaluate(poorContrast);
          assert.ok(looked > 20, `only ${looked} texts`);
          assert.deepEqual(poor, []);
        });
    }
  }
  await check(`${colorScheme} scheme shows in the page's own colours`, sample, { colorScheme }, async (page) => {
    const background = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
    const brightness = background.match(/\d+/g).map(Number);
    assert.ok(brightness.every((part) => (colorScheme === 'dark' ? part < 50 : part > 200)), background);
  });
}

await check('nothing is filtered at first', sample, {}, async (page) => {
  assert.equal(await statusOf(page), '20 of 20 findings shown');
  assert.equal(await visible(page, '.shown'), 0);
  assert.equal(await page.locator('#status').getAttribute('role'), 'status');
});

await check('a click on a severity hides and shows its findings', sample, {}, async (page) => {
  await page.click('label.kind.warning');
  await settle(page);
  assert.equal(await statusOf(page), '15 of 20 findings shown');
  assert.equal(await visible(page, '.finding.warning'), 0);
  assert.equal(await visible(page, '.finding.error'), 2);
  await page.click('label.kind.warning');
  await settle(page);
  assert.equal(await statusOf(page), '20 of 20 findings shown');
});

await check('a partly filtered group says how much it shows', sample, {}, async (page) => {
  await page.click('label.kind.error');
  await settle(page);
  const group = page.locator('#violations .group', { hasText: 'CDC-1' });
  assert.equal(await group.locator('.shown').textContent(), '1 of 3 shown');
  assert.ok(await group.locator('.shown').isVisible());
});

await check('the keyboard alone filters', sample, {}, async (page) => {
  await page.keyboard.press('Tab');
  assert.equal(await page.evaluate(() => document.activeElement.className), 'skip');
  for (let i = 0; i < 40 && !(await page.evaluate(() => document.activeElement.id === 'query')); i += 1) {
    await page.keyboard.press('Tab');
  }
  await page.keyboard.type('LATCH');
  await settle(page);
  assert.equal(await statusOf(page), '2 of 20 findings shown');
  for (let i = 0; i < 3; i += 1) await page.keyboard.press('Tab');
  assert.equal(await page.evaluate(() => document.activeElement.value), 'fatal');
  for (let i = 0; i < 3; i += 1) await page.keyboard.press('Tab');
  assert.equal(await page.evaluate(() => document.activeElement.value), 'warning');
  await page.keyboard.press('Space');
  await settle(page);
  assert.equal(await statusOf(page), '0 of 20 findings shown');
  await page.keyboard.press('Space');
  await settle(page);
  assert.equal(await statusOf(page), '2 of 20 findings shown');
});

await check('every control shows that it has the focus', sample, {}, async (page) => {
  const seen = new Set();
  for (let i = 0; i < 45; i += 1) {
    await page.keyboard.press('Tab');
    const { tag, outline } = await page.evaluate(() => {
      const style = getComputedStyle(document.activeElement);
      return { tag: document.activeElement.tagName, outline: `${style.outlineStyle} ${style.outlineWidth}` };
    });
    assert.equal(outline, 'solid 2px', tag);
    seen.add(tag);
  }
  assert.deepEqual(Array.from(seen).sort(), ['A', 'BUTTON', 'INPUT', 'SUMMARY']);
});

await check('the skip link leads to the findings', sample, {}, async (page) => {
  await page.keyboard.press('Tab');
  await page.keyboard.press('Enter');
  assert.equal(await page.evaluate(() => document.activeElement.id), 'violations');
});

for (const [query, count] of Object.entries({
  'cdc-1': 4, 'clock domain': 5, 'pix_clk cfg_clk': 2, 'next_state': 1, '#12': 1, 'critical warning': 2,
  'board_a_debug': 1, '  ': 20,
})) {
  await check(`a search for "${query}" finds ${count}`, sample, {}, async (page) => {
    await page.fill('#query', query);
    await settle(page);
    assert.equal(await statusOf(page), `${count} of 20 findings shown`);
    assert.equal(await page.locator('.finding').count(), count);
  });
}

await check('a search without a match says so, and can be cleared', sample, {}, async (page) => {
  await page.fill('#query', '<script>');
  await settle(page);
  assert.equal(await statusOf(page), '0 of 20 findings shown');
  assert.ok(await page.locator('#nothing').isVisible());
  assert.equal(await visible(page, 'section.findings'), 0);
  await shoot(page, 'nothing');
  await page.click('#clear');
  assert.equal(await statusOf(page), '20 of 20 findings shown');
  assert.ok(await page.locator('#nothing').isHidden());
  assert.equal(await page.evaluate(() => document.activeElement.id), 'query');
});

await check('a section without a match says so', sample, {}, async (page) => {
  await page.fill('#query', 'latch');
  await settle(page);
  assert.equal(await visible(page, '.filtered'), 2);
  await shoot(page, 'filtered');
});

await check('all groups expand and collapse', sample, {}, async (page) => {
  assert.equal(await page.locator('#waived .group[open]').count(), 0);
  await page.click('#collapse');
  assert.equal(await visible(page, '.finding'), 0);
  await page.focus('#expand');
  await page.keyboard.press('Enter');
  assert.equal(await visible(page, '.finding'), 20);
});

await check('a group opens and closes by keyboard', sample, {}, async (page) => {
  await page.focus('#violation-1 >> xpath=ancestor::details/summary');
  await page.keyboard.press('Enter');
  assert.ok(await page.locator('#violation-1').isHidden());
  await page.keyboard.press('Space');
  assert.ok(await page.locator('#violation-1').isVisible());
});

await check('without script the page shows everything and no controls', sample,
  { javaScriptEnabled: false }, async (page) => {
    assert.ok(await page.locator('#toolbar').isHidden());
    assert.equal(await visible(page, '.finding'), 18);
    await page.locator('#waived summary').first().press('Enter');
    assert.equal(await visible(page, '.finding'), 19);
  });

await check('on paper everything is open and there are no controls', sample, { colorScheme: 'dark' }, async (page) => {
  await page.emulateMedia({ media: 'print', colorScheme: 'dark' });
  await page.evaluate(() => window.dispatchEvent(new Event('beforeprint')));
  assert.equal(await visible(page, '.finding'), 20);
  assert.equal(await visible(page, '#toolbar, button, input, .skip'), 0);
  assert.equal(await page.evaluate(() => getComputedStyle(document.body).backgroundColor), 'rgb(255, 255, 255)');
  await page.screenshot({ path: join(shots, 'print.png'), fullPage: true });
  await page.evaluate(() => window.dispatchEvent(new Event('afterprint')));
  assert.equal(await page.locator('#waived .group[open]').count(), 0);
  writeFileSync(join(shots, 'print.pdf'), await page.pdf({ format: 'A4' }));
});

await check('a filter that is on can be seen on paper', sample, {}, async (page) => {
  await page.fill('#query', 'latch');
  await settle(page);
  await page.emulateMedia({ media: 'print' });
  assert.ok(await page.locator('#status').isVisible());
});

await check('a result that contradicts itself is not taken for good news', flawed, {}, async (page) => {
  assert.ok(await page.locator('.problems').isVisible());
  assert.equal(await page.locator('.clean').count(), 0);
});

await check('a clean result is good news', clean, {}, async (page) => {
  assert.match(await page.locator('.clean .verdict').textContent(), /No violations/);
});

await check(`a page of ${manyCount} findings filters`, many, {}, async (page) => {
  assert.equal(await statusOf(page), `${manyCount} of ${manyCount} findings shown`);
  await page.fill('#query', 'top.u_core.r_19999');
  await settle(page);
  assert.equal(await statusOf(page), `1 of ${manyCount} findings shown`);
  assert.ok(await page.locator('#violation-19999').isVisible());
  await page.fill('#query', '');
  await page.click('label.kind.fatal');
  await settle(page);
  assert.equal(await statusOf(page), `16667 of ${manyCount} findings shown`);
  await page.click('#collapse');
  await page.click('#expand');
  await shoot(page, 'many');
});

for (const file of hostile) {
  await check(`hostile texts stay texts: ${basename(file, '.pb.html')}`, file,
    { viewport: { width: 360, height: 800 } }, async (page) => {
      const found = await page.evaluate(() => ({
        aliens: document.querySelectorAll('img, svg, iframe, object, embed, base, form, script:not(body > script:last-child)').length,
        handlers: Array.from(document.querySelectorAll('*')).filter((element) =>
          element.getAttributeNames().some((name) => /^on|^style$/.test(name))).length,
        // ":" is what a browser says of an address that leads nowhere, such as one with a bad host.
        addresses: Array.from(document.links, (link) => link.protocol)
          .filter((protocol) => !['http:', 'https:', 'file:', 'mailto:', ':'].includes(protocol)),
        findings: document.querySelectorAll('.finding').length,
      }));
      assert.ok(found.findings > 100);
      assert.deepEqual({ ...found, findings: 0 }, { aliens: 0, handlers: 0, addresses: [], findings: 0 });
      await page.fill('#query', 'no such text');
      await settle(page);
      await page.click('#clear');
      assert.equal(await overflow(page), 0, 'it scrolls sideways');
    });
}

await browser.close();
rmSync(work, { recursive: true });
console.log(`${passed} passed, ${failed} failed`);
process.exit(failed === 0 ? 0 : 1);
