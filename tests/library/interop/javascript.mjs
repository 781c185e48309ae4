// SPDX-License-Identifier: Apache-2.0

// What the clients in JavaScript share. interop_test.py says what their commands do.

import { readFileSync, writeSync } from 'node:fs';

// As a plain object. long() makes a 64-bit number of its digits.
const request = (pb, long) => ({
  type: pb.CREATE_VIOLATION,
  createViolation: {
    ruleKey: 'WIDTH',
    sessionUuid: 's-1',
    severity: pb.SEV_CRITICAL_WARNING,
    args: {
      arg: [
        { ref: { type: pb.PORT, name: 'clk', id: -1 } },
        { scalar: { intVal: long('-9007199254740993') } },
        { stringVal: 'naïve – ✓ 🙂' },
      ],
    },
    actualValue: { doubleVal: 187.5 },
    thresholdValue: { intVal: long('9223372036854775807') },
    dynamicCategoryValues: { 7: 'team α' },
  },
});

// has(message, field) says whether a field is set.
const values = (found, has) => {
  const [port, number, words] = found.details.args.arg;
  const [{ url }] = found.examples.uri;
  return [
    ...[found.severity, found.ruleKey, Number(has(found, 'buildTarget')), url.scheme, url.host],
    ...[found.actualValue.doubleVal, Number(has(found.actualValue, 'intVal'))],
    ...[found.thresholdValue.intVal, port.ref.type, port.ref.name, port.ref.id],
    ...[number.scalar.intVal, words.stringVal, Object.keys(found.categories).length],
    ...[found.categories[-1], found.categories[7]],
  ];
};

const copy = (line, { parse, write }) => {
  const [type, digits] = line.split(' ');
  let message;
  try {
    message = parse(type, Buffer.from(digits, 'hex'));
  } catch (error) {
    return `unreadable: ${error.message}`;
  }
  try {
    return Buffer.from(write(type, message)).toString('hex');
  } catch (error) {
    return `unwritable: ${error.message}`;
  }
};

export const run = (command, pb, runtime) => {
  if (command === 'copy') {
    const lines = readFileSync(0).toString().split('\n').slice(0, -1);
    console.log(lines.map((line) => copy(line, runtime)).join('\n'));
  } else if (command === 'request') {
    writeSync(1, runtime.write('Request', runtime.create('Request', request(pb, runtime.long))));
  } else {
    const { violation } = runtime.parse('Response', readFileSync(0));
    console.log(values(violation, runtime.has).map(String).join('\n'));
  }
};
