// Time series and curves: uPlot in the page's colours, with cursors that move together and a way to
// save every plot.
import uPlot from "uplot";
import { button, download, h } from "../dom";
import { drawAll } from "./schedule";
import { colors } from "./theme";
import { factorOf, type Zoom } from "./zoom";

export interface Line {
  label: string;
  values: ArrayLike<number | null>; // NaN: a gap
  color: "a" | "b" | "target" | "quiet" | "ink";
  steps?: boolean;
  dots?: boolean;
  dash?: number[];
}

export interface PlotOptions {
  name: string; // of saved files
  xLabel: string;
  yLabel: string;
  height: number;
  fromZero?: boolean; // the scale of y
  group?: string; // plots of a group share the cursor
  choose?: (x: number) => void; // a click on the plot
  bands?: (u: uPlot) => void; // drawn below the lines
  zoom?: (from: number, to: number) => void; // a drag across the plot
  turn?: (factor: number, x: number) => void; // the wheel with Ctrl, or two fingers
}

const linear = uPlot.paths.linear!();
const stepped = uPlot.paths.stepped!({ align: 1 });
/** Steps while there is room to see them: more frames than pixels are a line. */
const steps: uPlot.Series.PathBuilder = (u, line, from, to) =>
  (to - from > u.bbox.width / devicePixelRatio ? linear : stepped)(u, line, from, to);
const grouped = new Intl.NumberFormat();

/** In a table; nothing where nothing was measured. */
const shown = (value: number | null | undefined): string => (value === null || value === undefined || Number.isNaN(value) ? "" : String(value));

/** Over a gap the last value goes on, which keeps numbers packed; and where gaps are: from the last frame before to the first after. */
function fill(values: ArrayLike<number | null>): { values: ArrayLike<number | null>; gaps: [number, number][] } {
  const gaps: [number, number][] = [];
  let whole: Float32Array | null = null;
  let from = -1;
  for (let i = 0; i < values.length; ++i) {
    const isGap = Number.isNaN(values[i]);
    if (isGap && from < 0) from = i;
    if (isGap) {
      whole ??= Float32Array.from(values as ArrayLike<number>);
      whole[i] = i > 0 ? whole[i - 1]! : 0;
    } else if (from >= 0) {
      gaps.push([Math.max(0, from - 1), i]);
      from = -1;
    }
  }
  if (from >= 0) gaps.push([Math.max(0, from - 1), values.length - 1]);
  return { values: whole ?? values, gaps };
}

/** Half the width of the largest x, whose label may stand at the right end. */
function lastLabelRoom(x: ArrayLike<number>): number {
  const digit = 7;
  return 4 + (digit * grouped.format(x[x.length - 1] ?? 0).length) / 2;
}

/** A plot that is redrawn with new lines, and keeps its place in the page. */
export class Plot {
  readonly element: HTMLElement;
  private readonly canvas = h("div", { class: "plot-canvas" });
  private readonly title = h("span", { class: "plot-label" });
  private plot: uPlot | null = null;
  private x: ArrayLike<number> = [];
  private lines: Line[] = [];
  private gaps: [number, number][][] = [];
  private readonly upright = h("div", { class: "upright", hidden: true });
  private marked: number | null = null;
  private part: Zoom = null;
  private top = Infinity;
  private dragged = false;

  constructor(private readonly options: PlotOptions) {
    this.element = h(
      "figure",
      { class: "plot" },
      h(
        "figcaption",
        {},
        this.title,
        h(
          "span",
          { class: "tools" },
          button("PNG", () => void this.savePng(), `Save ${options.name} as PNG`),
          button("CSV", () => this.saveCsv(), `Save ${options.name} as CSV`),
        ),
      ),
      this.canvas,
    );
    new ResizeObserver(() => this.resize()).observe(this.canvas);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.rebuild());
    document.addEventListener("themechange", () => this.rebuild());
  }

  /** What lies above `top` does not stretch the scale while anything else is in sight. */
  draw(x: ArrayLike<number>, lines: Line[], label: string, top = Infinity): void {
    this.title.textContent = label;
    this.top = top;
    const same =
      this.plot !== null &&
      lines.length === this.lines.length &&
      lines.every((line, i) => line.label === this.lines[i]!.label && line.color === this.lines[i]!.color);
    this.x = x;
    this.lines = lines;
    if (same) this.plot!.setData(this.data());
    else this.rebuild();
  }

  /** Shows this part of x. */
  show(part: Zoom): void {
    if (part === this.part) return;
    this.part = part;
    const [min, max] = part ?? [this.x[0]!, this.x[this.x.length - 1]!];
    this.plot?.setScale("x", { min, max });
  }

  /** An upright line at this x, above the plot. */
  mark(x: number | null): void {
    this.marked = x;
    const at = this.plot && x !== null ? this.plot.valToPos(x, "x") : NaN;
    const width = (this.plot?.bbox.width ?? 0) / devicePixelRatio;
    this.upright.hidden = !(at >= 0 && at <= width);
    this.upright.style.transform = `translateX(${at}px)`;
  }

  private data(): uPlot.AlignedData {
    const filled = this.lines.map((line) => fill(line.values));
    this.gaps = filled.map((line) => line.gaps);
    return [this.x, ...filled.map((line) => line.values)] as unknown as uPlot.AlignedData;
  }

  /** In pixels of the canvas, as uPlot wants them. */
  private gapsInPixels(u: uPlot, line: number): [number, number][] {
    return (this.gaps[line] ?? []).map(([from, to]) => [u.valToPos(this.x[from]!, "x", true), u.valToPos(this.x[to]!, "x", true)]);
  }

  private rebuild(): void {
    this.plot?.destroy();
    this.plot = null;
    if (this.lines.length === 0 || this.canvas.clientWidth === 0) return;
    const c = colors();
    const axis = { stroke: c.ink2, grid: { stroke: c.rule, width: 1 }, ticks: { stroke: c.rule, width: 1 }, font: c.font };
    const { group, choose, zoom, turn } = this.options;
    this.plot = new uPlot(
      {
        width: this.canvas.clientWidth,
        height: this.options.height,
        legend: { show: false },
        scales: {
          x: { time: false, range: (_, min, max) => (this.part ? [this.part[0], this.part[1]] : [min, max]) },
          ...(this.options.fromZero ? { y: { range: (u: uPlot, _: number, max: number) => [0, this.highest(u, max)] } } : {}),
        },
        padding: [6, () => lastLabelRoom(this.x), 0, 0],
        cursor: {
          drag: { x: zoom !== undefined, y: false, setScale: false },
          bind: { dblclick: () => null },
          points: { size: 5 },
          // The range is shared through the state, not by what another plot's cursor selects.
          ...(group ? { sync: { key: group, setSeries: false, filters: { pub: (type: string) => type === "mousemove" || type === "mouseleave" } } } : {}),
        },
        axes: [
          { ...axis, label: this.options.xLabel, labelFont: c.font, labelSize: 16, size: 28 },
          { ...axis, label: this.options.yLabel, labelFont: c.font, labelSize: 16, size: 46, space: 16 },
        ],
        series: [
          {},
          ...this.lines.map((line, at) => ({
            label: line.label,
            stroke: c[line.color],
            width: line.color === "target" || line.color === "quiet" ? 1 : 1.5,
            ...(line.dash ? { dash: line.dash } : line.color === "target" ? { dash: [4, 3] } : {}),
            ...(line.steps ? { paths: steps } : {}),
            gaps: (plot: uPlot, _line: number, _from: number, _to: number, nulls: [number, number][]) => [...nulls, ...this.gapsInPixels(plot, at)],
            points: { show: line.dots ?? false, size: 5, fill: c[line.color] },
          })),
        ],
        hooks: {
          drawAxes: [(u: uPlot) => this.options.bands?.(u)],
          draw: [() => this.mark(this.marked)],
          setSelect: [(u: uPlot) => this.choosePart(u)],
        },
      },
      this.data(),
      this.canvas,
    );
    this.plot.over.append(this.upright);
    if (choose) {
      this.plot.over.addEventListener("click", () => {
        if (this.dragged) return;
        const at = this.plot?.cursor.idx;
        if (at !== null && at !== undefined) choose(this.x[at]!);
      });
    }
    this.plot.over.addEventListener("pointerdown", () => (this.dragged = false));
    if (turn) {
      this.plot.over.addEventListener(
        "wheel",
        (event) => {
          if (!event.ctrlKey || !this.plot) return;
          event.preventDefault();
          turn(factorOf(event), this.plot.posToVal(event.offsetX, "x"));
        },
        { passive: false },
      );
    }
    this.plot.over.querySelectorAll("*").forEach((each) => each.setAttribute("aria-hidden", "true"));
    this.canvas.querySelector("canvas")?.setAttribute("role", "img");
    this.canvas
      .querySelector("canvas")
      ?.setAttribute("aria-label", `${this.options.name}: ${this.options.yLabel} over ${this.options.xLabel}`);
  }

  private choosePart(u: uPlot): void {
    const { left, width } = u.select;
    if (width < 3) return;
    this.dragged = true;
    const [from, to] = [u.posToVal(left, "x"), u.posToVal(left + width, "x")];
    u.setSelect({ left: 0, top: 0, width: 0, height: 0 }, false);
    this.options.zoom?.(from, to);
  }

  private highest(u: uPlot, max: number): number {
    const beyond = (u.scales["x"]?.min ?? 0) <= (this.x[0] ?? 0) && max > this.top;
    return 1.05 * Math.max(beyond ? this.top : max, 0.1);
  }

  private resize(): void {
    if (!this.plot) this.rebuild();
    else if (this.canvas.clientWidth > 0) {
      this.plot.setSize({ width: this.canvas.clientWidth, height: this.options.height });
    }
  }

  private async savePng(): Promise<void> {
    drawAll(); // saved is what is chosen now
    await new Promise((drawn) => setTimeout(drawn));
    this.canvas.querySelector("canvas")?.toBlob((blob) => {
      if (blob) download(this.options.name + ".png", blob, "image/png");
    });
  }

  private saveCsv(): void {
    drawAll();
    const rows = [[this.options.xLabel, ...this.lines.map((line) => line.label)].join(",")];
    for (let i = 0; i < this.x.length; ++i) {
      rows.push([this.x[i], ...this.lines.map((line) => shown(line.values[i]))].join(","));
    }
    download(this.options.name + ".csv", rows.join("\n") + "\n", "text/csv");
  }
}
