// SPDX-License-Identifier: Apache-2.0

// The clients in JavaScript: client.mjs es|protobufjs|keeping. interop_test.py says what they do.

import { readFileSync } from 'node:fs';

const es = async () => {
  const { fromBinary, toBinary } = await import('@bufbuild/protobuf');
  const pb = await import('./RuleService_pb.js');
  return {
    parse: (type, data) => fromBinary(pb[`${type}Schema`], data),
    write: (type, message) => toBinary(pb[`${type}Schema`], message),
  };
};

const protobufjs = async (keeping) => {
  const { default: protobuf } = await import('protobufjs/minimal.js');
  const pb = (await import('./RuleService.js')).vok.rulecheck;
  return {
    parse: (type, data) => {
      const reader = protobuf.Reader.create(data);
      if (keeping) reader.discardUnknown = false;
      return pb[type].decode(reader);
    },
    write: (type, message) => pb[type].encode(message).finish(),
  };
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

const name = process.argv[2];
const runtime = name === 'es' ? await es() : await protobufjs(name === 'keeping');
const lines = readFileSync(0).toString().split('\n').slice(0, -1);
console.log(lines.map((line) => copy(line, runtime)).join('\n'));
