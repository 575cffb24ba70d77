// Joins the device's state to its pictures, and the hands to its commands.
import * as clock from "./clock.js";
import * as commands from "./commands.js";
import * as face from "./face.js";
import * as faults from "./faults.js";
import * as feed from "./feed.js";
import * as heat from "./heat.js";
import * as journal from "./journal.js";
import * as modules from "./modules.js";
import * as motion from "./motion.js";
import * as pins from "./pins.js";
import * as ranging from "./ranging.js";
import {byId, setText} from "./dom.js";

const pictures = [modules, face, pins, motion, ranging, heat, clock, faults];

for (const part of [...pictures, commands, journal]) {
  part.start();
}

feed.onState(device => {
  const {connected, message} = device.device;
  document.body.classList.toggle("lost", !connected);
  byId("lost").hidden = connected;
  setText(byId("lost"), connected ? "" : `No device: ${message}. The page finds it as soon as it runs.`);
  if (connected) {
    pictures.forEach(picture => picture.draw(device));
  } else {
    setText(byId("device-state"), "no device");
    byId("device-state").dataset.state = "off";
  }
});
feed.start();
