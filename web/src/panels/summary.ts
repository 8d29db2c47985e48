// What the summary of a run tells the panels.
import { counted, h } from "../dom";
import type { Visible } from "../engine/api";
import type { Side, SideName, State } from "../store";

interface Settling {
  state: string;
  settled_after: number | null;
  stall: { field: string; target: number; resting: number } | null;
}
interface Change {
  first: number;
  last: number;
  held: number;
  visible?: { state: string; settled_after: number | null; overshoot: { worst: number } | null };
  ccm?: Settling;
  color?: Settling;
}
export interface Summary {
  noise_percent: number;
  cold_start: (Change & { frames_to_rest: number }) | null;
  changes: Change[];
  clipped: { frames: number; spans: { first: number; last: number }[] };
  flicker: { spans: { first: number; last: number }[] };
  visible?: { flicker: { spans: { first: number; last: number }[] } };
  fields: Record<string, Motion>;
}
export interface Motion {
  largest_step: number;
  step_frame: number | null;
  sign_changes_per_second: number;
}

export const summaryOf = (side: Side | null): Summary | null => (side?.summary as Summary | null | undefined) ?? null;

/** The first frame, from 1, at which the start is over: the matrix stands. */
export function startEnds(side: Side | null): number {
  const start = summaryOf(side)?.cold_start;
  return start ? start.last + (start.ccm?.settled_after ?? start.frames_to_rest) : 1;
}

export function factsOf(state: State): (HTMLElement | null)[] {
  return (["a", "b"] as const).map((name) => {
    const summary = summaryOf(state[name]);
    return summary ? factTable(name, summary) : null;
  });
}

function factTable(name: SideName, summary: Summary): HTMLElement {
  const changes = [...(summary.cold_start ? [summary.cold_start] : []), ...summary.changes].slice(0, 12);
  const told = (s: Settling | undefined): string => {
    if (!s) return "";
    const stall = s.stall && s.stall.target !== s.stall.resting ? `, ${s.stall.field} rests at ${s.stall.resting} of ${s.stall.target}` : "";
    return (s.settled_after === null ? s.state.replaceAll("_", " ") : counted(s.settled_after, "frame")) + stall;
  };
  const seen = ({ visible }: Change): string => {
    if (!visible) return "";
    const over = visible.overshoot && visible.overshoot.worst > 0 ? `, overshoot ${visible.overshoot.worst.toFixed(1)}` : "";
    return (visible.settled_after === null ? visible.state.replaceAll("_", " ") : counted(visible.settled_after, "frame")) + over;
  };
  return h(
    "table",
    { class: "side-" + name },
    h("caption", {}, `${name.toUpperCase()} · settling; noise ${summary.noise_percent} % · clipped in ${counted(summary.clipped.frames, "frame")}`),
    h("thead", {}, h("tr", {}, ...["light changes in frames", "held", "seen", "matrix", "colour"].map((t) => h("th", { scope: "col" }, t)))),
    h(
      "tbody",
      {},
      ...changes.map((change) =>
        h(
          "tr",
          {},
          h("td", {}, change === summary.cold_start ? "start" : change.first === change.last ? change.first : `${change.first}–${change.last}`),
          h("td", {}, change.held),
          h("td", {}, seen(change)),
          h("td", {}, told(change.ccm)),
          h("td", {}, told(change.color)),
        ),
      ),
    ),
  );
}

export function spans(column: ArrayLike<number>, count: number, each: (from: number, to: number) => void): void {
  let from = -1;
  for (let i = 0; i <= count; ++i) {
    const on = i < count && column[i] !== 0;
    if (on && from < 0) from = i;
    if (!on && from >= 0) {
      each(from, i);
      from = -1;
    }
  }
}

const stepsOf = new WeakMap<Visible, number[]>();

/** The first frame of each run of visible steps after the start, from 0. */
export function visibleSteps(side: Side | null): number[] {
  const visible = side?.visible;
  if (!visible) return [];
  const known = stepsOf.get(visible);
  if (known) return known;
  const { step, seenFrom } = visible;
  const found: number[] = [];
  let before = false;
  for (let i = startEnds(side); i < step.worst.length; ++i) {
    const seen = step.worst[i]! >= seenFrom.worst || step.mean[i]! >= seenFrom.mean;
    if (seen && !before) found.push(i);
    before = seen;
  }
  stepsOf.set(visible, found);
  return found;
}

/** After the start, the frame farthest from rest; where that is measured nowhere, the largest step. */
function worstFrame(side: Side): number | null {
  const { rest, step } = side.visible!;
  for (const { worst } of [rest, step]) {
    let at: number | null = null;
    for (let i = startEnds(side); i < worst.length; ++i) if (worst[i]! > (at === null ? 0 : worst[at]!)) at = i;
    if (at !== null) return at;
  }
  return null;
}

/** Where the log changes, flashes, clips, steps visibly, or is worst after the start: frame numbers from 0. */
export function landmarks(state: State, kind: string): number[] {
  const { log, a } = state;
  if (!log) return [];
  const summary = summaryOf(a);
  if (kind === "change") return (summary?.changes ?? []).map((change) => change.first - log.first).filter((frame) => frame >= 0);
  if (kind === "clip") return (summary?.clipped.spans ?? []).map((span) => span.first - log.first).filter((frame) => frame >= 0);
  if (kind === "flash") {
    const found: number[] = [];
    spans(log.columns.flash, log.count, (from) => found.push(from));
    return found;
  }
  if (kind === "visible step") return visibleSteps(a);
  if (a?.visible) {
    const worst = worstFrame(a);
    return worst === null ? [] : [worst];
  }
  const moved = state.fields.flatMap((field) => summary?.fields[field] ?? []);
  const largest = moved.reduce<Motion | null>((most, each) => (each.largest_step > (most?.largest_step ?? 0) ? each : most), null);
  return (largest?.step_frame ?? 0) >= log.first ? [largest!.step_frame! - log.first] : [];
}
