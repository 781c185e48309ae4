// SPDX-License-Identifier: Apache-2.0

// The clients in JavaScript. interop_test.py says what their commands do.
//
// usage: client.mjs RUNTIME COMMAND

import { readFileSync, writeSync } from 'node:fs';

const es = async () => {
  const { create, fromBinary, isFieldSet, toBinary } = await import('@bufbuild/protobuf');
  const pb = await import('./RuleService_pb.js');
  const schemas = Object.fromEntries(
    Object.values(pb)
      .filter((value) => value.kind === 'message')
      .map((schema) => [schema.typeName, schema]),
  );
  return {
    numbers: { ...pb.Violation_Severity, ...pb.Request_RequestType, PORT: pb.Reference_RefType.PORT },
    parse: (type, data) => fromBinary(pb[`${type}Schema`], data),
    write: (type, message) => toBinary(pb[`${type}Schema`], message),
    create: (type, fields) => create(pb[`${type}Schema`], fields),
    has: (message, field) => isFieldSet(message, schemas[message.$typeName].field[field]),
    long: BigInt,
  };
};

const protobufjs = async (keepsUnknown) => {
  const { default: Long } = await import('long');
  const { default: protobuf } = await import('protobufjs/minimal.js');
  const pb = (await import('./RuleService.js')).vok.rulecheck;
  return {
    numbers: { ...pb.Violation.Severity, ...pb.Request.RequestType, PORT: pb.Reference.RefType.PORT },
    parse: (type, data) => {
      const reader = protobuf.Reader.create(data);
      if (keepsUnknown) reader.discardUnknown = false;
      return pb[type].decode(reader);
    },
    write: (type, message) => pb[type].encode(message).finish(),
    create: (type, fields) => fields,
    has: (message, field) => Object.hasOwn(message, field),
    long: Long.fromString,
  };
};

const runtimes = { es, protobufjs: () => protobufjs(false), protobufjs_keeping: () => protobufjs(true) };

// As a plain object. long() makes a 64-bit number of its digits.
const request = ({ numbers, long }) => ({
  type: numbers.CREATE_VIOLATION,
  createViolation: {
    ruleKey: 'WIDTH',
    sessionUuid: 's-1',
    severity: numbers.SEV_CRITICAL_WARNING,
    args: {
      arg: [
        { ref: { type: numbers.PORT, name: 'clk', id: -1 } },
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

const [name, command] = process.argv.slice(2);
const runtime = await runtimes[name]();
if (command === 'copy') {
  const lines = readFileSync(0).toString().split('\n').slice(0, -1);
  console.log(lines.map((line) => copy(line, runtime)).join('\n'));
} else if (command === 'request') {
  writeSync(1, runtime.write('Request', runtime.create('Request', request(runtime))));
} else {
  const { violation } = runtime.parse('Response', readFileSync(0));
  console.log(values(violation, runtime.has).map(String).join('\n'));
}
