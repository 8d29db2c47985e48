import { fill, h } from "../dom";
import { whenDue } from "../draw/schedule";
import type { Json } from "../engine/api";
import { panel, type MakePanel } from "./panel";

/** Which panel draws what a fact of the explanation is about. */
const places: [RegExp, string][] = [
  [/gain|ct_position|distances|coarse_weight|fine_weight/, "gain"],
  [/matrix|polynomial|low_light|lv_row|method|gamut/, "matrix"],
  [/ring|average|weights|written|frames|resting|settl/, "time"],
  [/^(color|slot|bracket|mired|outdoor|saturation_ratio|lsp|step|color_map|Global|Luma|Hue|Saturation|LSP|ColorMap)/, "engine"],
  [/^(frame|lv|cct|flash|scene|capture)$/, "light"],
];

/** What `explain` says, every fact with a way to the panel that shows it. */
export const whyPanel: MakePanel = (session) => {
  const { store } = session;
  const content = h("div", { class: "why" });
  const filter = h("input", { type: "search", "aria-label": "Facts to show", placeholder: "filter" });
  const show = (): void => {
    const told = store.state.a?.selected?.explanation;
    const wanted = filter.value.trim().toLowerCase();
    if (!told || typeof told !== "object") return;
    const open = new Set(Array.from(content.querySelectorAll("details[open]"), (d) => (d as HTMLElement).dataset["key"]));
    const first = content.childElementCount === 0;
    fill(
      content,
      ...Object.entries(told as Record<string, Json>).map(([key, value]) => {
        const isOpen = wanted !== "" || (first ? key === "ccm" || key === "frame" : open.has(key));
        const group = h("details", { open: isOpen, "data-key": key }, h("summary", {}, key));
        const tell = (): void => {
          if (group.open && !group.querySelector("table")) group.append(facts(value, key, wanted));
        };
        group.addEventListener("toggle", tell);
        tell();
        return group;
      }),
    );
  };
  const element = panel("why", "Why", "Every step of this frame, from the library's own traces and results.", filter, content);
  const again = whenDue(element, show);
  filter.addEventListener("input", again);
  store.watch(["a"], (state, before) => {
    if (state.a?.selected !== before.a?.selected) again();
  });
  return { element };
};

function facts(value: Json, path: string, wanted: string): HTMLElement {
  const rows: HTMLElement[] = [];
  const walk = (each: Json, name: string): void => {
    if (each !== null && typeof each === "object" && !Array.isArray(each)) {
      for (const [key, inner] of Object.entries(each)) walk(inner, name === "" ? key : `${name} ${key}`);
      return;
    }
    if (wanted !== "" && !name.toLowerCase().includes(wanted)) return;
    const text = Array.isArray(each) ? each.map((v) => (typeof v === "object" ? JSON.stringify(v) : String(v))).join(", ") : String(each);
    const place = placeOf(name) ?? placeOf(path);
    const label = name.replaceAll("_", " ");
    rows.push(
      h("tr", {}, h("th", { scope: "row" }, place ? h("a", { href: "#" + place, click: (e) => follow(e, place) }, label) : label), h("td", {}, text)),
    );
  };
  walk(value, typeof value === "object" && value !== null && !Array.isArray(value) ? "" : path);
  return h("table", {}, h("tbody", {}, ...rows));
}

function placeOf(name: string): string | null {
  return places.find(([words]) => words.test(name))?.[1] ?? null;
}

function follow(event: Event, place: string): void {
  event.preventDefault();
  const target = document.getElementById(place);
  target?.scrollIntoView({ block: "start" });
  target?.querySelector<HTMLElement>("h2")?.focus();
}
