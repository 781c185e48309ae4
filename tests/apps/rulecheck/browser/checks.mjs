// SPDX-License-Identifier: Apache-2.0

// Runs checks, says how each ended, and counts them.

import assert from 'node:assert/strict';
import { mkdirSync } from 'node:fs';
import { join } from 'node:path';
import { open } from './browser.mjs';

// The folder for pictures, the program's only argument.
export const picturesFolder = () => {
  if (process.argv.length !== 3 || !process.env.RULECHECK) {
    console.error(`usage: RULECHECK=... node ${process.argv[1]} FOLDER`);
    process.exit(2);
  }
  mkdirSync(process.argv[2], { recursive: true });
  return process.argv[2];
};

export class Checks {
  #passed = 0;
  #failed = 0;

  constructor(browser, shots) {
    this.browser = browser;
    this.shots = shots;
  }

  async check(name, body) {
    try {
      await body();
      this.#passed += 1;
      console.log(`ok: ${name}`);
    } catch (error) {
      this.#failed += 1;
      console.log(`FAILED: ${name}: ${error.message.replaceAll('\n', ' ')}`);
    }
  }

  // What the body sees of a page, which must do nothing that it should not do.
  checkPage(name, place, options, body) {
    return this.check(name, async () => {
      const { page, faults, close } = await open(this.browser, place, options);
      try {
        await body(page, faults);
        assert.deepEqual(faults, []);
      } finally {
        await close();
      }
    });
  }

  shoot(page, name, options = {}) {
    return page.screenshot({ path: join(this.shots, `${name}.png`), ...options });
  }

  // Prints the sums and returns the exit status.
  end() {
    console.log(`${this.#passed} passed, ${this.#failed} failed`);
    return this.#failed === 0 && this.#passed > 0 ? 0 : 1;
  }
}
