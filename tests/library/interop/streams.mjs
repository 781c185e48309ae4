// What the clients in JavaScript share: lines and bytes on the standard streams.

import { readFileSync, readSync, writeSync } from 'node:fs';
import { isDeepStrictEqual } from 'node:util';

// Answers each line that there is to read with a line.
export const answerLines = (answer) => {
  const lines = readFileSync(0, 'utf8').split('\n').slice(0, -1);
  writeSync(1, lines.map((line) => `${answer(line)}\n`).join(''));
};

// Fills a buffer from the server.
export const readInto = (buffer) => {
  for (let at = 0; at < buffer.length; ) {
    const count = readSync(0, buffer, at, buffer.length - at);
    if (count === 0) throw new Error('the server closed the connection');
    at += count;
  }
  return buffer;
};

// Names the facts, each [name, got, expected], that are not as expected.
export const check = (facts) => {
  const failed = facts.filter(([, got, expected]) => !isDeepStrictEqual(got, expected));
  for (const [name, got, expected] of failed) {
    console.error(`${name}: ${String(got)}, not ${String(expected)}`);
  }
  process.exitCode = failed.length > 0 ? 1 : 0;
};
