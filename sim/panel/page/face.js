// The device's front: lens, segments, light bar, indicator LEDs and button.
import {byId, fixed, setAttribute, setText, svg} from "./dom.js";
import {give} from "./commands.js";

const STROBE = 65535;
const segments = [];
let triggers = null;
let flashEnd = 0;

function arc(from, to, radius) {
  const point = degrees => {
    const angle = degrees * Math.PI / 180;
    return `${180 + radius * Math.cos(angle)} ${160 + radius * Math.sin(angle)}`;
  };
  return `M ${point(from)} A ${radius} ${radius} 0 0 1 ${point(to)}`;
}

function colour(red, green, blue) {
  return `rgb(${Math.round(red * 255)}, ${Math.round(green * 255)}, ${Math.round(blue * 255)})`;
}

// White and colours of the illumination together: how bright, and in which colour.
function light(p) {
  const flashing = p["illumination.exposure.mode"] !== 0;
  const limit = p[flashing ? "illumination.limit.flash" : "illumination.limit.dc"];
  const white = Math.min(p["illumination.brightness.total"], limit) / 14;
  const part = name => p["illumination.rgbw"] ? Math.min(p[`illumination.brightness.${name}`] / 100, limit / 14) : 0;
  const mix = ["red", "green", "blue"].map(name => white + part(name));
  const level = Math.min(1, Math.max(...mix));
  return {level, colour: colour(...mix.map(share => share / Math.max(...mix, 1e-9)))};
}

function drawLight(p) {
  const {level, colour: shade} = light(p);
  const byExposure = p["illumination.pattern"] === STROBE || p["illumination.exposure.mode"] !== 0;
  const accepted = p["rtu.trigger.count"] - p["rtu.trigger.missed"];
  if (triggers !== null && accepted > triggers) {
    flashEnd = performance.now() + 120;
  }
  triggers = accepted;
  const shines = p["illumination.lit"] && (!byExposure || performance.now() < flashEnd);
  const names = ["lower right", "lower left", "upper left", "upper right"];
  const lit = [];
  segments.forEach(({glow, strip}, i) => {
    const on = shines && (p["illumination.segments"] >> i & 1) !== 0;
    setAttribute(strip, "stroke", on ? shade : "#46535c");
    setAttribute(strip, "stroke-opacity", on ? 0.35 + 0.65 * level : 1);
    setAttribute(glow, "stroke", shade);
    setAttribute(glow, "stroke-opacity", on ? level * 0.9 : 0);
    if (on) {
      lit.push(names[i]);
    }
  });
  const percent = Math.round(level * 100);
  setText(byId("light-text"), !p["illumination.present"] ? "no illumination module"
      : !p["illumination.lit"] ? "light off"
      : byExposure ? `light follows the exposures, ${percent} %`
      : lit.length === 4 ? `four segments lit, ${percent} %` : `${lit.join(", ") || "no segment"} lit, ${percent} %`);
}

function drawBar(p) {
  const level = p["rtu.lightbar.brightness"] / 100;
  const parts = ["red", "green", "blue"].map(name => p[`rtu.lightbar.${name}`] / 255);
  const on = level > 0 && Math.max(...parts) > 0;
  const shade = on ? colour(...parts) : "#46535c";
  setAttribute(byId("lightbar"), "fill", shade);
  setAttribute(byId("lightbar"), "fill-opacity", on ? 0.35 + 0.65 * level : 1);
  setAttribute(byId("lightbar-glow"), "fill", shade);
  setAttribute(byId("lightbar-glow"), "fill-opacity", on ? level * 0.9 : 0);
}

function drawLens(p) {
  const position = p["autofocus.position"];
  setAttribute(byId("lens"), "transform", `translate(180 160) scale(${(0.8 + 0.36 * position / 3000).toFixed(4)})`);
  byId("lens").style.opacity = p["autofocus.present"] ? 1 : 0.15;
  byId("focus-now").style.left = `${Math.min(100, Math.max(0, (position - 100) / 28))}%`;
  setText(byId("focus-text"), `${Math.round(position)} of ${p["autofocus.target"]} steps` +
      (p["autofocus.error.motor_stuck"] ? ", stuck" : p["autofocus.calibrating"] ? ", calibrating" : ""));
  if (document.activeElement !== byId("focus") || !byId("focus").matches(":active")) {
    byId("focus").value = p["autofocus.target"];
  }
  byId("doe").style.opacity = p["autofocus.doe.active"] ? 1 : 0;
}

const SHADES = {red: "#ff5a52", green: "#45d483", alter: "#ffb454"};

export function draw({properties: p}) {
  drawLight(p);
  drawBar(p);
  drawLens(p);
  for (const [name, shade] of Object.entries(SHADES)) {
    setAttribute(byId(`led-${name}`), "fill", p[`illumination.led.${name}`] ? shade : "#0f161b");
    byId(`led-${name}`).classList.toggle("on", Boolean(p[`illumination.led.${name}`]));
  }
  setText(byId("model"), p["autofocus.device_type"] ?? "");
  byId("front").classList.toggle("dead", !p.power);
  setAttribute(byId("press"), "aria-pressed", Boolean(p["button.pressed"]));
  const leds = Object.keys(SHADES).filter(name => p[`illumination.led.${name}`]);
  setAttribute(byId("front"), "aria-label", `Front of the device: ${byId("light-text").textContent}; ` +
      `light bar ${p["rtu.lightbar.brightness"]} %; LEDs ${leds.join(", ") || "off"}; ` +
      `lens at ${fixed(p["autofocus.position"], 0)}`);
}

// Down for as long as it is held, by pointer or by key.
function holdable(button) {
  let held = false;
  const down = () => {
    if (!held) {
      held = true;
      give("button down");
    }
  };
  const up = () => {
    if (held) {
      held = false;
      give("button up");
    }
  };
  button.addEventListener("pointerdown", event => {
    button.setPointerCapture(event.pointerId);
    down();
  });
  for (const name of ["pointerup", "pointercancel", "blur"]) {
    button.addEventListener(name, up);
  }
  const isKey = event => event.key === " " || event.key === "Enter";
  button.addEventListener("keydown", event => isKey(event) && !event.repeat && down());
  button.addEventListener("keyup", event => isKey(event) && up());
  addEventListener("pagehide", up);
}

export function start() {
  for (let i = 0; i < 4; ++i) {
    const path = arc(i * 90 + 9, i * 90 + 81, 84);
    const glow = svg("path", {d: path, fill: "none", "stroke-width": 22, filter: "url(#glow)"});
    const strip = svg("path", {d: path, fill: "none", "stroke-width": 18, "stroke-linecap": "round",
      id: `segment-${i}`});
    segments.push({glow, strip});
    byId("segments").append(glow, strip);
  }
  holdable(byId("press"));
  byId("focus").addEventListener("change", () => give(`set autofocus.target ${byId("focus").value}`));
}
