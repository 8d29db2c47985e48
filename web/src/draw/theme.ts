// The colours of the style sheet, for what is drawn on canvases.

export interface Colors {
  a: string;
  b: string;
  target: string;
  quiet: string;
  ink: string;
  ink2: string;
  rule: string;
  paper: string;
  mark: string;
  clip: string;
  flicker: string;
  font: string;
}

let known: Colors | null = null; // asking the style sheet costs a layout
const forget = (): void => void (known = null);
document.addEventListener("themechange", forget);
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", forget);

export const colors = (): Colors => (known ??= fromStyleSheet());

function fromStyleSheet(): Colors {
  const style = getComputedStyle(document.documentElement);
  const of = (name: string): string => style.getPropertyValue("--" + name).trim();
  return {
    a: of("a"),
    b: of("b"),
    target: of("target"),
    quiet: of("quiet"),
    ink: of("ink"),
    ink2: of("ink2"),
    rule: of("rule"),
    paper: of("paper"),
    mark: of("mark"),
    clip: of("clip"),
    flicker: of("flicker"),
    font: "11px " + style.fontFamily,
  };
}

export type Theme = "auto" | "light" | "dark";

export function setTheme(theme: Theme): void {
  document.documentElement.dataset["theme"] = theme;
  document.dispatchEvent(new Event("themechange"));
}
