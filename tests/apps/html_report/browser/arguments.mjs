// What the programs of this folder are told: a folder for pictures, and, by the
// environment, the programs that make pages.

import { mkdirSync } from 'node:fs';

export const picturesFolder = (program) => {
  if (process.argv.length !== 3 || !process.env.HTML_REPORT || !process.env.MAKE_RESULTS) {
    console.error(`usage: HTML_REPORT=... MAKE_RESULTS=... node ${program} FOLDER`);
    process.exit(2);
  }
  mkdirSync(process.argv[2], { recursive: true });
  return process.argv[2];
};
