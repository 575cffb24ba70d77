// The device's orientation as a body that turns, and the hands that turn it.
import {byId, fixed, setAttribute, setText, svg} from "./dom.js";
import {give} from "./commands.js";

const NAMES = ["yaw", "pitch", "roll"];
const LIMITS = {yaw: 180, pitch: 90, roll: 180};
const DEGREE = Math.PI / 180;

// Half the body's size: forward, left, up.
const SIZE = [26, 48, 40];
const FACES = [
  {axis: 0, sign: 1, name: "front"}, {axis: 0, sign: -1, name: "back"}, {axis: 1, sign: 1, name: "side"},
  {axis: 1, sign: -1, name: "side"}, {axis: 2, sign: 1, name: "top"}, {axis: 2, sign: -1, name: "bottom"},
];

// From the body into the room: roll, then pitch, then yaw.
function rotation({yaw, pitch, roll}) {
  const [cy, sy, cp, sp, cr, sr] = [yaw, pitch, roll].flatMap(a => [Math.cos(a * DEGREE), Math.sin(a * DEGREE)]);
  return [
    [cy * cp, cy * sp * sr - sy * cr, cy * sp * cr + sy * sr],
    [sy * cp, sy * sp * sr + cy * cr, sy * sp * cr - cy * sr],
    [-sp, cp * sr, cp * cr],
  ];
}

const turn = (m, v) => m.map(row => row[0] * v[0] + row[1] * v[1] + row[2] * v[2]);

// Seen from in front, a little from the left and from above.
const EYE = rotation({yaw: 28, pitch: 0, roll: 0});
const LIFT = 22 * DEGREE;

function seen(v) {
  const [x, y, z] = turn(EYE, v);
  return [y, -(z * Math.cos(LIFT) - x * Math.sin(LIFT)), x * Math.cos(LIFT) + z * Math.sin(LIFT)];
}

function corners({axis, sign}) {
  const [b, c] = [0, 1, 2].filter(other => other !== axis);
  return [[1, 1], [1, -1], [-1, -1], [-1, 1]].map(([i, j]) => {
    const corner = [0, 0, 0];
    corner[axis] = sign * SIZE[axis];
    corner[b] = i * SIZE[b];
    corner[c] = j * SIZE[c];
    return corner;
  });
}

function ring(radius, forward) {
  return Array.from({length: 24}, (_, i) =>
    [SIZE[0] + forward, radius * Math.cos(i * 15 * DEGREE), radius * Math.sin(i * 15 * DEGREE)]);
}

const shapes = new Map();

function polygon(key, attributes, points, visible) {
  let shape = shapes.get(key);
  if (!shape) {
    shape = svg("polygon", attributes);
    shapes.set(key, shape);
    byId("body").append(shape);
  }
  setAttribute(shape, "points", points.map(point => `${point[0].toFixed(1)},${point[1].toFixed(1)}`).join(" "));
  setAttribute(shape, "visibility", visible ? "visible" : "hidden");
}

function drawBody(angles) {
  const matrix = rotation(angles);
  const view = v => seen(turn(matrix, v));
  polygon("ground", {class: "ground"}, Array.from({length: 32}, (_, i) =>
    seen([78 * Math.cos(i * 11.25 * DEGREE), 78 * Math.sin(i * 11.25 * DEGREE), -62])), true);
  FACES.forEach((face, i) => {
    const normal = [0, 0, 0];
    normal[face.axis] = face.sign;
    polygon(i, {class: `face ${face.name}`}, corners(face).map(view), view(normal)[2] > 0);
  });
  const front = view([1, 0, 0])[2] > 0;
  polygon("lens", {class: "barrel"}, ring(22, 2).map(view), front);
  polygon("glass", {class: "glass"}, ring(13, 4).map(view), front);
}

const present = {yaw: 0, pitch: 0, roll: 0};
let gesture = 0;
let wanted = null;  // what the hand wants, while a command is on its way
let busy = false;

export function draw({properties: p}) {
  for (const name of NAMES) {
    present[name] = p[`orientation.${name}`];
    setText(byId(`${name}-text`), `${fixed(present[name], 1)}°`);
    if (!byId(name).matches(":active")) {
      byId(name).value = Math.round(present[name]);
    }
  }
  drawBody(present);
  setAttribute(byId("body"), "aria-label", "The device as it lies: " +
      NAMES.map(name => `${name} ${fixed(present[name], 0)} degrees`).join(", "));
  setText(byId("hub"), p["hub.running"] ? `sensor hub on, ${p["hub.samples"]} samples` : "sensor hub off");
}

// Only the newest of what the hand wants: a command at a time.
async function tilt(angles) {
  wanted = angles;
  if (busy) {
    return;
  }
  busy = true;
  while (wanted) {
    const {yaw, pitch, roll} = wanted;
    wanted = null;
    await give(`tilt ${yaw} ${pitch} ${roll}`, `tilt ${gesture}`);
  }
  busy = false;
}

const wrap = (angle, limit) => limit === 90
    ? Math.max(-90, Math.min(90, angle))
    : ((angle + 540) % 360 + 360) % 360 - 180;

function rounded(angles) {
  return Object.fromEntries(NAMES.map(name => [name, Math.round(wrap(angles[name], LIMITS[name]) * 10) / 10]));
}

function draggable(body) {
  let from = null;
  body.addEventListener("pointerdown", event => {
    body.setPointerCapture(event.pointerId);
    ++gesture;
    from = {x: event.clientX, y: event.clientY, angles: {...present}};
  });
  body.addEventListener("pointermove", event => {
    if (!from) {
      return;
    }
    const across = (event.clientX - from.x) / 2;
    const down = (event.clientY - from.y) / 2;
    const {yaw, pitch, roll} = from.angles;
    tilt(rounded(event.shiftKey ? {yaw, pitch, roll: roll + across} : {yaw: yaw + across, pitch: pitch + down, roll}));
  });
  for (const name of ["pointerup", "pointercancel"]) {
    body.addEventListener(name, () => from = null);
  }
}

export function start() {
  draggable(byId("body"));
  for (const name of NAMES) {
    byId(name).addEventListener("pointerdown", () => ++gesture);
    byId(name).addEventListener("focus", () => ++gesture);
    byId(name).addEventListener("input", () =>
      tilt(rounded({...present, ...wanted, [name]: Number(byId(name).value)})));
  }
  byId("level").addEventListener("click", () => {
    ++gesture;
    tilt({yaw: 0, pitch: 0, roll: 0});
  });
}
