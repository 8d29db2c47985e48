import { formatHex } from "culori";
import { button, h } from "../dom";
import { axes, line, Picture } from "../draw/canvas";
import { whenDue } from "../draw/schedule";
import type { Lab } from "../engine/api";
import type { SideName, State } from "../store";
import { panel, type MakePanel } from "./panel";

const display = (lab: Lab): string => formatHex({ mode: "lab65", l: lab[0], a: lab[1], b: lab[2] });

/** The 24 patches of the usual chart: how far a frame is from rest, or rest from what the light asks for. */
export const errorPanel: MakePanel = (session) => {
  const { store } = session;
  const charts = (["a", "b"] as const).map((name) => chart(name, (patch) => store.set({ patch })));
  const note = h("p", { class: "note" });
  const arrows = new Picture("patches-ab", 260, "a* and b* of the patches");
  const show = (state: State): void => {
    element.hidden = !state.a?.info.hasCcm;
    note.textContent =
      "The matrix alone, on white-balanced linear RGB, in CIEDE2000. " +
      (onLog(state)
        ? state.a?.selected?.patches?.held === false
          ? "The light moves; left in each patch: where the camera would rest in this frame's light; right: this frame."
          : "Left in each patch: where the camera rests in the light held; right: this frame."
        : "Left in each patch: what the light asks for; right: where the camera comes to rest.") +
      (state.log ? " Choose a patch to see it over the log." : "");
    for (const each of charts) each.show(state);
    drawArrows(arrows, state);
  };
  const element = panel("error", "Colour error", "", note, h("div", { class: "charts" }, ...charts.map((each) => each.element)), arrows.element);
  const again = whenDue(element, () => show(store.state));
  store.watch(["a", "b", "follow", "patch"], (state, before) => {
    const changed =
      state.follow !== before.follow ||
      state.patch !== before.patch ||
      (["a", "b"] as const).some((n) => state[n]?.selected !== before[n]?.selected || !state[n] !== !before[n]);
    if (changed) again();
  });
  return { element };
};

const onLog = (state: State): boolean => state.follow === "log" && state.log !== null;

interface Chart {
  element: HTMLElement;
  show(state: State): void;
}

/** Made once: the patches of a live log change with every picture. */
function chart(name: SideName, choose: (patch: number | null) => void): Chart {
  const caption = h("figcaption");
  const list = h("ol");
  const element = h("figure", { class: "chart side-" + name }, caption, list);
  const swatch = (): HTMLElement => h("span", { class: "swatch", "aria-hidden": "true" });
  const items: { press: HTMLButtonElement; reference: HTMLElement; shown: HTMLElement; difference: HTMLElement }[] = [];
  const add = (patch: string, i: number): void => {
    const item = { press: button("", () => choose(items[i]!.press.getAttribute("aria-pressed") === "true" ? null : i)), reference: swatch(), shown: swatch(), difference: h("span", { class: "difference" }) };
    item.press.className = "pair";
    item.press.title = patch;
    item.press.append(item.reference, item.shown, h("span", { class: "hidden" }, patch));
    items.push(item);
    list.append(h("li", {}, item.press, item.difference));
  };
  const show = (state: State): void => {
    const patches = state[name]?.selected?.patches;
    element.hidden = !patches;
    if (!patches) return;
    caption.textContent = `${name.toUpperCase()} · mean ${patches.mean.toFixed(2)}, largest ${patches.largest.toFixed(2)}`;
    patches.patches.forEach((patch, i) => {
      if (i === items.length) add(patch.name, i);
      const { press, reference, shown, difference } = items[i]!;
      press.setAttribute("aria-pressed", String(state.patch === i));
      reference.style.background = display(patch.reference);
      shown.style.background = display(patch.shown);
      difference.textContent = patch.difference.toFixed(1);
    });
  };
  return { element, show };
}

function drawArrows(picture: Picture, state: State): void {
  const sides = (["a", "b"] as const).flatMap((name) => {
    const patches = state[name]?.selected?.patches;
    return patches ? [{ name, patches }] : [];
  });
  let most = 60;
  for (const { patches } of sides) {
    for (const p of patches.patches) {
      for (const lab of [p.reference, p.shown]) most = Math.max(most, Math.abs(lab[1]), Math.abs(lab[2]));
    }
  }
  picture.draw(
    onLog(state) ? "from rest to this frame" : "from what the light asks for to rest",
    (g, w, hgt, c) => {
      const size = Math.min(w - 56, (hgt - 30) * 1.6);
      const box = { left: 44, top: 8, right: 44 + size, bottom: hgt - 22 };
      const s = axes(g, c, box, { x: [-most, most], y: [-most, most] }, { x: "a*", y: "b*" });
      for (const { name, patches } of sides) {
        for (const p of patches.patches) {
          const [x0, y0, x1, y1] = [s.x(p.reference[1]), s.y(p.reference[2]), s.x(p.shown[1]), s.y(p.shown[2])];
          g.strokeStyle = c[name];
          g.lineWidth = 1.5;
          line(g, x0, y0, x1, y1);
          g.fillStyle = display(p.reference);
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
      "tuning,patch,L*_reference,a*_reference,b*_reference,L*_shown,a*_shown,b*_shown,ciede2000",
      ...sides.flatMap(({ name, patches }) =>
        patches.patches.map((p) => [name, `"${p.name}"`, ...p.reference, ...p.shown, p.difference].join(",")),
      ),
    ],
  );
}
