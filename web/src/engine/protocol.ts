// What goes between the page and a worker.
import type { Finding } from "./api";

export interface Request {
  id: number;
  command: string;
  args: Record<string, unknown>;
  bytes?: Uint8Array;
}

export interface Response {
  id: number;
  ok?: unknown;
  error?: string;
  findings?: Finding[];
  blobs: ArrayBuffer[];
}
