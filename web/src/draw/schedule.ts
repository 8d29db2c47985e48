// When panels draw: what is in sight at the next refresh of the screen, however often it was asked
// for until then; the others one at a time once nothing has changed for a while.
const pause = 120; // ms without a change

interface Drawing {
  element: HTMLElement;
  draw: () => void;
  due: boolean;
}

const all: Drawing[] = [];
const inSight = new WeakSet<Element>();
let asked = false;
let timer = 0;

function drawNow(drawing: Drawing): void {
  drawing.due = false;
  drawing.draw();
}

function ask(drawing: Drawing): void {
  drawing.due = true;
  if (!inSight.has(drawing.element)) {
    clearTimeout(timer);
    timer = window.setTimeout(drawOneOutOfSight, pause);
  } else if (!asked) {
    asked = true;
    requestAnimationFrame(() => {
      asked = false;
      for (const each of all) if (each.due && inSight.has(each.element)) drawNow(each);
    });
  }
}

function drawOneOutOfSight(): void {
  const next = all.find((each) => each.due && !inSight.has(each.element));
  if (!next) return;
  drawNow(next);
  timer = window.setTimeout(drawOneOutOfSight);
}

const sight = new IntersectionObserver(
  (entries) => {
    for (const { target, isIntersecting } of entries) {
      if (!isIntersecting) inSight.delete(target);
      else inSight.add(target);
    }
    for (const each of all) if (each.due && inSight.has(each.element)) ask(each);
  },
  { rootMargin: "200px 0px" },
);
addEventListener("beforeprint", () => all.forEach((each) => each.due && drawNow(each)));

/** Draws once now; what is returned asks for the next time. */
export function whenDue(element: HTMLElement, draw: () => void): () => void {
  const drawing = { element, draw, due: false };
  all.push(drawing);
  sight.observe(element);
  drawNow(drawing);
  return () => ask(drawing);
}
