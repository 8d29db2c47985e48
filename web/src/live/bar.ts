// What is known of a live log, and the way to stop it and to return to it.
import { button, counted, fill, h } from "../dom";
import type { Panel } from "../panels/panel";
import type { Session } from "../session";
import type { LiveState } from "../store";

interface Verdict {
  equal: boolean;
  frames: number;
  differing_frames: number;
  lines_compared: number;
  first_difference: { frame: number; value: string; phone: string; desk: string | null; likely_cause: string; field: string } | null;
}

export function liveBar(session: Session): Panel {
  const { store } = session;
  const status = h("span", { class: "status", role: "status" });
  const numbers = h("span", { class: "numbers" });
  const verdict = h("span", { class: "verdict" });
  const turn = button("Stop", () => {
    const { live } = store.state;
    if (live) store.set({ live: { ...live, following: !live.following } });
  });
  const element = h("section", { id: "live", "aria-label": "Live log", hidden: true }, status, turn, numbers, verdict);
  let said = "";
  const show = (live: LiveState | null): void => {
    element.hidden = live === null;
    if (!live) return;
    const words = statusOf(live);
    if (words !== said) status.textContent = said = words; // told once to those who listen
    element.dataset["state"] = live.ended ? "ended" : live.following && live.connected ? "live" : "stopped";
    turn.textContent = live.following ? "Stop" : live.ended ? "Go to the end" : "Return to live";
    numbers.textContent =
      counted(live.received, "frame") +
      (live.perSecond !== null && !live.ended ? `, ${live.perSecond.toFixed(0)} a second` : "") +
      (live.missed > 0 ? ` · ${counted(live.missed, "frame")} missed: the numbers go on behind them` : "");
    fill(verdict, verdictOf(live.verify as unknown as Verdict | null));
    verdict.dataset["equal"] = String((live.verify as unknown as Verdict | null)?.equal ?? "");
  };
  store.watch(["live"], ({ live }) => show(live));
  show(store.state.live);
  return { element };
}

function statusOf(live: LiveState): string {
  if (live.ended) return "The log has ended";
  if (!live.connected) return live.received === 0 ? "Connecting…" : "Connection lost; trying again…";
  if (live.received === 0) return "Waiting for the first frame: is the camera open, and are the traces on (imgtune props)?";
  return live.following ? "Live" : "Stopped; the log goes on";
}

function verdictOf(told: Verdict | null): string {
  if (!told || told.lines_compared === 0) return "";
  const { first_difference: first } = told;
  if (!first) return `Phone and desk equal: ${counted(told.frames, "frame")}, ${counted(told.lines_compared, "trace line")}`;
  const where = first.field ? ` (${first.field})` : "";
  return `Phone and desk differ in ${told.differing_frames} of ${counted(told.frames, "frame")}; first in frame ${first.frame}, ${first.value}: phone ${first.phone}, desk ${first.desk ?? "no such line"}; likely cause: ${first.likely_cause}${where}`;
}
