import type uPlot from "uplot";
import { button, fill, h } from "../dom";
import { Plot, type Line } from "../draw/plot";
import { colors } from "../draw/theme";
import { whenDue } from "../draw/schedule";
import { frameColumns, type FrameColumn, type FrameLog } from "../engine/api";
import { holding, scaled, within } from "../draw/zoom";
import { numberOf, type State } from "../store";
import { panel, type MakePanel } from "./panel";
import { visibleOverTime } from "./visible-over-time";
import { factsOf, spans, summaryOf } from "./summary";

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
  let told: unknown[] = []; // there
  const plots = (): Plot[] => [...visible.plots, ...Array.from(rows.values(), (row) => row.plot)];
  const zoomTo = (zoom: State["zoom"]): void => store.set({ zoom });
  const scale = (factor: number, at = numberOf(store.state)): void => {
    const { zoom, log } = store.state;
    if (log) zoomTo(scaled(zoom, log.count, factor, at, log.first));
  };
  const overTime = {
    xLabel: "frame",
    yLabel: "",
    group: "time",
    choose: (at: number) => store.set({ follow: "log", frame: at - (store.state.log?.first ?? 1), playing: false }),
    zoom: (from: number, to: number) => zoomTo(within(from, to, store.state.log?.count ?? 1, store.state.log?.first)),
    turn: scale,
  };
  const visible = visibleOverTime({ ...overTime, bands: (u) => bands(u, "") });
  const shownPart = h("output", { class: "note" });
  const whole = button("Whole log", () => zoomTo(null));
  const showPart = (): void => {
    const { zoom, log } = store.state;
    shownPart.textContent = zoom && log ? `frames ${zoom[0]} to ${zoom[1]} of ${log.first - 1 + log.count}` : "";
    whole.hidden = zoom === null;
    for (const plot of plots()) plot.show(zoom);
  };

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
        const x = u.valToPos(log.first + from, "x", true);
        g.fillRect(x, top, Math.max(2, u.valToPos(log.first + to, "x", true) - x), height);
      });
    }
    g.globalAlpha = 1;
    const summary = summaryOf(a);
    g.strokeStyle = c.mark;
    g.setLineDash([2, 4]);
    for (const change of summary?.changes ?? []) upright(g, u.valToPos(change.first, "x", true), top, height);
    g.setLineDash([]);
    g.fillStyle = c.mark;
    const motion = summary?.fields[field];
    for (const frame of [motion?.largest_step ? motion.step_frame : null]) {
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
      [summary?.visible ? summary.visible.flicker.spans : summary?.flicker.spans, c.flicker, 7],
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
    const x = numbers(state.log);
    for (const [field, row] of rows) {
      if (state.fields.includes(field)) continue;
      row.element.remove();
      rows.delete(field);
    }
    for (const field of state.fields) {
      let row = rows.get(field);
      if (!row) {
        const plot = new Plot({
          ...overTime,
          name: "time-" + field,
          height: rowHeight,
          bands: (u) => bands(u, field),
        });
        const remove = button("×", () => store.set({ fields: store.state.fields.filter((f) => f !== field) }), `Remove ${field}`);
        plot.element.querySelector(".tools")!.append(remove);
        row = { plot, element: plot.element };
        plot.mark(placeOf(state));
        plot.show(state.zoom);
        rows.set(field, row);
        list.append(row.element);
      }
      const lines = linesOf(state, field);
      row.element.hidden = lines.length === 0;
      if (lines.length > 0) row.plot.draw(x, lines, field + unitOf(field) + motionOf(state, field));
    }
    visible.show(state, x);
    const summaries = [state.a?.summary, state.b?.summary];
    if (summaries.some((each, i) => each !== told[i])) fill(facts, ...factsOf(state));
    told = summaries;
  };
  const element = panel(
    "time",
    "Over the log",
    "Line: programmed; dashes: what each frame's light asks for. Dotted: a change of light; triangle: largest step. Click to choose a frame, drag across frames to zoom in; Ctrl with the wheel zooms, too.",
    h(
      "p",
      { class: "key" },
      ...["flash", "scene", "capture"].map((name) => h("span", {}, h("i", { class: `shade ${name}` }), name)),
      ...[["clip", "clipped gain"], ["flicker", "flicker"]].map(([name, text]) => h("span", {}, h("i", { class: `bar ${name}` }), text)),
    ),
    h("div", { class: "row" }, input, button("Add field", add), known),
    facts,
    h("div", { class: "row" }, button("+", () => scale(0.5), "Zoom in"), button("−", () => scale(2), "Zoom out"), whole, shownPart),
    ...visible.plots.map((plot) => plot.element),
    list,
  );
  const again = whenDue(element, () => show(store.state));
  store.watch(["a", "b", "log", "fields", "show", "patch"], (state, before) => {
    const drawn = (["a", "b"] as const).some(
      (n) => state[n]?.columns !== before[n]?.columns || state[n]?.summary !== before[n]?.summary || state[n]?.patchOverLog !== before[n]?.patchOverLog || !state[n] !== !before[n],
    );
    if (state.a?.info !== before.a?.info || state.b?.info !== before.b?.info) {
      fill(known, ...names(state).map((name) => h("option", { value: name })));
    }
    if (drawn || state.log !== before.log || state.fields !== before.fields || state.show !== before.show || state.patch !== before.patch) again();
  });
  store.watch(
    ["frame", "follow", "log"],
    whenDue(list, () => {
      for (const plot of plots()) plot.mark(placeOf(store.state));
    }),
  );
  store.watch(["frame", "follow"], ({ zoom, frame, follow, log }) => {
    const held = log && follow === "log" ? holding(zoom, log.first + frame, log.count, log.first) : zoom;
    if (held !== zoom) zoomTo(held);
  });
  store.watch(["zoom"], whenDue(element, showPart));
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
      const motion = summaryOf(state[name])?.fields[field];
      if (!motion) return "";
      const parts = [];
      if (motion.largest_step > 0) parts.push(`largest step ${motion.largest_step} at ${motion.step_frame}`);
      if (motion.sign_changes_per_second > 0) parts.push(`${motion.sign_changes_per_second.toFixed(2)} turns a second`);
      return parts.length > 0 ? ` · ${name.toUpperCase()}: ${parts.join(", ")}` : "";
    })
    .join("");
}

const placeOf = (state: State): number | null => (state.follow === "log" ? numberOf(state) : null);

function numbers(log: FrameLog): Float64Array {
  const x = new Float64Array(log.count);
  for (let i = 0; i < x.length; ++i) x[i] = log.first + i;
  return x;
}

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

function upright(g: CanvasRenderingContext2D, x: number, top: number, height: number): void {
  g.beginPath();
  g.moveTo(x, top);
  g.lineTo(x, top + height);
  g.stroke();
}
