// The frames of a live log as the tool sends them: Server-Sent Events whose id is the frame's number.
import { frameColumns, type Json } from "../engine/api";

export interface FeedListener {
  /** Frames one after the other, in the order of frameColumns; `begin` is the first one's number, from 0. */
  frames(rows: Float64Array, begin: number): void;
  /** Frames up to this number will not come. */
  missed(to: number): void;
  verify(verdict: Json): void;
  connected(yes: boolean): void;
  ended(): void;
}

const width = frameColumns.length;

/** The connection; the browser makes it anew when it is lost, and goes on where it was. */
export class Feed {
  private readonly source: EventSource;

  constructor(address: string, listener: FeedListener) {
    this.source = new EventSource(address);
    this.source.onopen = () => listener.connected(true);
    this.source.onerror = () => listener.connected(false);
    this.source.onmessage = (event: MessageEvent<string>) => {
      const lines = event.data.split("\n");
      const rows = new Float64Array(lines.length * width);
      lines.forEach((line, i) => {
        const values = line.split(",", width);
        for (let k = 0; k < width; ++k) rows[i * width + k] = Number(values[k]);
      });
      listener.frames(rows, Number(event.lastEventId) - lines.length);
    };
    const on = (name: string, hear: (text: string) => void): void =>
      this.source.addEventListener(name, (event) => hear((event as MessageEvent<string>).data));
    on("skipped", (text) => listener.missed(Number(text.split(" ")[1])));
    on("verify", (text) => listener.verify(JSON.parse(text) as Json));
    on("end", () => {
      this.close();
      listener.ended();
    });
  }

  close(): void {
    this.source.close();
  }
}
