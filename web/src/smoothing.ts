// The search for the smoothing that meets a wish: choices are independent, so that workers share them.
import { EngineClosed, type NamedBytes, type StepTried, type Weights, type Wish } from "./engine/api";
import type { Engine } from "./engine/engine";
import type { Side, SmoothingState, Store } from "./store";

const mostWorkers = 8;
const inPart = 8; // choices that a worker takes at a time
const colorSteps = 3;

export class SmoothingSearch {
  private workers: Engine[] = [];
  private keeping = false;

  constructor(
    private readonly store: Store,
    private readonly newEngine: () => Engine,
  ) {
    // What was found is of another tuning or log.
    store.watch(["a", "log"], (state, before) => {
      if (this.keeping || (state.a?.info === before.a?.info && state.log === before.log)) return;
      const { running, answer } = state.smoothing;
      if (running || answer) this.end({ answer: null, loaded: null });
    });
  }

  private tell(change: Partial<SmoothingState>): void {
    this.store.set({ smoothing: { ...this.store.state.smoothing, ...change } });
  }

  private end(change: Partial<SmoothingState>): void {
    for (const worker of this.workers.splice(0)) worker.close();
    this.tell({ running: null, ...change });
  }

  cancel(): void {
    this.end({});
  }

  /** A change of the tuning that what was found outlives: its weights were all tried. */
  async keep(change: () => Promise<void>, loaded: Weights | null): Promise<void> {
    this.keeping = true;
    try {
      await change();
      if (loaded) this.tell({ loaded });
    } finally {
      this.keeping = false;
    }
  }

  /** Throws EngineClosed when it was given up. */
  async find(wish: Wish, side: Side, log: NamedBytes): Promise<void> {
    this.end({ wish, answer: null, loaded: null, running: { done: 0, total: 1 } });
    const count = Math.min(mostWorkers, Math.max(1, navigator.hardwareConcurrency));
    const workers = Array.from({ length: count }, () => this.newEngine());
    this.workers = workers;
    try {
      await Promise.all(
        workers.map(async (worker) => {
          await worker.loadTuning(side.files);
          await worker.useFrames(log.name, log.bytes);
        }),
      );
      const answer = await this.search(wish, side, workers);
      if (this.workers === workers) this.end({ answer });
    } catch (error) {
      if (this.workers === workers) this.end({});
      if (!(error instanceof EngineClosed)) throw error;
    }
  }

  private async search(wish: Wish, { info }: Side, workers: Engine[]): Promise<SmoothingState["answer"]> {
    const parts: Float64Array[] = [];
    const steps: (StepTried | null)[] = Array.from({ length: info.hasColor ? colorSteps : 0 }, () => null);
    let [done, weights, sizes] = [0, info.hasCcm ? 1 : 0, 0];
    const tried = (more: number): void => {
      done += more;
      this.tell({ running: { done, total: weights + colorSteps * sizes } });
    };
    // The few long searches first, so that no worker is left with one at the end.
    const jobs = steps.map((_, step) => async (worker: Engine): Promise<void> => {
      for (let at = 0, all = 1; at < all; ++at) {
        const size = await worker.tryStep(step, at);
        sizes = all = size.all;
        tried(1);
        if (size.neverRests || (size.settle ?? 0) > wish.settle) continue;
        steps[step] = size;
        return;
      }
    });
    let next = 0;
    const someWeights = async (worker: Engine): Promise<void> => {
      while (next < weights) {
        const begin = next;
        next += inPart;
        const { all, reached } = await worker.tryWeights(begin, inPart);
        weights = all;
        parts[begin / inPart] = reached;
        tried(Math.min(inPart, all - begin));
      }
    };
    if (info.hasCcm) {
      weights = (await workers[0]!.tryWeights(0, 0)).all;
    }
    await Promise.all(
      workers.map(async (worker) => {
        for (let job = jobs.shift(); job; job = jobs.shift()) await job(worker);
        await someWeights(worker);
      }),
    );
    const reached = new Float64Array(parts.reduce((sum, part) => sum + part.length, 0));
    parts.reduce((at, part) => (reached.set(part, at), at + part.length), 0);
    return workers[0]!.chooseSmoothing(wish, reached, steps);
  }
}
