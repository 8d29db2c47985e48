import { button, counted, fill, h, shortened } from "../dom";
import { whenDue } from "../draw/schedule";
import type { Frame, FrameColumn } from "../engine/api";
import { frameOf, numberOf, type Side, type State } from "../store";
import { gainText, panel, signed, type MakePanel } from "./panel";

const profiles = 16;

/** The light: a frame of the log, or free; and the matrix and saturation that come of it. */
export const lightPanel: MakePanel = (session) => {
  const { store } = session;
  const slider = (name: FrameColumn, label: string, min: number, max: number, step: number, unit: string) => {
    const range = h("input", { type: "range", min, max, step, "aria-label": label, "data-light": name });
    const number = h("input", { type: "number", min, max: 4294967295, step: 1, "aria-label": `${label}, exact` });
    const set = (event: Event): void => {
      const value = Number((event.target as HTMLInputElement).value);
      if (Number.isInteger(value)) void session.setLight({ [name]: value });
    };
    range.addEventListener("input", set);
    number.addEventListener("change", set);
    return {
      element: h("div", { class: "slider" }, h("span", {}, label), range, number, h("span", { class: "unit" }, unit)),
      show: (frame: Frame) => {
        range.value = String(frame[name]);
        number.value = String(frame[name]);
      },
    };
  };
  const sliders = [
    slider("lv", "Light value", 0, 150, 1, "0.1 EV"),
    slider("cct", "Temperature", 2000, 8000, 10, "K"),
  ];
  const switches = (["flash", "scene", "capture"] as const).map((name) => {
    const box = h("input", {
      type: "checkbox",
      change: () => void session.setLight({ [name]: box.checked ? 1 : 0 }),
    });
    return { name, box, element: h("label", {}, box, name) };
  });
  const profile = h("select", {
    change: () => void session.setLight({ profile: Number(profile.value) }),
  });
  for (let i = 0; i < profiles; ++i) profile.append(h("option", { value: i }, i));
  const source = h("span", { class: "note" });
  const locus = button("Gains on the locus", () => {
    store.set({ freeGain: false });
    void session.setLight({ cct: store.state.light.cct });
  });
  const useFrame = button("Take this frame's light", () => {
    store.set({ follow: "light", light: frameOf(store.state), freeGain: true });
  });
  const gains = h("p", { class: "numbers", id: "gains" });
  const matrices = h("div", { class: "matrices" });

  const show = (state: State): void => {
    const frame = frameOf(state);
    for (const each of sliders) each.show(frame);
    for (const each of switches) each.box.checked = frame[each.name] !== 0;
    profile.value = String(frame.profile);
    const onLog = state.follow === "log" && state.log !== null;
    source.textContent = onLog
      ? `Frame ${numberOf(state)} of ${state.log!.first - 1 + state.log!.count}. Moving a control leaves the log for free light.`
      : "Free light: where the camera comes to rest from power-on when this light stays.";
    locus.hidden = onLog || !state.freeGain;
    useFrame.hidden = !onLog;
    gains.textContent =
      `AWB gain ${frame.awb_r}, ${frame.awb_g}, ${frame.awb_b}` +
      ` = ${gainText(frame.awb_r)} · ${gainText(frame.awb_g)} · ${gainText(frame.awb_b)}`;
    fill(matrices, ...(["a", "b"] as const).map((name) => matrixTable(state[name], name, state)));
  };
  const element = panel(
    "light",
    "Light and matrix",
    "",
    source,
    ...sliders.map((each) => each.element),
    h("div", { class: "row" }, ...switches.map((each) => each.element), h("label", { class: "choice" }, "profile", profile), locus, useFrame),
    gains,
    matrices,
  );
  const again = whenDue(element, () => show(store.state));
  store.watch(["frame", "light", "follow", "log", "a", "b", "freeGain", "show"], again);
  return { element };
};

function matrixTable(side: Side | null, name: "a" | "b", state: State): HTMLElement | null {
  const selected = side?.selected;
  if (!side || !selected || !side.info.hasCcm) return null;
  const { now, target, rest } = selected;
  const other = name === "b" && state.show === "difference" ? state.a?.selected?.now.matrix : undefined;
  const row = (r: number): HTMLElement => {
    const cells = [0, 1, 2].map((c) => {
      const k = 3 * r + c;
      const value = now.matrix[k]!;
      const text = other ? signed(value - other[k]!) : String(value);
      return h("td", { "data-coefficient": `${name}${k}`, title: (value / side.info.codecOne).toFixed(4) }, text);
    });
    const short = [0, 1, 2].map((c) => target.matrix[3 * r + c]! - now.matrix[3 * r + c]!);
    return h(
      "tr",
      {},
      ...cells,
      h("td", { class: "quiet" }, short.every((d) => d === 0) ? "" : short.map(signed).join("  ")),
    );
  };
  const settle = rest
    ? rest.ccmStill
      ? `at rest after ${counted(rest.ccm, "frame")}`
      : "never rests"
    : `frame ${numberOf(state)}`;
  return h(
    "table",
    { class: "matrix side-" + name },
    h(
      "caption",
      {},
      `${name.toUpperCase()} · ${shortened(side.info.name)} · ${other ? "B − A" : "1.0 = " + side.info.codecOne} · ${settle}`,
    ),
    h("thead", {}, h("tr", {}, ...["R", "G", "B"].map((t) => h("th", { scope: "col" }, t)), h("th", { scope: "col", class: "quiet" }, "to target"))),
    h("tbody", {}, row(0), row(1), row(2)),
  );
}
