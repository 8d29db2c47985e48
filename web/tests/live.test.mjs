// The page that follows a phone's log, in Debian's Chromium: lines in, pictures out. Usage as page.test.mjs.
import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { chromium } from "playwright-core";
import { othersWork } from "./load.mjs";
import { chromiumOptions } from "./browsers.mjs";

const { PAGE, IMGTUNE, EXAMPLES } = process.env;
const framesPerSecond = 120;
const seconds = 8;
const limits = { pictures: 25, median: 110, most: 180 }; // a second; ms from a frame's last line to its picture, 95 %
const tries = 3; // others' work comes and goes
const tuning = join(EXAMPLES, "imx708-blend.yaml");
const folder = mkdtempSync(join(tmpdir(), "imgtune-live-"));
const tool = (...args) => execFileSync(IMGTUNE, args, { maxBuffer: 1 << 28, stdio: ["ignore", "pipe", "pipe"] }).toString();
let browser;

before(async () => {
  browser = await chromium.launch(chromiumOptions);
});
after(async () => {
  await browser.close();
  rmSync(folder, { recursive: true });
});

/** What a phone traces of each frame of the sample. */
function frameTexts() {
  const on = tool("props").trim().split("\n").map((line) => "--set=" + line.split(" ").slice(3).join("="));
  const log = join(folder, "phone.log");
  execFileSync("bash", ["-c", '"$@" 2>"$0"', log, IMGTUNE, "replay", tuning, join(EXAMPLES, "imx708-walk.csv"), "-o", join(folder, "rows.csv"), ...on]);
  return readFileSync(log, "utf8").split(/^(?=.*: Fullgain = )/m);
}

async function follow(texts, options = {}) {
  const child = spawn(IMGTUNE, ["view", tuning, "-", "--no-browser", "--page", PAGE, "--record", join(folder, "walk.csv"), "--force"]);
  let told = "";
  const ended = new Promise((resolve) => child.on("exit", resolve));
  child.stdin.write(texts[0]);
  const address = await new Promise((resolve) =>
    child.stderr.on("data", (data) => {
      told += data;
      const found = /http:\S+/.exec(told);
      if (found) resolve(found[0]);
    }),
  );
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 }, ...options });
  const page = await context.newPage();
  const complaints = [];
  page.on("console", (message) => ["error", "warning"].includes(message.type()) && complaints.push(message.text()));
  page.on("pageerror", (error) => complaints.push(error.message));
  page.on("request", (request) => /^https?:/.test(request.url()) && !request.url().startsWith(address) && complaints.push(request.url()));
  await page.goto(address);
  await page.waitForSelector("html[data-ready]");
  return { child, ended, page, complaints, address, told: () => told };
}
const until = async (page, holds, argument) => {
  const end = Date.now() + 20000;
  while (!(await page.evaluate(holds, argument))) {
    assert.ok(Date.now() < end, `never came true: ${holds} ${argument ?? ""}`);
    await page.waitForTimeout(20);
  }
};
const newest = (page, count) => until(page, (n) => window.imgtune.store.state.live.received >= n, count);

test("120 frames a second are followed, in time, and every one is run", async (t) => {
  const texts = frameTexts();
  for (let i = 1; ; ++i) {
    const { perSecond, median, most, slower } = await followInTime(texts);
    const told = `${perSecond.toFixed(1)} pictures a second; from line to picture ${median.toFixed(0)} ms (median), ${most.toFixed(0)} ms (95 %); others left 1 / ${slower.toFixed(2)} of the machine`;
    t.diagnostic(told);
    // What waits for a core keeps the next one waiting, too: times grow faster than the work.
    const late = slower ** 2;
    if (perSecond * slower > limits.pictures && median < limits.median * late && most < limits.most * late) return;
    assert.ok(i < tries, told);
  }
});

async function followInTime(texts) {
  const { child, ended, page, complaints, told } = await follow(texts);
  await page.evaluate(() => {
    window.pictures = [];
    document.addEventListener("picture", (event) =>
      setTimeout(() => window.pictures.push([event.detail, performance.timeOrigin + performance.now()])),
    );
  });
  const clock = () => performance.timeOrigin + performance.now();
  const others = othersWork();
  const sent = [clock()];
  const begin = clock();
  await new Promise((done) => {
    const timer = setInterval(() => {
      while (sent.length - 1 < ((clock() - begin) * framesPerSecond) / 1000) {
        child.stdin.write(texts[sent.length % texts.length]);
        sent.push(clock());
      }
      if (sent.length >= framesPerSecond * seconds) {
        clearInterval(timer);
        done();
      }
    }, 2);
  });
  await newest(page, sent.length);
  const slower = others();
  const pictures = await page.evaluate(() => window.pictures);
  const times = [];
  let shown = 0;
  for (const [number, at] of pictures) for (; shown < number; ++shown) times.push(at - sent[shown]);
  const steady = times.slice(framesPerSecond * 2).sort((a, b) => a - b); // without the first two seconds
  const [median, most] = [steady[steady.length >> 1], steady[Math.floor(steady.length * 0.95)]];
  const from = begin + 2000;
  const drawn = pictures.filter(([, at]) => at > from);
  const perSecond = (1000 * (drawn.length - 1)) / (drawn.at(-1)[1] - drawn[0][1]);

  // Every frame was run: the last registers are those of a replay of what was recorded.
  child.stdin.end();
  await until(page, () => window.imgtune.store.state.live.ended);
  assert.equal(await ended, 0, told());
  const rows = tool("replay", tuning, join(folder, "walk.csv")).trim().split("\n");
  const columns = rows[0].split(",");
  assert.equal(rows.length - 1, sent.length);
  const last = rows.at(-1).split(",");
  await until(
    page,
    (wanted) => String(Array.from(document.querySelectorAll('[data-coefficient^="a"]'), (cell) => cell.textContent)) === wanted,
    String(last.slice(columns.indexOf("c0"), columns.indexOf("c0") + 9)),
  );
  await until(page, (text) => document.querySelector("#live .verdict").textContent.includes(text), `equal: ${sent.length} frames`);
  assert.deepEqual(complaints, []);
  await page.context().close();
  return { perSecond, median, most, slower };
}

test("one may stop, go back, look, and return, and a second page follows as well", async () => {
  const texts = frameTexts();
  const { child, ended, page, complaints, address } = await follow(texts);
  let next = 1;
  const send = (count) => {
    child.stdin.write(texts.slice(next, next + count).join(""));
    next += count;
  };
  send(400);
  await newest(page, 401);
  await page.getByRole("button", { name: "Stop" }).click();
  const shown = await page.evaluate(() => window.imgtune.store.state.log.count);
  send(100);
  await newest(page, 501);
  assert.equal(await page.evaluate(() => window.imgtune.store.state.log.count), shown);
  await page.evaluate(() => window.imgtune.store.set({ frame: 120 }));
  const columns = readFileSync(join(folder, "rows.csv"), "utf8").split("\n", 1)[0].split(",");
  const row = readFileSync(join(folder, "rows.csv"), "utf8").split("\n")[121].split(",");
  await until(
    page,
    (wanted) => String(Array.from(document.querySelectorAll('[data-coefficient^="a"]'), (cell) => cell.textContent)) === wanted,
    String(row.slice(columns.indexOf("c0"), columns.indexOf("c0") + 9)),
  );
  await page.getByRole("button", { name: "Return to live" }).click();
  send(20);
  await until(page, () => window.imgtune.store.state.log.first + window.imgtune.store.state.frame === 521);
  await page.evaluate(() => window.imgtune.store.set({ fields: ["c1", "Global.S"] }));
  send(5);
  await until(page, () => window.imgtune.store.state.a.columns.get("c1")?.length === window.imgtune.store.state.log.count);

  // What is told so far: changes of light with how soon they were no longer seen, and visible steps.
  await until(page, () => {
    const { changes, visible } = window.imgtune.store.state.a.summary ?? { changes: [] };
    return changes.length > 0 && changes[0].visible !== undefined && visible.changing_step.frame > 0;
  });
  const second = await page.context().newPage();
  await second.goto(address);
  await second.waitForSelector("html[data-ready]");
  await newest(second, 526);
  // A click on an earlier frame stops there.
  await page.evaluate(() => window.imgtune.store.set({ frame: 3, follow: "log" }));
  await until(page, () => !window.imgtune.store.state.live.following);
  child.stdin.end();
  for (const each of [page, second]) await until(each, () => window.imgtune.store.state.live.ended);
  assert.equal(await ended, 0);
  assert.deepEqual(complaints, []);
  await page.context().close();
});
