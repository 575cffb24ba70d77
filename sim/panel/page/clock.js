// The device's time: how it passes, and steps.
import {byId, fixed, html, setText} from "./dom.js";
import {give} from "./commands.js";

let shown = null;

export function draw({properties: p}) {
  setText(byId("time"), `${fixed(p["clock.time"], 2)} s`);
  const mode = p["clock.mode"];
  const select = byId("clock-mode");
  if (![...select.options].some(option => option.value === mode)) {
    select.append(html("option", {value: mode}, mode));
  }
  if (mode !== shown) {
    select.value = shown = mode;
  }
  for (const button of document.querySelectorAll(".step")) {
    button.disabled = mode !== "stepped";
  }
}

export function start() {
  byId("clock-mode").addEventListener("change", () => give(`clock ${byId("clock-mode").value}`));
  for (const button of document.querySelectorAll(".step")) {
    button.addEventListener("click", () => give(`step ${button.dataset.step}`));
  }
}
