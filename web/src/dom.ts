// Elements without a framework. Text is only ever set as text.

type Child = Node | string | number | null | undefined | false;
type Attributes = Record<string, string | number | boolean | ((event: Event) => void) | undefined>;

export function h<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  attributes: Attributes = {},
  ...children: Child[]
): HTMLElementTagNameMap[K] {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value === undefined || value === false) continue;
    if (typeof value === "function") element.addEventListener(name, value);
    else element.setAttribute(name, value === true ? "" : String(value));
  }
  append(element, children);
  return element;
}

export function append(element: Element, children: Child[]): void {
  for (const child of children) {
    if (child === null || child === undefined || child === false) continue;
    element.append(child instanceof Node ? child : String(child));
  }
}

export function fill(element: Element, ...children: Child[]): void {
  element.replaceChildren();
  append(element, children);
}

/** A select with labelled options; `choose` gets the value. */
export function choice(
  label: string,
  options: [string, string][],
  value: string,
  choose: (value: string) => void,
): HTMLLabelElement {
  const select = h("select", {
    "aria-label": label,
    change: (event) => choose((event.target as HTMLSelectElement).value),
  });
  for (const [key, text] of options) select.append(h("option", { value: key }, text));
  select.value = value;
  return h("label", { class: "choice" }, label, select);
}

export const button = (text: string, click: () => void, title?: string): HTMLButtonElement =>
  h("button", { type: "button", click, title, "aria-label": title }, text);

export function download(name: string, content: BlobPart, type: string): void {
  const url = URL.createObjectURL(new Blob([content], { type }));
  h("a", { href: url, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(url), 10_000);
}

/** Runs at most once a screen refresh. */
export function onFrame(action: () => void): () => void {
  let asked = false;
  return () => {
    if (asked) return;
    asked = true;
    requestAnimationFrame(() => {
      asked = false;
      action();
    });
  };
}
