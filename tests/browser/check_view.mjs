// check_view.mjs -- opens vemcov's modern view (-html5) in headless Chromium:
// the index and one file page load with no console error and no failed
// request; every link and anchor of every page resolves; pressing n on the
// file page moves to an uncovered line; axe-core finds no violation of
// impact serious or critical on either page in either theme; at a
// 390-pixel-wide viewport the index does not scroll sideways. Saves
// screenshots of the file page (light, dark) and of the index (narrow).
//
// Usage: node check_view.mjs <view directory> <file page below it> <screenshot prefix>
import { fail, withChromium } from './chromium.mjs';
import fs from 'node:fs';
import path from 'node:path';
import { createRequire } from 'node:module';
import { pathToFileURL } from 'node:url';

const require = createRequire(import.meta.url);
const [viewDir, filePage, shots] = process.argv.slice(2);
if (!viewDir || !filePage || !shots) {
  console.error('usage: node check_view.mjs <view directory> <file page below it> <screenshot prefix>');
  process.exit(2);
}


// Every page of the view, and every href of each: a file of the view, and
// for "#x" an element with id x in the page it names.
function checkLinks() {
  const pages = [];
  const walk = (dir) => {
    for (const entry of fs.readdirSync(dir, { withFileTypes: true })) {
      const full = path.join(dir, entry.name);
      if (entry.isDirectory()) walk(full);
      else if (entry.name.endsWith('.html')) pages.push(full);
    }
  };
  walk(viewDir);
  const ids = new Map();
  const idsOf = (file) => {
    if (!ids.has(file)) {
      const text = fs.readFileSync(file, 'utf8');
      // Quoted or, in the rows' short form, unquoted.
      ids.set(file, new Set([...text.matchAll(/ id=(?:"([^"]+)"|([^\s">]+))/g)].map((m) => m[1] ?? m[2])));
    }
    return ids.get(file);
  };
  let links = 0;
  for (const page of pages) {
    const text = fs.readFileSync(page, 'utf8');
    for (const match of text.matchAll(/ (?:href|src)=(?:"([^"]*)"|([^\s">]+))/g)) {
      const link = (match[1] ?? match[2]).replace(/&amp;/g, '&');
      links++;
      const [target, anchor] = link.split('#');
      const file = target === '' ? page : path.resolve(path.dirname(page), decodeURIComponent(target));
      if (!fs.existsSync(file)) {
        fail(`${path.relative(viewDir, page)}: ${link} names no file`);
        continue;
      }
      if (anchor !== undefined && file.endsWith('.html') && !idsOf(file).has(anchor))
        fail(`${path.relative(viewDir, page)}: ${link} names no element`);
    }
  }
  console.log(`  ${pages.length} pages, ${links} links and sources, all resolved unless noted`);
}

async function axeCheck(page, what) {
  await page.addScriptTag({ path: require.resolve('axe-core/axe.min.js') });
  const result = await page.evaluate(async () => {
    // eslint-disable-next-line no-undef
    const r = await axe.run(document, { resultTypes: ['violations'], preload: false });
    return r.violations.map((v) => ({ id: v.id, impact: v.impact, nodes: v.nodes.length, help: v.help }));
  });
  for (const v of result) {
    const line = `${what}: axe ${v.impact} ${v.id} (${v.nodes} nodes): ${v.help}`;
    if (v.impact === 'serious' || v.impact === 'critical') fail(line);
    else console.log(`  note: ${line}`);
  }
  console.log(`  ${what}: axe found ${result.length} violation kinds`);
}

checkLinks();

await withChromium('view check', 'pages load, links resolve, keys work, no serious accessibility violation', async (context, page) => {
  page.on('console', (message) => { if (message.type() === 'error') fail(`console error: ${message.text()}`); });
  page.on('pageerror', (error) => fail(`page error: ${error.message}`));
  const index = pathToFileURL(path.resolve(viewDir, 'index.html')).href;
  const file = pathToFileURL(path.resolve(viewDir, filePage)).href;

  for (const scheme of ['light', 'dark']) {
    await page.emulateMedia({ colorScheme: scheme });
    await page.goto(index, { waitUntil: 'load' });
    await axeCheck(page, `index (${scheme})`);
    await page.goto(file, { waitUntil: 'load' });
    await axeCheck(page, `${filePage} (${scheme})`);
    await page.screenshot({ path: `${shots}-${scheme}.png` });
  }

  // n moves to an uncovered line: the page scrolls, the address names it.
  await page.emulateMedia({ colorScheme: 'light' });
  await page.goto(file, { waitUntil: 'load' });
  const before = await page.evaluate(() => window.scrollY);
  await page.keyboard.press('n');
  const after = await page.evaluate(() => ({
    y: window.scrollY,
    hash: location.hash,
    uncovered: document.querySelector(location.hash || '#none')?.classList.contains('u') ?? false,
  }));
  if (!after.hash.startsWith('#L') || !after.uncovered) fail(`n did not move to an uncovered line (${after.hash})`);
  if (after.y === before) fail('n did not scroll the page');
  console.log(`  n: scrolled from ${before} to ${after.y}, at ${after.hash}`);

  // t toggles the theme and the choice is kept.
  await page.keyboard.press('t');
  const theme = await page.evaluate(() => document.documentElement.getAttribute('data-theme'));
  if (theme !== 'dark') fail(`t set the theme to ${theme}`);
  await page.goto(index, { waitUntil: 'load' });
  const kept = await page.evaluate(() => document.documentElement.getAttribute('data-theme'));
  if (kept !== 'dark') fail(`the chosen theme was not kept (${kept})`);
  await page.keyboard.press('t');

  // / focuses the filter, which hides the files it does not match.
  await page.keyboard.press('/');
  const focused = await page.evaluate(() => document.activeElement?.id);
  if (focused !== 'filter') fail(`/ focused ${focused}`);
  await page.keyboard.type('zzzz-no-such-file');
  const shown = await page.evaluate(() => [...document.querySelectorAll('table.files tr.row')].filter((r) => !r.hidden).length);
  if (shown !== 0) fail(`the filter left ${shown} rows`);

  // A narrow screen: no sideways scrolling on the index.
  await page.setViewportSize({ width: 390, height: 844 });
  await page.goto(index, { waitUntil: 'load' });
  const widths = await page.evaluate(() => ({ scroll: document.documentElement.scrollWidth, client: document.documentElement.clientWidth }));
  if (widths.scroll > widths.client) fail(`at 390 pixels the index scrolls sideways (${widths.scroll} > ${widths.client})`);
  await page.screenshot({ path: `${shots}-narrow.png`, fullPage: true });
  console.log(`  screenshots: ${shots}-light.png, ${shots}-dark.png, ${shots}-narrow.png`);
});
