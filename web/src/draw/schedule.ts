// When panels draw: what is in sight at the next refresh of the screen, however often it was asked
// for until then, the first ones first; the others one at a time once nothing has changed for a while.
const pause = 120; // ms without a change
let share = 8; // ms of a refresh

interface Drawing {
  element: HTMLElement;
  draw: () => void;
  due: boolean;
}

const all: Drawing[] = [];
const inSight = new WeakSet<Element>();
let asked = false;
let timer = 0;
let turn = 0; // whose it is

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
    requestAnimationFrame(drawInSight);
  }
}

/** For a part of the refresh; the next one goes on where this one stops. */
function drawInSight(): void {
  const end = performance.now() + share;
  for (let drawn = 0; drawn < all.length; ++drawn, turn = (turn + 1) % all.length) {
    const each = all[turn]!;
    if (!each.due || !inSight.has(each.element)) continue;
    if (performance.now() > end) {
      requestAnimationFrame(drawInSight);
      return;
    }
    drawNow(each);
  }
  turn = 0;
  asked = false;
  for (const tell of waiting.splice(0)) tell();
}

const waiting: (() => void)[] = [];

/** When all in sight that was asked for is drawn; nothing is drawn while the page is hidden. */
export const whenDrawn = (): Promise<void> =>
  new Promise((resolve) => {
    if (!asked) resolve();
    else waiting.push(resolve);
  });

/** How much of a refresh drawing may take; the page answers in the rest. */
export const setShare = (ms: number): void => {
  share = ms;
};

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

/** Whatever was asked for, without waiting: before all is printed, saved or measured. */
export const drawAll = (): void => all.forEach((each) => each.due && drawNow(each));
addEventListener("beforeprint", drawAll);

/** Draws once now; what is returned asks for the next time. */
export function whenDue(element: HTMLElement, draw: () => void): () => void {
  const drawing = { element, draw, due: false };
  all.push(drawing);
  sight.observe(element);
  drawNow(drawing);
  return () => ask(drawing);
}
