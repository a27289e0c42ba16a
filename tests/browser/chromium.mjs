// chromium.mjs -- what both browser checks share: headless Debian Chromium
// in a throw-away profile, a failure list, and the run's end.
import { chromium } from 'playwright-core';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';

export const failures = [];
export function fail(message) {
  failures.push(message);
  console.error(`FAIL: ${message}`);
}

// Opens Chromium, hands its context and first page to `check`, and closes
// it whatever happens; an exception is a failure. Then ends the process:
// status 1 with the count of failures under `name`, else `success`.
export async function withChromium(name, success, check) {
  const userDataDir = fs.mkdtempSync(path.join(os.tmpdir(), 'vemcov-chromium-'));
  const context = await chromium.launchPersistentContext(userDataDir, {
    executablePath: '/usr/bin/chromium',
    headless: true,
    viewport: { width: 1280, height: 800 },
    args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
           '--disable-component-update', '--disable-sync'],
  });
  try {
    const page = context.pages()[0] ?? (await context.newPage());
    page.on('requestfailed', (request) => fail(`request failed: ${request.url()} (${request.failure()?.errorText})`));
    await check(context, page);
  } catch (error) {
    fail(error.message);
  } finally {
    await context.close();
    fs.rmSync(userDataDir, { recursive: true, force: true });
  }
  if (failures.length > 0) {
    console.error(`${name}: ${failures.length} failure(s)`);
    process.exit(1);
  }
  console.log(`${name}: ${success}`);
}
