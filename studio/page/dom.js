// Elements. Text is set as text: no name of a file is ever taken for markup.

/** An element with properties ("class", "dataset", "on" with listeners, ARIA attributes by name) and children. */
export function h(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (value === undefined || value === null || value === false) continue;
    if (name === 'on') for (const [event, listener] of Object.entries(value)) element.addEventListener(event, listener);
    else if (name === 'dataset') Object.assign(element.dataset, value);
    else if (name in element && name !== 'list' && name !== 'form') element[name] = value;
    else element.setAttribute(name === 'class' ? 'class' : name, value === true ? '' : value);
  }
  element.append(...children.flat().filter((child) => child !== undefined && child !== null && child !== false));
  return element;
}

/** A button with a word or a sign; what a sign means is its label. */
export function button(text, label, act, properties = {}) {
  return h('button', { type: 'button', title: label, 'aria-label': label === text ? undefined : label, on: { click: act }, ...properties }, text);
}

/** The least and the most that a value may be. */
export const clamp = (value, least, most) => Math.min(most, Math.max(least, value));

/** A number as people write it: no more digits than it needs. */
export const shortNumber = (value, digits = 2) => String(Number(value.toFixed(digits)));

/** Minutes and seconds. */
export function clock(seconds) {
  const minutes = Math.floor(seconds / 60);
  return `${minutes}:${(seconds - 60 * minutes).toFixed(2).padStart(5, '0')}`;
}

/** Drags from a pointer's press on: move(event) until it is let go, then end(). */
export function drag(event, move, end = () => {}) {
  const target = event.currentTarget;
  event.preventDefault();
  target.focus?.({ preventScroll: true });
  target.setPointerCapture(event.pointerId);
  const stop = () => {
    target.removeEventListener('pointermove', move);
    target.removeEventListener('pointerup', stop);
    target.removeEventListener('pointercancel', stop);
    end();
  };
  target.addEventListener('pointermove', move);
  target.addEventListener('pointerup', stop);
  target.addEventListener('pointercancel', stop);
}
