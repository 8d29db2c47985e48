// Runs in the worker: hands commands to the WebAssembly engine, which does all the work.
import type { Request, Response } from "./protocol";

interface EngineModule {
  HEAPU8: Uint8Array;
  _malloc(size: number): number;
  _free(at: number): void;
  _engine_run(command: number, args: number, bytes: number, size: number): number;
  _engine_blobs(): number;
  _engine_blob(i: number): number;
  _engine_blob_size(i: number): number;
  UTF8ToString(at: number): string;
  stringToUTF8(text: string, at: number, room: number): void;
  lengthBytesUTF8(text: string): number;
}

type Instantiated = (instance: WebAssembly.Instance) => void;
declare const createEngine: (options: {
  instantiateWasm(imports: WebAssembly.Imports, done: Instantiated): WebAssembly.Exports;
}) => Promise<EngineModule>;

let engine: EngineModule | undefined;
let broken = "";
let waiting: Request[] = [];

function room(size: number): number {
  const at = engine!._malloc(size);
  if (at === 0) throw new Error(`no memory for ${size} bytes`);
  return at;
}

function text(value: string): number {
  const size = engine!.lengthBytesUTF8(value) + 1;
  const at = room(size);
  engine!.stringToUTF8(value, at, size);
  return at;
}

function run(request: Request): Response {
  const module = engine!;
  const command = text(request.command);
  const args = text(JSON.stringify(request.args));
  const bytes = request.bytes ?? new Uint8Array();
  const at = room(bytes.length + 1);
  module.HEAPU8.set(bytes, at);
  try {
    const reply = JSON.parse(
      module.UTF8ToString(module._engine_run(command, args, at, bytes.length)),
    ) as Omit<Response, "id" | "blobs">;
    const blobs: ArrayBuffer[] = [];
    for (let i = 0; i < module._engine_blobs(); ++i) {
      const begin = module._engine_blob(i);
      blobs.push(module.HEAPU8.slice(begin, begin + module._engine_blob_size(i)).buffer);
    }
    return { id: request.id, blobs, ...reply };
  } finally {
    for (const block of [command, args, at]) module._free(block);
  }
}

function answer(request: Request): void {
  let response: Response;
  try {
    if (broken !== "") throw new Error(broken);
    response = run(request);
  } catch (error) {
    // A trap, not an answer: the engine is in no state to go on.
    if (error instanceof WebAssembly.RuntimeError) broken = `the engine stopped: ${error.message}`;
    response = { id: request.id, blobs: [], error: String(error), findings: [] };
  }
  postMessage(response, { transfer: response.blobs });
}

onmessage = (event: MessageEvent<Request>) => {
  const request = event.data;
  if (request.command === "start") {
    const compiled = request.args["compiled"] as WebAssembly.Module;
    void createEngine({
      instantiateWasm: (imports, done) => {
        const instance = new WebAssembly.Instance(compiled, imports);
        done(instance);
        return instance.exports;
      },
    })
      .then((module) => (engine = module))
      .catch((error: unknown) => (broken = `the engine does not start: ${String(error)}`))
      .finally(() => {
        for (const each of waiting) answer(each);
        waiting = [];
      });
  } else if (engine || broken !== "") {
    answer(request);
  } else {
    waiting.push(request);
  }
};
