import { choice, fill, h } from "../dom";
import { axes, Picture } from "../draw/canvas";
import type { Colors } from "../draw/theme";
import { Plot, type Line } from "../draw/plot";
import { whenDue } from "../draw/schedule";
import type { Json } from "../engine/api";
import type { Selected, State } from "../store";
import { panel, type MakePanel } from "./panel";

const curves = 20;
const lastSegment = 32; // third knot behind the second
const dots = [1, 3];

type Told = Record<string, Json> | undefined;
interface Row {
  lower?: number[];
  upper?: number[];
  target?: number[];
  written?: number[];
}

/** Tables and curves of the colour engine: previous, target and current. */
export const enginePanel: MakePanel = (session) => {
  const { store } = session;
  const luma = new Plot({ name: "luma-curve", xLabel: "entry", yLabel: "", height: 150 });
  const hue = new Picture("hue-ring", 210, "Hue entries around the ring");
  const saturation = new Plot({ name: "saturation-curve", xLabel: "saturation in", yLabel: "", height: 150 });
  const gains = new Picture("gain-by-luma", 130, "Saturation gain by luma and hue");
  const pick = choice(
    "curve",
    Array.from({ length: curves }, (_, i): [string, string] => [String(i), String(i)]),
    String(store.state.curve),
    (value) => store.set({ curve: Number(value) }),
  );
  const tables = h("div", { class: "facts" });
  const bracket = h("p", { class: "numbers" });

  const show = (state: State): void => {
    const selected = state.a?.selected;
    const told = colorOf(selected);
    element.hidden = !state.a?.info.hasColor;
    if (!selected || !told) return;
    const current = reader(state.a!.info.colorNames, selected.now.color);
    const before = selected.before ? reader(state.a!.info.colorNames, selected.before.color) : null;
    const target = reader(state.a!.info.colorNames, selected.target.color);
    const other = state.b?.info.hasColor && state.b.selected ? reader(state.b.info.colorNames, state.b.selected.now.color) : null;
    const index = (n: number): number[] => Array.from({ length: n }, (_, i) => i);
    const run = (read: Reader, name: string, n: number): number[] => index(n).map((i) => read(`${name}[${i}]`));
    const lower = tabled(told, "lower");
    const upper = tabled(told, "upper");
    const versus = state.show === "difference" ? other : null;
    const minus = (b: number[], a: number[]): number[] => b.map((value, i) => value - a[i]!);
    const lines = (make: (read: Reader) => number[]): Line[] =>
      versus ? [{ label: "B − A", values: minus(make(versus), make(current)), color: "ink", dots: true }] : overlaid(make);
    const overlaid = (make: (read: Reader) => number[]): Line[] => [
      { label: "lower CT", values: make(lower), color: "quiet", dash: dots },
      { label: "upper CT", values: make(upper), color: "quiet", dash: dots },
      { label: "target", values: make(target), color: "target" },
      ...(before ? [{ label: "previous", values: make(before), color: "quiet" } as const] : []),
      { label: "A", values: make(current), color: "a", dots: true },
      ...(other ? [{ label: "B", values: make(other), color: "b" } as const] : []),
    ];
    luma.draw(index(16), lines((read) => run(read, "Luma.PY", 16)), versus ? "Luma.PY: B − A at each entry" : "Luma.PY: entries of the luma curve, 0..255");
    const ring = (read: Reader | null): number[] | null => read && run(read, "Hue.PH", 20);
    const own = run(current, "Hue.PH", 20);
    const shift = versus ? minus(run(versus, "Hue.PH", 20), own).map((value) => 128 + value) : null;
    if (shift) {
      drawHue(hue, "128 + B − A", shift, []);
    } else {
      drawHue(hue, "A", own, [
        { name: "lower CT", values: ring(lower), color: "quiet", dash: dots },
        { name: "upper CT", values: ring(upper), color: "quiet", dash: dots },
        { name: "previous", values: ring(before), color: "quiet", dash: [] },
        { name: "target", values: ring(target), color: "target", dash: [4, 3] },
        { name: "B", values: ring(other), color: "b", dash: [] },
      ]);
    }
    const k = state.curve;
    const knots = (read: Reader): [number, number] => [read(`Saturation.SP1[${k}]`), read(`Saturation.SP2[${k}]`)];
    const level = (read: Reader): number[] => {
      const [p1, p2] = knots(read);
      const l1 = read(`Saturation.SG1[${k}]`) * p1;
      const l2 = l1 + read(`Saturation.SG2[${k}]`) * (p2 - p1);
      return [0, l1, l2, l2 + read(`Saturation.SG3[${k}]`) * lastSegment];
    };
    const [p1, p2] = knots(current);
    saturation.draw([0, p1, p2, p2 + lastSegment], lines(level), `Saturation, curve ${k}: knots SP1 ${p1}, SP2 ${p2}; level = gain × knot${versus ? "; B − A knot by knot" : ""}`);
    const toldB = versus ? colorOf(state.b?.selected) : undefined;
    const rows = ["SGY0", "SGY64", "SGY128", "SGY192", "SGY256"].map((name) => {
      const written = rowOf(told, name).written ?? [];
      return { written: toldB ? minus(rowOf(toldB, name).written ?? [], written) : written };
    });
    drawGains(gains, toldB ? ", B − A" : "", rows);
    bracket.textContent = bracketText(told);
    fill(
      tables,
      table("Global and LSP", told, ["Global.", "LSP"]),
      table("Colour map: " + String(told["color_map"] ?? "none") + " CT's image", told, ["ColorMap."]),
    );
  };
  const element = panel(
    "engine",
    "Colour engine",
    "Register tables, as programmed (line), asked for (dashes), of the frame before (pale) and of both CTs' images (dots).",
    bracket,
    h(
      "div",
      { class: "tables" },
      luma.element,
      hue.element,
      h("div", {}, h("div", { class: "row" }, pick), saturation.element),
      gains.element,
    ),
    tables,
  );
  const again = whenDue(element, () => show(store.state));
  store.watch(["a", "b", "curve", "show"], (state, before) => {
    if (state.curve !== before.curve || state.show !== before.show || state.a?.selected !== before.a?.selected || state.b?.selected !== before.b?.selected) again();
  });
  return { element };
};

type Reader = (name: string) => number;

/** The values of one of the two CTs' images: "Luma.PY[3]"; NaN where the traces do not tell them. */
function tabled(told: NonNullable<Told>, image: "lower" | "upper"): Reader {
  return (name) => {
    const [, field, entry] = /^(.*?)(?:\[(\d+)\])?$/.exec(name)!;
    return (told[field!] as Row | undefined)?.[image]?.[Number(entry ?? 0)] ?? NaN;
  };
}
function reader(names: string[], values: Int32Array): Reader {
  return (name) => values[names.indexOf(name)] ?? 0;
}

function colorOf(selected: Selected | null | undefined): Told {
  const told = selected?.explanation as { color?: Record<string, Json> } | null | undefined;
  return told?.color;
}

function rowOf(told: NonNullable<Told>, name: string): Row {
  const key = Object.keys(told).find((field) => field.endsWith("." + name));
  return key ? (told[key] as Row) : {};
}

function bracketText(told: NonNullable<Told>): string {
  const b = told["bracket"] as { lower_kelvin: number; upper_kelvin: number } | undefined;
  const mired = told["mired"] as { upper_share: number } | undefined;
  const outdoor = told["outdoor"] as { ratio: number; base: number } | undefined;
  const parts = [`slot ${String(told["slot"])}`];
  if (b) parts.push(`between ${b.lower_kelvin} K and ${b.upper_kelvin} K`);
  if (mired) parts.push(`upper share ${mired.upper_share.toFixed(3)}`);
  if (outdoor && outdoor.base > 0) parts.push(`outdoor ${outdoor.ratio} of ${outdoor.base}`);
  parts.push(`saturation × ${String(told["saturation_ratio"])} / 16`);
  return parts.join(" · ");
}

interface Ring {
  name: string;
  values: number[] | null;
  color: "quiet" | "target" | "b";
  dash: number[];
}

function drawHue(picture: Picture, name: string, now: number[], others: Ring[]): void {
  picture.draw(
    `Hue.PH${name === "A" ? "" : ", " + name}: entries around the ring, 128 on the circle`,
    (g, w, hgt, c) => {
      const x = w / 2;
      const y = hgt / 2;
      const unit = hgt / 2 - 14;
      const ring = (values: number[], color: string, dash: number[], width: number): void => {
        g.strokeStyle = color;
        g.setLineDash(dash);
        g.lineWidth = width;
        g.beginPath();
        values.forEach((value, i) => {
          const angle = (2 * Math.PI * i) / values.length - Math.PI / 2;
          const radius = unit * (0.7 + (0.3 * (value - 128)) / 32);
          g.lineTo(x + radius * Math.cos(angle), y + radius * Math.sin(angle));
        });
        if (values.every(Number.isFinite)) g.closePath();
        g.stroke();
        g.setLineDash([]);
      };
      g.strokeStyle = c.rule;
      g.beginPath();
      g.arc(x, y, 0.7 * unit, 0, 7);
      g.stroke();
      g.fillStyle = c.ink2;
      g.textAlign = "center";
      g.textBaseline = "middle";
      for (let i = 0; i < now.length; i += 5) {
        const angle = (2 * Math.PI * i) / now.length - Math.PI / 2;
        g.fillText(`${i}: ${now[i]}`, x + (unit + 4) * Math.cos(angle) * 1.06, y + (unit + 2) * Math.sin(angle));
      }
      for (const { values, color, dash } of others) if (values) ring(values, c[color], dash, 1);
      ring(now, c.a, [], 1.5);
    },
    () => {
      const rings = others.filter(({ values }) => values !== null);
      return [
        ["entry", name, ...rings.map(({ name }) => name)].join(","),
        ...now.map((v, i) => [i, v, ...rings.map(({ values }) => values![i]).map((each) => (Number.isFinite(each) ? each : ""))].join(",")),
      ];
    },
  );
}

function drawGains(picture: Picture, note: string, rows: Row[]): void {
  const levels = [0, 64, 128, 192, 256];
  picture.draw(
    `Saturation gain by luma (down) and hue (across)${note}: pale is less, dark is more`,
    (g, w, hgt, c: Colors) => {
      const box = { left: 44, top: 8, right: w - 10, bottom: hgt - 22 };
      const s = axes(g, c, box, { x: [-0.5, curves - 0.5], y: [-0.5, 4.5] }, { x: "", y: "" });
      const all = rows.flatMap((row) => row.written ?? []);
      const low = Math.min(...all);
      const high = Math.max(...all);
      rows.forEach((row, level) =>
        (row.written ?? []).forEach((value, i) => {
          g.globalAlpha = high === low ? 0.3 : 0.08 + (0.92 * (value - low)) / (high - low);
          g.fillStyle = c.a;
          g.fillRect(s.x(i - 0.5), s.y(level + 0.5), s.x(i + 0.5) - s.x(i - 0.5) - 0.5, s.y(level - 0.5) - s.y(level + 0.5) - 0.5);
        }),
      );
      g.globalAlpha = 1;
    },
    () => ["luma,entry,gain", ...rows.flatMap((row, level) => (row.written ?? []).map((v, i) => `${levels[level]},${i},${v}`))],
  );
}

function table(caption: string, told: NonNullable<Told>, starts: string[]): HTMLElement {
  const keys = Object.keys(told).filter((key) => starts.some((start) => key.startsWith(start)));
  return h(
    "details",
    { open: starts[0] === "Global." },
    h("summary", {}, caption),
    h(
      "table",
      {},
      h("thead", {}, h("tr", {}, ...["field", "lower CT", "upper CT", "target", "programmed"].map((t) => h("th", { scope: "col" }, t)))),
      h(
        "tbody",
        {},
        ...keys.map((key) => {
          const row = told[key] as Row;
          const text = (values?: number[]): string => (values ?? []).join(" ");
          return h("tr", {}, h("th", { scope: "row" }, key), ...[row.lower, row.upper, row.target, row.written].map((v) => h("td", {}, text(v))));
        }),
      ),
    ),
  );
}
