// Follows a live log: every frame is run, the newest is shown. Frames wait in a ring of the last hour;
// each tuning's engine appends what it does not have yet, and the panels get the next picture when they
// have drawn the last.
import { setShare, whenDrawn } from "../draw/schedule";
import { EngineClosed, frameColumns, type Appended, type FrameColumn, type FrameLog } from "../engine/api";
import type { Engine } from "../engine/engine";
import type { Session } from "../session";
import { numberOf, type LiveState, type Selected, type Side, type SideName } from "../store";
import { Feed } from "./feed";
import { Ring } from "./ring";

const mostAge = 3600_000; // ms
const mostFrames = 432_000; // an hour at 120 a second
const block = 256; // frames; the engine forgets as many at a time
const shownTime = 20_000; // ms of the log while it is followed
const fewestShown = 120; // frames
const mostAppended = 4096; // frames at a time
const summaryPause = 500; // ms
const hiddenPause = 250; // ms between pictures that nobody sees
const drawingShare = 30; // ms of a refresh
const width = frameColumns.length;
const sides = ["a", "b"] as const;
const seenKinds = [["step", "mean"], ["step", "worst"], ["rest", "mean"], ["rest", "worst"]] as const;

/** What one engine made of the log so far. */
interface LiveRun {
  fields: string[];
  next: number; // frame
  columns: Map<string, Ring<Int32Array>>; // "c0", "target c0"
  visible: Ring<Float32Array>[]; // in the order of seenKinds
  newest: Appended | null;
  summaryAt: number;
  summary: Side["summary"];
}

export function follow(session: Session, address: string): void {
  new Follower(session, address).start();
}

class Follower {
  private readonly feed: Feed;
  private columns = this.emptyColumns(0);
  private arrived = new Ring(Float64Array, 0); // ms
  private runs = new WeakMap<Engine, LiveRun>();
  private state: LiveState = { following: true, connected: false, ended: false, received: 0, perSecond: null, missed: 0, verify: null };
  private wake: (() => void) | null = null;
  private publishing = false;
  private closed = false;

  constructor(
    private readonly session: Session,
    address: string,
  ) {
    this.feed = new Feed(address, {
      frames: (rows, begin) => this.receive(rows, begin),
      missed: (to) => {
        this.tell({ missed: this.state.missed + Math.max(0, to - this.end) });
        this.restart(to);
      },
      verify: (verify) => this.tell({ verify }),
      connected: (connected) => this.tell({ connected }),
      ended: () => this.tell({ ended: true, connected: false }),
    });
  }

  start(): void {
    const { store } = this.session;
    setShare(drawingShare);
    store.set({ live: this.state });
    store.watch(["live", "frame", "follow", "fields", "zoom", "a", "b"], (state, before) => {
      if (state.live === null) {
        this.close();
        return;
      }
      if (this.publishing) return;
      if (state.live.following !== this.state.following) this.turn(state.live.following);
      // Who chooses a frame, or a part of the log, wants to look at it.
      else if (this.state.following && state.follow === "log" && (state.frame !== before.frame || state.zoom !== before.zoom)) this.turn(false);
      if (state.fields !== before.fields || state.a?.info !== before.a?.info || state.b?.info !== before.b?.info) this.wakeUp();
    });
    void this.run();
  }

  private close(): void {
    this.closed = true;
    this.feed.close();
    this.wakeUp();
  }

  private get end(): number {
    return this.arrived.end;
  }

  private emptyColumns(first: number): Record<FrameColumn, Ring<Float64Array>> {
    return Object.fromEntries(frameColumns.map((name) => [name, new Ring(Float64Array, first)])) as Record<FrameColumn, Ring<Float64Array>>;
  }

  /** What follows does not join what there is. */
  private restart(first: number): void {
    this.columns = this.emptyColumns(first);
    this.arrived = new Ring(Float64Array, first);
    this.runs = new WeakMap();
  }

  private receive(rows: Float64Array, begin: number): void {
    const known = Math.max(0, this.end - begin);
    const count = rows.length / width - known;
    if (count <= 0) return;
    if (begin > this.end) this.restart(begin);
    const now = performance.now();
    frameColumns.forEach((name, k) =>
      this.columns[name].append(Float64Array.from({ length: count }, (_, i) => rows[(known + i) * width + k]!)),
    );
    this.arrived.append(new Float64Array(count).fill(now));
    this.state = { ...this.state, received: this.state.received + count };
    this.forget(now);
    this.wakeUp();
  }

  private forget(now: number): void {
    const { first } = this.arrived;
    const times = this.arrived.view(first, this.end);
    let old = Math.max(0, times.length - mostFrames);
    while (old + block < times.length && times[old + block]! < now - mostAge) old += block;
    old -= old % block;
    if (old === 0) return;
    for (const ring of [this.arrived, ...Object.values(this.columns)]) ring.forgetBefore(first + old);
  }

  private wakeUp(): void {
    this.wake?.();
    this.wake = null;
  }

  private tell(change: Partial<LiveState>): void {
    this.state = { ...this.state, ...change };
    this.publishing = true;
    if (this.session.store.state.live) this.session.store.set({ live: this.state });
    this.publishing = false;
  }

  private async run(): Promise<void> {
    while (!this.closed) {
      const did = await this.advance();
      if (this.closed) return;
      if (!did) {
        await new Promise<void>((resolve) => {
          this.wake = resolve;
        });
        continue;
      }
      if (this.state.following) this.publish();
      else this.tell({ perSecond: this.rate() });
      await Promise.race([whenDrawn(), new Promise((later) => setTimeout(later, hiddenPause))]);
      document.dispatchEvent(new CustomEvent("picture", { detail: numberOf(this.session.store.state) })); // for those who measure
    }
  }

  /** Runs the frames that an engine does not have yet; false when all have all. */
  private async advance(): Promise<boolean> {
    let did = false;
    for (const name of sides) {
      const side = this.session.store.state[name];
      if (!side) continue;
      const engine = this.session.engineOf(name);
      try {
        did = (await this.append(engine, this.session.fieldsOf(side.info))) || did;
      } catch (error) {
        if (error instanceof EngineClosed) continue;
        this.session.fault("The engine could not follow the log", error);
        this.session.store.set({ live: null });
        return false;
      }
    }
    return did;
  }

  private async append(engine: Engine, fields: string[]): Promise<boolean> {
    let run = this.runs.get(engine);
    if (!run) this.runs.set(engine, (run = this.newRun(this.arrived.first)));
    const { first } = this.arrived;
    const start = run.newest === null;
    if (start && this.end === first) return false;
    let did = false;
    if (!start && String(fields) !== String(run.fields)) {
      await this.fetchFields(engine, run, fields);
      did = true;
    }
    run.fields = fields;
    for (const end = this.end; run.next < end && this.runs.get(engine) === run; did = true) {
      const begin = run.next;
      const to = Math.min(end, begin + mostAppended);
      const answer = await engine.append(this.rows(begin, to), fields, begin, run.newest === null, first);
      fields.forEach((field, i) => {
        this.ringOf(run, field).append(answer.actual[i]!);
        this.ringOf(run, "target " + field).append(answer.asked[i]!);
      });
      run.next = answer.done;
      run.newest = answer;
      seenKinds.forEach((kind, i) => run.visible[i]!.append(answer.visible[kind[0]][kind[1]]));
      for (const ring of run.columns.values()) ring.forgetBefore(first);
      for (const ring of run.visible) ring.forgetBefore(first);
    }
    if (did && performance.now() > run.summaryAt + summaryPause) {
      run.summary = await engine.summary();
      run.summaryAt = performance.now();
    }
    return did;
  }

  private newRun(first: number): LiveRun {
    return {
      fields: [],
      next: first,
      columns: new Map(),
      visible: seenKinds.map(() => new Ring<Float32Array>(Float32Array, first)),
      newest: null,
      summaryAt: -Infinity,
      summary: null,
    };
  }

  private ringOf(run: LiveRun, key: string): Ring<Int32Array> {
    let ring = run.columns.get(key);
    if (!ring) run.columns.set(key, (ring = new Ring(Int32Array, run.next)));
    return ring;
  }

  /** Of fields that were not wanted before, over all frames that there are. */
  private async fetchFields(engine: Engine, run: LiveRun, fields: string[]): Promise<void> {
    const more = fields.filter((field) => !run.columns.has(field));
    for (const [kind, key] of [["actual", ""], ["target", "target "]] as const) {
      if (more.length === 0) continue;
      const columns = await engine.columns(more, kind);
      more.forEach((field, i) => {
        const ring = new Ring(Int32Array, run.next - columns[i]!.length);
        ring.append(columns[i]!);
        run.columns.set(key + field, ring);
      });
    }
    for (const key of [...run.columns.keys()]) if (!fields.includes(key.replace("target ", ""))) run.columns.delete(key);
  }

  private rows(from: number, to: number): Float64Array {
    const rows = new Float64Array((to - from) * width);
    frameColumns.forEach((name, k) => {
      const column = this.columns[name].view(from, to);
      for (let i = 0; i < column.length; ++i) rows[i * width + k] = column[i]!;
    });
    return rows;
  }

  private rate(): number | null {
    const times = this.arrived.view(Math.max(this.arrived.first, this.end - 600), this.end);
    const now = performance.now();
    const recent = times.filter((time) => time > now - 2000);
    return times.length > 2 && now - times[0]! > 1000 ? recent.length / Math.min(2, (now - times[0]!) / 1000) : null;
  }

  /** The part of the log that is shown: the last seconds, or all that there is. */
  private log(following: boolean, end: number): FrameLog {
    let from = this.arrived.first;
    if (following) {
      const times = this.arrived.view(Math.max(from, end - 3600), end);
      let shown = times.length;
      while (shown > fewestShown && times[times.length - shown]! < times[times.length - 1]! - shownTime) --shown;
      from = end - shown;
    }
    const columns = Object.fromEntries(frameColumns.map((name) => [name, this.columns[name].view(from, end)])) as FrameLog["columns"];
    return { name: "live", first: from + 1, count: end - from, findings: [], columns };
  }

  /** The newest frame that every tuning has, to all panels at once. */
  private publish(chosen?: number): void {
    const { store } = this.session;
    const runs = sides.flatMap((name): [SideName, LiveRun][] => {
      const run = store.state[name] && this.runs.get(this.session.engineOf(name));
      return run?.newest ? [[name, run]] : [];
    });
    if (runs.length === 0) return;
    const { following } = this.state;
    const end = Math.min(...runs.map(([, run]) => run.next));
    const log = this.log(following, end);
    const change: Record<string, unknown> = { log };
    for (const [name, run] of runs) change[name] = this.sideOf(store.state[name]!, run, log);
    const newest = log.count - 1;
    const frame = chosen === undefined ? newest : Math.min(newest, Math.max(0, chosen - (log.first - 1)));
    this.state = { ...this.state, perSecond: this.rate() };
    this.publishing = true;
    store.set({ ...change, live: this.state, ...(following ? { zoom: null } : {}), frame, ...(store.state.follow === "light" && this.state.received > 0 && !this.shownOnce ? { follow: "log" } : {}) });
    this.shownOnce = true;
    this.publishing = false;
  }
  private shownOnce = false;

  private sideOf(side: Side, run: LiveRun, log: FrameLog): Side {
    const [from, to] = [log.first - 1, log.first - 1 + log.count];
    const columns = new Map(
      Array.from(run.columns, ([key, ring]): [string, Int32Array] => {
        const view = ring.view(from, to);
        if (view.length === log.count) return [key, view];
        const whole = new Int32Array(log.count); // a field that came later
        whole.set(view, log.count - view.length);
        return [key, whole];
      }),
    );
    const newest = run.newest!;
    const selected: Selected = {
      now: newest.now,
      before: newest.before,
      target: newest.target,
      rest: null,
      explanation: newest.explanation,
      patches: newest.patches,
    };
    const seen = run.visible.map((ring) => ring.view(from, to));
    const visible = side.info.hasCcm
      ? { seenFrom: newest.visible.seenFrom, step: { mean: seen[0]!, worst: seen[1]! }, rest: { mean: seen[2]!, worst: seen[3]! } }
      : null;
    return { ...side, columns, visible, patchOverLog: null, summary: run.summary, selected: this.session.store.state.follow === "light" && this.shownOnce ? side.selected : selected };
  }

  /** Stops at what is shown, with all that there is to go back to, or returns to the newest frame. */
  private turn(following: boolean): void {
    const { store } = this.session;
    const chosen = (store.state.log?.first ?? 1) - 1 + store.state.frame;
    this.state = { ...this.state, following };
    if (following) {
      this.publishing = true;
      store.set({ follow: "log", playing: false });
      this.publishing = false;
      this.publish();
    } else {
      this.publish(chosen);
    }
    this.wakeUp();
  }
}
