// Builds the one file: node build.mjs ENGINE_FOLDER OUTPUT. Script, style, worker, engine and samples
// stand inside, a policy that lets nothing else in, and the notices of those whose work it contains,
// which stand beside it, too: OUTPUT.notices.txt, and OUTPUT.components.json for those who list them.
import { createHash } from "node:crypto";
import { readFileSync, readdirSync, writeFileSync } from "node:fs";
import { dirname } from "node:path";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";
import { build } from "vite";
import { bundledPackages, compiledLibraries, noticesOf } from "./notices.mjs";

const [engine, output] = process.argv.slice(2);
const here = dirname(fileURLToPath(import.meta.url));
const largest = 1.5 * 1024 * 1024;

const bundle = async (entry, name) => {
  const { output: parts } = [
    await build({
      root: here,
      configFile: false,
      logLevel: "warn",
      build: {
        write: false,
        target: "es2022",
        lib: { entry: `${here}/src/${entry}`, formats: ["iife"], name },
      },
    }),
  ].flat()[0];
  const { code: script, modules } = parts.find((part) => part.type === "chunk");
  const style = parts.find((part) => part.fileName.endsWith(".css"))?.source ?? "";
  return { script, style: String(style), modules: Object.keys(modules) };
};

const packed = (text) => gzipSync(text, { level: 9 }).toString("base64");
const data = (id, text) => `<script type="application/octet-stream" id="${id}">${packed(text)}</script>`;
const hash = (text) => `'sha256-${createHash("sha256").update(text).digest("base64")}'`;

const start = (await bundle("start.ts", "start")).script;
const page = await bundle("main.ts", "page");
const worker = await bundle("engine/worker.ts", "engineWorker");
const examples = `${here}/../examples`;
const samples = Object.fromEntries(
  readdirSync(examples)
    .filter((name) => /\.(yaml|csv)$/.test(name))
    .map((name) => [name, readFileSync(`${examples}/${name}`, "utf8")]),
);
const script = page.script.replaceAll("</script", "<\\/script");
const policy = [
  "default-src 'none'",
  `script-src ${hash(start)} ${hash(script)} 'wasm-unsafe-eval' blob:`,
  "worker-src blob:",
  `style-src ${hash(page.style)}`,
  "img-src data: blob:",
  "base-uri 'none'",
  "form-action 'none'",
].join("; ");
const parts = {
  policy: `<meta http-equiv="Content-Security-Policy" content="${policy}" />`,
  style: `<style>${page.style}</style>`,
  data: [
    data("engine-wasm", readFileSync(`${engine}/engine.wasm`)),
    data("engine-worker", readFileSync(`${engine}/engine.js`, "utf8") + "\n" + worker.script),
    data("samples", JSON.stringify(samples)),
    "<!-- report -->",
  ].join("\n"),
  start: `<script>${start}</script>`,
  script: `<script type="module">${script}</script>`,
};
const components = [
  ...bundledPackages([...page.modules, ...worker.modules]),
  ...compiledLibraries(`${engine}/../yaml-cpp`),
];
const notices = noticesOf(components);
parts.notices = `<template id="notices"><pre>${notices.replaceAll("&", "&amp;").replaceAll("<", "&lt;")}</pre></template>`;
const html = readFileSync(`${here}/index.html`, "utf8").replace(
  /<!-- (policy|start|style|data|notices|script) -->/g,
  (_, name) => parts[name],
);
if (html.length > largest) throw new Error(`${output}: ${html.length} bytes, allowed are ${largest}`);
writeFileSync(output, html);
writeFileSync(`${output}.notices.txt`, notices);
writeFileSync(`${output}.components.json`, JSON.stringify(components, null, 2));
