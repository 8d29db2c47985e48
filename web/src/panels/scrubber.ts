import { button, h, onFrame } from "../dom";
import { cleared } from "../draw/canvas";
import { colors } from "../draw/theme";
import { factorOf, scaled } from "../draw/zoom";
import { numberOf, type State } from "../store";
import { landmarks, spans, visibleSteps } from "./summary";
import type { MakePanel } from "./panel";

const height = 44;
const markHeight = 9; // of a visible step
const framesPerSecond = 30;

/** The log along the whole width: light value, flash, scene and capture, and where we stand. */
export const scrubber: MakePanel = (session) => {
  const { store } = session;
  const canvas = h("canvas", { class: "strip", "aria-hidden": "true" });
  const range = h("input", { type: "range", min: 1, value: 1, step: 1, "aria-label": "Frame" });
  const place = h("output", { class: "numbers" });
  const choose = (frame: number, playing = false): void => {
    const count = store.state.log?.count ?? 0;
    store.set({ follow: "log", frame: Math.min(count - 1, Math.max(0, frame)), playing });
  };
  range.addEventListener("input", () => choose(Number(range.value) - 1));
  const step = (by: number): void => choose(store.state.frame + by);
  const next = (kind: string): void => {
    const found = landmarks(store.state, kind);
    const at = found.find((frame) => frame > store.state.frame) ?? found[0];
    if (at !== undefined) choose(at);
  };
  const play = button("Play", () => {
    const { frame, log, playing } = store.state;
    if (!log) return;
    store.set({ follow: "log", playing: !playing, frame: !playing && frame >= log.count - 1 ? 0 : frame });
  });
  let last = 0;
  const tick = (now: number): void => {
    const { playing, frame, log } = store.state;
    if (!playing || !log) return;
    const by = Math.floor(((now - last) * framesPerSecond) / 1000);
    if (by > 0) {
      last = now;
      if (frame + by >= log.count) choose(log.count - 1);
      else store.set({ frame: frame + by });
    }
    requestAnimationFrame(tick);
  };
  store.watch(["playing"], (state) => {
    play.textContent = state.playing ? "Pause" : "Play";
    if (!state.playing) return;
    last = performance.now();
    requestAnimationFrame(tick);
  });
  let width = 0; // of the strip
  const draw = onFrame(() => {
    const { log, frame, follow, zoom } = store.state;
    width ||= canvas.clientWidth;
    if (!log || width === 0) return;
    const g = cleared(canvas, width, height);
    const c = colors();
    const x = (i: number): number => (i / Math.max(1, log.count - 1)) * (width - 1);
    g.globalAlpha = 0.25;
    for (const [name, color] of [["flash", c.mark], ["scene", c.quiet], ["capture", c.b]] as const) {
      g.fillStyle = color;
      spans(log.columns[name], log.count, (from, to) => g.fillRect(x(from), 0, Math.max(1, x(to) - x(from)), height));
    }
    g.globalAlpha = 1;
    g.strokeStyle = c.ink2;
    g.beginPath();
    const lv = log.columns.lv;
    const most = lv.reduce((m, v) => Math.max(m, v), 1);
    for (let px = 0; px < width; ++px) {
      const i = Math.round((px / Math.max(1, width - 1)) * (log.count - 1));
      g.lineTo(px, height - 3 - (lv[i]! / most) * (height - 8));
    }
    g.stroke();
    g.fillStyle = c.mark;
    for (const step of visibleSteps(store.state.a)) g.fillRect(x(step) - 0.5, 0, 1, markHeight);
    if (zoom) {
      g.fillStyle = c.quiet; // what the plots below leave out
      g.globalAlpha = 0.3;
      g.fillRect(0, 0, x(zoom[0] - log.first), height);
      g.fillRect(x(zoom[1] - log.first), 0, width - x(zoom[1] - log.first), height);
      g.globalAlpha = 1;
    }
    if (follow === "log") {
      g.fillStyle = c.ink;
      g.fillRect(x(frame) - 0.75, 0, 1.5, height);
    }
  });
  const show = (state: State): void => {
    element.hidden = !state.log;
    if (!state.log) return;
    range.max = String(state.log.count);
    range.value = String(state.frame + 1);
    place.textContent = state.follow === "log" ? `frame ${numberOf(state)} / ${state.log.first - 1 + state.log.count} · LV ${state.log.columns.lv[state.frame]} · ${state.log.columns.cct[state.frame]} K` : "free light";
    draw();
  };
  new ResizeObserver(() => {
    width = canvas.clientWidth;
    draw();
  }).observe(canvas);
  document.addEventListener("themechange", draw);
  canvas.addEventListener("pointerdown", (event) => {
    const { log } = store.state;
    if (log) choose(Math.round((event.offsetX / canvas.clientWidth) * (log.count - 1)));
  });
  canvas.addEventListener(
    "wheel",
    (event) => {
      const { log, zoom } = store.state;
      if (!log) return;
      event.preventDefault();
      const at = log.first + (event.offsetX / canvas.clientWidth) * (log.count - 1);
      store.set({ zoom: scaled(zoom, log.count, factorOf(event), at, log.first) });
    },
    { passive: false },
  );
  const jumps = ["change", "flash", "clip", "visible step", "worst frame"].map((kind) => button("Next " + kind, () => next(kind)));
  jumps.at(-1)!.textContent = "Worst frame";
  const element = h(
    "section",
    { id: "scrubber", "aria-label": "Frames of the log" },
    canvas,
    range,
    h("div", { class: "row" }, play, button("◀", () => step(-1), "Frame before"), button("▶", () => step(1), "Frame after"), ...jumps, place),
  );
  store.watch(["log", "frame", "follow", "zoom"], show);
  store.watch(["a"], (state, before) => state.a?.visible !== before.a?.visible && show(state));
  show(store.state);
  return { element };
};
