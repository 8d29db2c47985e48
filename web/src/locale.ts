// Some systems name a language that no format knows ("C"), and the plots' library asks for its number
// format while it is loaded: this stands before it.
try {
  new Intl.NumberFormat(navigator.language);
} catch {
  Object.defineProperty(navigator, "language", { value: "en", configurable: true });
}
export {};
