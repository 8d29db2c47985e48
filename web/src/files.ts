// Files into the page: dropped, chosen, from its own samples or from a report.
import type { NamedBytes } from "./engine/api";
import type { Session } from "./session";

const largestFile = 256 * 1024 * 1024;

export async function unpack(base64: string): Promise<Uint8Array> {
  const text = atob(base64);
  const packed = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i) packed[i] = text.charCodeAt(i);
  const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream("gzip"));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

/** The text of a data block of the page; empty when there is none. */
export function block(id: string): string {
  return document.getElementById(id)?.textContent?.trim() ?? "";
}

export async function readFiles(list: FileList | File[]): Promise<NamedBytes[]> {
  return Promise.all(
    Array.from(list).map(async (file) => {
      if (file.size > largestFile) throw new Error(`${file.name}: ${file.size} bytes; larger than the page can open (256 MB)`);
      return { name: file.name, bytes: new Uint8Array(await file.arrayBuffer()) };
    }),
  );
}

const isLog = (file: NamedBytes): boolean => /\.csv$/i.test(file.name);

/** Tunings to A, or to B when asked for; logs to the log. */
export async function open(session: Session, files: NamedBytes[], side: "a" | "b"): Promise<void> {
  const images = files.filter((file) => file.name.endsWith(".bin") || file.name === "caller.yaml");
  const others = files.filter((file) => !images.includes(file) && !isLog(file));
  if (images.length > 0) await session.loadTuning(side, images);
  for (const file of others) await session.loadTuning(side, [file]);
  for (const file of files.filter(isLog)) await session.loadLog(file);
}
