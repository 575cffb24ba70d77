// Temperatures as curves over the device's time, with the limits of the illumination.
import {byId, fixed, setAttribute, setText, svg} from "./dom.js";

const NAMES = {inside: "illumination.temperature.internal", outside: "illumination.temperature.external",
  ranger: "ranging.temperature"};
const SPAN = 300;  // s that the picture shows
const POINTS = 600;  // at most, so many
const [LEFT, RIGHT, TOP, BOTTOM] = [28, 352, 8, 166];
let points = [];  // {time, inside, outside, ranger}
const parts = {};

function take(p) {
  const point = {time: p["clock.time"]};
  for (const [name, property] of Object.entries(NAMES)) {
    point[name] = p[property];
  }
  const last = points.at(-1);
  if (last && point.time < last.time) {
    points = [];  // another device, or one that started anew
  }
  const same = last && Object.keys(NAMES).every(name => Math.abs(point[name] - last[name]) < 0.05);
  if (!last || point.time - last.time >= SPAN / POINTS || (!same && point.time > last.time)) {
    points.push(point);
  }
  while (points.length > 2 && points[1].time < point.time - SPAN) {
    points.shift();
  }
  if (points.length > 2 * POINTS) {
    points = points.filter((_, i) => i % 2 === 0);
  }
  return point;
}

export function draw({properties: p}) {
  const now = take(p);
  const limit = p["illumination.limit.ot_off"];
  const back = limit - p["illumination.limit.ot_decrease"];
  const all = points.flatMap(point => Object.keys(NAMES).map(name => point[name]));
  const low = Math.min(0, ...all) - 5;
  const high = Math.max(limit, ...all) + 8;
  const x = time => RIGHT - (now.time - time) / SPAN * (RIGHT - LEFT);
  const y = degrees => BOTTOM - (degrees - low) / (high - low) * (BOTTOM - TOP);
  for (const name of Object.keys(NAMES)) {
    const line = [...points, now].map(point =>
      `${Math.max(LEFT, x(point.time)).toFixed(1)},${y(point[name]).toFixed(1)}`);
    setAttribute(parts[name], "points", line.join(" "));
    setText(byId(name), `${fixed(now[name], 1)} °C`);
  }
  for (const [name, degrees] of [["off", limit], ["back", back]]) {
    setAttribute(parts[name], "y1", y(degrees).toFixed(1));
    setAttribute(parts[name], "y2", y(degrees).toFixed(1));
    setAttribute(parts[`${name}Text`], "y", (y(degrees) + 3).toFixed(1));
    setText(parts[`${name}Text`], degrees);
  }
  setAttribute(parts.zero, "y1", y(0).toFixed(1));
  setAttribute(parts.zero, "y2", y(0).toFixed(1));
  setAttribute(parts.zeroText, "y", (y(0) + 3).toFixed(1));
  setText(byId("off-limit"), `${limit} °C` + (p["illumination.flags.over_temperature"] ? ", too hot" : ""));
  setAttribute(byId("curves"), "aria-label",
      `Temperatures: inside ${fixed(now.inside, 0)}, outside ${fixed(now.outside, 0)}, ` +
      `ranging sensor ${fixed(now.ranger, 0)}; off limit ${limit}, back at ${back} degrees`);
}

export function start() {
  const add = (name, element) => byId("curves").append(parts[name] = element);
  for (const name of ["zero", "back", "off"]) {
    add(name, svg("line", {x1: LEFT, x2: RIGHT, class: `level ${name}`}));
    add(`${name}Text`, svg("text", {x: LEFT - 5, "text-anchor": "end", class: "scale"}, name === "zero" ? "0" : ""));
  }
  for (const name of Object.keys(NAMES)) {
    add(name, svg("polyline", {class: `curve ${name}`}));
  }
  byId("curves").append(svg("text", {x: LEFT, y: 180, class: "scale"}, "5 min ago"),
      svg("text", {x: RIGHT, y: 180, "text-anchor": "end", class: "scale"}, "now"));
}
