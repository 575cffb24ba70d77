// The journal running along, with a filter.
import {byId, fixed, html, setText} from "./dom.js";
import {onJournal} from "./feed.js";

const KEPT = 2000;
const SHOWN = 150;
let lines = [];  // {record, text, skipped}
let paused = false;
let waiting = false;
let follows = true;  // until the person scrolls away from the end; not when the box gets smaller

function textOf(record) {
  return [fixed(record.start, 6), record.kind, record.program, record.error, record.text].filter(Boolean).join(" ");
}

function element({record, skipped}) {
  if (skipped) {
    return html("p", {class: "skipped"}, `${skipped} lines skipped`);
  }
  const line = html("p", {"data-kind": record.kind, title: record.program ?? ""}, html("time", {}, fixed(record.start, 3)),
      html("span", {class: "who"}, record.program ?? "-"),
      html("span", {class: "what"}, record.text));
  if (record.error) {
    line.append(html("b", {}, record.error));
  }
  line.classList.toggle("faulty", Boolean(record.rule));
  return line;
}

function show() {
  waiting = false;
  const words = byId("filter").value.toLowerCase().split(/[\s,]+/).filter(Boolean);
  const fits = ({text}) => words.every(word => text.toLowerCase().includes(word));
  const chosen = words.length ? lines.filter(fits) : lines;
  const box = byId("lines");
  box.replaceChildren(...chosen.slice(-SHOWN).map(element));
  if (follows) {
    box.scrollTop = box.scrollHeight;
  }
  setText(byId("journal-count"), words.length ? `${chosen.length} of ${lines.length}` : `${lines.length} lines`);
}

// At most four times a second: nobody reads faster.
function soon() {
  if (!waiting && !paused) {
    waiting = true;
    setTimeout(show, 250);
  }
}

export function start() {
  onJournal(message => {
    if (message.skipped) {
      lines.push({skipped: message.skipped, text: ""});
    }
    lines.push(...message.lines.map(record => ({record, text: textOf(record)})));
    lines = lines.slice(-KEPT);
    soon();
  });
  byId("lines").addEventListener("scroll", ({target: box}) => {
    follows = box.scrollHeight - box.scrollTop - box.clientHeight < 40;
  });
  byId("filter").addEventListener("input", show);
  byId("journal-form").addEventListener("submit", event => event.preventDefault());
  byId("pause").addEventListener("click", () => {
    paused = !paused;
    byId("pause").setAttribute("aria-pressed", paused);
    soon();
  });
}
