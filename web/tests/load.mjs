// Limits are those of an idle machine; tests run on others, too.
import { spawn } from "node:child_process";

const mostLoad = 3; // a machine busier than that shows nothing

/** How many times longer than alone two cores' work takes now: 1 on an idle machine. Ours does not count: it has ended. */
export async function load() {
  const spin = `const from = performance.now(), used = process.cpuUsage();
    while (performance.now() < from + 500);
    const { user, system } = process.cpuUsage(used);
    console.log((1000 * (performance.now() - from)) / (user + system));`;
  const one = async () => {
    const child = spawn(process.execPath, ["-e", spin], { stdio: ["ignore", "pipe", "inherit"] });
    let told = "";
    for await (const data of child.stdout) told += data;
    return Number(told);
  };
  const [first, second] = await Promise.all([one(), one()]);
  return Math.min(mostLoad, Math.max(1, (first + second) / 2));
}

/** What the rest of a machine may take longer than a page's limits. */
export const room = async () => 2 * (await load());
