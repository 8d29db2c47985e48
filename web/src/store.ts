// The one state of the page. Panels draw it and call the actions of the session; nothing else is
// remembered anywhere.
import type {
  Finding,
  Frame,
  FrameLog,
  GainPlane,
  Json,
  LightAnswer,
  MatrixGrid,
  NamedBytes,
  Patches,
  Smoothing,
  PatchOverLog,
  Steepness,
  TuningInfo,
  Values,
  Visible,
  Weights,
  Wish,
} from "./engine/api";

import type { Zoom } from "./draw/zoom";

export type SideName = "a" | "b";

/** What one tuning makes of the selected frame or light. */
export interface Selected {
  now: Values; // registers of the frame, or at rest in the light
  target: Values;
  before: Values | null; // registers of the frame before
  rest: LightAnswer["frames"] | null; // of a free light
  explanation: Json;
  patches: Patches | null;
}

/** A tuning and what was made of it. */
export interface Side {
  info: TuningInfo;
  files: NamedBytes[];
  text: string; // as YAML
  saved: string; // the text that was opened or downloaded last
  edited: boolean; // it came from the editor
  plane: GainPlane;
  grid: MatrixGrid | null;
  steepest: Steepness | null;
  columns: ReadonlyMap<string, Int32Array>; // "c0" over the log, "target c0" what is asked for
  summary: Json;
  visible: Visible | null;
  patchOverLog: PatchOverLog | null; // of the chosen patch
  selected: Selected | null;
}

/** A log that comes as it is written. */
export interface LiveState {
  following: boolean; // the panels show the newest frame
  connected: boolean;
  ended: boolean;
  received: number; // frames
  perSecond: number | null;
  missed: number; // frames that were not sent
  verify: Json; // how phone and desk agree so far; null: not told yet
}

/** The search for the smoothing that meets a wish. */
export interface SmoothingState {
  wish: Wish;
  running: { done: number; total: number } | null;
  answer: Smoothing | null; // of the tuning and log that are there
  loaded: Weights | null; // of the answer's, into the tuning
}

export interface Fault {
  title: string;
  text: string;
}

export interface State {
  a: Side | null;
  b: Side | null;
  log: FrameLog | null;
  follow: "log" | "light";
  frame: number; // from 0
  light: Frame;
  freeGain: boolean; // dragged away from the tuned locus
  playing: boolean;
  show: "overlay" | "difference";
  zoom: Zoom;
  patch: number | null; // of the chart, over the log
  fields: readonly string[]; // rows of the time panel
  gridLv: number;
  gridCt: number;
  coefficient: number; // 0..8; 9: the change to the neighbour
  over: "ct" | "lv";
  curve: number; // saturation curve 0..19
  faults: readonly Fault[];
  editing: readonly Finding[]; // of the text in the editor
  draft: string | null; // that text, once it was edited
  busy: { text: string; done: number; total: number } | null;
  live: LiveState | null;
  smoothing: SmoothingState;
}

export const initialState: State = {
  a: null,
  b: null,
  log: null,
  follow: "light",
  frame: 0,
  light: {
    lv: 80,
    cct: 5000,
    full_r: 512,
    full_g: 512,
    full_b: 512,
    awb_r: 512,
    awb_g: 512,
    awb_b: 512,
    flash: 0,
    scene: 0,
    profile: 0,
    capture: 0,
  },
  freeGain: false,
  playing: false,
  show: "overlay",
  zoom: null,
  patch: null,
  fields: ["c0", "c4", "c8", "Global.S"],
  gridLv: 80,
  gridCt: 5000,
  coefficient: 0,
  over: "ct",
  curve: 0,
  faults: [],
  editing: [],
  draft: null,
  busy: null,
  live: null,
  smoothing: { wish: { settle: 25, step: 1.2, at_rest: 1 }, running: null, answer: null, loaded: null },
};

export class Store {
  private current = initialState;
  private readonly listeners: ((state: State, before: State) => void)[] = [];

  get state(): State {
    return this.current;
  }

  set(change: Partial<State>): void {
    const before = this.current;
    this.current = { ...before, ...change };
    for (const listener of this.listeners) listener(this.current, before);
  }

  setSide(name: SideName, change: Partial<Side>): void {
    const side = this.current[name];
    if (side) this.set({ [name]: { ...side, ...change } });
  }

  /** Called after every change; `keys`: only when one of these changed. */
  watch(keys: (keyof State)[], listener: (state: State, before: State) => void): void {
    this.listeners.push((state, before) => {
      if (keys.some((key) => state[key] !== before[key])) listener(state, before);
    });
  }
}

/** The frame that drives the panels. */
export function frameOf(state: State): Frame {
  const { log } = state;
  if (state.follow === "light" || !log) return state.light;
  const frame = {} as Frame;
  for (const name of Object.keys(state.light) as (keyof Frame)[]) {
    frame[name] = log.columns[name][state.frame] ?? 0;
  }
  return frame;
}

/** The number of the frame that is chosen, from 1. */
export const numberOf = (state: State): number => (state.log?.first ?? 1) + state.frame;

/** The part of the state that a link carries. */
export function toAddress(state: State): string {
  const { light } = state;
  const parts: Record<string, string> = {
    follow: state.follow,
    frame: String(numberOf(state)),
    light: Object.values(light).join(","),
    free: state.freeGain ? "1" : "0",
    fields: state.fields.join(","),
    zoom: state.zoom?.join(",") ?? "",
    show: state.show,
    at: `${state.gridLv},${state.gridCt},${state.coefficient},${state.over},${state.curve}`,
  };
  return new URLSearchParams(parts).toString();
}

export function fromAddress(text: string): Partial<State> {
  const parts = new URLSearchParams(text);
  const change: Partial<State> = {};
  const follow = parts.get("follow");
  if (follow === "log" || follow === "light") change.follow = follow;
  const frame = Number(parts.get("frame"));
  if (Number.isInteger(frame) && frame > 0) change.frame = frame - 1;
  const light = (parts.get("light") ?? "").split(",").map(Number);
  const names = Object.keys(initialState.light) as (keyof Frame)[];
  if (light.length === names.length && light.every(Number.isInteger)) {
    change.light = Object.fromEntries(names.map((name, i) => [name, light[i]])) as Frame;
  }
  change.freeGain = parts.get("free") === "1";
  const fields = parts.get("fields");
  if (fields) change.fields = fields.split(",").slice(0, 24);
  const [from, to] = (parts.get("zoom") ?? "").split(",").map(Number);
  if (Number.isInteger(from) && Number.isInteger(to) && 0 < from! && from! < to!) change.zoom = [from!, to!];
  const show = parts.get("show");
  if (show === "overlay" || show === "difference") change.show = show;
  const [lv, ct, coefficient, over, curve] = (parts.get("at") ?? "").split(",");
  if (curve !== undefined) {
    change.gridLv = Math.min(255, Math.max(0, Number(lv) || 0));
    change.gridCt = Math.min(20000, Math.max(1000, Number(ct) || 5000));
    change.coefficient = Math.min(9, Math.max(0, Math.trunc(Number(coefficient)) || 0));
    change.over = over === "lv" ? "lv" : "ct";
    change.curve = Math.min(19, Math.max(0, Math.trunc(Number(curve)) || 0));
  }
  return change;
}
