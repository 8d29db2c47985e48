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

/** coefficients[c][lvIndex * cct.length + cctIndex]; slope: largest change to a neighbour. */
export interface MatrixGrid {
  cct: number[];
  lv: number[];
  coefficients: Int32Array[];
  slope: Int32Array;
}

export type Lab = [number, number, number]; // L*, a*, b* under D65
export interface Patches {
  // Of a frame: the matrix at rest and the frame's; of a light: what it asks for and where it rests.
  patches: { name: string; reference: Lab; shown: Lab; difference: number }[]; // CIEDE2000
  mean: number;
  largest: number;
}

/** Over frames of the log, in CIEDE2000. */
export interface PatchErrors {
  frame: Float64Array; // from 0
  mean: Float64Array;
  largest: Float64Array;
  patches: Float64Array[]; // each patch of the chart
}

/** Frames of a live log, run behind those before them: columns of the fields, and the newest frame. */
export interface Appended {
  done: number; // frames so far, with those that were left out
  now: Values;
  before: Values;
  target: Values;
  actual: Int32Array[];
  asked: Int32Array[];
  patches: Patches | null;
  explanation: Json;
}

export interface FieldDifference {
  field: string;
  a: number | string;
  b: number | string;
}

export type Json = null | boolean | number | string | Json[] | { [key: string]: Json };
export type Progress = (done: number, total: number) => void;
