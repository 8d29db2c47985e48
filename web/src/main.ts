import "./locale";
import "uplot/dist/uPlot.min.css";
import "./style.css";
import { append, button, choice, counted, fill, h, named } from "./dom";
import { pack } from "./draw/pack";
import { drawAll } from "./draw/schedule";
import { setTheme, type Theme } from "./draw/theme";
import { Engine } from "./engine/engine";
import type { NamedBytes } from "./engine/api";
import { block, open, readFiles, unpack } from "./files";
import { comparePanel } from "./panels/compare";
import { enginePanel } from "./panels/engine";
import { errorPanel } from "./panels/error";
import { gainPanel } from "./panels/gain";
import { lightPanel } from "./panels/light";
import { matrixPanel } from "./panels/matrix";
import { scrubber } from "./panels/scrubber";
import { smoothingPanel } from "./panels/smoothing";
import { timePanel } from "./panels/time";
import { tuningPanel } from "./panels/tuning";
import { whyPanel } from "./panels/why";
import { Session } from "./session";
import { Store } from "./store";
import { liveBar } from "./live/bar";
import { follow } from "./live/follow";

const firstTuning = "imx477-polynomial.yaml";
const sparePause = 500; // ms, which belong to what was just asked for
const firstLog = "imx477-walk.csv";

interface Bundle {
  [name: string]: string;
}

async function main(): Promise<void> {
  const app = document.getElementById("app")!;
  const compiled = await WebAssembly.compile((await unpack(block("engine-wasm"))) as Uint8Array<ArrayBuffer>);
  const worker = URL.createObjectURL(
    new Blob([await unpack(block("engine-worker")) as Uint8Array<ArrayBuffer>], { type: "text/javascript" }),
  );
  let spare: Engine | null = null; // one is always started early
  let standing = false;
  const startSpare = (): void => {
    if (standing) (spare ??= new Engine(worker, compiled)).start();
  };
  const newEngine = (): Engine => {
    const engine = spare ?? new Engine(worker, compiled);
    spare = null;
    setTimeout(startSpare, sparePause);
    return engine;
  };
  const store = new Store();
  const session = new Session(store, newEngine);
  spare = new Engine(worker, compiled); // beside the page's own start; the next one once that stands
  spare.start();
  const linked = location.hash.includes("follow=");
  session.openAddress();
  Object.assign(window, { imgtune: { session, store, newEngine, drawAll } }); // for the console
  const bundle = async (id: string): Promise<Bundle> =>
    block(id) === "" ? {} : (JSON.parse(new TextDecoder().decode(await unpack(block(id)))) as Bundle);
  const samples = await bundle("samples");
  const report = await bundle("report");

  const file = (from: Bundle, key: string, name: string): NamedBytes => ({
    name,
    bytes: new TextEncoder().encode(from[key]),
  });
  // What the address asks for survives loading.
  if (!linked) store.set({ follow: "log", frame: Number(report["frame"] ?? "1") - 1 });
  const reported = report["tuning"] !== undefined;
  const tuning = reported
    ? file(report, "tuning", report["tuning_name"] ?? "tuning.yaml")
    : file(samples, firstTuning, firstTuning);
  const log = !reported
    ? file(samples, firstLog, firstLog)
    : report["frames"] === undefined
      ? null
      : file(report, "frames", report["frames_name"] ?? "frames.csv");
  const begun = session.begin([tuning], log); // the engine works while the panels are made

  app.replaceChildren();
  append(app, [
    header(session, samples),
    messages(session),
    liveBar(session).element,
    scrubber(session).element,
    h(
      "main",
      {},
      ...[lightPanel, matrixPanel, gainPanel, timePanel, errorPanel, smoothingPanel, enginePanel, whyPanel, tuningPanel, comparePanel].map(
        (make) => make(session).element,
      ),
    ),
  ]);
  receiveDrops(session);
  pack(app.querySelector("main")!);
  addEventListener("beforeunload", (event) => {
    if (session.unsaved()) event.preventDefault(); // the browser asks
  });

  await begun;
  if (report["against"] !== undefined) {
    await session.loadTuning("b", [file(report, "against", report["against_name"] ?? "against.yaml")]);
  }
  if (!store.state.log) store.set({ follow: "light" });
  if (!store.state.freeGain) await session.gainsOnLocus();
  document.documentElement.dataset["ready"] = "true";
  if (report["live"] !== undefined) follow(session, report["live"]);
  standing = true;
  setTimeout(startSpare, sparePause);
}

function header(session: Session, samples: Bundle): HTMLElement {
  const { store } = session;
  const opened = h("p", { class: "opened" });
  const picker = (side: "a" | "b", label: string): HTMLElement => {
    const input = h("input", { type: "file", multiple: true, class: "hidden", "aria-label": label });
    input.addEventListener("change", () => {
      void readFiles(input.files!)
        .then((files) => open(session, files, side))
        .catch((error: unknown) => session.fault("A file cannot be read", error))
        .finally(() => (input.value = ""));
    });
    return h("span", {}, button(label, () => input.click()), input);
  };
  const sample = (side: "a" | "b", label: string, kind: RegExp): HTMLElement =>
    choice(label, [["", "choose…"], ...Object.keys(samples).filter((n) => kind.test(n)).map((n): [string, string] => [n, n])], "", (name) => {
      const text = samples[name];
      if (text !== undefined) void open(session, [{ name, bytes: new TextEncoder().encode(text) }], side);
    });
  const theme = choice("Theme", [["auto", "system"], ["light", "light"], ["dark", "dark"]], "auto", (value) => setTheme(value as Theme));
  const show = (): void => {
    const { a, b, log } = store.state;
    fill(
      opened,
      a ? named(a.info.name || a.files[0]!.name, "A ", "side-a") : "no tuning",
      b ? named(b.info.name || b.files[0]!.name, "B ", "side-b") : null,
      log ? h("span", {}, named(log.name), `, ${counted(log.count, "frame")}`) : null,
    );
  };
  store.watch(["a", "b", "log"], show);
  show();
  return h(
    "header",
    {},
    h("h1", {}, "imgtune"),
    opened,
    h(
      "div",
      { class: "row" },
      picker("a", "Open tuning A or log"),
      sample("a", "Sample A", /\.yaml$/),
      picker("b", "Compare with B"),
      sample("b", "Sample B", /\.yaml$/),
      sample("a", "Sample log", /\.csv$/),
      theme,
    ),
  );
}

function messages(session: Session): HTMLElement {
  const { store } = session;
  const faults = h("div", { class: "faults", role: "alert" });
  const busy = h("div", { class: "busy", role: "status" });
  store.watch(["faults"], (state) =>
    fill(
      faults,
      ...state.faults.map((fault) =>
        h("div", {}, h("strong", {}, fault.title), button("Close", () => store.set({ faults: [] })), h("pre", { tabindex: 0 }, fault.text.slice(0, 20000))),
      ),
    ),
  );
  const text = h("span");
  const progress = h("progress", { max: 1, value: 0, "aria-label": "Replay" });
  const line = h("div", { hidden: true }, text, progress, button("Cancel", () => session.cancel()));
  busy.append(line);
  store.watch(["busy"], ({ busy: run }) => {
    line.hidden = run === null;
    if (!run) return;
    fill(text, `${run.text}: ${run.done} of ${counted(run.total, "frame")} `);
    progress.max = run.total;
    progress.value = run.done;
  });
  return h("div", { class: "messages" }, faults, busy);
}

function receiveDrops(session: Session): void {
  addEventListener("dragover", (event) => event.preventDefault());
  addEventListener("drop", (event) => {
    event.preventDefault();
    const list = event.dataTransfer?.files;
    if (!list) return;
    void readFiles(list)
      .then((files) => open(session, files, event.shiftKey ? "b" : "a"))
      .catch((error: unknown) => session.fault("A file cannot be read", error));
  });
}

main().catch((error: unknown) => {
  if (!document.querySelector("main")) throw error; // told by start.ts
  document.getElementById("app")!.prepend(h("pre", { role: "alert" }, `The page could not start: ${String(error)}`));
});
