import { button, fill, h } from "../dom";
import { axes, dot, line, Picture, type Scale } from "../draw/canvas";
import { whenDue } from "../draw/schedule";
import type { Smoothing, WeightsTried, Wish } from "../engine/api";
import type { State } from "../store";
import { panel, type MakePanel } from "./panel";

const nearEnough = 24; // pixels from a point

const wishes: { key: keyof Wish; label: string; unit: string; least: number; most: number; step: number }[] = [
  { key: "settle", label: "Settled within", unit: "frames", least: 1, most: 100000, step: 1 },
  { key: "step", label: "Step at most", unit: "CIEDE2000", least: 0, most: 200, step: 0.1 },
  { key: "at_rest", label: "Off at rest at most", unit: "CIEDE2000", least: 0, most: 200, step: 0.1 },
];
const digits = (value: number | null, count: number): string => (value === null ? "–" : value.toFixed(count));
const same = (a: readonly number[], b: readonly number[] | null | undefined): boolean => String(a) === String(b);

/** Settling against the largest step, over the log, for every choice of the average's weights. */
export const smoothingPanel: MakePanel = (session) => {
  const { store } = session;
  const inputs = wishes.map(({ key, label, unit, least, most, step }) => {
    const input = h("input", { type: "number", min: least, max: most, step, value: store.state.smoothing.wish[key], "aria-label": `${label}, ${unit}` });
    return { key, input, element: h("label", { class: "choice" }, label, input, unit) };
  });
  const find = button("Find", () => {
    if (!inputs.every(({ input }) => input.reportValidity())) return;
    const wish = { ...store.state.smoothing.wish };
    for (const { key, input } of inputs) wish[key] = Number(input.value);
    void session.findSmoothing(wish);
  });
  const cancel = button("Cancel", () => session.cancelSmoothing(), "Cancel the search");
  const progress = h("progress", { max: 1, value: 0, "aria-label": "Choices tried" });
  const told = h("p", { role: "status" });
  const picture = new Picture("smoothing-front", 220, "Largest step over frames until settled. The table below holds the same points.");
  const table = h("div", { class: "scroll", tabindex: 0, role: "region", "aria-label": "Weights that no others beat" });
  const steps = h("div", { class: "row" });
  let scale: Scale | null = null;

  const shownPoints = ({ before, front = [] }: Smoothing): WeightsTried[] =>
    (before ? [...front, before] : front).filter(({ settle, step }) => settle !== null && step !== null);
  picture.canvas.addEventListener("click", (event) => {
    const { answer } = store.state.smoothing;
    if (!answer || !scale) return;
    const s = scale;
    const away = (each: WeightsTried): number => Math.hypot(s.x(each.settle!) - event.offsetX, s.y(each.step!) - event.offsetY);
    const nearest = shownPoints(answer).sort((a, b) => away(a) - away(b))[0];
    if (nearest && away(nearest) <= nearEnough) void session.useSmoothing(nearest.weights, []);
  });

  const drawFront = (answer: Smoothing, weights: readonly number[] | null): void => {
    const points = shownPoints(answer);
    picture.element.hidden = points.length === 0;
    if (points.length === 0) return;
    const { wish, before, chosen } = answer;
    const mostFrames = 1.05 * Math.max(wish.settle, ...points.map(({ settle }) => settle!));
    const mostStep = 1.08 * Math.max(wish.step, ...points.map(({ step }) => step!));
    picture.draw(
      "largest step, CIEDE2000, over frames until settled; dashes: the wish. A click loads the weights of a point",
      (g, w, height, c) => {
        const box = { left: 44, top: 10, right: w - 10, bottom: height - 22 };
        const s = (scale = axes(g, c, box, { x: [0, mostFrames], y: [0, mostStep] }, { x: "", y: "" }));
        g.strokeStyle = c.target;
        g.setLineDash([4, 3]);
        line(g, s.x(wish.settle), box.top, s.x(wish.settle), box.bottom);
        line(g, box.left, s.y(wish.step), box.right, s.y(wish.step));
        g.setLineDash([]);
        g.textBaseline = "bottom";
        for (const each of points) {
          const at = [s.x(each.settle!), s.y(each.step!)] as const;
          const isBefore = each === before;
          g.fillStyle = g.strokeStyle = isBefore ? c.b : c.a;
          dot(g, ...at, 3);
          if (same(each.weights, weights)) dot(g, ...at, 7, false);
          const label = isBefore ? "as it was" : same(each.weights, chosen?.weights) ? each.weights.join(", ") : "";
          const room = at[0] + 8 + g.measureText(label).width < box.right;
          g.textAlign = room ? "left" : "right";
          g.fillText(label, at[0] + (room ? 8 : -8), Math.max(box.top + 12, at[1] - 2));
        }
      },
      () => [
        "weights,frames,step,at_rest,flicker",
        ...points.map((each) => [each.weights.join(" "), each.settle, each.step, each.at_rest, each.flicker].join(",")),
      ],
    );
  };

  const row = (name: string, each: WeightsTried, loaded: readonly number[] | null): HTMLElement =>
    h(
      "tr",
      { class: same(each.weights, loaded) ? "chosen" : undefined },
      h("th", { scope: "row" }, name),
      h("td", {}, each.weights.join(", ")),
      h("td", {}, digits(each.settle, 0)),
      ...[each.step, each.at_rest, each.flicker].map((value) => h("td", {}, digits(value, 2))),
      h("td", {}, same(each.weights, loaded) ? "in use" : button("Use", () => void session.useSmoothing(each.weights, []), `Use weights ${each.weights.join(", ")}`)),
    );

  const showAnswer = (answer: Smoothing | null, loaded: readonly number[] | null): void => {
    for (const part of [picture.element, table, steps]) part.hidden = answer === null;
    if (!answer) return;
    const { chosen, before, front = [] } = answer;
    table.hidden = !chosen;
    if (chosen) {
      drawFront(answer, loaded);
      fill(
        table,
        h(
          "table",
          {},
          h("thead", {}, h("tr", {}, ...["", "weights", "frames", "step", "at rest", "flicker", ""].map((text) => h("th", { scope: "col" }, text)))),
          h("tbody", {}, row(answer.met ? "chosen" : "nearest", chosen, loaded), ...(before ? [row("as it was", before, loaded)] : []), ...front.filter((each) => !same(each.weights, chosen.weights)).map((each) => row("", each, loaded))),
        ),
      );
    }
    const found = Object.entries(answer.color_steps).flatMap(([field, step]) => (step ? [`${field} ${step.size}`] : []));
    const sizes = Object.values(answer.color_steps).map((step) => step?.size ?? null);
    steps.hidden = found.length === 0;
    fill(
      steps,
      h("span", {}, `Colour engine, smallest steps that settle in time: ${found.join(", ")}`),
      button("Use these steps", () => void session.useSmoothing(null, sizes)),
      chosen ? button("Use weights and steps", () => void session.useSmoothing(chosen.weights, sizes)) : null,
    );
  };

  const show = (state: State): void => {
    const { running, answer, loaded } = state.smoothing;
    element.hidden = !state.log || state.live !== null || !state.a;
    find.hidden = running !== null;
    cancel.hidden = progress.hidden = running === null;
    if (running) [progress.max, progress.value] = [running.total, running.done];
    const words = running ? "" : answer ? answerText(answer) : "";
    if (told.textContent !== words) told.textContent = words;
    showAnswer(answer, loaded ?? answer?.before?.weights ?? null);
  };
  const element = panel(
    "smoothing",
    "Smoothing",
    "Every choice of the matrix average's weights up to 8, run over this log by the library; CIEDE2000 of the patch that shows it most.",
    h("div", { class: "row" }, ...inputs.map((each) => each.element), find, cancel, progress),
    told,
    picture.element,
    table,
    steps,
  );
  const again = whenDue(element, () => show(store.state));
  store.watch(["smoothing", "log", "live", "a"], (state, before) => {
    if (state.smoothing !== before.smoothing || !state.log !== !before.log || !state.live !== !before.live || !state.a !== !before.a) again();
  });
  return { element };
};

function answerText({ met, chosen, binds, tried }: Smoothing): string {
  if (!chosen) return "The tuning has no matrices; of the colour engine's steps:";
  const what = `${tried} weights tried; `;
  if (binds === "nothing") return what + "nothing binds: the log asks for no smoothing.";
  return what + (met ? `the wish is met, and what binds is ${binds}.` : `nothing meets the wish; what is in the way is ${binds}.`);
}
