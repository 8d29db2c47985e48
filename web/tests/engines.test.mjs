// The same short list in every engine: Chromium, Firefox, WebKit. Usage as page.test.mjs; BROWSERS
// names some of them alone.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, test } from "node:test";
import { pathToFileURL } from "node:url";
import { browsers, inFreshBrowser } from "./browsers.mjs";
import { room } from "./load.mjs";

const { PAGE, IMGTUNE, EXAMPLES, BROWSERS } = process.env;
const frames = 100_000;
const limits = {
  // ms: until ready, 100,000 frames with their summary, a slider's move
  Chromium: { ready: 1500, replay: 2000, move: 33 },
  Firefox: { ready: 1500, replay: 2000, move: 33 },
  WebKit: { ready: 3000, replay: 3000, move: 100 },
};
const names = BROWSERS ? BROWSERS.split(",") : Object.keys(browsers);
const axe = readFileSync(new URL("../node_modules/axe-core/axe.min.js", import.meta.url), "utf8");
const folder = mkdtempSync(join(tmpdir(), "imgtune-engines-"));
after(() => rmSync(folder, { recursive: true }));
const tool = (...args) => execFileSync(IMGTUNE, args, { maxBuffer: 1 << 28, stdio: ["ignore", "pipe", "ignore"] }).toString();

// What a console would show, gathered by a script before the page's own and its policy.
const listening = `<!doctype html><script>
  window.complaints = [];
  for (const kind of ["error", "warn"]) console[kind] = (...words) => complaints.push(words.join(" "));
  addEventListener("error", (event) => complaints.push(event.message));
  addEventListener("unhandledrejection", (event) => complaints.push(String(event.reason)));
  addEventListener("securitypolicyviolation", (event) => complaints.push(event.violatedDirective + " " + event.blockedURI));
</script>`;
const heard = join(folder, "page.html");
writeFileSync(heard, readFileSync(PAGE, "utf8").replace(/^<!doctype html>/i, listening));

async function until(browser, holds, ...args) {
  const end = Date.now() + 90_000;
  while (!(await browser.evaluate(holds, ...args))) {
    if (Date.now() > end) assert.fail(`never came true: ${holds}; the page: ${await browser.evaluate(() => document.body.innerText.slice(0, 300))}`);
    await new Promise((later) => setTimeout(later, 30));
  }
}

async function start(browser, hash = "") {
  await browser.open(pathToFileURL(heard) + hash);
  await until(browser, () => document.documentElement.dataset.ready === "true");
}
const list = {
  async "starts, and is accessible"(browser, limits) {
    const slack = await room();
    const from = Date.now();
    await start(browser);
    assert.ok(Date.now() - from < limits.ready * slack, `ready after ${Date.now() - from} ms`);
    await until(browser, () => document.querySelectorAll("#time canvas").length >= 4 && document.querySelector("#error .difference") !== null);
    await browser.evaluate(axe);
    const broken = await browser.evaluate(async () => (await window.axe.run()).violations.map((v) => `${v.id}: ${v.nodes[0].target}`));
    assert.deepEqual(broken, []);
  },

  async "gives the command line's registers of every sample"(browser) {
    await start(browser);
    const files = readdirSync(EXAMPLES);
    for (const tuning of files.filter((name) => name.endsWith(".yaml"))) {
      for (const log of files.filter((name) => name.endsWith(".csv"))) {
        const rows = tool("replay", join(EXAMPLES, tuning), join(EXAMPLES, log)).trim().split("\n").map((line) => line.split(","));
        const fields = rows[0].map((name, i) => [name, i]).filter(([name]) => /^c\d$/.test(name) || /^[A-Z]|\./.test(name));
        assert.ok(fields.length >= 9 && rows.length > 100);
        const wanted = fields.map(([, i]) => rows.slice(1).map((row) => row[i]).join(" ")).join("\n");
        const got = await browser.evaluate(
          async (tuningText, logText, columns) => {
            const engine = window.imgtune.newEngine();
            await engine.loadTuning([{ name: "t.yaml", bytes: new TextEncoder().encode(tuningText) }]);
            await engine.loadFrames("l.csv", new TextEncoder().encode(logText));
            await engine.replay([]);
            const told = await engine.columns(columns, "actual");
            engine.close();
            return told.map((column) => Array.from(column).join(" ")).join("\n");
          },
          readFileSync(join(EXAMPLES, tuning), "utf8"),
          readFileSync(join(EXAMPLES, log), "utf8"),
          fields.map(([name]) => name),
        );
        assert.ok(got === wanted, `${tuning}, ${log}`);
      }
    }
  },

  async "follows a drag and an edit"(browser) {
    await start(browser, "#follow=light");
    const box = await browser.evaluate(async () => {
      const canvas = document.querySelector("#gain canvas");
      for (let was = NaN; ; ) {
        canvas.scrollIntoView({ block: "center" });
        const { x, y } = canvas.getBoundingClientRect();
        if (y === was) return { x, y };
        was = y; // panels may still find their places
        await new Promise((later) => setTimeout(later, 400));
      }
    });
    await browser.drag([[box.x + 200, box.y + 120], [box.x + 180, box.y + 130], [box.x + 160, box.y + 140]]);
    await until(browser, () => window.imgtune.store.state.freeGain);
    const gains = await browser.evaluate(() => ["awb_r", "awb_g", "awb_b"].map((name) => window.imgtune.store.state.light[name]));
    assert.notDeepEqual(gains, [512, 512, 512]);
    await until(browser, (text) => document.querySelector("#gains").textContent.startsWith(text), `AWB gain ${gains.join(", ")} `);
    const sample = join(EXAMPLES, "imx477-polynomial.yaml");
    const told = JSON.parse(tool("explain", sample, "--lv", "80", "--cct", "5000", "--gain", gains.join(","), "--json"));
    await until(
      browser,
      (wanted) => String(Array.from(document.querySelectorAll('[data-coefficient^="a"]'), (cell) => cell.textContent)) === wanted,
      String(told.ccm.written),
    );
    const write = async (text) => {
      const start = await browser.evaluate(async () => {
        for (let was = NaN; ; ) {
          document.querySelector("#tuning").scrollIntoView();
          const { left, top, height } = document.querySelector("#tuning .editor").shadowRoot.querySelector(".cm-line").getBoundingClientRect();
          if (top === was) return [left + 1, top + height / 2];
          was = top; // panels above it may still be drawn
          await new Promise((later) => setTimeout(later, 400));
        }
      });
      await browser.drag([start]);
      await browser.type(text);
    };
    await write("# typed ");
    await until(browser, () => window.imgtune.store.state.a.text.startsWith("# typed # Sony"));
    await write("]");
    await until(browser, () => document.querySelector("#tuning .findings .error") !== null);
    assert.equal(await browser.evaluate(() => document.querySelector("#tuning .findings button").textContent), "line 1");
  },

  async "takes 100,000 frames, and can be cancelled"(browser, limits) {
    await start(browser);
    const walk = readFileSync(join(EXAMPLES, "imx477-walk.csv"), "utf8").split("\n").filter((row) => row && !row.startsWith("#"));
    const rows = [walk[0]];
    while (rows.length <= frames) rows.push(...walk.slice(1));
    const text = rows.slice(0, frames + 1).join("\n") + "\n";
    const long = join(folder, "long.csv");
    writeFileSync(long, text);
    await browser.evaluate((walk, frames) => {
      const rows = [walk[0]];
      while (rows.length <= frames) rows.push(...walk.slice(1));
      window.long = { name: "long.csv", bytes: new TextEncoder().encode(rows.slice(0, frames + 1).join("\n") + "\n") };
      window.given = new Promise((done) => {
        const look = () => {
          const button = Array.from(document.querySelectorAll(".busy button")).find((each) => each.textContent === "Cancel");
          if (!button.closest("[hidden]")) {
            button.click();
            done(true);
          } else setTimeout(look, 5);
        };
        setTimeout(look, 5);
      });
      void window.imgtune.session.loadLog(window.long);
    }, walk, frames);
    assert.ok(await browser.evaluate(() => window.given));
    await until(browser, () => window.imgtune.store.state.busy === null);
    assert.deepEqual(await browser.evaluate(() => [window.imgtune.store.state.follow, window.imgtune.store.state.a.columns.size]), ["light", 0]);
    const slack = await room();
    const took = await browser.evaluate(async () => {
      const from = performance.now();
      await window.imgtune.session.loadLog(window.long);
      return performance.now() - from;
    });
    assert.ok(took < limits.replay * slack, `${frames} frames take ${took} ms`);
    const last = await browser.evaluate(() => ["c0", "Global.S"].map((name) => window.imgtune.store.state.a.columns.get(name).at(-1)));
    const told = tool("replay", join(EXAMPLES, "imx477-polynomial.yaml"), long, "--fields", "c0,Global.S").trim().split("\n");
    assert.equal(last.join(), told.at(-1).split(",").slice(-2).join());
    const moves = await browser.evaluate(async () => {
      const { session, store } = window.imgtune;
      const times = [];
      for (let lv = 40; lv < 55; ++lv) {
        const from = performance.now();
        const shown = new Promise((done) => store.watch(["a"], (state, before) => state.a.selected !== before.a.selected && done()));
        void session.setLight({ lv });
        await shown;
        await new Promise((done) => requestAnimationFrame(() => setTimeout(done)));
        times.push(performance.now() - from);
      }
      return times;
    });
    assert.ok(Math.min(...moves) < limits.move * slack, `a slider's move takes ${moves.map(Math.round)} ms`);
    if (process.env.SEEN) console.log(`${frames} frames: ${Math.round(took)} ms; moves: ${moves.map(Math.round)} ms`);
  },
};

for (const name of names) {
  for (const [what, run] of Object.entries(list)) {
    test(`${name} ${what}`, () =>
      inFreshBrowser(browsers[name], async (browser) => {
        await run(browser, limits[name]);
        assert.deepEqual(await browser.evaluate(() => window.complaints), []);
      }));
  }
}
