// SPDX-License-Identifier: Apache-2.0

// Looks at report pages in a browser.
//
//   node report_check.mjs FOLDER_FOR_PICTURES
//
// Environment: RULECHECK, the program that makes the pages; PYTHON, python3 if not set;
// VERILATOR for the demo's waivers, which are left out without it;
// CHROMIUM, the browser, /usr/bin/chromium if not set. Needs `npm ci` in tests, and
// pdftotext. Prints a line per check, and exits with 1 if one fails.

import { checkAppearance } from './appearance.mjs';
import { launch } from './browser.mjs';
import { Checks, picturesFolder } from './checks.mjs';
import { checkDetails } from './details.mjs';
import { checkFiltering } from './filtering.mjs';
import { checkHostile } from './hostile.mjs';
import { checkKeyboard } from './keyboard.mjs';
import * as make from './pages.mjs';
import { checkPaper } from './paper.mjs';
import { checkSpoofing } from './spoofing.mjs';

const folder = picturesFolder();
const pages = {
  sample: make.sample(), clean: make.clean(), empty: make.empty(), flawed: make.flawed(),
  placed: make.placed(), large: make.many(6000, 3), hostile: make.hostile(),
};
const browser = await launch();
const checks = new Checks(browser, folder);
// Two at a time: most of a check is to wait for the browser.
const lanes = [
  [checkAppearance, checkKeyboard, checkPaper, checkHostile],
  [checkFiltering, checkDetails, checkSpoofing],
];
await Promise.all(lanes.map(async (lane) => {
  for (const check of lane) await check(checks, pages);
}));
await browser.close();
process.exitCode = checks.end();
