// SPDX-License-Identifier: Apache-2.0

// What the clients in JavaScript share. README.md says what their commands do.

import { readFileSync, writeSync } from 'node:fs';

// The requests as plain objects. long() makes a 64-bit number of its digits.
const requests = (pb, long) => {
  const url = { scheme: pb.HTTPS, host: 'host.example' };
  const ruleSpec = {
    key: 'WIDTH',
    fullName: 'Width of a bus',
    rawMsg: '%1 has %2: %3',
    severity: pb.SEV_WARNING,
    categories: { '-1': 'unsorted' },
    dynamicCategories: { 7: true },
    examples: { uri: [{ linkText: 'manual', url }] },
  };
  const reportFile = { scheme: pb.FILE, path: '/reports/nightly.html' };
  const createViolation = {
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
    actualValue: { doubleVal: 187.5, units: 'MHz' },
    thresholdValue: { intVal: long('9223372036854775807') },
    dynamicCategoryValues: { 7: 'team α' },
  };
  return [
    { type: pb.UPSERT_RULESPEC, upsertRulespec: { ruleSpec } },
    {
      type: pb.START_SESSION,
      startSession: { name: 'nightly', pid: 4711, uuid: 's-1', reportFile },
    },
    { type: pb.CREATE_VIOLATION, createViolation },
  ];
};

// has(message, field) says whether a field is set.
const values = ([stored, { session }, { violation: found }], has) => {
  const [port, number, words] = found.details.args.arg;
  const [link] = found.examples.uri;
  return [
    ...[stored.type, stored.status.code, stored.status.msg, Number(has(stored, 'error'))],
    ...[session.name, session.timestamp, session.reportFile.path],
    Number(has(session, 'description')),
    ...[found.severity, found.ruleKey, Number(has(found, 'buildTarget'))],
    ...[link.url.scheme, link.url.host, found.actualValue.doubleVal, found.actualValue.units],
    ...[Number(has(found.actualValue, 'intVal')), found.thresholdValue.intVal],
    ...[found.details.text, port.ref.type, port.ref.name, port.ref.id, number.scalar.intVal],
    ...[words.stringVal, Object.keys(found.categories).length],
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

function* parts(data) {
  for (let at = 0; at < data.length; ) {
    const long = data[at] > 127; // fewer than 16,384 bytes
    const length = long ? (data[at] & 127) | (data[at + 1] << 7) : data[at];
    at += long ? 2 : 1;
    yield data.subarray(at, at + length);
    at += length;
  }
}

export const run = (command, pb, runtime) => {
  const input = command === 'requests' ? Buffer.alloc(0) : readFileSync(0);
  if (command === 'copy') {
    const lines = input.toString().split('\n').slice(0, -1);
    console.log(lines.map((line) => copy(line, runtime)).join('\n'));
  } else if (command === 'requests') {
    requests(pb, runtime.long).forEach((request) => writeSync(1, runtime.delimited(request)));
  } else {
    const responses = [...parts(input)].map((data) => runtime.parse('Response', data));
    console.log(values(responses, runtime.has).map(String).join('\n'));
  }
};
