// A picture of our own on a canvas: sized to its place, sharp on every screen, saved as PNG or CSV.
import { button, download, h, onFrame } from "../dom";
import { drawAll } from "./schedule";
import { colors, type Colors } from "./theme";

export class Picture {
  readonly element: HTMLElement;
  readonly canvas: HTMLCanvasElement;
  private readonly title = h("span", { class: "plot-label" });
  private paint: ((g: CanvasRenderingContext2D, w: number, h: number, c: Colors) => void) | null = null;
  private rows: () => string[] = () => [];
  private readonly again = onFrame(() => this.redraw());
  private width = 0; // of the canvas, in pixels of the style sheet

  constructor(
    private readonly name: string,
    private readonly height: number,
    label: string,
    focusable = false,
  ) {
    this.canvas = h("canvas", {
      class: "picture",
      role: focusable ? "application" : "img",
      "aria-label": label,
      ...(focusable ? { tabindex: 0 } : {}),
    });
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
          button("PNG", () => this.savePng(), `Save ${name} as PNG`),
          button("CSV", () => this.saveCsv(), `Save ${name} as CSV`),
        ),
      ),
      this.canvas,
    );
    new ResizeObserver(() => {
      this.width = this.canvas.clientWidth;
      this.again();
    }).observe(this.canvas);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", this.again);
    document.addEventListener("themechange", this.again);
  }

  /** `rows` are the lines of the CSV form. */
  draw(
    label: string,
    paint: (g: CanvasRenderingContext2D, w: number, h: number, c: Colors) => void,
    rows: () => string[],
  ): void {
    this.title.textContent = label;
    this.paint = paint;
    this.rows = rows;
    this.redraw();
  }

  private redraw(): void {
    const width = (this.width ||= this.canvas.clientWidth);
    if (!this.paint || width === 0) return;
    const g = cleared(this.canvas, width, this.height);
    const c = colors();
    g.font = c.font;
    this.paint(g, width, this.height, c);
  }

  private saveCsv(): void {
    drawAll(); // saved is what is chosen now
    download(this.name + ".csv", this.rows().join("\n") + "\n", "text/csv");
  }

  private savePng(): void {
    drawAll();
    this.canvas.toBlob((blob) => blob && download(this.name + ".png", blob, "image/png"));
  }
}

/** Empty, of this size in pixels of the style sheet, and drawn on in those. */
export function cleared(canvas: HTMLCanvasElement, width: number, height: number): CanvasRenderingContext2D {
  const scale = devicePixelRatio;
  const size = [Math.round(width * scale), Math.round(height * scale)] as const;
  const g = canvas.getContext("2d")!;
  if (canvas.width === size[0] && canvas.height === size[1]) {
    g.restore();
    g.clearRect(0, 0, ...size);
  } else {
    [canvas.width, canvas.height] = size; // new memory
  }
  g.save(); // as it was made
  g.scale(scale, scale);
  return g;
}

/** Round steps for an axis from `low` to `high`, about `count` of them. */
export function ticks(low: number, high: number, count: number): number[] {
  const raw = (high - low) / count;
  const power = 10 ** Math.floor(Math.log10(raw));
  const step = [1, 2, 5, 10].map((m) => m * power).find((s) => s >= raw)!;
  const result: number[] = [];
  for (let t = Math.ceil(low / step) * step; t <= high; t += step) result.push(t);
  return result;
}

export interface Scale {
  right: number; // the largest x
  x(v: number): number;
  y(v: number): number;
  fromX(px: number): number;
  fromY(py: number): number;
}

/** Axes with grid; a label stands beside the largest number. The scale from values to the canvas. */
export function axes(
  g: CanvasRenderingContext2D,
  c: Colors,
  box: { left: number; top: number; right: number; bottom: number },
  range: { x: [number, number]; y: [number, number] },
  labels: { x: string; y: string },
): Scale {
  const [x0, x1] = range.x;
  const [y0, y1] = range.y;
  const scale: Scale = {
    right: x1,
    x: (v) => box.left + ((v - x0) / (x1 - x0)) * (box.right - box.left),
    y: (v) => box.bottom - ((v - y0) / (y1 - y0)) * (box.bottom - box.top),
    fromX: (px) => x0 + ((px - box.left) / (box.right - box.left)) * (x1 - x0),
    fromY: (py) => y0 + ((box.bottom - py) / (box.bottom - box.top)) * (y1 - y0),
  };
  g.strokeStyle = c.rule;
  g.fillStyle = c.ink2;
  g.lineWidth = 1;
  g.textAlign = "center";
  g.textBaseline = "top";
  const labelled = (at: number[], i: number, label: string): string => `${+at[i]!.toPrecision(6)}${i === at.length - 1 && label !== "" ? " " + label : ""}`;
  const across = ticks(x0, x1, 5);
  across.forEach((t, i) => {
    const px = Math.round(scale.x(t)) + 0.5;
    line(g, px, box.top, px, box.bottom);
    const text = labelled(across, i, labels.x);
    const half = g.measureText(text).width / 2;
    g.fillText(text, Math.max(box.left + half - 6, Math.min(px, g.canvas.width / devicePixelRatio - half)), box.bottom + 3);
  });
  g.textAlign = "right";
  g.textBaseline = "middle";
  const up = ticks(y0, y1, 5);
  up.forEach((t, i) => {
    const py = Math.round(scale.y(t)) + 0.5;
    line(g, box.left, py, box.right, py);
    g.fillText(labelled(up, i, labels.y), box.left - 4, Math.max(py, 7));
  });
  return scale;
}

export function line(g: CanvasRenderingContext2D, x0: number, y0: number, x1: number, y1: number): void {
  g.beginPath();
  g.moveTo(x0, y0);
  g.lineTo(x1, y1);
  g.stroke();
}

export function dot(g: CanvasRenderingContext2D, x: number, y: number, radius: number, filled = true): void {
  g.beginPath();
  g.arc(x, y, radius, 0, 2 * Math.PI);
  if (filled) g.fill();
  else g.stroke();
}
