// The client of @bufbuild/protobuf. See README.md for what it is asked and what it answers.

import { writeSync } from 'node:fs';
import { create, fromBinary, isFieldSet, toBinary } from '@bufbuild/protobuf';
import { sizeDelimitedEncode, sizeDelimitedPeek } from '@bufbuild/protobuf/wire';
import * as pb from './RuleService_pb.js';
import { answerLines, check, readInto } from './streams.mjs';

// Reading and writing

const copy = (schema, data, readUnknownFields) => {
  let message;
  try {
    message = fromBinary(schema, data, { readUnknownFields });
  } catch (error) {
    return `unreadable ${error.message}`;
  }
  try {
    return `ok ${Buffer.from(toBinary(schema, message)).toString('hex')}`;
  } catch (error) {
    return `unwritable ${error.message}`;
  }
};

const text = (data) => {
  try {
    return `text ${Buffer.from(fromBinary(pb.LinkSchema, data).linkText).toString('hex')}`;
  } catch (error) {
    return `unreadable ${error.message}`;
  }
};

const answer = (line) => {
  const [operation, type, digits] = line.split(' ');
  const data = Buffer.from(digits, 'hex');
  const reply =
    operation === 'text' ? text(data) : copy(pb[`${type}Schema`], data, operation === 'copy');
  return reply.trim().replaceAll(/\s+/g, ' ');
};

// A conversation with a server

const rule = () => {
  const url = { scheme: pb.Resource_Scheme.HTTPS, host: 'host.example', path: '/width' };
  const ruleSpec = {
    key: 'WIDTH',
    fullName: 'Width of a bus',
    rawMsg: '%1 has %2: %3',
    resolutionMsg: 'Make it narrower.',
    severity: pb.Violation_Severity.SEV_WARNING,
    categories: { 2: 'timing', '-1': 'unsorted' },
    dynamicCategories: { 7: true },
    examples: { uri: [{ linkText: 'manual', url }] },
  };
  return { type: pb.Request_RequestType.UPSERT_RULESPEC, upsertRulespec: { ruleSpec } };
};

const session = () => {
  const reportFile = { scheme: pb.Resource_Scheme.FILE, path: '/reports/nightly.html' };
  return {
    type: pb.Request_RequestType.START_SESSION,
    startSession: { name: 'nightly', pid: 4711, uuid: 's-1', reportFile },
  };
};

const violation = () => {
  const url = { scheme: pb.Resource_Scheme.FILE, path: '/rtl/fifo.v', fragment: 'L12' };
  const createViolation = {
    ruleKey: 'WIDTH',
    sessionUuid: 's-1',
    severity: pb.Violation_Severity.SEV_CRITICAL_WARNING,
    args: {
      arg: [
        { ref: { type: pb.Reference_RefType.PORT, name: 'clk', id: -1, url } },
        { scalar: { intVal: -9007199254740993n } },
        { stringVal: 'naïve – ✓ 🙂' },
      ],
    },
    actualValue: { doubleVal: 187.5, units: 'MHz' },
    thresholdValue: { intVal: 9223372036854775807n },
    dynamicCategoryValues: { 7: 'team α' },
  };
  return { type: pb.Request_RequestType.CREATE_VIOLATION, createViolation };
};

const has = (schema, message, name) => isFieldSet(message, schema.field[name]);

const statusFacts = (response) => [
  ['type', response.type, pb.Response_ResponseType.STATUS_RESPONSE],
  ['status.code', response.status.code, 0],
  ['status.msg', response.status.msg, 'rule stored'],
  ['has_error', has(pb.ResponseSchema, response, 'error'), false],
];

const sessionFacts = (response) => {
  const opened = response.session;
  return [
    ['type', response.type, pb.Response_ResponseType.SESSION],
    ['session.name', opened.name, 'nightly'],
    ['session.uuid', opened.uuid, 's-1'],
    ['session.has_description', has(pb.SessionSchema, opened, 'description'), false],
    ['session.timestamp', opened.timestamp, 1700000000123n],
    ['session.report_file.scheme', opened.reportFile.scheme, pb.Resource_Scheme.FILE],
    ['session.report_file.path', opened.reportFile.path, '/reports/nightly.html'],
    ['session.has_proto_file', has(pb.SessionSchema, opened, 'protoFile'), false],
  ];
};

const violationFacts = (response) => {
  const found = response.violation;
  const [link] = found.examples.uri;
  const [port, number, words] = found.details.args.arg;
  return [
    ['type', response.type, pb.Response_ResponseType.VIOLATION],
    ['id', found.id, 1],
    ['severity', found.severity, pb.Violation_Severity.SEV_CRITICAL_WARNING],
    ['rule_key', found.ruleKey, 'WIDTH'],
    ['examples.uri', found.examples.uri.length, 1],
    ['examples.uri.link_text', link.linkText, 'manual'],
    ['examples.uri.url.scheme', link.url.scheme, pb.Resource_Scheme.HTTPS],
    ['examples.uri.url.host', link.url.host, 'host.example'],
    ['examples.uri.url.has_port', has(pb.ResourceSchema, link.url, 'port'), false],
    ['examples.uri.url.path', link.url.path, '/width'],
    ['has_build_target', has(pb.ViolationSchema, found, 'buildTarget'), false],
    ['has_expects', has(pb.ViolationSchema, found, 'expects'), false],
    ['actual_value.has_int_val', has(pb.ScalarSchema, found.actualValue, 'intVal'), false],
    ['actual_value.double_val', found.actualValue.doubleVal, 187.5],
    ['actual_value.units', found.actualValue.units, 'MHz'],
    ['threshold_value.int_val', found.thresholdValue.intVal, 9223372036854775807n],
    ['details.text', found.details.text, '%1 has %2: %3'],
    ['arg', found.details.args.arg.length, 3],
    ['arg.ref.type', port.ref.type, pb.Reference_RefType.PORT],
    ['arg.ref.name', port.ref.name, 'clk'],
    ['arg.ref.id', port.ref.id, -1],
    ['arg.ref.url.scheme', port.ref.url.scheme, pb.Resource_Scheme.FILE],
    ['arg.ref.url.path', port.ref.url.path, '/rtl/fifo.v'],
    ['arg.ref.url.fragment', port.ref.url.fragment, 'L12'],
    ['arg.scalar.int_val', number.scalar.intVal, -9007199254740993n],
    ['arg.string_val', words.stringVal, 'naïve – ✓ 🙂'],
    ['resolution.text', found.resolution.text, 'Make it narrower.'],
    ['resolution.has_args', has(pb.MsgInstSchema, found.resolution, 'args'), false],
    ['categories', { ...found.categories }, { '-1': 'unsorted', 2: 'timing', 7: 'team α' }],
  ];
};

const received = () => {
  let prefix = Buffer.alloc(0);
  do {
    prefix = Buffer.concat([prefix, readInto(Buffer.alloc(1))]);
  } while (prefix.at(-1) > 127);
  return fromBinary(pb.ResponseSchema, readInto(Buffer.alloc(sizeDelimitedPeek(prefix).size)));
};

const ask = (request) => {
  writeSync(1, sizeDelimitedEncode(pb.RequestSchema, create(pb.RequestSchema, request)));
  return received();
};

if (process.argv[2] === 'converse') {
  check([
    ...statusFacts(ask(rule())),
    ...sessionFacts(ask(session())),
    ...violationFacts(ask(violation())),
  ]);
} else {
  answerLines(answer);
}
