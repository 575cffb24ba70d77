// Device state, power, sensors, counters, and the modules that can be pulled.
import {byId, html, setAttribute, setText} from "./dom.js";
import {give} from "./commands.js";
import {device} from "./feed.js";

const STATES = {1: "boot", 2: "confirm", 3: "running", 4: "find me", 5: "warning", 6: "error",
  9: "preview network reset", 10: "preview localize"};
// Those with a property of their own are pulled by it, the others by their node.
const MODULES = [
  {name: "Illumination", property: "illumination.present"},
  {name: "Autofocus", property: "autofocus.present"},
  {name: "Real-time unit", node: "/dev/r47-rtu-driver"},
  {name: "Ranging", node: "/dev/r47-tof-driver"},
  {name: "Sensor hub", node: "/dev/i2c-2"},
  {name: "GPIO chip", node: "/dev/gpiochip1"},
];

const isThere = ({property, node}) => Boolean(property ? device.properties[property] : device.nodes[node]);

function pull(module) {
  const there = isThere(module);
  give(module.property ? `set ${module.property} ${!there}` : `node ${there ? "remove" : "restore"} ${module.node}`);
}

export function draw({properties: p}) {
  setText(byId("device-state"), p.power ? `${p["system.state"]} ${STATES[p["system.state"]] ?? ""}` : "no power");
  setAttribute(byId("device-state"), "data-state", p.power ? p["system.state"] : "off");
  setText(byId("supply"), p["rtu.power"] === "poe" ? "PoE" : "24 V");
  setText(byId("heartbeat"), p["system.alive"] ? "software alive" : "no heartbeat");
  setAttribute(byId("power"), "aria-pressed", Boolean(p.power));
  setText(byId("power"), p.power ? "Power on" : "Power off");
  for (const choice of document.querySelectorAll(".choice")) {
    setAttribute(choice, "aria-pressed", String(p[choice.dataset.property]) === choice.dataset.value);
  }
  for (const module of MODULES) {
    const there = isThere(module);
    setAttribute(module.button, "aria-pressed", there);
    setText(module.state, there ? "fitted" : "pulled");
  }
  for (const sensor of ["imx296", "imx567"]) {
    setText(byId(`frames-${sensor}`), p[`${sensor}.frames`]);
  }
  setText(byId("triggers"), p["rtu.trigger.count"]);
  setText(byId("missed"), p["rtu.trigger.missed"]);
  byId("missed").classList.toggle("bad", p["rtu.trigger.missed"] > 0);
  setAttribute(byId("continuous"), "aria-pressed", Boolean(p["rtu.trigger.continuous"]));
  setText(byId("exposure"), `${p["rtu.trigger.rate"]} Hz, exposure ${p["rtu.exposure.time"]} µs`);
}

export function start() {
  for (const module of MODULES) {
    module.state = html("span", {class: "module-state"});
    module.button = html("button", {type: "button", class: "module"}, `${module.name} `, module.state);
    module.button.addEventListener("click", () => pull(module));
    byId("module-list").append(html("li", {}, module.button));
  }
  byId("power").addEventListener("click", () => give(device.properties.power ? "power off" : "power on"));
  byId("continuous").addEventListener("click",
      () => give(`set rtu.trigger.continuous ${!device.properties["rtu.trigger.continuous"]}`));
}
