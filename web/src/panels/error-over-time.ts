import { Plot, type Line, type PlotOptions } from "../draw/plot";
import type { Side, State } from "../store";
import { startEnds } from "./summary";

/** How far the chart is from rest, frame by frame; the start, which differs most, sets no scale. */
export function errorOverTime(options: Omit<PlotOptions, "name" | "height">): { plot: Plot; show: (state: State) => void } {
  const plot = new Plot({ ...options, name: "patch-error", height: 120, fromZero: true });
  const show = (state: State): void => {
    const { a, b, patch } = state;
    plot.element.hidden = !a?.errors;
    if (!a?.errors) return;
    const name = patch === null ? undefined : a.selected?.patches?.patches[patch]?.name;
    const of = (side: Side | null): Float64Array | undefined => (patch === null ? undefined : side?.errors?.patches[patch]);
    const lines: Line[] = [
      { label: "A mean", values: a.errors.mean, color: "a" },
      { label: "A largest", values: a.errors.largest, color: "target" },
    ];
    if (b?.errors) lines.push({ label: "B mean", values: b.errors.mean, color: "b" });
    const [patchA, patchB] = [of(a), of(b)];
    if (patchA) lines.push({ label: `A ${name ?? "patch"}`, values: patchA, color: "ink" });
    if (patchB) lines.push({ label: `B ${name ?? "patch"}`, values: patchB, color: "quiet" });
    const top = Math.max(afterStart(a), afterStart(b));
    const start = Math.max(...a.errors.largest);
    plot.draw(
      Array.from(a.errors.frame, (frame) => frame + 1),
      lines,
      `CIEDE2000 from rest: mean, largest in dashes${name ? `, ${name.toLowerCase()} in black` : ""}` +
        (start > top ? ` · at the start up to ${start.toFixed(1)}` : ""),
      top,
    );
  };
  return { plot, show };
}

function afterStart(side: Side | null): number {
  const end = startEnds(side);
  const values = side?.errors?.largest.filter((_, i) => side.errors!.frame[i]! + 1 > end);
  return values?.length ? Math.max(...values) : 0;
}
