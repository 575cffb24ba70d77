// What the ranging sensor sees, as a heat map, and the scene in front of it.
import {byId, setAttribute, setText, svg} from "./dom.js";
import {give} from "./commands.js";

const FARTHEST = 4000;  // mm
const WORDS = {none: "", plane: "800", tilted: "800 30 0", step: "500 1200", hole: "600 1500"};
let cells = [];

// Near is warm, far is cool; by the logarithm, as distances are felt.
const NEAREST = 250;
const SHADES = [[247, 178, 92], [232, 116, 97], [168, 84, 122], [88, 82, 140], [38, 70, 110], [24, 44, 68]];

function shade(distance) {
  const far = Math.min(1, Math.max(0, Math.log(distance / NEAREST) / Math.log(FARTHEST / NEAREST)));
  const at = Math.min(far * (SHADES.length - 1), SHADES.length - 1.001);
  const [near, next] = SHADES.slice(Math.floor(at), Math.floor(at) + 2);
  return `rgb(${near.map((part, i) => Math.round(part + (next[i] - part) * (at % 1))).join(", ")})`;
}

function lay(count) {
  const side = Math.sqrt(count);
  const size = 160 / side;
  byId("grid").replaceChildren();
  cells = Array.from({length: count}, (_, i) => {
    const [x, y] = [i % side * size, Math.floor(i / side) * size];
    const zone = svg("rect", {x: x + 1, y: y + 1, width: size - 2, height: size - 2, rx: 4});
    const text = svg("text", {x: x + size / 2, y: y + size / 2 + size / 8, "text-anchor": "middle",
      "font-size": size / (side > 4 ? 2.7 : 3.2)});
    byId("grid").append(zone, text);
    return {zone, text};
  });
}

export function draw({properties: p}) {
  const works = p.power && p["ranging.view"] !== "none";
  const distances = works ? p["ranging.view"].split(" ").map(Number) : Array(p["ranging.resolution"]).fill(0);
  if (cells.length !== distances.length) {
    lay(distances.length);
  }
  distances.forEach((distance, i) => {
    setAttribute(cells[i].zone, "fill", distance ? shade(distance) : "var(--empty)");
    setText(cells[i].text, distance || "·");
    cells[i].text.classList.toggle("none", !distance);
  });
  const targets = distances.filter(distance => distance);
  const range = targets.length ? `${Math.min(...targets)} to ${Math.max(...targets)} mm` : "nothing in sight";
  setAttribute(byId("grid"), "aria-label", `Distances by zone: ${works ? range : "the sensor does not range"}`);
  setText(byId("ranging-text"),
      `${p["ranging.scene"]} · ${works ? range : p["ranging.power"] ? "does not range" : "asleep"}`);
  byId("rangefinder").style.fill = works && targets.length ? "#7a2f2c" : "#0b1013";
}

export function start() {
  byId("shape").addEventListener("change", () => byId("scene-words").value = WORDS[byId("shape").value]);
  byId("scene").addEventListener("submit", event => {
    event.preventDefault();
    give(`scene ${byId("shape").value} ${byId("scene-words").value}`.trim());
  });
}
