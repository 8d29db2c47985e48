// What others wrote of what stands in the page, with versions and the notices that their licences ask
// for.
import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";

const debian = (name) => execFileSync("dpkg-query", ["-W", "-f=${Version}", name], { encoding: "utf8" });
const mit = (copyright) => `${copyright}

Permission is hereby granted, free of charge, to any person obtaining a copy of this software and
associated documentation files (the "Software"), to deal in the Software without restriction, including
without limitation the rights to use, copy, modify, merge, publish, distribute, sublicense, and/or sell
copies of the Software, and to permit persons to whom the Software is furnished to do so, subject to the
following conditions:

The above copyright notice and this permission notice shall be included in all copies or substantial
portions of the Software.

THE SOFTWARE IS PROVIDED "AS IS", WITHOUT WARRANTY OF ANY KIND, EXPRESS OR IMPLIED, INCLUDING BUT NOT
LIMITED TO THE WARRANTIES OF MERCHANTABILITY, FITNESS FOR A PARTICULAR PURPOSE AND NONINFRINGEMENT. IN
NO EVENT SHALL THE AUTHORS OR COPYRIGHT HOLDERS BE LIABLE FOR ANY CLAIM, DAMAGES OR OTHER LIABILITY,
WHETHER IN AN ACTION OF CONTRACT, TORT OR OTHERWISE, ARISING FROM, OUT OF OR IN CONNECTION WITH THE
SOFTWARE OR THE USE OR OTHER DEALINGS IN THE SOFTWARE.
`;

/** The npm packages that the modules of a bundle come from. */
export const bundledPackages = (modules) => {
  const folders = new Set(
    modules.map((name) => /^(.*\/node_modules\/(?:@[^/]+\/)?[^/]+)\//.exec(name)?.[1]).filter(Boolean),
  );
  return [...folders].sort().map((folder) => {
    const { name, version, license } = JSON.parse(readFileSync(`${folder}/package.json`, "utf8"));
    const text = readFileSync(`${folder}/LICENSE`, "utf8");
    return { name, version, license, text, purl: `pkg:npm/${name.replace("@", "%40")}@${version}` };
  });
};

/** What is compiled into the engine, of which yamlCpp is the source folder. */
export const compiledLibraries = (yamlCpp) => {
  const of = (name, source, license, text) => {
    const version = debian(source);
    return { name, version, license, text, purl: `pkg:deb/debian/${source}@${version}` };
  };
  const emscripten = (name, license, text) => of(name, "emscripten", license, text);
  return [
    of("yaml-cpp", "libyaml-cpp-dev", "MIT", readFileSync(`${yamlCpp}/LICENSE`, "utf8")),
    of("fmt", "libfmt-dev", "MIT", mit("Copyright (c) 2012 - present, Victor Zverovich")),
    of("nlohmann-json", "nlohmann-json3-dev", "MIT", mit("Copyright (c) 2013-2022 Niels Lohmann")),
    of(
      "eigen",
      "libeigen3-dev",
      "MPL-2.0",
      "Its source is subject to the terms of the Mozilla Public License, version 2.0, to be had at\n" +
        "https://mozilla.org/MPL/2.0/, and stands unchanged at https://gitlab.com/libeigen/eigen.\n",
    ),
    emscripten("emscripten", "MIT", mit("Copyright (c) 2010-2014 Emscripten authors")),
    emscripten("musl", "MIT", mit("Copyright (c) 2005-2020 Rich Felker, et al.")),
    emscripten(
      "libc++, libc++abi, compiler-rt",
      "Apache-2.0 WITH LLVM-exception",
      "Part of the LLVM project, under the Apache License, version 2.0, to be had at\n" +
        "https://www.apache.org/licenses/LICENSE-2.0, with the LLVM exceptions.\n",
    ),
  ];
};

/** All notices as one text; components with the same words share them. */
export const noticesOf = (components) => {
  const names = new Map();
  for (const { name, version, license, text } of components) {
    const title = `${name} ${version} (${license})`;
    names.set(text, [...(names.get(text) ?? []), title]);
  }
  const parts = [...names].map(([text, titles]) => `${titles.join("\n")}\n\n${text.trim()}\n`);
  return `This page contains the work of others:\n\n${parts.join(`\n${"-".repeat(80)}\n\n`)}`;
};
