// SPDX-License-Identifier: Apache-2.0

// The client of protobufjs.

import Long from 'long';
import protobuf from 'protobufjs/minimal.js';
import { vok } from './RuleService.js';
import { run } from './javascript.mjs';

const pb = vok.rulecheck;
const [command, keeping] = process.argv.slice(2).reverse();

run(
  command,
  {
    ...pb.Violation.Severity,
    ...pb.Request.RequestType,
    PORT: pb.Reference.RefType.PORT,
  },
  {
    parse: (type, data) => {
      const reader = protobuf.Reader.create(data);
      if (keeping) reader.discardUnknown = false;
      return pb[type].decode(reader);
    },
    write: (type, message) => pb[type].encode(message).finish(),
    create: (type, fields) => fields,
    has: (message, field) => Object.hasOwn(message, field),
    long: Long.fromString,
  },
);
