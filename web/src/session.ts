// What the page does: loads, runs, and fetches what the panels show. Late answers are dropped.
import { EngineClosed, EngineError, type At, type Frame, type FrameLog, type NamedBytes, type TuningInfo, type Weights, type Wish } from "./engine/api";
import { shortened } from "./dom";
import { within } from "./draw/zoom";
import { Engine } from "./engine/engine";
import { SmoothingSearch } from "./smoothing";
import { frameOf, fromAddress, toAddress, type Selected, type Side, type SideName, type Store } from "./store";

const addressPause = 200; // ms without a change
const gridCts = Array.from({ length: 73 }, (_, i) => 2000 + 100 * i); // kelvin
const gridLvs = Array.from({ length: 31 }, (_, i) => 5 * i);
const sideNames = ["a", "b"] as const;
const notRun: Pick<Side, "columns" | "summary" | "visible" | "patchOverLog"> = { columns: new Map(), summary: null, visible: null, patchOverLog: null };
type Programmed = Pick<Selected, "now" | "target" | "before" | "rest">;

/** A closed engine was replaced by one that does the same. */
const unlessClosed = (error: unknown): void => {
  if (!(error instanceof EngineClosed)) throw error;
};

export class Session {
  private engines: Record<SideName, Engine>;
  private readonly coming: Record<SideName, Engine | null> = { a: null, b: null }; // loads a tuning
  private running: Engine | null = null; // replays the log
  private logFile: NamedBytes | null = null;
  private loadingLog = false;
  private gainsAsked = 0;
  private readonly smoothing: SmoothingSearch;

  constructor(
    readonly store: Store,
    private readonly newEngine: () => Engine,
  ) {
    this.engines = { a: newEngine(), b: newEngine() };
    const refresh = this.oneAtATime(() => this.fetchSelected());
    store.watch(["frame", "light", "follow", "a", "b", "log", "live"], (state, before) => {
      const moved = (state.frame !== before.frame || state.live?.following !== before.live?.following) && state.follow === "log";
      const other = state.light !== before.light && state.follow === "light";
      const tuned =
        state.a?.info !== before.a?.info ||
        state.b?.info !== before.b?.info ||
        state.a?.summary !== before.a?.summary ||
        state.b?.summary !== before.b?.summary;
      if (moved || other || tuned || state.follow !== before.follow) refresh();
    });
    this.smoothing = new SmoothingSearch(store, newEngine);
    store.watch(["patch"], () => {
      for (const name of sideNames) void this.fetchPatch(name).catch((error: unknown) => this.unanswered(error));
    });
    store.watch(["fields"], ({ live }) => {
      if (live) return; // it has the columns that it appends
      for (const name of sideNames) void this.fetchColumns(name).catch((error: unknown) => this.unanswered(error));
    });
    let timer = 0;
    const link = (): void => {
      clearTimeout(timer); // browsers refuse an address that changes too often
      timer = window.setTimeout(() => history.replaceState(null, "", "#" + toAddress(store.state)), addressPause);
    };
    store.watch(
      ["frame", "light", "follow", "fields", "zoom", "show", "gridLv", "gridCt", "coefficient", "over", "curve"],
      link,
    );
  }

  /** One run at a time; what is asked for meanwhile runs once, afterwards. */
  private oneAtATime(action: () => Promise<void>): () => void {
    let running = false;
    let again = false;
    const go = (): void => {
      if (running) {
        again = true;
        return;
      }
      running = true;
      void action()
        .catch((error: unknown) => this.unanswered(error))
        .finally(() => {
          running = false;
          if (again) {
            again = false;
            go();
          }
        });
    };
    return go;
  }

  private unanswered(error: unknown): void {
    if (!(error instanceof EngineClosed)) this.fault("The engine could not answer", error);
  }

  fault(title: string, error: unknown): void {
    const text = error instanceof Error ? error.message : String(error);
    this.store.set({ faults: [{ title, text }] });
  }

  openAddress(): void {
    this.store.set(fromAddress(location.hash.slice(1)));
  }

  /** The first tuning together with the log that it runs: one pass, and the panels change once. */
  async begin(files: NamedBytes[], log: NamedBytes | null): Promise<void> {
    this.logFile = log;
    if (await this.loadTuning("a", files)) return;
    this.logFile = null; // one of them cannot be used: which one is told
    if ((await this.loadTuning("a", files)) && log) await this.loadLog(log);
  }

  /** True when the tuning is in use; else its faults are shown and the last one stays. */
  async loadTuning(name: SideName, files: NamedBytes[]): Promise<boolean> {
    try {
      await this.useTuning(name, files);
      this.store.set({ faults: [] });
      await this.complete(name);
      return true;
    } catch (error) {
      if (error instanceof EngineClosed) return false;
      this.fault(`${files[0]?.name ?? "tuning"} cannot be used`, error);
      return false;
    }
  }

  /** The editor's text: its findings, and the panels follow when it can be used. */
  async edit(text: string): Promise<void> {
    this.store.set({ draft: text });
    const bytes = new TextEncoder().encode(text);
    const name = this.store.state.a?.files[0]?.name ?? "tuning.yaml";
    try {
      await this.useTuning("a", [{ name: name.endsWith(".bin") ? "tuning.yaml" : name, bytes }], text);
      await this.complete("a");
    } catch (error) {
      if (error instanceof EngineClosed) return;
      if (error instanceof EngineError) this.store.set({ editing: error.findings });
      else this.fault("The editor's text cannot be used", error);
    }
  }

  /** Loads and runs in an engine of its own, so that a bad tuning harms nothing and the panels change once. */
  private async useTuning(name: SideName, files: NamedBytes[], text?: string, typed = text !== undefined): Promise<void> {
    this.coming[name]?.close(); // its caller learns that it was closed
    const engine = this.newEngine();
    this.coming[name] = engine;
    try {
      const info = await engine.loadTuning(files);
      if (name === "a") this.store.set({ editing: info.findings });
      const images = files.some((file) => file.name.endsWith(".bin"));
      const [[yaml], plane, grid] = await Promise.all([
        images ? engine.saveTuning("yaml") : files,
        engine.gainPlane(),
        info.hasCcm ? engine.matrixGrid(gridCts, gridLvs, 0, 0) : null,
      ]);
      let ran = notRun;
      let log: NamedBytes | null = null;
      while (log !== this.logFile) {
        log = this.logFile!;
        if (this.store.state.log) {
          await engine.useFrames(log.name, log.bytes);
        } else {
          const frames = await engine.loadFrames(log.name, log.bytes);
          const { frame, zoom } = this.store.state; // an address may ask for more than there is
          this.store.set({
            log: frames,
            frame: Math.min(frame, frames.count - 1),
            zoom: zoom && within(zoom[0], zoom[1], frames.count),
          });
        }
        ran = (await this.runLog(engine, info)) ?? notRun;
      }
      const opened = new TextDecoder().decode(yaml!.bytes);
      const side: Side = {
        info,
        files,
        text: opened,
        saved: text === undefined ? opened : (this.store.state[name]?.saved ?? opened),
        edited: typed,
        plane,
        grid,
        steepest: null,
        ...ran,
        selected: null,
      };
      const at = this.place(side);
      if (at) side.selected = await this.select(engine, info, at);
      this.engines[name].close();
      this.engines[name] = engine;
      this.store.set({
        [name]: side,
        ...(name === "a" && !typed ? { draft: null } : {}),
        ...(log && !ran.columns.size ? { follow: "light" } : {}),
      });
    } finally {
      if (this.engines[name] !== engine) engine.close();
      if (this.coming[name] === engine) this.coming[name] = null;
    }
  }

  async loadLog(file: NamedBytes): Promise<boolean> {
    this.loadingLog = true;
    this.store.set({ live: null }); // it is left
    try {
      const log = await this.readLog(file);
      this.loadingLog = false;
      const state = this.store.state;
      const none = { ...notRun, selected: null };
      this.store.set({
        a: state.a && { ...state.a, ...none },
        b: state.b && { ...state.b, ...none },
        log,
        faults: [],
        frame: Math.min(state.frame, log.count - 1),
        zoom: null,
        follow: "log",
      });
      for (const engine of sideNames.map((name) => this.engines[name])) {
        const name = this.sideOf(engine);
        const side = name && this.store.state[name];
        if (!side) continue;
        const ran = await this.runLog(engine, side.info).catch(unlessClosed);
        if (ran === null) return true;
        if (ran) this.give(engine, ran);
      }
      for (const name of sideNames) await this.complete(name);
      return true;
    } catch (error) {
      if (error instanceof EngineClosed) return false;
      this.fault(`${file.name} cannot be used`, error);
      return false;
    } finally {
      this.loadingLog = false;
    }
  }

  /** In the engine of every tuning there is, also of one that comes or is swapped meanwhile. */
  private async readLog(file: NamedBytes): Promise<FrameLog> {
    const read = new Set<Engine>();
    let log: FrameLog | null = null;
    for (;;) {
      const used = this.store.state.b ? sideNames : (["a"] as const);
      const engine = used.map((name) => this.engines[name]).find((each) => !read.has(each));
      if (!engine) return log!;
      log = (await engine.loadFrames(file.name, file.bytes).catch(unlessClosed)) ?? log;
      if (log) this.logFile = file;
      read.add(engine);
    }
  }

  /** The editor holds A: B is edited after it. */
  swap(): void {
    const { a, b } = this.store.state;
    if (!a || !b) return;
    for (const name of sideNames) this.coming[name]?.close();
    this.engines = { a: this.engines.b, b: this.engines.a };
    this.store.set({ a: { ...b, edited: false }, b: { ...a, edited: false }, editing: b.info.findings, draft: null });
  }

  dropB(): void {
    this.store.set({ b: null });
  }

  /** Without a whole run no frame has registers: free light then drives the panels. */
  cancel(): void {
    this.running?.cancel();
    const { a, follow } = this.store.state;
    this.store.set({ busy: null, follow: a?.columns.size ? follow : "light" });
  }

  /** Replays the log; null when that was given up. */
  private async runLog(engine: Engine, info: TuningInfo): Promise<typeof notRun | null> {
    this.running = engine;
    try {
      const fields = this.fieldsOf(info);
      const whole = await engine.replay(fields, (done, total) => {
        if (done < total) this.store.set({ busy: { text: `running ${shortened(info.name)}`, done, total } });
      });
      if (!whole) return null;
      const { patch } = this.store.state;
      const [actual, summary, visible, patchOverLog] = await Promise.all([
        engine.columns(fields, "actual"),
        engine.summary(),
        info.hasCcm ? engine.visible() : null,
        info.hasCcm && patch !== null ? engine.patchOverLog(patch) : null,
      ]);
      return { columns: new Map(fields.map((field, i) => [field, actual[i]!])), summary, visible, patchOverLog };
    } finally {
      if (this.running === engine) {
        this.running = null;
        this.store.set({ busy: null });
      }
    }
  }

  fieldsOf(info: TuningInfo): string[] {
    const known = new Set([
      ...(info.hasCcm ? Array.from({ length: 9 }, (_, k) => `c${k}`) : []),
      ...(info.hasColor ? info.colorNames : []),
    ]);
    return this.store.state.fields.filter((field) => known.has(field));
  }

  /** Columns that are shown and not there yet, what each frame asks for, and the steepest places. */
  private async complete(name: SideName): Promise<void> {
    if (this.store.state.live) return;
    await this.fetchColumns(name);
    const side = this.store.state[name];
    if (side?.info.hasCcm && !side.steepest) {
      const engine = this.engines[name];
      this.give(engine, { steepest: await engine.steepest() });
    }
  }

  /** Where an engine's tuning stands now: another may have replaced it, or both have been swapped. */
  private sideOf(engine: Engine): SideName | undefined {
    return sideNames.find((name) => this.engines[name] === engine);
  }

  private give(engine: Engine, change: Partial<Side>): void {
    const name = this.sideOf(engine);
    if (name) this.store.setSide(name, change);
  }

  private async fetchColumns(name: SideName): Promise<void> {
    const side = this.store.state[name];
    if (!side || side.summary === null) return;
    const engine = this.engines[name];
    for (const [kind, key] of [["actual", ""], ["target", "target "]] as const) {
      const known = this.store.state[name]!.columns;
      const wanted = this.fieldsOf(side.info).filter((field) => !known.has(key + field));
      if (wanted.length === 0) continue;
      const values = await engine.columns(wanted, kind);
      const now = this.sideOf(engine);
      const columns = new Map(now && this.store.state[now]?.columns);
      wanted.forEach((field, i) => columns.set(key + field, values[i]!));
      this.give(engine, { columns });
      if (now !== name) return;
    }
  }

  /** The chosen patch over the log. */
  private async fetchPatch(name: SideName): Promise<void> {
    const { patch, [name]: side } = this.store.state;
    if (patch === null || !side?.visible || side.patchOverLog?.patch === patch) return;
    const engine = this.engines[name];
    const patchOverLog = await engine.patchOverLog(patch);
    if (this.store.state.patch === patch) this.give(engine, { patchOverLog });
  }

  /** What drives the panels; null while no frame of the log has registers, or a live log brings its own. */
  private place(side: Side): At | null {
    const { follow, frame, light, log, live } = this.store.state;
    if (follow === "light" || !log) return { light };
    return this.loadingLog || live?.following || side.summary === null ? null : { frame: log.first - 1 + frame };
  }

  /** For a live log, which appends to it. */
  engineOf(name: SideName): Engine {
    return this.engines[name];
  }

  private async fetchSelected(): Promise<void> {
    for (const name of sideNames) {
      const side = this.store.state[name];
      const at = side && this.place(side);
      if (!at) continue;
      const engine = this.engines[name];
      // Registers first, which every move of a slider shows; the rest when it is there.
      const give = (selected: Selected): void => this.give(engine, { selected });
      const told = { explanation: side.selected?.explanation ?? null, patches: side.selected?.patches ?? null };
      give(await this.select(engine, side.info, at, (registers) => give({ ...registers, ...told })));
    }
  }

  private async select(engine: Engine, info: TuningInfo, at: At, first?: (r: Programmed) => void): Promise<Selected> {
    let registers: Programmed;
    if ("frame" in at) {
      const [now, before, answer] = await Promise.all([
        engine.valuesAt(at.frame),
        this.store.state.frame > 0 ? engine.valuesAt(at.frame - 1) : null,
        engine.light(frameOf(this.store.state)),
      ]);
      registers = { now, before, target: answer.target, rest: null };
    } else {
      const answer = await engine.light(at.light);
      registers = { now: answer.resting, before: null, target: answer.target, rest: answer.frames };
    }
    first?.(registers);
    const [explanation, patches] = await Promise.all([
      engine.explain(at),
      info.hasCcm ? engine.patches(at) : null,
    ]);
    return { ...registers, explanation, patches };
  }

  /** A light of the tuned locus: the gains follow the colour temperature. */
  async setLight(change: Partial<Frame>): Promise<void> {
    const { light, freeGain } = this.store.state;
    const next = { ...light, ...change };
    this.store.set({ follow: "light", light: next });
    if (!freeGain && change.cct !== undefined) await this.gainsOnLocus();
  }

  /** The free light's gains become those of its colour temperature. */
  async gainsOnLocus(): Promise<void> {
    if (!this.store.state.a?.info.hasCcm) return;
    const ticket = ++this.gainsAsked;
    const [r, g, b] = await this.engines.a.gainOf(this.store.state.light.cct);
    if (ticket !== this.gainsAsked) return;
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

  /** Tries every choice over the log, in workers of their own. */
  async findSmoothing(wish: Wish): Promise<void> {
    const { a } = this.store.state;
    if (!a || !this.logFile) return;
    await this.smoothing.find(wish, a, this.logFile).catch((error: unknown) => this.unanswered(error));
  }

  cancelSmoothing(): void {
    this.smoothing.cancel();
  }

  /** Writes weights and steps, where they are given, into the tuning's text; the panels follow. */
  async useSmoothing(weights: Weights | null, steps: (number | null)[]): Promise<void> {
    const { a, draft } = this.store.state;
    if (!a) return;
    if (draft !== null && draft !== a.text) {
      this.fault("The smoothing cannot be written into the tuning", "Its text has errors: fix them first.");
      return;
    }
    try {
      const { text } = await this.engines.a.smoothedText(a.text, weights, steps);
      const name = a.files[0]?.name ?? "tuning.yaml";
      const bytes = new TextEncoder().encode(text);
      await this.smoothing.keep(() => this.useTuning("a", [{ name: name.endsWith(".bin") ? "tuning.yaml" : name, bytes }], text, false), weights);
      await this.complete("a");
    } catch (error) {
      this.unanswered(error);
    }
  }

  /** Edits that are in no file yet. */
  unsaved(): boolean {
    const { a, b, draft } = this.store.state;
    return (draft !== null && draft !== a?.saved) || [a, b].some((side) => side && side.text !== side.saved);
  }

  /** The editor's text is in a file now. */
  keep(text: string): void {
    this.store.setSide("a", { saved: text });
  }

  tuningFiles(form: "yaml" | "images"): Promise<NamedBytes[]> {
    return this.engines.a.saveTuning(form);
  }

  async fieldDifferences(): Promise<{ field: string; a: number | string; b: number | string }[]> {
    const { b } = this.store.state;
    return b ? this.engines.a.diff(b.files) : [];
  }
}
