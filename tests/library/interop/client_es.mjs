// SPDX-License-Identifier: Apache-2.0

// The client of @bufbuild/protobuf.

import { create, fromBinary, isFieldSet, toBinary } from '@bufbuild/protobuf';
import * as pb from './RuleService_pb.js';
import { run } from './javascript.mjs';

const schemas = Object.fromEntries(
  Object.values(pb)
    .filter((value) => value.kind === 'message')
    .map((schema) => [schema.typeName, schema]),
);

run(
  process.argv[2],
  {
    ...pb.Violation_Severity,
    ...pb.Request_RequestType,
    PORT: pb.Reference_RefType.PORT,
  },
  {
    parse: (type, data) => fromBinary(pb[`${type}Schema`], data),
    write: (type, message) => toBinary(pb[`${type}Schema`], message),
    create: (type, fields) => create(pb[`${type}Schema`], fields),
    has: (message, field) => isFieldSet(message, schemas[message.$typeName].field[field]),
    long: BigInt,
  },
);
