// SPDX-License-Identifier: Apache-2.0

// usage: reporting_client.mjs ADDRESS CA CERTIFICATE KEY SHARED NAME COUNT
//
// Opens a session, and reports COUNT violations of the rule "W" into it and as many into the
// session SHARED. Prints "SESSION ID MARK" for each that the server has acknowledged; the mark
// is the violation's argument. The environment variable SCHEMA names the schema.

import { readFileSync } from "node:fs";
import { promisify } from "node:util";

import grpc from "@grpc/grpc-js";
import loader from "@grpc/proto-loader";

const [address, authority, certificate, key, shared, name, count] = process.argv.slice(2);
const schema = loader.loadSync(process.env.SCHEMA, { keepCase: true, longs: String, enums: String });
const { RuleCheckService } = grpc.loadPackageDefinition(schema).vok.rulecheck;
const credentials = grpc.credentials.createSsl(
  readFileSync(authority), readFileSync(key), readFileSync(certificate));
// Node.js warns of numbers where the names of servers are compared.
const client = new RuleCheckService(
  address, credentials, { "grpc.ssl_target_name_override": "localhost" });
const startSession = promisify(client.startSession.bind(client));
const createViolation = promisify(client.createViolation.bind(client));

async function report(session, mark) {
  const violation = await createViolation({
    rule_key: "W", session_uuid: session, args: { arg: [{ string_val: mark }] } });
  process.stdout.write(`${session} ${violation.id} ${mark}\n`);
}

const own = (await startSession({ name })).uuid;
for (let i = 0; i < Number(count); i += 1) {
  await report(shared, `${name}-shared-${i}`);
  await report(own, `${name}-own-${i}`);
}
client.close();
