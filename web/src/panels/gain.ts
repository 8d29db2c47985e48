import { axes, dot, line, Picture, type Scale } from "../draw/canvas";
import { whenDue } from "../draw/schedule";
import { frameOf, type Side, type SideName, type State } from "../store";
import { panel, type MakePanel } from "./panel";

const margin = { left: 44, top: 8, right: 10, bottom: 22 };
const mostTrail = 1200;

interface CcmTold {
  clipped_gain?: number[];
  projected_gain?: number[];
  ct_position?: number;
  distances?: number[];
  coarse_weight?: number;
  fine_weight?: number;
}

/** The plane of red and blue gain: tuned points, the frame's gain and the log's trail. */
export const gainPanel: MakePanel = (session) => {
  const { store } = session;
  const picture = new Picture(
    "gain-plane",
    300,
    "Gain plane. Arrow keys move the gain by 4, with Shift by 32.",
    true,
  );
  const facts = document.createElement("p");
  facts.className = "numbers";
  let scale: Scale | null = null;

  const drag = (event: PointerEvent): void => {
    if (!scale) return;
    const box = picture.canvas.getBoundingClientRect();
    session.setGain(scale.fromX(event.clientX - box.left), scale.fromY(event.clientY - box.top));
  };
  picture.canvas.addEventListener("pointerdown", (event) => {
    picture.canvas.setPointerCapture(event.pointerId);
    drag(event);
  });
  picture.canvas.addEventListener("pointermove", (event) => {
    if (event.buttons !== 0) drag(event);
  });
  picture.canvas.addEventListener("keydown", (event) => {
    const step = event.shiftKey ? 32 : 4;
    const moves: Record<string, [number, number]> = {
      ArrowLeft: [-step, 0],
      ArrowRight: [step, 0],
      ArrowUp: [0, step],
      ArrowDown: [0, -step],
    };
    const move = moves[event.key];
    if (!move) return;
    event.preventDefault();
    const frame = frameOf(store.state);
    session.setGain(gainOf(store.state.a, frame, "r") + move[0], gainOf(store.state.a, frame, "b") + move[1]);
  });

  const show = (state: State): void => {
    facts.textContent = factsOf(state);
    picture.draw(
      "blue gain over red gain, 512 = 1.0",
      (g, w, hgt, c) => {
        const range = rangeOf(state);
        const box = { left: margin.left, top: margin.top, right: w - margin.right, bottom: hgt - margin.bottom };
        scale = axes(g, c, box, range, { x: "", y: "" });
        const s = scale;
        g.save();
        g.beginPath();
        g.rect(box.left, box.top, box.right - box.left, box.bottom - box.top);
        g.clip();
        drawTrail(g, state, s, c.quiet);
        g.restore();
        for (const name of ["b", "a"] as const) drawSide(g, state[name], name, s, c);
        const frame = frameOf(state);
        const red = gainOf(state.a, frame, "r");
        const blue = gainOf(state.a, frame, "b");
        const told = toldOf(state.a);
        g.strokeStyle = c.ink;
        g.fillStyle = c.ink;
        g.lineWidth = 1;
        if (told?.projected_gain) {
          line(g, s.x(red), s.y(blue), s.x(told.projected_gain[0]!), s.y(told.projected_gain[2]!));
          g.strokeRect(s.x(told.projected_gain[0]!) - 3, s.y(told.projected_gain[2]!) - 3, 6, 6);
        }
        if (told?.clipped_gain) dot(g, s.x(told.clipped_gain[0]!), s.y(told.clipped_gain[2]!), 6, false);
        dot(g, s.x(red), s.y(blue), 3.5);
      },
      () => [
        "tuning,row,point,kelvin,red,green,blue",
        ...(["a", "b"] as const).flatMap((name) =>
          (state[name]?.plane.rows ?? []).flatMap((row) =>
            row.points.map((p) => [name, row.name, p.index, p.kelvin, ...p.gain].join(",")),
          ),
        ),
      ],
    );
  };
  const element = panel(
    "gain",
    "Gain plane",
    "Filled dot: the gain; ring: after clipping; square: its foot on the chord. Drag it, or use the arrow keys.",
    picture.element,
    facts,
  );
  store.watch(["frame", "light", "follow", "log", "a", "b"], whenDue(element, () => show(store.state)));
  return { element };
};

function gainOf(side: Side | null, frame: ReturnType<typeof frameOf>, color: "r" | "b"): number {
  return side?.info.fullGain ? frame[`full_${color}`] : frame[`awb_${color}`];
}

function toldOf(side: Side | null): CcmTold | null {
  const told = side?.selected?.explanation as { ccm?: CcmTold } | null | undefined;
  return told?.ccm ?? null;
}

function rangeOf(state: State): { x: [number, number]; y: [number, number] } {
  const reds: number[] = [];
  const blues: number[] = [];
  for (const side of [state.a, state.b]) {
    for (const row of side?.plane.rows ?? []) {
      for (const point of row.points) {
        reds.push(point.gain[0]);
        blues.push(point.gain[2]);
      }
    }
  }
  const frame = frameOf(state);
  reds.push(gainOf(state.a, frame, "r"));
  blues.push(gainOf(state.a, frame, "b"));
  const wide = (values: number[]): [number, number] => {
    const low = Math.min(...values);
    const high = Math.max(...values);
    const room = Math.max(40, 0.12 * (high - low));
    return [low - room, high + room];
  };
  return { x: wide(reds), y: wide(blues) };
}

function drawTrail(g: CanvasRenderingContext2D, state: State, s: Scale, color: string): void {
  const { log } = state;
  if (!log) return;
  const which = state.a?.info.fullGain ? "full" : "awb";
  const red = log.columns[`${which}_r`];
  const blue = log.columns[`${which}_b`];
  const step = Math.max(1, Math.floor(log.count / mostTrail));
  g.fillStyle = color;
  for (let i = 0; i < log.count; i += step) g.fillRect(s.x(red[i]!) - 1, s.y(blue[i]!) - 1, 2, 2);
}

function drawSide(
  g: CanvasRenderingContext2D,
  side: Side | null,
  name: SideName,
  s: Scale,
  c: { a: string; b: string; rule: string; quiet: string },
): void {
  const normal = side?.plane.rows.find((row) => row.name === "normal");
  if (!side || !normal) return;
  const first = normal.points[0];
  const last = normal.points[Math.min(side.plane.count, normal.points.length) - 1];
  if (!first || !last) return;
  g.strokeStyle = c[name];
  g.lineWidth = 1;
  g.setLineDash([2, 3]); // beyond these the gain is clipped
  g.strokeRect(
    s.x(first.gain[0]),
    s.y(first.gain[2]),
    s.x(last.gain[0]) - s.x(first.gain[0]),
    s.y(last.gain[2]) - s.y(first.gain[2]),
  );
  g.setLineDash([]);
  line(g, s.x(first.gain[0]), s.y(first.gain[2]), s.x(last.gain[0]), s.y(last.gain[2]));
  for (const row of side.plane.rows) {
    for (const point of row.points) {
      const x = s.x(point.gain[0]);
      const y = s.y(point.gain[2]);
      g.fillStyle = c[name];
      dot(g, x, y, row.name === "normal" ? 3 : 1.5);
      if (row.name !== "normal" || name === "b") continue;
      const text = point.kelvin > 0 ? `${point.index} · ${point.kelvin} K` : String(point.index);
      const left = x + 5 + g.measureText(text).width > s.x(s.right);
      g.textAlign = left ? "right" : "left";
      g.textBaseline = "bottom";
      g.fillText(text, left ? x - 5 : x + 5, y - 3);
    }
  }
}

function factsOf(state: State): string {
  const told = toldOf(state.a);
  if (!told) return "";
  const text: string[] = [];
  if (told.clipped_gain) text.push(`clipped ${told.clipped_gain.join(", ")}`);
  if (told.projected_gain) text.push(`foot ${told.projected_gain.join(", ")}`);
  if (told.ct_position !== undefined) {
    const end = told.ct_position < 0 ? " (lowest alone)" : told.ct_position >= 10 ? " (highest alone)" : "";
    text.push(`CT position ${told.ct_position}${end}`);
  }
  if (told.coarse_weight !== undefined) {
    text.push(`weights coarse ${told.coarse_weight.toFixed(3)}, fine ${told.fine_weight!.toFixed(3)}`);
  }
  if (told.distances) text.push(`distances ${told.distances.map((d) => d.toFixed(2)).join(", ")}`);
  return text.join(" · ");
}
