// The six pins: level, function, direction; a click puts the next level on the wire.
import {byId, html, setAttribute, setText} from "./dom.js";
import {give} from "./commands.js";

const FUNCTIONS = ["output", "flash out", "input", "trigger", "encoder A", "encoder B"];
const TYPES = ["npn", "pnp", "push-pull"];
const NEXT = {open: "high", high: "low", low: "open"};
const pins = [];

const isOutput = func => func < 2;

export function draw({properties: p}) {
  pins.forEach((pin, i) => {
    const func = p[`dio.${i}.func`];
    const output = isOutput(func);
    const level = p[`dio.${i}.terminal`];
    const value = p[`dio.${i}.value`];
    setAttribute(pin.item, "data-level", level);
    setAttribute(pin.item, "data-value", value);
    setText(pin.direction, output ? "out ↑" : "in ↓");
    setText(pin.func, FUNCTIONS[func] ?? func);
    setText(pin.type, TYPES[p[`dio.${i}.type`]] ?? "");
    setText(pin.level, level);
    setText(pin.value, value ? "on" : "off");
    setAttribute(pin.wire, "aria-label", `Wire of pin ${i}: ${level}, ${FUNCTIONS[func]}, ${value ? "on" : "off"}`);
  });
}

export function start() {
  for (let i = 0; i < 6; ++i) {
    const part = name => html("span", {class: name});
    const pin = {direction: part("direction"), func: part("func"), type: part("type"),
      level: part("level"), value: part("value")};
    pin.wire = html("button", {type: "button", class: "wire", id: `wire-${i}`,
      title: "Puts the next level on the wire: high, low, open"}, html("span", {class: "plug", "aria-hidden": "true"}), pin.level);
    pin.item = html("li", {id: `pin-${i}`}, html("strong", {}, String(i)), pin.value, pin.func,
      pin.direction, pin.type, pin.wire);
    pin.wire.addEventListener("click", () => give(`drive ${i} ${NEXT[pin.level.textContent] ?? "high"}`));
    pins.push(pin);
    byId("pin-list").append(pin.item);
  }
}
