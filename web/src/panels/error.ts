import { formatHex } from "culori";
import { fill, h } from "../dom";
import { axes, line, Picture } from "../draw/canvas";
import { Plot } from "../draw/plot";
import { whenDue } from "../draw/schedule";
import type { Lab, Patches } from "../engine/api";
import type { SideName, State } from "../store";
import { panel, type MakePanel } from "./panel";

const display = (lab: Lab): string => formatHex({ mode: "lab65", l: lab[0], a: lab[1], b: lab[2] });

/** The 24 patches of the usual chart through the frame's matrix, against the one at rest. */
export const errorPanel: MakePanel = (session) => {
  const { store } = session;
  const charts = h("div", { class: "charts" });
  const arrows = new Picture("patches-ab", 260, "a* and b* of the patches, from rest to this frame");
  const time = new Plot({
    name: "patch-error",
    xLabel: "frame",
    yLabel: "",
    height: 110,
    group: "time",
    choose: (at) => store.set({ follow: "log", frame: at - 1, playing: false }),
  });
  const show = (state: State): void => {
    element.hidden = !state.a?.info.hasCcm;
    fill(charts, ...(["a", "b"] as const).map((name) => chart(name, state[name]?.selected?.patches ?? null)));
    drawArrows(arrows, state);
    const a = state.a?.errors;
    const b = state.b?.errors;
    time.element.hidden = !a;
    if (!a) return;
    time.draw(
      Array.from(a.frame, (f) => f + 1),
      [
        { label: "A mean", values: a.mean, color: "a" },
        { label: "A largest", values: a.largest, color: "target" },
        ...(b ? [{ label: "B mean", values: b.mean, color: "b" } as const] : []),
      ],
      "CIEDE2000 over the log: mean, and largest in dashes",
    );
  };
  const element = panel(
    "error",
    "Colour error while it settles",
    "The matrix alone, on white-balanced linear RGB: each patch left through the matrix at rest, right through this frame's, with their CIEDE2000.",
    charts,
    arrows.element,
    time.element,
  );
  const again = whenDue(element, () => show(store.state));
  store.watch(["a", "b"], (state, before) => {
    const changed = (["a", "b"] as const).some(
      (n) => state[n]?.selected !== before[n]?.selected || state[n]?.errors !== before[n]?.errors || !state[n] !== !before[n],
    );
    if (changed) again();
  });
  return { element };
};

function chart(name: SideName, patches: Patches | null): HTMLElement | null {
  if (!patches) return null;
  return h(
    "figure",
    { class: "chart side-" + name },
    h("figcaption", {}, `${name.toUpperCase()} · mean ${patches.mean.toFixed(2)}, largest ${patches.largest.toFixed(2)}`),
    h(
      "ol",
      {},
      ...patches.patches.map((patch) => {
        const swatch = (lab: Lab): HTMLElement => {
          const part = h("span", { class: "swatch", "aria-hidden": "true" });
          part.style.background = display(lab);
          return part;
        };
        return h(
          "li",
          { title: patch.name },
          h("span", { class: "pair" }, swatch(patch.resting), swatch(patch.frame)),
          h("span", { class: "difference" }, patch.difference.toFixed(1)),
          h("span", { class: "hidden" }, patch.name),
        );
      }),
    ),
  );
}

function drawArrows(picture: Picture, state: State): void {
  const sides = (["a", "b"] as const).flatMap((name) => {
    const patches = state[name]?.selected?.patches;
    return patches ? [{ name, patches }] : [];
  });
  let most = 60;
  for (const { patches } of sides) {
    for (const p of patches.patches) {
      for (const lab of [p.resting, p.frame]) most = Math.max(most, Math.abs(lab[1]), Math.abs(lab[2]));
    }
  }
  picture.draw(
    "from rest to this frame",
    (g, w, hgt, c) => {
      const size = Math.min(w - 56, (hgt - 30) * 1.6);
      const box = { left: 44, top: 8, right: 44 + size, bottom: hgt - 22 };
      const s = axes(g, c, box, { x: [-most, most], y: [-most, most] }, { x: "a*", y: "b*" });
      for (const { name, patches } of sides) {
        for (const p of patches.patches) {
          const [x0, y0, x1, y1] = [s.x(p.resting[1]), s.y(p.resting[2]), s.x(p.frame[1]), s.y(p.frame[2])];
          g.strokeStyle = c[name];
          g.lineWidth = 1.5;
          line(g, x0, y0, x1, y1);
          g.fillStyle = display(p.resting);
          g.beginPath();
          g.arc(x0, y0, 4, 0, 7);
          g.fill();
          g.strokeStyle = c.ink2;
          g.lineWidth = 0.5;
          g.stroke();
          g.fillStyle = c[name];
          g.fillRect(x1 - 1.5, y1 - 1.5, 3, 3);
        }
      }
    },
    () => [
      "tuning,patch,L*_rest,a*_rest,b*_rest,L*_frame,a*_frame,b*_frame,ciede2000",
      ...sides.flatMap(({ name, patches }) =>
        patches.patches.map((p) => [name, `"${p.name}"`, ...p.resting, ...p.frame, p.difference].join(",")),
      ),
    ],
  );
}
