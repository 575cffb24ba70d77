// The device as the server tells it: groups of members, kept up to date by differences.
export const device = {device: {connected: false, message: ""}, properties: {}, nodes: {}, faults: {}, programs: {}};

const views = [];
const journals = [];
let source = null;
let drawing = false;

// `draw` is called after changes, at most once for each picture of the screen.
export function onState(draw) {
  views.push(draw);
}

// `take` gets an object of lines and of how many were skipped before them.
export function onJournal(take) {
  journals.push(take);
}

function merge(differences) {
  for (const [name, members] of Object.entries(differences)) {
    const group = device[name] ??= {};
    for (const [key, value] of Object.entries(members)) {
      if (value === null) {
        delete group[key];
      } else {
        group[key] = value;
      }
    }
  }
}

function redraw() {
  if (!drawing) {
    drawing = true;
    requestAnimationFrame(() => {
      drawing = false;
      views.forEach(draw => draw(device));
    });
  }
}

function lose(message) {
  device.device = {connected: false, message};
  redraw();
}

function open() {
  let fresh = true;
  source = new EventSource("events");
  source.addEventListener("state", event => {
    if (fresh) {  // a new stream tells everything anew
      for (const name of Object.keys(device)) {
        device[name] = {};
      }
      fresh = false;
    }
    merge(JSON.parse(event.data));
    redraw();
  });
  source.addEventListener("journal", event => journals.forEach(take => take(JSON.parse(event.data))));
  source.addEventListener("error", () => {
    lose("the panel does not answer: r47-sim panel has ended, or too many pages look");
    fresh = true;
    if (source?.readyState === EventSource.CLOSED) {
      close();
      setTimeout(follow, 2000);
    }
  });
}

function close() {
  source?.close();
  source = null;
}

// A page that nobody sees costs nothing.
function follow() {
  if (document.hidden) {
    close();
  } else if (!source) {
    open();
  }
}

export function start() {
  document.addEventListener("visibilitychange", follow);
  addEventListener("pagehide", close);
  addEventListener("pageshow", follow);
  follow();
}
