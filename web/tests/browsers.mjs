// One way to drive three engines: Chromium and Firefox by puppeteer, WebKit by its own driver.
// A browser: open(url), evaluate(function, ...arguments), drag(points), type(text), close().
import { spawn } from "node:child_process";
import { once } from "node:events";
import { existsSync, readdirSync } from "node:fs";
import { createServer } from "node:net";
import puppeteer from "puppeteer-core";
import { Builder, Button, Origin } from "selenium-webdriver";

const patience = 60_000; // for one answer of a browser
const width = 1280;
const height = 900;

/** The browser, or its protocol, gave no answer. */
export class NoAnswer extends Error {}

async function answered(what, promise) {
  let timer;
  const late = new Promise((_, fail) => {
    timer = setTimeout(() => fail(new NoAnswer(`${what}: no answer in ${patience / 1000} s`)), patience);
  });
  return Promise.race([promise, late]).finally(() => clearTimeout(timer));
}

async function throughPuppeteer(browserName, options) {
  const browser = await answered("launch", puppeteer.launch({ browser: browserName, protocolTimeout: 4 * patience, timeout: 0, ...options }));
  const page = await answered("new page", browser.newPage());
  await answered("size", page.setViewport({ width, height }));
  return {
    open: (url) => answered("open", page.goto(url)),
    evaluate: (f, ...args) => answered("evaluate", page.evaluate(f, ...args)),
    async drag([first, ...rest]) {
      await page.mouse.move(...first);
      await page.mouse.down();
      for (const point of rest) await page.mouse.move(...point);
      await answered("drag", page.mouse.up());
    },
    type: (text) => answered("type", page.keyboard.type(text)),
    async close() {
      const ended = once(browser.process(), "exit");
      await answered("close", browser.close()).catch(() => browser.process().kill("SIGKILL"));
      if (browser.process().exitCode === null && browser.process().signalCode === null) await ended;
    },
  };
}

async function freePort() {
  const server = createServer().listen(0, "127.0.0.1");
  await once(server, "listening");
  const { port } = server.address();
  server.close();
  await once(server, "close");
  return port;
}

async function stop(child) {
  if (child.exitCode !== null || child.signalCode !== null) return;
  const ended = once(child, "exit");
  child.kill();
  await ended;
}

async function throughWebDriver() {
  const screen = spawn("Xvfb", ["-displayfd", "3", "-nolisten", "tcp", "-screen", "0", "1600x1200x24"], { stdio: ["ignore", "ignore", "ignore", "pipe"] });
  const [number] = await answered("Xvfb", once(screen.stdio[3], "data"));
  const port = await freePort();
  // No language at all: what a plain container has.
  const env = { ...process.env, DISPLAY: `:${String(number).trim()}`, LANG: "C", LC_ALL: "C" };
  const server = spawn("WebKitWebDriver", [`--port=${port}`], { stdio: "ignore", env });
  const binary = readdirSync("/usr/lib")
    .flatMap((machine) => ["4.1", "4.0"].map((version) => `/usr/lib/${machine}/webkit2gtk-${version}/MiniBrowser`))
    .find(existsSync);
  const build = () =>
    new Builder()
      .usingServer(`http://127.0.0.1:${port}`)
      .withCapabilities({ browserName: "MiniBrowser", "webkitgtk:browserOptions": { binary, args: ["--automation"] } })
      .build();
  const close = async () => {
    await stop(server);
    await stop(screen);
  };
  try {
    const driver = await answered("launch", (async () => {
      for (;;) {
        try {
          return await build();
        } catch (error) {
          if (!/ECONNREFUSED/.test(String(error.stack))) throw error; // the server is not up yet
        }
      }
    })());
    await driver.manage().window().setRect({ width, height });
    await driver.manage().setTimeouts({ script: 4 * patience, pageLoad: patience });
    const moved = (actions, point, duration = 20) => actions.move({ x: Math.round(point[0]), y: Math.round(point[1]), duration, origin: Origin.VIEWPORT });
    return {
      open: (url) => answered("open", driver.get(url)),
      async evaluate(f, ...args) {
        const body = typeof f === "string" ? f : `const done = arguments[arguments.length - 1];
          Promise.resolve().then(() => (${f})(...Array.from(arguments).slice(0, -1)))
            .then((value) => done({ value }), (error) => done({ error: String(error) }));`;
        const told = await answered("evaluate", typeof f === "string" ? driver.executeScript(body) : driver.executeAsyncScript(body, ...args));
        if (told?.error) throw new Error(told.error);
        return told?.value;
      },
      async drag([first, ...rest]) {
        const actions = moved(driver.actions({ async: true }), first).press(Button.LEFT);
        for (const point of rest) moved(actions, point);
        await answered("drag", actions.release(Button.LEFT).perform());
      },
      type: (text) => answered("type", driver.actions({ async: true }).sendKeys(text).perform()),
      async close() {
        await answered("close", driver.quit()).catch(() => {});
        await close();
      },
    };
  } catch (error) {
    await close();
    throw error;
  }
}

export const chromiumOptions = { executablePath: "/usr/bin/chromium", args: process.getuid() === 0 ? ["--no-sandbox"] : [] };
export const browsers = {
  Chromium: () => throughPuppeteer("chrome", chromiumOptions),
  Firefox: () => throughPuppeteer("firefox", { executablePath: "/usr/bin/firefox-esr" }),
  WebKit: throughWebDriver,
};

/** Runs a test in a fresh browser; once more when the browser did not answer, and only then. */
export async function inFreshBrowser(launch, run) {
  for (let tries = 1; ; ++tries) {
    let browser;
    try {
      browser = await launch();
      return await run(browser);
    } catch (error) {
      if (!(error instanceof NoAnswer) || tries === 2) throw error;
      console.log(`again, in another browser: ${error.message}`);
    } finally {
      await browser?.close();
    }
  }
}
