// Panels of unequal height side by side without holes: the grid's rows are low, and every panel
// takes as many as it is high.
const row = 4; // pixels, as in the style sheet

export function pack(grid: HTMLElement): void {
  const panels = Array.from(grid.children) as HTMLElement[];
  const measure = new ResizeObserver((entries) => {
    for (const { target } of entries) {
      const panel = target as HTMLElement;
      panel.style.gridRowEnd = `span ${Math.ceil(panel.offsetHeight / row) || 1}`;
    }
  });
  for (const panel of panels) measure.observe(panel);
}
