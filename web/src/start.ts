// Runs first, alone: whatever goes wrong before the page is ready is told in its place.
const tell = (error: unknown): void => {
  if (document.documentElement.dataset["ready"] === "true") return;
  const line = document.createElement("pre");
  line.setAttribute("role", "alert");
  line.textContent = `The page could not start: ${String(error)}`;
  document.getElementById("app")?.replaceChildren(line);
};
addEventListener("error", (event) => tell(event.error ?? event.message));
addEventListener("unhandledrejection", (event) => tell(event.reason));
export {};
