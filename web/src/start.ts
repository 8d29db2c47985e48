// Runs first, alone: whatever stops the page before its panels stand is told in their place.
const tell = (reason: unknown): void => {
  const app = document.getElementById("app");
  if (!app || app.querySelector("main")) return;
  const line = document.createElement("pre");
  line.setAttribute("role", "alert");
  line.textContent = `The page could not start: ${String(reason)}`;
  app.replaceChildren(line);
};
addEventListener("error", (event) => tell(event.error ?? event.message));
addEventListener("unhandledrejection", (event) => tell(event.reason));
export {};
