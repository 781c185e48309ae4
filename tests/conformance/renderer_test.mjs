// SPDX-License-Identifier: Apache-2.0

// The renderer in examples, against every case of the suite that is the argument.

import assert from 'node:assert';
import { readFileSync } from 'node:fs';
import test from 'node:test';
import { converter, parse } from '../../examples/renderer.mjs';

const rendered = ({ function: name, type, number, bytes, anchorText }) => {
  if (number !== undefined) return converter.word(type, number);
  const text = anchorText && Buffer.from(anchorText).toString('latin1');
  return converter[name][type](parse(type, Buffer.from(bytes, 'base64')), text);
};

test('every case has its text', () => {
  const cases = readFileSync(process.env.SUITE, 'utf8').trimEnd().split('\n').map(JSON.parse);
  assert.ok(cases.length > 0);
  for (const one of cases) {
    const text = Buffer.from(rendered(one), 'latin1').toString('base64');
    assert.strictEqual(text, one.base64, `${one.function}(${one.type}): ${one.case}`);
  }
  console.log(`${cases.length} cases`);
});

test('what is unknown or repeated is read as other languages do', () => {
  const render = (...bytes) => converter.toHtml.Reference(parse('Reference', Uint8Array.from(bytes)));
  assert.strictEqual(render(0x08, 29, 0x18, 2, 0x18, 3), 'array #3'); // an unlisted kind, two ids
  assert.strictEqual(render(0x32, 2, 0x08, 1, 0x32, 3, 0x12, 1, 0x68), '<a href="file://h">array</a>');
  assert.strictEqual(render(0x3d, 0, 0, 0, 0, 0x0a, 1, 0x61), 'array'); // other fields and wire types
  assert.throws(() => render(0x12, 2, 0x61), /malformed/);
  assert.throws(() => render(0x80), /malformed/);
});

test('it stays a short example', () => {
  const lines = readFileSync(new URL('../../examples/renderer.mjs', import.meta.url), 'utf8').split('\n');
  assert.ok(lines.length - 1 <= 150, `${lines.length - 1} lines`);
});
