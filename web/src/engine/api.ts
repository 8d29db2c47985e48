// The engine as the page sees it: one worker a tuning, holding library and workbench as WebAssembly.
// Every number that the page shows comes from here.

/** A finding of `check`, in its own words. */
export interface Finding {
  severity: "error" | "warning";
  code: string;
  file: string;
  line: number; // from 1; 0: not known
  path: string; // "ccm.rows.normal.0.gain"; "" for the whole
  message: string;
  effect: string;
  suggestion: string;
}

/** A file that cannot be used; what was loaded before stays. */
export class EngineError extends Error {
  constructor(
    message: string,
    readonly findings: Finding[] = [],
  ) {
    super(message);
  }
}

/** Asked of an engine that was replaced meanwhile: nobody waits for the answer. */
export class EngineClosed extends Error {}

export interface NamedBytes {
  name: string;
  bytes: Uint8Array;
}

export interface TuningInfo {
  name: string;
  hasCcm: boolean;
  hasColor: boolean;
  ctGrid: number[]; // kelvin
  codecOne: number; // a coefficient's 1.0, usually 512
  fullGain: boolean; // the matrix follows the full gain
  colorNames: string[]; // "Global.B", "Luma.PY[3]", ...
  findings: Finding[];
}

/** One frame of light: the columns of a frame log, in their order. */
export const frameColumns = [
  "lv", // tenths of an EV
  "cct", // kelvin
  "full_r", // 512 = 1.0, as the next five
  "full_g",
  "full_b",
  "awb_r",
  "awb_g",
  "awb_b",
  "flash",
  "scene",
  "profile",
  "capture",
] as const;
export type FrameColumn = (typeof frameColumns)[number];
export type Frame = Record<FrameColumn, number>;

export interface FrameLog {
  name: string;
  first: number; // number of its first frame; above 1 where older ones of a live log are left out
  count: number;
  columns: Record<FrameColumn, Float64Array>;
  findings: Finding[];
}

/** Register values of one frame: c0..c8, and every colour field in the order of colorNames. */
export interface Values {
  matrix: Int32Array;
  color: Int32Array;
}

/** What a light gives after power-on: at once without smoothing, and held until nothing moves. */
export interface LightAnswer {
  target: Values;
  resting: Values;
  frames: { ccm: number; color: number; ccmStill: boolean; colorStill: boolean };
}

export type At = { frame: number } | { light: Frame };

export interface TunedPoint {
  index: number;
  kelvin: number; // 0: not known
  gain: [number, number, number];
  matrix: number[];
}
export interface GainPlane {
  method: number; // 1 polynomial, 2 blend
  count: number; // CTs
  rows: { name: string; points: TunedPoint[] }[];
}

/** coefficients[c][lvIndex * cct.length + cctIndex]; slope: largest change of a patch to a neighbour, CIEDE2000. */
export interface MatrixGrid {
  cct: number[];
  lv: number[];
  coefficients: Int32Array[];
  slope: Float32Array;
}

/** Two lights next to each other, and how differently the chart looks through their matrices, in CIEDE2000. */
export interface SteepPlace {
  mean: number;
  worst: number;
  worst_patch: string;
  seen: boolean;
  jump: boolean;
  beside: number; // 0: on the tuned gains
  from: { cct: number; gain: [number, number, number]; lv: number };
  to: { cct: number; gain: [number, number, number]; lv: number };
}
export interface Steepness {
  seen_from: { mean: number; worst: number };
  rows: Record<string, { on_locus: SteepPlace | null; beside: SteepPlace | null }>; // by LV row
  over_lv: SteepPlace | null;
}

export type Lab = [number, number, number]; // L*, a*, b* under D65
export interface Patches {
  // Of a frame: the matrix at rest and the frame's; of a light: what it asks for and where it rests.
  patches: { name: string; reference: Lab; shown: Lab; difference: number }[]; // CIEDE2000
  mean: number;
  largest: number;
  held: boolean; // of a frame: against rest in the light held; else, while the light moves, in the frame's own
}

/** What a viewer sees of each frame of the log, in CIEDE2000; NaN: not measured. */
export interface Visible {
  seenFrom: { mean: number; worst: number };
  step: { mean: Float32Array; worst: Float32Array }; // against the frame before
  rest: { mean: Float32Array; worst: Float32Array }; // against where the camera rests in that light
}
/** The same of one patch. */
export interface PatchOverLog {
  patch: number;
  step: Float32Array;
  rest: Float32Array;
}

/** Frames of a live log, run behind those before them: columns of the fields, and the newest frame. */
export interface Appended {
  done: number; // frames so far, with those that were left out
  now: Values;
  before: Values;
  target: Values;
  actual: Int32Array[];
  asked: Int32Array[];
  visible: Visible; // of the frames appended
  patches: Patches | null;
  explanation: Json;
}

export type Weights = [number, number, number];
/** What one asks of the smoothing: frames, and CIEDE2000 of the patch that shows it most. */
export interface Wish {
  settle: number;
  step: number;
  at_rest: number;
}
/** Weights of the matrix average and what they reach over the log; null: nothing to measure. */
export interface WeightsTried {
  weights: Weights;
  settle: number | null;
  step: number | null;
  at_rest: number | null;
  flicker: number | null;
}
export interface Smoothing {
  wish: Wish & { flicker: number };
  met: boolean;
  tried: number;
  before?: WeightsTried; // these four where the tuning has matrices
  chosen?: WeightsTried;
  binds?: string;
  front?: WeightsTried[];
  color_steps: Record<string, { size: number; settle: number | null } | null>;
}
/** A step of the colour engine: its size, and in how many frames the registers settle with it. */
export interface StepTried {
  all: number;
  size: number;
  settle: number | null;
  neverRests: boolean;
}

export interface FieldDifference {
  field: string;
  a: number | string;
  b: number | string;
}

export type Json = null | boolean | number | string | Json[] | { [key: string]: Json };
export type Progress = (done: number, total: number) => void;
