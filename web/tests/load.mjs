// Limits are those of an idle machine; tests run on others, too.
import { spawn } from "node:child_process";
import { readFileSync, readdirSync } from "node:fs";
import { cpus } from "node:os";

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

/** Ticks that all cores have worked, and those of this process and all that it started. */
function worked() {
  const [user, nice, system, , , irq, softIrq, steal] = /^cpu +(.*)/.exec(readFileSync("/proc/stat", "utf8"))[1].split(" ").map(Number);
  const all = new Map();
  for (const pid of readdirSync("/proc").filter((name) => /^\d+$/.test(name))) {
    try {
      const stat = readFileSync(`/proc/${pid}/stat`, "utf8");
      const fields = stat.slice(stat.lastIndexOf(")") + 2).split(" ").map(Number); // from the third on
      all.set(Number(pid), { parent: fields[1], ticks: fields[11] + fields[12] });
    } catch {
      // it ended meanwhile
    }
  }
  const isOurs = (pid) => pid === process.pid || (all.has(pid) && isOurs(all.get(pid).parent));
  const ours = Array.from(all).reduce((sum, [pid, { ticks }]) => sum + (isOurs(pid) ? ticks : 0), 0);
  return { all: user + nice + system + irq + softIrq + steal, ours, at: performance.now() };
}

/** Call what it returns at the end of what was measured: how many times fewer cores others have left to it. */
export function othersWork() {
  const from = worked();
  return () => {
    const to = worked();
    const seconds = (to.at - from.at) / 1000;
    const others = Math.max(0, to.all - from.all - (to.ours - from.ours)) / 100 / seconds; // cores; a tick is 10 ms
    const cores = cpus().length;
    return cores / Math.max(cores - others, cores / mostLoad);
  };
}

/** What the rest of a machine may take longer than a page's limits. */
export const room = async () => 2 * (await load());
