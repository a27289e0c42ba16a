// check_report.mjs -- opens a vemcov report in headless Chromium the way a
// reader would: the root page with its frames, then one source file's
// frameset (toolbar, function lists, listing), then a function of its list.
// Every frame must load a document of the report (a missing frame source
// shows Chromium's error page instead). Saves a screenshot of the file's
// frameset.
//
// Usage: node check_report.mjs <report directory> <source file name> <screenshot.png>
import { fail, withChromium } from './chromium.mjs';
import fs from 'node:fs';
import path from 'node:path';
import { pathToFileURL } from 'node:url';

const [reportDir, sourceName, screenshot] = process.argv.slice(2);
if (!reportDir || !sourceName || !screenshot) {
  console.error('usage: node check_report.mjs <report directory> <source file name> <screenshot.png>');
  process.exit(2);
}


// Every frame of the page: one per <frame> element of the page's file, each
// a file of the report, loaded, with a body.
async function checkFrames(page, what) {
  const frameset = fs.readFileSync(decodeURIComponent(new URL(page.url()).pathname), 'latin1');
  const expectedCount = (frameset.match(/<frame /g) || []).length;
  const frames = page.frames().filter((frame) => frame !== page.mainFrame());
  if (frames.length !== expectedCount || expectedCount === 0)
    fail(`${what}: ${frames.length} frames, expected ${expectedCount}`);
  for (const frame of frames) {
    const url = frame.url();
    if (!url.startsWith('file://')) {
      fail(`${what}: frame "${frame.name()}" shows ${url || 'nothing'}`);
      continue;
    }
    const file = decodeURIComponent(new URL(url).pathname);
    if (!fs.existsSync(file))
      fail(`${what}: frame source ${file} does not exist`);
    const state = await frame.evaluate(() => ({
      ready: document.readyState,
      body: document.body !== null,
      text: document.body ? document.body.innerText.length : 0,
    }));
    if (state.ready !== 'complete' || !state.body)
      fail(`${what}: frame ${path.basename(file)} did not load (${state.ready})`);
    console.log(`  ${what}: ${path.basename(file)} loaded, ${state.text} characters of text`);
  }
  return frames;
}

await withChromium('browser check', 'every frame loaded', async (context, page) => {

  // 1. The root page: the summary above the file tables.
  const root = path.resolve(reportDir, '..', 'CODE_COVERAGE.HTML');
  console.log(`opening ${root}`);
  await page.goto(pathToFileURL(root).href, { waitUntil: 'load' });
  const rootFrames = await checkFrames(page, 'root page');

  // 2. A source file, by its link in the covered-file table (the link
  //    replaces the whole window).
  const table = rootFrames.find((frame) => /__COVERED_FILES_COVERAGE_4\.HTML$/.test(frame.url()));
  if (!table) throw new Error('the covered-file table is not shown');
  const link = table.locator('a', { hasText: new RegExp(`^${sourceName.replace('.', '\\.')}$`) });
  if ((await link.count()) !== 1) throw new Error(`no single link to ${sourceName} in the covered-file table`);
  await Promise.all([page.waitForNavigation({ waitUntil: 'load' }), link.click()]);
  console.log(`followed ${sourceName} to ${page.url()}`);
  const fileFrames = await checkFrames(page, sourceName);

  // 3. A function of the covered list shows the listing at the function.
  const covered = fileFrames.find((frame) => /_CVRDFNCS_4\.HTML$/.test(frame.url()));
  const listing = page.frame({ name: 'src_view' });
  if (!covered || !listing) throw new Error('the covered list or the listing frame is missing');
  const first = covered.locator('tbody a').first();
  const target = await first.getAttribute('href');
  await Promise.all([listing.waitForURL(/#l\d+$/), first.click()]);
  console.log(`function link ${target} shows ${path.basename(listing.url())}`);
  const anchor = target.split('#')[1];
  if (!listing.url().endsWith(`#${anchor}`)) fail(`the listing did not move to ${anchor}`);
  const counters = await listing.evaluate(() => document.body.innerText.includes('^'));
  if (!counters) fail('the listing shows no counter lines');

  await page.screenshot({ path: screenshot });
  console.log(`screenshot: ${screenshot}`);
});
