// The part of a log that the plots over time show: its first and last frame, from 1; null: all of it.
export type Zoom = readonly [number, number] | null;

const fewest = 8; // frames

/** Within the log, whose first frame has the number `start`, and whole; null when it is the whole log. */
export function within(from: number, to: number, count: number, start = 1): Zoom {
  const wide = Math.max(fewest, Math.round(to - from));
  const first = Math.max(start, Math.min(start - 1 + count - wide, Math.round(from)));
  const last = first + wide;
  return last - first >= count - 1 ? null : [first, last];
}

/** Wider (factor above 1) or closer, `at` stays in its place. */
export function scaled(zoom: Zoom, count: number, factor: number, at: number, start = 1): Zoom {
  const [first, last] = zoom ?? [start, start - 1 + count];
  const inside = Math.min(last, Math.max(first, at));
  return within(inside - (inside - first) * factor, inside + (last - inside) * factor, count, start);
}

/** The same width, moved so that this frame is inside. */
export function holding(zoom: Zoom, frame: number, count: number, start = 1): Zoom {
  if (!zoom || (frame >= zoom[0] && frame <= zoom[1])) return zoom;
  const half = (zoom[1] - zoom[0]) / 2;
  return within(frame - half, frame + half, count, start);
}

/** How much a turn of the wheel zooms. */
export const factorOf = (event: WheelEvent): number => 1.0015 ** Math.max(-400, Math.min(400, event.deltaY));
