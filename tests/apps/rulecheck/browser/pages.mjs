// SPDX-License-Identifier: Apache-2.0

// The pages that the checks look at, in a folder that is gone when the program ends.

import { execFileSync } from 'node:child_process';
import { mkdirSync, mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

const work = mkdtempSync(join(tmpdir(), 'rulecheck-'));
process.on('exit', () => rmSync(work, { recursive: true }));

const inRepository = (path) => fileURLToPath(new URL(`../../../../${path}`, import.meta.url));

const makeResults = (...words) => execFileSync(process.env.MAKE_RESULTS, words);

const makePage = (result) => {
  const page = `${result}.html`;
  execFileSync(process.env.RULECHECK, ['html', result, '-o', page]);
  return page;
};

const pageOfText = (name, text) => {
  const result = join(work, `${name}.txtpb`);
  writeFileSync(result, text);
  return makePage(result);
};

// A page with links to files that are there.
const makeSample = () => {
  const sources = join(work, 'camera');
  mkdirSync(sources);
  const text = readFileSync(inRepository('tests/apps/rulecheck/sample.txtpb'), 'utf-8');
  for (const [, name] of text.matchAll(/\/src\/camera\/(\w+\.\w+)/g)) {
    writeFileSync(join(sources, name), `// This is ${name}.\n`);
  }
  return pageOfText('sample', text.replaceAll('/src/camera', sources));
};

export const sample = () => makeSample();

export const clean = () => pageOfText('clean', `
  session { name: "Camera pipeline, release" timestamp: 1773500966000 }
  affirmations { hashmap { key: 1 value { id: 1 rule_key: "RST-1"
    details { text: "All registers have a reset." } } } }`);

export const empty = () => pageOfText('empty', 'session { name: "Nothing was checked" }');

export const flawed = () => pageOfText('flawed', `
  session { name: "${'A_name_without_any_place_to_break_'.repeat(8)}" } violation_count: 7
  violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR rule_key: "${'KEY'.repeat(60)}"
    details { text: "${'word'.repeat(2000)}" } expects: "${'x'.repeat(300)}" } } }`);

// A page whose session, rule and finding have the same text in all their fields.
export const spoofed = (name, text) => {
  const quoted = JSON.stringify(text);
  return pageOfText(name, `
    session { name: ${quoted} description: ${quoted} build_target: ${quoted} uuid: ${quoted}
      report_file { scheme: FILE path: ${quoted} } proto_file { scheme: FTP host: ${quoted} } }
    specs_violated { hashmap { key: ${quoted} value { key: 'k' full_name: ${quoted} raw_msg: ${quoted}
      owner: ${quoted} } } }
    violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR rule_key: ${quoted}
      details { text: "%1" args { arg { string_val: ${quoted} } } } expects: ${quoted}
      categories { key: 1 value: ${quoted} }
      examples { uri { link_text: ${quoted} url { scheme: HTTP host: 'h' } } } } } }`);
};

export const many = (findings, rules) => {
  const result = join(work, `${findings}-${rules}.pb`);
  makeResults('many', String(findings), String(rules), result);
  return makePage(result);
};

export const hostile = () => {
  const folder = join(work, 'hostile');
  mkdirSync(folder);
  makeResults('hostile', folder);
  return readdirSync(folder)
    .filter((name) => /-(HTTP|MAILTO|FTP|DATA_html)\.pb$/.test(name))
    .map((name) => makePage(join(folder, name)));
};

// The page of the demo, which needs Verilator; undefined without.
export const demo = () => {
  if (!process.env.VERILATOR) return undefined;
  const designs = inRepository('apps/designs');
  const page = join(work, 'demo.html');
  execFileSync(process.env.RULECHECK, [
    'lint', '--verilator', process.env.VERILATOR, '-o', join(work, 'demo.pb'), '--html', page,
    '--waivers', 'waivers', '--quiet', '--', '--top-module', 'board', '-f', 'design.f',
  ], { cwd: designs });
  return page;
};
