import { Plot, type Line, type PlotOptions } from "../draw/plot";
import type { Side, SideName, State } from "../store";
import { startEnds } from "./summary";

type Kind = "rest" | "step";
const told: Record<Kind, string> = {
  rest: "CIEDE2000 from where the camera rests in the light held",
  step: "CIEDE2000 from the frame before",
};

/** What a viewer sees of each frame; the start, which differs most, sets no scale. */
export function visibleOverTime(options: Omit<PlotOptions, "name" | "height">): { plots: Plot[]; show: (state: State, x: ArrayLike<number>) => void } {
  const kinds = ["rest", "step"] as const;
  const plots = kinds.map((kind) => new Plot({ ...options, name: "visible-" + kind, height: 120, fromZero: true }));
  const show = (state: State, x: ArrayLike<number>): void => {
    kinds.forEach((kind, i) => {
      const plot = plots[i]!;
      const lines = (["a", "b"] as const).flatMap((name) => linesOf(state, name, kind));
      plot.element.hidden = lines.length === 0;
      if (lines.length === 0) return;
      const top = Math.max(afterStart(state.a, kind), afterStart(state.b, kind));
      const start = Math.max(atStart(state.a, kind), atStart(state.b, kind));
      const named = patchName(state);
      plot.draw(
        x,
        lines,
        `${told[kind]}: mean, worst patch thin${named ? `, ${named} in black` : ""}` +
          (start > top ? ` · at the start up to ${start.toFixed(1)}` : ""),
        top,
      );
    });
  };
  return { plots, show };
}

function linesOf(state: State, name: SideName, kind: Kind): Line[] {
  const side = state[name];
  if (!side?.visible) return [];
  const letter = name.toUpperCase();
  const lines: Line[] = [{ label: `${letter} mean`, values: side.visible[kind].mean, color: name }];
  if (name === "a" || !state.a?.visible) lines.push({ label: `${letter} worst`, values: side.visible[kind].worst, color: "target" });
  const chosen = side.patchOverLog;
  if (chosen && chosen.patch === state.patch) {
    lines.push({ label: `${letter} ${patchName(state) ?? "patch"}`, values: chosen[kind], color: name === "a" ? "ink" : "quiet" });
  }
  return lines;
}

function patchName({ a, patch }: State): string | undefined {
  return patch === null ? undefined : a?.selected?.patches?.patches[patch]?.name;
}

/** The largest of what is measured, of frames `from` to `to`, from 0. */
function most(values: Float32Array, from: number, to: number): number {
  let found = 0;
  for (let i = from; i < Math.min(to, values.length); ++i) if (values[i]! > found) found = values[i]!;
  return found;
}

function afterStart(side: Side | null, kind: Kind): number {
  return side?.visible ? most(side.visible[kind].worst, startEnds(side), Infinity) : 0;
}

function atStart(side: Side | null, kind: Kind): number {
  return side?.visible ? most(side.visible[kind].worst, 0, startEnds(side)) : 0;
}
