// Renews the pictures of a report that the documentation shows.
//
//   node pictures.mjs FOLDER
//
// Environment: as for report_check.mjs. Writes report-light.png and report-dark.png.

import { picturesFolder } from './arguments.mjs';
import { launch, open } from './browser.mjs';
import { sample } from './pages.mjs';

const folder = picturesFolder('pictures.mjs');
const file = sample();
const browser = await launch();
for (const colorScheme of ['light', 'dark']) {
  const { page, close } = await open(browser, file, { colorScheme, viewport: { width: 1180, height: 1060 } });
  await page.screenshot({
    path: `${folder}/report-${colorScheme}.png`,
    clip: { x: 0, y: 24, width: 1180, height: 1036 },
  });
  await close();
}
await browser.close();
