import {
  EngineClosed,
  EngineError,
  frameColumns,
  type Appended,
  type At,
  type FieldDifference,
  type Finding,
  type Frame,
  type FrameColumn,
  type FrameLog,
  type GainPlane,
  type Json,
  type LightAnswer,
  type MatrixGrid,
  type NamedBytes,
  type Patches,
  type PatchOverLog,
  type Progress,
  type Smoothing,
  type Steepness,
  type StepTried,
  type TuningInfo,
  type Values,
  type Visible,
  type Weights,
  type Wish,
} from "./api";
import type { Request, Response } from "./protocol";

const framesInChunk = 8192;

function joined(files: NamedBytes[]): { args: Record<string, unknown>; bytes: Uint8Array } {
  const bytes = new Uint8Array(files.reduce((sum, file) => sum + file.bytes.length, 0));
  let at = 0;
  for (const file of files) {
    bytes.set(file.bytes, at);
    at += file.bytes.length;
  }
  return {
    args: { files: files.map((file) => ({ name: file.name, size: file.bytes.length })) },
    bytes,
  };
}

const inOrder = (frame: Frame): number[] => frameColumns.map((name) => frame[name]);
const where = (at: At): Record<string, unknown> =>
  "frame" in at ? { frame: at.frame } : { light: inOrder(at.light) };

/** One tuning and one log in a worker of their own. Frames count from 0. */
export class Engine {
  private worker: Worker | null = null;
  private readonly open = new Map<number, { done: (r: Response) => void; fail: (e: Error) => void }>();
  private next = 1;
  private runs = 0;
  private frames = 0;

  /** Workers share what was compiled once. */
  constructor(
    private readonly workerUrl: string,
    private readonly compiled: WebAssembly.Module,
  ) {}

  /** Its worker; what is sent starts it, too. */
  start(): Worker {
    if (this.worker) return this.worker;
    this.worker = new Worker(this.workerUrl);
    this.worker.onmessage = (event: MessageEvent<Response>) => {
      this.open.get(event.data.id)?.done(event.data);
      this.open.delete(event.data.id);
    };
    this.worker.postMessage({ id: 0, command: "start", args: { compiled: this.compiled } } satisfies Request);
    return this.worker;
  }

  private send(
    command: string,
    args: Record<string, unknown> = {},
    bytes?: Uint8Array,
  ): Promise<Response> {
    const id = this.next++;
    return new Promise((resolve, reject) => {
      this.open.set(id, {
        done: (response) => {
          if (response.error === undefined) resolve(response);
          else reject(new EngineError(response.error, response.findings));
        },
        fail: reject,
      });
      this.start().postMessage({ id, command, args, bytes } satisfies Request);
    });
  }

  async loadTuning(files: NamedBytes[]): Promise<TuningInfo> {
    const { args, bytes } = joined(files);
    return (await this.send("loadTuning", args, bytes)).ok as TuningInfo;
  }

  async saveTuning(form: "yaml" | "images", comments = false): Promise<NamedBytes[]> {
    const response = await this.send("saveTuning", { form, comments });
    return (response.ok as string[]).map((name, i) => ({
      name,
      bytes: new Uint8Array(response.blobs[i]!),
    }));
  }

  async loadFrames(name: string, bytes: Uint8Array): Promise<FrameLog> {
    ++this.runs;
    const response = await this.send("loadFrames", { name }, bytes);
    const ok = response.ok as { count: number; findings: Finding[] };
    const columns = {} as Record<FrameColumn, Float64Array>;
    frameColumns.forEach((column, i) => (columns[column] = new Float64Array(response.blobs[i]!)));
    this.frames = ok.count;
    return { name, first: 1, count: ok.count, findings: ok.findings, columns };
  }

  /** Of a log whose columns are known. */
  async useFrames(name: string, bytes: Uint8Array): Promise<void> {
    ++this.runs;
    const response = await this.send("loadFrames", { name, columns: false }, bytes);
    this.frames = (response.ok as { count: number }).count;
  }

  /** Keeps the columns of these names. False when cancel() or another replay came in between; the last whole run then stays. */
  async replay(names: string[], progress?: Progress): Promise<boolean> {
    const run = ++this.runs;
    for (let begin = 0; begin < Math.max(1, this.frames); begin += framesInChunk) {
      try {
        await this.send("replay", { begin, count: framesInChunk, names });
      } catch (error) {
        if (run !== this.runs) return false;
        throw error;
      }
      if (run !== this.runs) return false;
      progress?.(Math.min(this.frames, begin + framesInChunk), this.frames);
    }
    return true;
  }

  /**
   * Frames of a live log: `rows` in the order of frameColumns, one frame after the other. `begin` is the
   * number of the first one, from 0; `keep` the oldest that is still to be asked for.
   */
  async append(rows: Float64Array, names: string[], begin: number, start: boolean, keep: number): Promise<Appended> {
    const bytes = new Uint8Array(rows.buffer, rows.byteOffset, rows.byteLength);
    const { ok, blobs } = await this.send("append", { names, begin, start, keep }, bytes);
    const { done, patches, explanation, seenFrom } = ok as Pick<Appended, "done" | "patches" | "explanation"> & Pick<Visible, "seenFrom">;
    const columns = blobs.slice(6, 6 + 2 * names.length).map((blob) => new Int32Array(blob));
    return {
      done,
      patches,
      explanation,
      now: values(blobs, 0),
      before: values(blobs, 2),
      target: values(blobs, 4),
      actual: columns.slice(0, names.length),
      asked: columns.slice(names.length),
      visible: visible(seenFrom, blobs.slice(6 + 2 * names.length)),
    };
  }

  cancel(): void {
    ++this.runs;
  }

  /** c0..c8 or colour fields over the log, or what each frame alone asks for. */
  async columns(names: string[], kind: "actual" | "target"): Promise<Int32Array[]> {
    const { blobs } = await this.send("columns", { names, kind });
    return blobs.map((blob) => new Int32Array(blob));
  }

  async valuesAt(frame: number): Promise<Values> {
    return values((await this.send("values", { frame })).blobs, 0);
  }

  /** Of the last whole run. */
  async summary(): Promise<Json> {
    return (await this.send("summary")).ok as Json;
  }

  async explain(at: At): Promise<Json> {
    return (await this.send("explain", where(at))).ok as Json;
  }

  async light(frame: Frame): Promise<LightAnswer> {
    const { ok, blobs } = await this.send("light", { light: inOrder(frame) });
    return {
      target: values(blobs, 0),
      resting: values(blobs, 2),
      frames: ok as LightAnswer["frames"],
    };
  }

  /** The gain that the tuned locus has at a colour temperature. */
  async gainOf(cct: number): Promise<[number, number, number]> {
    return (await this.send("gain", { cct })).ok as [number, number, number];
  }

  async gainPlane(): Promise<GainPlane> {
    return (await this.send("plane")).ok as GainPlane;
  }

  async matrixGrid(cct: number[], lv: number[], flash: number, scene: number): Promise<MatrixGrid> {
    const { blobs } = await this.send("grid", { cct, lv, flash, scene });
    const coefficients = blobs.slice(0, 9).map((blob) => new Int32Array(blob));
    return { cct, lv, coefficients, slope: new Float32Array(blobs[9]!) };
  }

  async steepest(): Promise<Steepness> {
    return (await this.send("steepest")).ok as Steepness;
  }

  async patches(at: At): Promise<Patches> {
    return (await this.send("patches", where(at))).ok as Patches;
  }

  /** Of the last whole run. */
  async visible(): Promise<Visible> {
    const { ok, blobs } = await this.send("visible");
    return visible(ok as Visible["seenFrom"], blobs);
  }

  async patchOverLog(patch: number): Promise<PatchOverLog> {
    const { blobs } = await this.send("patchOverLog", { patch });
    const [step, rest] = blobs.map((blob) => new Float32Array(blob));
    return { patch, step: step!, rest: rest! };
  }

  /** What choices of the average's weights reach over the log, five values each; the first is the tuning as it is. */
  async tryWeights(begin: number, count: number): Promise<{ all: number; reached: Float64Array }> {
    const { ok, blobs } = await this.send("tryWeights", { begin, count });
    return { all: (ok as { all: number }).all, reached: new Float64Array(blobs[0]!) };
  }

  /** Of one of the colour engine's three steps, the size at a place of the list. */
  async tryStep(step: number, at: number): Promise<StepTried> {
    return (await this.send("tryStep", { step, at })).ok as StepTried;
  }

  async chooseSmoothing(wish: Wish, reached: Float64Array, steps: (StepTried | null)[]): Promise<Smoothing> {
    const bytes = new Uint8Array(reached.buffer, reached.byteOffset, reached.byteLength);
    return (await this.send("chooseSmoothing", { wish, steps }, bytes)).ok as Smoothing;
  }

  /** The tuning's text with these weights and steps in it; null: as they are. */
  async smoothedText(text: string, weights: Weights | null, steps: (number | null)[]): Promise<{ text: string; comments: boolean }> {
    const { ok, blobs } = await this.send("smoothedText", { weights, steps }, new TextEncoder().encode(text));
    return { text: new TextDecoder().decode(blobs[0]!), comments: (ok as { comments: boolean }).comments };
  }

  async diff(other: NamedBytes[]): Promise<FieldDifference[]> {
    const { args, bytes } = joined(other);
    return (await this.send("diff", args, bytes)).ok as FieldDifference[];
  }

  close(): void {
    ++this.runs;
    this.worker?.terminate();
    for (const each of this.open.values()) each.fail(new EngineClosed());
    this.open.clear();
  }
}

function visible(seenFrom: Visible["seenFrom"], blobs: ArrayBuffer[]): Visible {
  const [stepMean, stepWorst, restMean, restWorst] = blobs.map((blob) => new Float32Array(blob));
  return { seenFrom, step: { mean: stepMean!, worst: stepWorst! }, rest: { mean: restMean!, worst: restWorst! } };
}

function values(blobs: ArrayBuffer[], first: number): Values {
  return { matrix: new Int32Array(blobs[first]!), color: new Int32Array(blobs[first + 1]!) };
}
