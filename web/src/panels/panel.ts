import { h } from "../dom";
import type { Session } from "../session";

export interface Panel {
  element: HTMLElement;
}

export type MakePanel = (session: Session) => Panel;

/** A panel's frame: a heading, what it says of itself, and its content. */
export function panel(id: string, title: string, note: string, ...content: Node[]): HTMLElement {
  return h(
    "section",
    { class: "panel", id, "aria-labelledby": id + "-title" },
    h("h2", { id: id + "-title" }, title),
    note ? h("p", { class: "note" }, note) : null,
    ...content,
  );
}

export const gainText = (value: number): string => (value / 512).toFixed(3);
export const signed = (value: number, digits = 0): string => (value > 0 ? "+" : "") + value.toFixed(digits);
