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
    element.append(child instanceof Node ? child : plain(String(child)));
  }
}

/** Control characters and what turns the direction of writing, told by their numbers. */
export const plain = (text: string): string =>
  text.replace(/[\0-\x08\x0b-\x1f\x7f-\x9f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]/g, (mark) =>
    mark === "\r" ? "" : `\\u{${mark.charCodeAt(0).toString(16)}}`,
  );

const longestName = 60;

/** A name from a file: cut when it is long, the whole of it in the title. */
export function named(name: string, before = "", className?: string): HTMLElement {
  const long = name.length > longestName;
  return h(
    "span",
    { class: className, title: long ? plain(name.slice(0, 4000)) : undefined },
    before + shortened(name),
  );
}
export const shortened = (name: string): string =>
  name.length > longestName ? Array.from(name).slice(0, longestName).join("") + "…" : name;

export const counted = (count: number, one: string, many = one + "s"): string => `${count} ${count === 1 ? one : many}`;

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
