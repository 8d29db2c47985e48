import { defaultKeymap, history, historyKeymap, indentWithTab } from "@codemirror/commands";
import { yaml } from "@codemirror/lang-yaml";
import { HighlightStyle, syntaxHighlighting } from "@codemirror/language";
import { lintGutter, setDiagnostics, type Diagnostic } from "@codemirror/lint";
import { Annotation, EditorState } from "@codemirror/state";
import { EditorView, highlightSpecialChars, keymap, lineNumbers } from "@codemirror/view";
import { tags } from "@lezer/highlight";
import { button, counted, download, fill, h, plain, shortened } from "../dom";
import { whenDue } from "../draw/schedule";
import type { Finding } from "../engine/api";
import type { Side, State } from "../store";
import { panel, type MakePanel } from "./panel";

const pause = 50; // ms after a key until the text is tried
const mostListed = 60;
const fromOutside = Annotation.define<boolean>();
const inks = HighlightStyle.define([
  { tag: tags.comment, color: "var(--ink2)" },
  { tag: [tags.propertyName, tags.definition(tags.propertyName)], color: "var(--a)" },
]);

/** The text of tuning A, what check says of it, and the panels behind it follow. */
export const tuningPanel: MakePanel = (session) => {
  const { store } = session;
  let timer = 0;
  let shown: Side["files"] | null = null;
  // A shadow root: the editor's style then needs no exception from the page's policy.
  const host = h("div", { class: "editor" });
  const root = host.attachShadow({ mode: "open" });
  const place = document.createElement("div");
  root.append(place);
  const view = new EditorView({
    parent: place,
    root,
    state: EditorState.create({
      extensions: [
        lineNumbers(),
        highlightSpecialChars({ addSpecialChars: /[\u2028-\u202e\u2066-\u2069]/g }),
        lintGutter(),
        history(),
        yaml(),
        syntaxHighlighting(inks),
        keymap.of([...defaultKeymap, ...historyKeymap, indentWithTab]),
        EditorView.contentAttributes.of({ "aria-label": "Tuning A as YAML" }),
        EditorView.theme({
          "&": { height: "420px", fontSize: "12px", backgroundColor: "var(--paper)", color: "var(--ink)" },
          ".cm-content": { fontFamily: "ui-monospace, monospace", caretColor: "var(--ink)" },
          ".cm-gutters": { backgroundColor: "var(--paper)", color: "var(--ink2)", border: "none" },
          "&.cm-focused .cm-cursor": { borderLeftColor: "var(--ink)" },
        }),
        EditorView.updateListener.of((update) => {
          if (!update.docChanged || update.transactions.some((each) => each.annotation(fromOutside))) return;
          clearTimeout(timer);
          timer = window.setTimeout(() => void session.edit(view.state.doc.toString()), pause);
        }),
      ],
    }),
  });
  view.scrollDOM.tabIndex = 0;
  const list = h("ol", { class: "findings", "aria-live": "polite" });
  const count = h("p", { class: "note" });
  const save = async (form: "yaml" | "images"): Promise<void> => {
    if (form === "yaml") {
      const text = view.state.doc.toString();
      download(`${shortened(plain(store.state.a?.info.name || "tuning"))}.yaml`, text, "application/yaml");
      session.keep(text);
      return;
    }
    for (const file of await session.tuningFiles("images")) {
      download(file.name, file.bytes as Uint8Array<ArrayBuffer>, "application/octet-stream");
    }
  };
  const show = (state: State): void => {
    const { a, editing } = state;
    // A text of the editor's own comes back while one types on: only another's is put into it.
    if (a && a.files !== shown && !a.edited) {
      clearTimeout(timer);
      view.dispatch({
        changes: { from: 0, to: view.state.doc.length, insert: a.text },
        annotations: fromOutside.of(true),
      });
    }
    shown = a?.files ?? null;
    const errors = editing.filter((finding) => finding.severity === "error").length;
    count.textContent =
      editing.length === 0
        ? "No findings."
        : `${counted(errors, "error")}, ${counted(editing.length - errors, "warning")}. While the text has errors, the panels keep showing the last version without.`;
    view.dispatch(setDiagnostics(view.state, editing.flatMap((finding) => diagnostic(view, finding))));
    fill(list, ...editing.slice(0, mostListed).map((finding) => item(view, finding)));
  };
  const element = panel(
    "tuning",
    "Tuning A",
    "Edit it: findings and every panel follow as you type.",
    host,
    count,
    list,
    h("div", { class: "row" }, button("Download YAML", () => void save("yaml")), button("Download stored images", () => void save("images"))),
  );
  const again = whenDue(element, () => show(store.state));
  store.watch(["a", "editing"], (state, before) => {
    if (state.editing !== before.editing || state.a?.files !== before.a?.files) again();
  });
  return { element };
};

function diagnostic(view: EditorView, finding: Finding): Diagnostic[] {
  if (finding.line < 1 || finding.line > view.state.doc.lines) return [];
  const line = view.state.doc.line(finding.line);
  return [{ from: line.from, to: line.to, severity: finding.severity, message: `${finding.message} [${finding.code}]` }];
}

function item(view: EditorView, finding: Finding): HTMLElement {
  const go = (): void => {
    if (finding.line < 1 || finding.line > view.state.doc.lines) return;
    const line = view.state.doc.line(finding.line);
    view.dispatch({ selection: { anchor: line.from }, scrollIntoView: true });
    view.focus();
  };
  return h(
    "li",
    { class: finding.severity },
    button(finding.line > 0 ? `line ${finding.line}` : finding.file || "tuning", go),
    ` ${finding.severity}: ${finding.message} [${finding.code}]`,
    finding.effect ? h("span", { class: "quiet" }, ` On the camera: ${finding.effect}.`) : null,
    finding.suggestion ? h("span", { class: "quiet" }, ` Try: ${finding.suggestion}.`) : null,
  );
}
