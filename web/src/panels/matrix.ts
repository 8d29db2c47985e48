import { choice, h } from "../dom";
import { Plot, type Line } from "../draw/plot";
import { axes, line, Picture } from "../draw/canvas";
import type { SteepPlace } from "../engine/api";
import { whenDue } from "../draw/schedule";
import { frameOf, type Side, type State } from "../store";
import { panel, signed, type MakePanel } from "./panel";

const lowLightFull = 20; // light value up to which low light alone rules ...
const lowLightEnd = 50; // ... and from which it takes no part
const names = ["c0", "c1", "c2", "c3", "c4", "c5", "c6", "c7", "c8"];

/** The matrix without smoothing: over CT or LV, and as a map of both. */
export const matrixPanel: MakePanel = (session) => {
  const { store } = session;
  const plots = names.map(
    (name) => new Plot({ name: "matrix-" + name, xLabel: "", yLabel: "", height: 110, group: "matrix" }),
  );
  const map = new Picture("matrix-map", 220, "Map over colour temperature and light value");
  const controls = h("div", { class: "row" });
  const over = choice("over", [["ct", "temperature"], ["lv", "light value"]], store.state.over, (value) =>
    store.set({ over: value as "ct" | "lv" }),
  );
  const at = h("input", { type: "range", "aria-label": "at" });
  const atText = h("span", { class: "unit" });
  at.addEventListener("input", () =>
    store.set(store.state.over === "ct" ? { gridLv: Number(at.value) } : { gridCt: Number(at.value) }),
  );
  const which = choice(
    "map of",
    [...names.map((name, i): [string, string] => [String(i), name]), ["9", "visible change to the neighbour"]],
    String(store.state.coefficient),
    (value) => store.set({ coefficient: Number(value) }),
  );
  controls.append(over, h("label", { class: "choice" }, "at", at, atText), which);

  const show = (state: State): void => {
    const grid = state.a?.grid;
    element.hidden = !grid;
    if (!grid) return;
    const byCt = state.over === "ct";
    at.min = String(byCt ? grid.lv[0] : grid.cct[0]);
    at.max = String(byCt ? grid.lv.at(-1) : grid.cct.at(-1));
    at.step = byCt ? "5" : "100";
    at.value = String(byCt ? state.gridLv : state.gridCt);
    atText.textContent = byCt ? `LV ${at.value}` : `${at.value} K`;
    const x = byCt ? grid.cct : grid.lv;
    names.forEach((name, k) => {
      const a = cut(state.a, k, state);
      const b = cut(state.b, k, state);
      const lines: Line[] = [];
      if (b && a && state.show === "difference") {
        lines.push({ label: "B − A", values: b.map((v, i) => v - a[i]!), color: "ink" });
      } else {
        if (a) lines.push({ label: "A", values: a, color: "a" });
        if (b) lines.push({ label: "B", values: b, color: "b" });
      }
      plots[k]!.draw(x, lines, name);
    });
    drawMap(map, state);
  };
  const element = panel(
    "matrix",
    "Matrix over light",
    "What each light alone asks for, gains on the tuned locus; 1.0 = 512.",
    controls,
    h("div", { class: "nine" }, ...plots.map((plot) => plot.element)),
    map.element,
  );
  const all = whenDue(element, () => show(store.state));
  const place = whenDue(map.element, () => store.state.a?.grid && drawMap(map, store.state));
  store.watch(["frame", "light", "follow", "log"], place);
  store.watch(["a", "b", "over", "gridLv", "gridCt", "coefficient", "show"], (state, before) => {
    const drawn: (keyof State)[] = ["over", "gridLv", "gridCt", "coefficient", "show"];
    const grids = state.a?.grid !== before.a?.grid || state.b?.grid !== before.b?.grid || state.a?.steepest !== before.a?.steepest;
    if (grids || drawn.some((k) => state[k] !== before[k])) all();
  });
  return { element };
};

function cut(side: Side | null, k: number, state: State): number[] | null {
  const grid = side?.grid;
  if (!grid) return null;
  const width = grid.cct.length;
  if (state.over === "ct") {
    const row = Math.max(0, grid.lv.findIndex((lv) => lv >= state.gridLv));
    return Array.from(grid.coefficients[k]!.subarray(row * width, (row + 1) * width));
  }
  const column = Math.max(0, grid.cct.findIndex((ct) => ct >= state.gridCt));
  return grid.lv.map((_, row) => grid.coefficients[k]![row * width + column]!);
}

interface Steep {
  row: string;
  place: SteepPlace;
  lv: [number, number]; // where the map shows it
}

/** Steps on the tuned gains that are seen; without any, the steepest there is. Flash has no place on the map. */
function steepPlaces(side: Side): Steep[] {
  const { steepest, grid } = side;
  if (!steepest || !grid) return [];
  const reach: Record<string, [number, number]> = { normal: [lowLightEnd, grid.lv.at(-1)!], low_light: [grid.lv[0]!, lowLightFull] };
  if (!steepest.rows["low_light"]) reach["normal"]![0] = grid.lv[0]!;
  const found: Steep[] = [];
  for (const [row, { on_locus: place }] of Object.entries(steepest.rows)) {
    if (place && reach[row]) found.push({ row, place, lv: reach[row] });
  }
  if (steepest.over_lv) found.push({ row: "over LV", place: steepest.over_lv, lv: [steepest.over_lv.from.lv, steepest.over_lv.to.lv] });
  const { mean, worst } = steepest.seen_from;
  const strength = ({ place }: Steep): number => Math.max(place.mean / mean, place.worst / worst);
  found.sort((a, b) => strength(b) - strength(a));
  const seen = found.filter(({ place }) => place.seen);
  return seen.length > 0 ? seen : found.slice(0, 1);
}

function steepText({ row, place }: Steep): string {
  const { from, to } = place;
  const where = from.lv === to.lv ? `${from.cct.toFixed()} to ${to.cct.toFixed()} K, row ${row}` : `LV ${from.lv} to ${to.lv}, ${from.cct.toFixed()} K`;
  const size = `CIEDE2000 ${place.mean.toFixed(1)} on average, ${place.worst.toFixed(1)} in ${place.worst_patch}`;
  return `${place.seen ? "steepest step" : "no step that is seen; steepest"} ${size}, ${where}${place.seen && place.jump ? ", a jump" : ""}`;
}

let shaded: { values: ArrayLike<number>; ink: string; image: HTMLCanvasElement } | null = null;

/** A pixel a value, the first row at the bottom; kept, as the frame alone moves on it. */
function shades(values: ArrayLike<number>, width: number, low: number, high: number, ink: string): HTMLCanvasElement {
  if (shaded?.values === values && shaded.ink === ink) return shaded.image;
  const image = document.createElement("canvas");
  const rows = values.length / width;
  [image.width, image.height] = [width, rows];
  const g = image.getContext("2d")!;
  g.fillStyle = ink;
  for (let i = 0; i < values.length; ++i) {
    g.globalAlpha = high === low ? 0.1 : 0.06 + (0.94 * (values[i]! - low)) / (high - low);
    g.fillRect(i % width, rows - 1 - Math.floor(i / width), 1, 1);
  }
  shaded = { values, ink, image };
  return image;
}

function drawMap(map: Picture, state: State): void {
  const grid = state.a!.grid!;
  const width = grid.cct.length;
  const visible = state.coefficient === 9;
  const of = (side: Side): Int32Array | Float32Array => (visible ? side.grid!.slope : side.grid!.coefficients[state.coefficient]!);
  const own = of(state.a!);
  const difference = state.show === "difference" && state.b?.grid;
  const values = difference ? of(state.b!).map((v, i) => v - own[i]!) : own;
  let low = Infinity;
  let high = -Infinity;
  for (const v of values) {
    low = Math.min(low, v);
    high = Math.max(high, v);
  }
  const name = visible ? "CIEDE2000 of the worst patch to a neighbour" : names[state.coefficient]!;
  const digits = visible ? 1 : 0;
  const steep = steepPlaces(state.a!);
  map.draw(
    `${name}${difference ? ", B − A" : ""}: ${difference ? signed(low, digits) : low.toFixed(digits)} (pale) to ${high.toFixed(digits)} (dark)` +
      (steep[0] ? ` · ${steepText(steep[0])}` : ""),
    (g, w, h, c) => {
      const box = { left: 44, top: 8, right: w - 10, bottom: h - 22 };
      const s = axes(g, c, box, { x: [grid.cct[0]!, grid.cct.at(-1)!], y: [grid.lv[0]!, grid.lv.at(-1)!] }, { x: "K", y: "LV" });
      g.save();
      g.beginPath();
      g.rect(box.left, box.top, box.right - box.left, box.bottom - box.top);
      g.clip();
      g.imageSmoothingEnabled = false;
      const [cw, ch] = [(box.right - box.left) / (width - 1), (box.bottom - box.top) / (grid.lv.length - 1)];
      g.drawImage(shades(values, width, low, high, c.a), box.left - cw / 2, box.top - ch / 2, cw * width, ch * grid.lv.length);
      g.restore();
      const frame = frameOf(state);
      g.strokeStyle = c.b;
      g.lineWidth = 1.5;
      g.strokeRect(s.x(frame.cct) - 4, s.y(frame.lv) - 4, 8, 8);
      g.strokeStyle = c.mark;
      for (const { place, lv } of steep) {
        const x = Math.min(box.right, Math.max(box.left, s.x((place.from.cct + place.to.cct) / 2)));
        line(g, x, s.y(lv[0]), x, s.y(lv[1]));
        g.beginPath();
        g.arc(x, s.y((lv[0] + lv[1]) / 2), 5, 0, 7);
        g.stroke();
      }
    },
    () => ["kelvin,lv," + name, ...Array.from(values, (v, i) => `${grid.cct[i % width]},${grid.lv[Math.floor(i / width)]},${v}`)],
  );
}
