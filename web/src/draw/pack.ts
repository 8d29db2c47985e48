// Panels of unequal height side by side without holes: the grid's rows are low, and every panel
// takes as many as it is high.
import { onFrame } from "../dom";

const row = 4; // pixels, as in the style sheet

export function pack(grid: HTMLElement): void {
  const panels = Array.from(grid.children) as HTMLElement[];
  // Not while sizes are told: a panel that moves then is told anew, and again.
  const place = onFrame(() => {
    const spans = panels.map((panel) => `span ${Math.ceil(panel.offsetHeight / row) || 1}`);
    panels.forEach((panel, i) => (panel.style.gridRowEnd = spans[i]!));
  });
  const measure = new ResizeObserver(place);
  for (const panel of panels) measure.observe(panel);
}
