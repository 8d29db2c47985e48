import { button, choice, counted, fill, h } from "../dom";
import type { State } from "../store";
import { panel, type MakePanel } from "./panel";

const mostRows = 400;

/** A and B: the fields in which they differ. */
export const comparePanel: MakePanel = (session) => {
  const { store } = session;
  const show = h("div", { class: "row" });
  const table = h("tbody");
  const count = h("p", { class: "note" });
  show.append(
    choice("panels show", [["overlay", "A and B overlaid"], ["difference", "B − A"]], store.state.show, (value) =>
      store.set({ show: value as "overlay" | "difference" }),
    ),
    button("Swap A and B", () => session.swap(), "Swap A and B, as to edit B"),
    button("Drop B", () => session.dropB()),
  );
  const update = async (state: State): Promise<void> => {
    element.hidden = !state.b;
    if (!state.a || !state.b) return;
    const differences = await session.fieldDifferences();
    count.textContent =
      differences.length === 0
        ? "The tunings are equal."
        : `${counted(differences.length, "field differs", "fields differ")}${differences.length > mostRows ? `; the first ${mostRows} are listed` : ""}.`;
    fill(
      table,
      ...differences.slice(0, mostRows).map((d) =>
        h("tr", {}, h("th", { scope: "row" }, d.field), h("td", { class: "side-a" }, d.a), h("td", { class: "side-b" }, d.b)),
      ),
    );
  };
  const element = panel(
    "compare",
    "A against B",
    "",
    show,
    count,
    h(
      "div",
      { class: "scroll", tabindex: 0, role: "region", "aria-label": "Fields that differ" },
      h("table", {}, h("thead", {}, h("tr", {}, ...["field", "A", "B"].map((t) => h("th", { scope: "col" }, t)))), table),
    ),
  );
  store.watch(["a", "b"], (state, before) => {
    if (state.a?.info !== before.a?.info || state.b?.info !== before.b?.info || !state.b !== !before.b) {
      void update(state).catch((error: unknown) => session.fault("The tunings cannot be compared", error));
    }
  });
  void update(store.state);
  return { element };
};
