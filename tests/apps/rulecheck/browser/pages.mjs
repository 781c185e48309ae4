// SPDX-License-Identifier: Apache-2.0

// Makes the pages that the tests look at, in a folder that is gone when the program ends.

import { execFileSync, spawnSync } from 'node:child_process';
import { mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

const work = mkdtempSync(join(tmpdir(), 'rulecheck-'));
process.on('exit', () => rmSync(work, { recursive: true }));

const inRepository = (path) => fileURLToPath(new URL(`../../../../${path}`, import.meta.url));

const makeResults = (...words) =>
  execFileSync(process.env.PYTHON || 'python3', [inRepository('tests/apps/rulecheck/make_results.py'), ...words]);

const makePage = (result, ...options) => {
  const page = `${result}.html`;
  execFileSync(process.env.RULECHECK, ['html', result, '-o', page, ...options], { cwd: work });
  return page;
};

const writeResult = (name, text) => {
  const result = join(work, `${name}.txtpb`);
  writeFileSync(result, text);
  return result;
};

const pageOfText = (name, text, ...options) => makePage(writeResult(name, text), ...options);

const once = (make) => {
  let page;
  return () => (page ??= make());
};

// A page with links to files that are there.
export const sample = once(() => {
  const sources = join(work, 'camera');
  mkdirSync(sources);
  const text = readFileSync(inRepository('tests/apps/rulecheck/sample.txtpb'), 'utf-8');
  for (const [, name] of text.matchAll(/\/src\/camera\/(\w+\.\w+)/g)) {
    writeFileSync(join(sources, name), `// This is ${name}.\n`);
  }
  return pageOfText('sample', text.replaceAll('/src/camera', sources));
});

export const clean = () => pageOfText('clean', `
  session { name: "Camera pipeline, release" timestamp: 1773500966000 }
  affirmations { hashmap { key: 1 value { id: 1 rule_key: "RST-1"
    details { text: "All registers have a reset." } } } }`);

export const empty = () => pageOfText('empty', 'session { name: "Nothing was checked" }');

export const flawed = () => pageOfText('flawed', `
  session { name: "${'A_name_without_any_place_to_break_'.repeat(8)}" } violation_count: 7
  violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR rule_key: "${'KEY'.repeat(60)}"
    details { text: "${'word'.repeat(2000)}" } expects: "${'x'.repeat(300)}" } } }`);

// Findings in a file that is there, in one that is not, in no file, and twice the same.
const places = ['rtl/core/a.v:3:5', 'rtl/core/a.v:4:2', 'rtl/missing.v:7:3', '', 'rtl/core/b.v:1:1', 'rtl/core/b.v:1:1'];
const violation = (place, number, text) => {
  const [file, line, column] = place.split(':');
  const argument = place && `arg { ref { type: FILE name: '${place}' value { string_val: 'wire gone;' }
    url { scheme: FILE path: '${work}/${file}' fragment: 'L${line}C${column}' } } }`;
  return `hashmap { key: ${number} value { id: ${number} severity: SEV_WARNING rule_key: 'R ${number > 4 ? 0 : number % 2}'
    details { text: '${place && '%1: '}${text}' args { ${argument} } } } }`;
};
const resultOf = (violations) => `session { name: 'Places' } violations { ${violations.join('\n')} }`;

export const placed = once(() => {
  mkdirSync(join(work, 'rtl/core'), { recursive: true });
  writeFileSync(join(work, 'rtl/core/a.v'), 'one\ntwo\n\twire gone;\nwire gone;\n<b>five</b>\nsix\nseven\n');
  const now = places.map((place, i) => violation(place, i + 1, i > 3 ? 'twice' : `text ${i}`));
  const old = writeResult('old', resultOf([
    violation('rtl/core/a.v:3:5', 1, 'text 0'), violation('rtl/core/a.v:9:9', 2, 'text 1'), violation('rtl/x.v:1:1', 3, 'gone'),
  ]));
  return pageOfText('placed', resultOf(now), '--baseline', old, '--link', 'https://host/blob/{path}#L{line}');
});

// Findings of a rule on a line. Waivers that name the last file hold for files of that name in folders, too.
const texts = [['lib/a.v', 'else'], ['a.v', 'Bits\u3000[3:0] of a.*b (not) $used\\\\?^|+{1}'], ['a.v', 'else']];
export const alike = () => pageOfText('alike', resultOf(texts.map(([file, text], i) =>
  `hashmap { key: ${i} value { id: ${i} severity: SEV_ERROR rule_key: 'R' details { text: '%1: %2' args {
     arg { ref { type: FILE name: '${file}:3:${i + 1}' url { scheme: FILE path: '/${file}' } } } arg { string_val: '${text}' } } } } }`)));

// A page whose session, rule and finding have the same text in all their fields.
export const spoofed = (name, text) => () => {
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

export const many = (findings, rules) => once(() => {
  const result = join(work, `${findings}-${rules}.txtpb`);
  makeResults('many', String(findings), String(rules), result);
  return makePage(result);
});

const hostileFolder = once(() => {
  makeResults('hostile', work);
  return work;
});

export const hostile = (name) => () => makePage(join(hostileFolder(), `${name}.txtpb`));

// The page of the demo, which needs Verilator. The lines are waivers.
export const demo = (lines) => {
  const page = join(work, 'demo.html');
  const waivers = join(work, 'waivers');
  writeFileSync(waivers, lines);
  const { stderr } = spawnSync(process.env.RULECHECK, [
    'lint', '--verilator', process.env.VERILATOR, '-o', join(work, 'demo.pb'), '--html', page,
    '--waivers', waivers, '--', '--top-module', 'board', '-f', 'design.f',
  ], { cwd: inRepository('apps/designs'), encoding: 'utf-8' });
  const [, waived] = /waived +(\d+)/.exec(stderr) ?? [];
  return { page, waived: Number(waived), unused: /matches no finding/.test(stderr), error: stderr };
};
