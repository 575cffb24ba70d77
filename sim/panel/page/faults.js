// Fault rules: adding them, and seeing them fire.
import {byId, html, setText} from "./dom.js";
import {give} from "./commands.js";

const rows = new Map();

function row(id, {rule}) {
  const fired = html("span", {class: "fired"});
  const clear = html("button", {type: "button", "aria-label": `Clear fault ${id}`}, "clear");
  clear.addEventListener("click", () => give(`fault clear ${id}`));
  const item = html("li", {}, html("code", {}, rule), fired, clear);
  byId("fault-list").append(item);
  return {item, fired, count: 0};
}

export function draw({faults}) {
  for (const [id, known] of rows) {
    if (!faults[id]) {
      known.item.remove();
      rows.delete(id);
    }
  }
  for (const [id, fault] of Object.entries(faults)) {
    if (!rows.has(id)) {
      rows.set(id, row(id, fault));
    }
    const known = rows.get(id);
    setText(known.fired, `fired ${fault.fired}`);
    if (Number(fault.fired) !== known.count) {
      known.count = Number(fault.fired);
      known.item.classList.remove("fires");
      void known.item.offsetWidth;  // starts the animation anew
      known.item.classList.add("fires");
    }
  }
}

export function start() {
  byId("fault-form").addEventListener("submit", event => {
    event.preventDefault();
    const words = ["fault-operation", "fault-count", "fault-effect"].map(id => byId(id).value.trim());
    give(`fault add ${words.filter(Boolean).join(" ")}`);
  });
}
