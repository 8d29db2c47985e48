// What the page does: loads, runs, and fetches what the panels show. Late answers are dropped.
import { EngineClosed, EngineError, type At, type Frame, type NamedBytes, type Patches } from "./engine/api";
import { Engine } from "./engine/engine";
import { frameOf, fromAddress, toAddress, type Selected, type Side, type SideName, type Store } from "./store";

const mostErrorFrames = 400;
const gridCts = Array.from({ length: 43 }, (_, i) => 2300 + 100 * i);
const gridLvs = Array.from({ length: 31 }, (_, i) => 5 * i);

export class Session {
  private readonly engines: Record<SideName, Engine>;
  private readonly asked: Record<string, number> = {};

  constructor(
    readonly store: Store,
    private readonly newEngine: () => Engine,
  ) {
    this.engines = { a: newEngine(), b: newEngine() };
    const refresh = this.soon("selected", () => this.fetchSelected());
    store.watch(["frame", "light", "follow", "a", "b", "log"], (state, before) => {
      const moved = state.frame !== before.frame && state.follow === "log";
      const other = state.light !== before.light && state.follow === "light";
      const tuned =
        state.a?.info !== before.a?.info ||
        state.b?.info !== before.b?.info ||
        state.a?.columns !== before.a?.columns ||
        state.b?.columns !== before.b?.columns;
      if (moved || other || tuned || state.follow !== before.follow) refresh();
    });
    store.watch(["fields"], () => void this.fetchColumns());
    const link = this.soon("address", () => {
      history.replaceState(null, "", "#" + toAddress(store.state));
      return Promise.resolve();
    });
    store.watch(
      ["frame", "light", "follow", "fields", "show", "gridLv", "gridCt", "coefficient", "over", "curve"],
      link,
    );
  }

  /** One run at a time; what is asked for meanwhile runs once, afterwards. */
  private soon(_name: string, action: () => Promise<void>): () => void {
    let running = false;
    let again = false;
    const go = (): void => {
      if (running) {
        again = true;
        return;
      }
      running = true;
      void action()
        .catch((error: unknown) => {
          if (!(error instanceof EngineClosed)) this.fault("The engine could not answer", error);
        })
        .finally(() => {
          running = false;
          if (again) {
            again = false;
            requestAnimationFrame(go);
          }
        });
    };
    return go;
  }

  fault(title: string, error: unknown): void {
    const text = error instanceof Error ? error.message : String(error);
    this.store.set({ faults: [{ title, text }] });
  }

  openAddress(): void {
    this.store.set(fromAddress(location.hash.slice(1)));
  }

  /** True when the tuning is in use; else its faults are shown and the last one stays. */
  async loadTuning(name: SideName, files: NamedBytes[]): Promise<boolean> {
    try {
      await this.useTuning(name, files);
      this.store.set({ faults: [] });
      await this.run();
      return true;
    } catch (error) {
      if (error instanceof Superseded || error instanceof EngineClosed) return false;
      this.fault(`${files[0]?.name ?? "tuning"} cannot be used`, error);
      return false;
    }
  }

  private async useTuning(name: SideName, files: NamedBytes[], text?: string): Promise<void> {
    const ticket = this.ticket(name);
    // Loaded in an engine of its own, so that a bad one harms nothing.
    const engine = this.newEngine();
    try {
      const info = await engine.loadTuning(files);
      if (!this.isLast(name, ticket)) throw new Superseded();
      if (name === "a") this.store.set({ editing: info.findings });
      const images = files.some((file) => file.name.endsWith(".bin"));
      const shown = text ?? new TextDecoder().decode((images ? await engine.saveTuning("yaml") : files)[0]!.bytes);
      const plane = await engine.gainPlane();
      if (this.logFile) await engine.loadFrames(this.logFile.name, this.logFile.bytes);
      if (!this.isLast(name, ticket)) throw new Superseded();
      this.engines[name].close();
      this.engines[name] = engine;
      const side: Side = {
        info,
        files,
        text: shown,
        plane,
        grid: null,
        columns: new Map(),
        summary: null,
        errors: null,
        selected: null,
      };
      this.store.set({ [name]: side });
      if (!info.hasCcm) return;
      const grid = await engine.matrixGrid(gridCts, gridLvs, 0, 0);
      if (this.engines[name] === engine) this.store.setSide(name, { grid });
    } catch (error) {
      if (this.engines[name] !== engine) engine.close();
      throw error;
    }
  }

  /** The editor's text: its findings, and the panels follow when it can be used. */
  async edit(text: string): Promise<void> {
    const bytes = new TextEncoder().encode(text);
    const name = this.store.state.a?.files[0]?.name ?? "tuning.yaml";
    try {
      await this.useTuning("a", [{ name: name.endsWith(".bin") ? "tuning.yaml" : name, bytes }], text);
      await this.run();
    } catch (error) {
      if (error instanceof Superseded || error instanceof EngineClosed) return;
      if (error instanceof EngineError) this.store.set({ editing: error.findings });
      else this.fault("The editor's text cannot be used", error);
    }
  }

  private logFile: NamedBytes | null = null;
  private loadingLog = false;

  async loadLog(file: NamedBytes): Promise<boolean> {
    this.loadingLog = true;
    try {
      const log = await this.engines.a.loadFrames(file.name, file.bytes);
      if (log.count === 0) throw new EngineError(`${file.name}: the log has no frames`);
      this.logFile = file;
      if (this.store.state.b) await this.engines.b.loadFrames(file.name, file.bytes);
      this.loadingLog = false;
      const state = this.store.state;
      const none = { columns: new Map(), summary: null, errors: null, selected: null };
      this.store.set({
        a: state.a && { ...state.a, ...none },
        b: state.b && { ...state.b, ...none },
        log,
        faults: [],
        frame: Math.min(state.frame, log.count - 1),
        follow: "log",
      });
      await this.run();
      return true;
    } catch (error) {
      if (error instanceof EngineClosed) return false;
      this.fault(`${file.name} cannot be used`, error);
      return false;
    } finally {
      this.loadingLog = false;
    }
  }

  dropB(): void {
    this.store.set({ b: null });
  }

  /** Without a whole run no frame has registers: free light then drives the panels. */
  cancel(): void {
    for (const engine of Object.values(this.engines)) engine.cancel();
    const { a, follow } = this.store.state;
    this.store.set({ busy: null, follow: a?.columns.size ? follow : "light" });
  }

  /** Replays the log with every tuning. */
  private async run(): Promise<void> {
    const { log } = this.store.state;
    if (!log) return;
    for (const name of ["a", "b"] as const) {
      const side = this.store.state[name];
      if (!side) continue;
      const ticket = this.ticket("run " + name);
      const engine = this.engines[name];
      const whole = await engine.replay((done, total) => {
        if (this.isLast("run " + name, ticket)) {
          this.store.set({ busy: { text: `running ${side.info.name}`, done, total } });
        }
      });
      if (!whole || !this.isLast("run " + name, ticket)) return;
      this.store.set({ busy: null });
      await this.fetchColumnsOf(name, true);
    }
    for (const name of ["a", "b"] as const) {
      const side = this.store.state[name];
      if (!side) continue;
      const engine = this.engines[name];
      const summary = await engine.summary();
      if (engine !== this.engines[name]) return;
      this.store.setSide(name, { summary });
      if (!side.info.hasCcm) continue;
      const errors = await engine.patchErrors(mostErrorFrames);
      if (engine !== this.engines[name]) return;
      this.store.setSide(name, { errors });
    }
  }

  private async fetchColumns(): Promise<void> {
    for (const name of ["a", "b"] as const) await this.fetchColumnsOf(name, false);
  }

  private async fetchColumnsOf(name: SideName, anew: boolean): Promise<void> {
    const side = this.store.state[name];
    if (!side || !this.store.state.log) return;
    const engine = this.engines[name];
    const known = new Set([
      ...(side.info.hasCcm ? Array.from({ length: 9 }, (_, k) => `c${k}`) : []),
      ...(side.info.hasColor ? side.info.colorNames : []),
    ]);
    const wanted = this.store.state.fields.filter(
      (field) => known.has(field) && (anew || !side.columns.has(field)),
    );
    if (wanted.length === 0 && !anew) return;
    const actual = await engine.columns(wanted, "actual");
    const keep = (kind: string, values: Int32Array[], before: ReadonlyMap<string, Int32Array>): void => {
      if (engine !== this.engines[name]) return;
      const columns = new Map(before);
      wanted.forEach((field, i) => columns.set(kind + field, values[i]!));
      this.store.setSide(name, { columns });
    };
    keep("", actual, anew ? new Map() : (this.store.state[name]?.columns ?? new Map()));
    if (wanted.length === 0) return;
    const target = await engine.columns(wanted, "target");
    keep("target ", target, this.store.state[name]?.columns ?? new Map());
  }

  private async fetchSelected(): Promise<void> {
    const { follow, frame, light, log } = this.store.state;
    const at: At = follow === "log" && log ? { frame } : { light };
    if ("frame" in at && this.loadingLog) return;
    for (const name of ["a", "b"] as const) {
      const side = this.store.state[name];
      if (!side || ("frame" in at && side.columns.size === 0 && side.summary === null)) continue;
      const engine = this.engines[name];
      await this.select(engine, side, at, (selected) => {
        if (engine === this.engines[name]) this.store.setSide(name, { selected });
      });
    }
  }

  /** Registers first, which every move of a slider shows; the rest when it is there. */
  private async select(engine: Engine, side: Side, at: At, give: (s: Selected) => void): Promise<void> {
    const chart = (): Promise<Patches | null> => (side.info.hasCcm ? engine.patches(at) : Promise.resolve(null));
    const told = { explanation: side.selected?.explanation ?? null, patches: side.selected?.patches ?? null };
    let registers: Pick<Selected, "now" | "target" | "before" | "rest">;
    if ("frame" in at) {
      const [now, before, answer] = await Promise.all([
        engine.valuesAt(at.frame),
        at.frame > 0 ? engine.valuesAt(at.frame - 1) : Promise.resolve(null),
        engine.light(frameOf(this.store.state)),
      ]);
      registers = { now, before, target: answer.target, rest: null };
    } else {
      const answer = await engine.light(at.light);
      registers = { now: answer.resting, before: null, target: answer.target, rest: answer.frames };
    }
    give({ ...registers, ...told });
    const [explanation, patches] = await Promise.all([engine.explain(at), chart()]);
    give({ ...registers, explanation, patches });
  }

  /** A light of the tuned locus: the gains follow the colour temperature. */
  async setLight(change: Partial<Frame>): Promise<void> {
    const { light, freeGain } = this.store.state;
    const next = { ...light, ...change };
    this.store.set({ follow: "light", light: next });
    if (freeGain || change.cct === undefined || !this.store.state.a?.info.hasCcm) return;
    const ticket = this.ticket("gain");
    const [r, g, b] = await this.engines.a.gainOf(next.cct);
    if (!this.isLast("gain", ticket)) return;
    this.store.set({
      light: { ...this.store.state.light, awb_r: r, awb_g: g, awb_b: b, full_r: r, full_g: g, full_b: b },
    });
  }

  setGain(red: number, blue: number): void {
    const r = Math.round(Math.min(8191, Math.max(1, red)));
    const b = Math.round(Math.min(8191, Math.max(1, blue)));
    this.store.set({
      follow: "light",
      freeGain: true,
      light: { ...this.store.state.light, awb_r: r, full_r: r, awb_b: b, full_b: b, awb_g: 512, full_g: 512 },
    });
  }

  tuningFiles(form: "yaml" | "images"): Promise<NamedBytes[]> {
    return this.engines.a.saveTuning(form);
  }

  async fieldDifferences(): Promise<{ field: string; a: number | string; b: number | string }[]> {
    const { b } = this.store.state;
    return b ? this.engines.a.diff(b.files) : [];
  }

  private ticket(name: string): number {
    return (this.asked[name] = (this.asked[name] ?? 0) + 1);
  }
  private isLast(name: string, ticket: number): boolean {
    return this.asked[name] === ticket;
  }
}

class Superseded extends Error {}
