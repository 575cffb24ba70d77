// Small helpers for the document.
export const byId = id => document.getElementById(id);

const SVG = "http://www.w3.org/2000/svg";

export function svg(name, attributes = {}, text = "") {
  const element = document.createElementNS(SVG, name);
  for (const [key, value] of Object.entries(attributes)) {
    element.setAttribute(key, value);
  }
  element.textContent = text;
  return element;
}

export function html(name, attributes = {}, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    element.setAttribute(key, value);
  }
  element.append(...children);
  return element;
}

// Touches the document only where it differs.
export function setText(element, text) {
  if (element.textContent !== String(text)) {
    element.textContent = text;
  }
}

export function setAttribute(element, name, value) {
  if (element.getAttribute(name) !== String(value)) {
    element.setAttribute(name, value);
  }
}

export const fixed = (number, digits) => (number ?? 0).toFixed(digits);
