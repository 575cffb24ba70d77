// What a person does here: commands of the control grammar, given to the device and listed for a scenario.
import {byId, html, setText} from "./dom.js";
import {device} from "./feed.js";

const MOST = 200;
const given = [];  // {time, command, gesture}; time by the device's clock

// Those of one gesture, such as the turns of one drag, stand in one line: its last.
function list(command, gesture) {
  const entry = {time: device.properties["clock.time"] ?? 0, command, gesture};
  const ol = byId("command-list");
  if (gesture && given.at(-1)?.gesture === gesture) {
    given[given.length - 1] = entry;
    ol.firstChild.remove();
  } else {
    given.push(entry);
  }
  if (given.length > MOST) {
    given.shift();
    ol.lastChild.remove();
  }
  const copy = html("button", {type: "button", "aria-label": `Copy ${command}`}, "copy");
  copy.addEventListener("click", () => toClipboard(command));
  ol.prepend(html("li", {}, html("code", {}, command), copy));
}

function say(text, refused) {
  setText(byId("reply"), text);
  byId("reply").classList.toggle("refused", refused);
}

async function toClipboard(text) {
  try {
    await navigator.clipboard.writeText(text);
    say("copied", false);
  } catch {
    say(`${text}\n(the browser does not let this page copy)`, true);
  }
}

let last = Promise.resolve();

async function send(command, gesture) {
  try {
    const answer = await fetch("command", {method: "POST", headers: {"Content-Type": "text/plain"}, body: command});
    const reply = answer.headers.get("Content-Type") === "application/json" ? await answer.json()
        : {ok: false, text: await answer.text()};
    if (reply.ok && !/^(show|help|programs|node list|fault list|clock$)/.test(command)) {
      list(command, gesture);
    }
    say(reply.ok ? reply.text.trimEnd() : `${command}: ${reply.text}`, !reply.ok);
    return reply.ok;
  } catch {
    say(`${command}: the panel does not answer`, true);
    return false;
  }
}

// One after the other, in the order in which they are given. Answers whether it was done.
export function give(command, gesture = null) {
  const done = last.then(() => send(command, gesture));
  last = done;
  return done;
}

// The list as a scenario: each line so long after the one before as it was given. A step is that time passing.
function scenario() {
  let before = given[0]?.time ?? 0;
  const lines = ["# From the front panel."];
  for (const {time, command} of given) {
    if (!/^(step|clock)\b/.test(command)) {
      lines.push(`+${Math.max(0, time - before).toFixed(3)}s  ${command}`);
      before = time;
    }
  }
  return lines.join("\n") + "\n";
}

export function start() {
  byId("command-form").addEventListener("submit", async event => {
    event.preventDefault();
    const command = byId("command").value.trim();
    if (command && await give(command)) {
      byId("command").value = "";
    }
  });
  byId("copy-all").addEventListener("click", () => toClipboard(scenario()));
  for (const button of document.querySelectorAll("[data-command]")) {
    button.addEventListener("click", () => give(button.dataset.command));
  }
}
