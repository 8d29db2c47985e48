import type uPlot from "uplot";
import { button, counted, fill, h } from "../dom";
import { Plot, type Line } from "../draw/plot";
import { colors } from "../draw/theme";
import { whenDue } from "../draw/schedule";
import { frameColumns, type FrameColumn } from "../engine/api";
import type { SideName, State } from "../store";
import { panel, type MakePanel } from "./panel";

interface Settling {
  state: string;
  settled_after: number | null;
  stall: { field: string; target: number; resting: number } | null;
}
interface Change {
  first: number;
  last: number;
  held: number;
  ccm?: Settling;
  color?: Settling;
}
interface Summary {
  noise_percent: number;
  cold_start: Change | null;
  changes: Change[];
  clipped: { frames: number; spans: { first: number; last: number }[] };
  flicker: { spans: { first: number; last: number }[] };
  fields: Record<string, Motion>;
}
interface Motion {
  largest_step: number;
  step_frame: number | null;
  overshoot: number;
  overshoot_frame: number | null;
  sign_changes_per_second: number;
}

const rowHeight = 96;

/** Fields over the log: what was programmed and what the light asked for. */
export const timePanel: MakePanel = (session) => {
  const { store } = session;
  const rows = new Map<string, { plot: Plot; element: HTMLElement }>();
  const list = h("div", { class: "rows" });
  const known = h("datalist", { id: "known-fields" });
  const input = h("input", { list: "known-fields", "aria-label": "Field to add", placeholder: "field, as Luma.PY[3]" });
  const add = (): void => {
    const field = input.value.trim();
    const { fields, a } = store.state;
    const exists = names(store.state).includes(field);
    if (a && exists && !fields.includes(field)) store.set({ fields: [...fields, field] });
    if (exists) input.value = "";
  };
  input.addEventListener("change", add);
  const facts = h("div", { class: "facts" });

  const bands = (u: uPlot, field: string): void => {
    const { log, a } = store.state;
    if (!log) return;
    const g = u.ctx;
    const c = colors();
    const { left, top, width, height } = u.bbox;
    g.save();
    g.beginPath();
    g.rect(left, top, width, height);
    g.clip();
    g.globalAlpha = 0.13;
    for (const [name, color] of [["flash", c.mark], ["scene", c.quiet], ["capture", c.b]] as const) {
      g.fillStyle = color;
      spans(log.columns[name], log.count, (from, to) => {
        const x = u.valToPos(from + 1, "x", true);
        g.fillRect(x, top, Math.max(2, u.valToPos(to + 1, "x", true) - x), height);
      });
    }
    g.globalAlpha = 1;
    const summary = a?.summary as Summary | null | undefined;
    g.strokeStyle = c.mark;
    g.setLineDash([2, 4]);
    for (const change of summary?.changes ?? []) upright(g, u.valToPos(change.first, "x", true), top, height);
    g.setLineDash([]);
    g.fillStyle = c.mark;
    const motion = summary?.fields[field];
    for (const frame of [motion?.largest_step ? motion.step_frame : null, motion?.overshoot ? motion.overshoot_frame : null]) {
      if (frame === null || frame === undefined) continue;
      const x = u.valToPos(frame, "x", true);
      g.beginPath();
      g.moveTo(x - 4 * devicePixelRatio, top);
      g.lineTo(x + 4 * devicePixelRatio, top);
      g.lineTo(x, top + 6 * devicePixelRatio);
      g.fill();
    }
    for (const [spans, color, from] of [
      [summary?.clipped.spans, c.clip, 3],
      [summary?.flicker.spans, c.flicker, 7],
    ] as const) {
      g.fillStyle = color;
      for (const span of spans ?? []) {
        const x = u.valToPos(span.first, "x", true);
        const thick = 3 * devicePixelRatio;
        g.fillRect(x, top + height - from * devicePixelRatio, Math.max(2, u.valToPos(span.last + 1, "x", true) - x), thick);
      }
    }
    g.restore();
  };

  const show = (state: State): void => {
    element.hidden = !state.log;
    if (!state.log) return;
    const x = Float64Array.from({ length: state.log.count }, (_, i) => i + 1);
    for (const [field, row] of rows) {
      if (state.fields.includes(field)) continue;
      row.element.remove();
      rows.delete(field);
    }
    for (const field of state.fields) {
      let row = rows.get(field);
      if (!row) {
        const plot = new Plot({
          name: "time-" + field,
          xLabel: "frame",
          yLabel: "",
          height: rowHeight,
          group: "time",
          choose: (at) => store.set({ follow: "log", frame: at - 1, playing: false }),
          bands: (u) => bands(u, field),
        });
        const remove = button("×", () => store.set({ fields: store.state.fields.filter((f) => f !== field) }), `Remove ${field}`);
        plot.element.querySelector(".tools")!.append(remove);
        row = { plot, element: plot.element };
        plot.mark(placeOf(state));
        rows.set(field, row);
        list.append(row.element);
      }
      const lines = linesOf(state, field);
      row.element.hidden = lines.length === 0;
      if (lines.length > 0) row.plot.draw(x, lines, field + unitOf(field) + motionOf(state, field));
    }
    fill(facts, ...factsOf(state));
  };
  const element = panel(
    "time",
    "Over the log",
    "Line: programmed; dashes: what each frame's light asks for. Dotted: a change of light; triangle: largest step, overshoot. Click to choose a frame.",
    h(
      "p",
      { class: "key" },
      ...["flash", "scene", "capture"].map((name) => h("span", {}, h("i", { class: `shade ${name}` }), name)),
      ...[["clip", "clipped gain"], ["flicker", "flicker"]].map(([name, text]) => h("span", {}, h("i", { class: `bar ${name}` }), text)),
    ),
    h("div", { class: "row" }, input, button("Add field", add), known),
    facts,
    list,
  );
  const again = whenDue(element, () => show(store.state));
  store.watch(["a", "b", "log", "fields", "show"], (state, before) => {
    const drawn = (["a", "b"] as const).some(
      (n) => state[n]?.columns !== before[n]?.columns || state[n]?.summary !== before[n]?.summary || !state[n] !== !before[n],
    );
    if (state.a?.info !== before.a?.info || state.b?.info !== before.b?.info) {
      fill(known, ...names(state).map((name) => h("option", { value: name })));
    }
    if (drawn || state.log !== before.log || state.fields !== before.fields || state.show !== before.show) again();
  });
  store.watch(
    ["frame", "follow", "log"],
    whenDue(list, () => rows.forEach((row) => row.plot.mark(placeOf(store.state)))),
  );
  return { element };
};

function names(state: State): string[] {
  const { a, log } = state;
  if (!a) return [];
  return [
    ...(a.info.hasCcm ? Array.from({ length: 9 }, (_, k) => `c${k}`) : []),
    ...(log ? frameColumns : []),
    ...(a.info.hasColor ? a.info.colorNames : []),
  ];
}

/** The summary's numbers of a field. */
function motionOf(state: State, field: string): string {
  return (["a", "b"] as const)
    .map((name) => {
      const motion = (state[name]?.summary as Summary | null | undefined)?.fields[field];
      if (!motion) return "";
      const parts = [];
      if (motion.largest_step > 0) parts.push(`largest step ${motion.largest_step} at ${motion.step_frame}`);
      if (motion.overshoot > 0) parts.push(`overshoot ${motion.overshoot} after ${motion.overshoot_frame}`);
      if (motion.sign_changes_per_second > 0) parts.push(`${motion.sign_changes_per_second.toFixed(2)} turns a second`);
      return parts.length > 0 ? ` · ${name.toUpperCase()}: ${parts.join(", ")}` : "";
    })
    .join("");
}

const placeOf = (state: State): number | null => (state.follow === "log" ? state.frame + 1 : null);

function unitOf(field: string): string {
  if (field === "lv") return ", 0.1 EV";
  if (field === "cct") return ", K";
  return /^c\d$/.test(field) || /_[rgb]$/.test(field) ? ", 512 = 1.0" : "";
}

function linesOf(state: State, field: string): Line[] {
  if ((frameColumns as readonly string[]).includes(field)) {
    return [{ label: field, values: state.log!.columns[field as FrameColumn], color: "ink" }];
  }
  const a = state.a?.columns.get(field);
  const b = state.b?.columns.get(field);
  if (a && b && state.show === "difference") {
    return [{ label: "B − A", values: b.map((v, i) => v - a[i]!), color: "ink" }];
  }
  const lines: Line[] = [];
  const target = state.a?.columns.get("target " + field);
  if (target) lines.push({ label: "target", values: target, color: "target", steps: true });
  if (a) lines.push({ label: "A", values: a, color: "a", steps: true });
  if (b) lines.push({ label: "B", values: b, color: "b", steps: true });
  return lines;
}

function factsOf(state: State): (HTMLElement | null)[] {
  return (["a", "b"] as const).map((name) => {
    const summary = state[name]?.summary as Summary | null | undefined;
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
  return h(
    "table",
    { class: "side-" + name },
    h("caption", {}, `${name.toUpperCase()} · settling; noise ${summary.noise_percent} % · clipped in ${counted(summary.clipped.frames, "frame")}`),
    h("thead", {}, h("tr", {}, ...["light changes in frames", "held", "matrix", "colour"].map((t) => h("th", { scope: "col" }, t)))),
    h(
      "tbody",
      {},
      ...changes.map((change) =>
        h(
          "tr",
          {},
          h("td", {}, change === summary.cold_start ? "start" : change.first === change.last ? change.first : `${change.first}–${change.last}`),
          h("td", {}, change.held),
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

function upright(g: CanvasRenderingContext2D, x: number, top: number, height: number): void {
  g.beginPath();
  g.moveTo(x, top);
  g.lineTo(x, top + height);
  g.stroke();
}

/** Where the log changes, flashes, clips, or takes its largest step after the start: frame numbers from 0. */
export function landmarks(state: State, kind: string): number[] {
  const { log, a } = state;
  if (!log) return [];
  const summary = a?.summary as Summary | null | undefined;
  if (kind === "change") return (summary?.changes ?? []).map((change) => change.first - 1);
  if (kind === "clip") return (summary?.clipped.spans ?? []).map((span) => span.first - 1);
  if (kind === "flash") {
    const found: number[] = [];
    spans(log.columns.flash, log.count, (from) => found.push(from));
    return found;
  }
  const moved = state.fields.flatMap((field) => summary?.fields[field] ?? []);
  const largest = moved.reduce<Motion | null>((most, each) => (each.largest_step > (most?.largest_step ?? 0) ? each : most), null);
  return largest?.step_frame ? [largest.step_frame - 1] : [];
}
