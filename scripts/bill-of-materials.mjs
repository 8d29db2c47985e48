// The bill of materials in the form CycloneDX 1.5: what the page contains, and what the tool and the
// Python module are linked to. Usage: node bill-of-materials.mjs VERSION COMMIT COMPONENTS
import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";

const [version, commit, components] = process.argv.slice(2);
const licence = (words) =>
  / /.test(words) ? [{ expression: words }] : [{ license: { id: words } }];
const component = ({ name, version, license, purl, where }) => ({
  type: "library",
  "bom-ref": `${where}:${name}@${version}`,
  name,
  version,
  licenses: licence(license),
  purl,
  properties: [{ name: "imgtune:used-in", value: where }],
});
const linked = [
  ["libyaml-cpp0.7", "MIT"],
  ["libfmt9", "MIT"],
  ["zlib1g", "Zlib"],
  ["libstdc++6", "GPL-3.0-only WITH GCC-exception-3.1"],
].map(([name, license]) => {
  const version = execFileSync("dpkg-query", ["-W", "-f=${Version}", name], { encoding: "utf8" });
  return { name, version, license, purl: `pkg:deb/debian/${name}@${version}`, where: "tool, Python module" };
});
const bundled = JSON.parse(readFileSync(components, "utf8")).map((each) => ({ ...each, where: "page" }));
const bill = {
  bomFormat: "CycloneDX",
  specVersion: "1.5",
  version: 1,
  metadata: {
    timestamp: new Date(Number(process.env.SOURCE_DATE_EPOCH ?? 0) * 1000).toISOString(),
    component: {
      type: "application",
      "bom-ref": "imgtune",
      name: "imgtune",
      version,
      properties: [{ name: "imgtune:commit", value: commit }],
    },
  },
  components: [...bundled, ...linked].map(component),
};
console.log(JSON.stringify(bill, null, 2));
