// Points, radii, bands and rectangles of the selected effect, dragged on the picture itself.
import { clamp, drag, h, shortNumber } from './dom.js';
import { nowOf, percentOf, putNow, sideOf } from './controls.js';
import { change, infoOf, selectedCard, setValue, state } from './state.js';
import { moves } from './wording.js';

const find = (info, ending) => info.properties.find((property) => property.name.endsWith(ending) && property.percentOf);

let held = false; // by the pointer

/** A handle at x, y (percent of the picture) that calls put(x, y) where it is brought. */
function handle(layer, kind, label, x, y, put) {
  const keys = (event) => {
    const step = event.shiftKey ? 5 : 0.5;
    const by = { ArrowLeft: [-step, 0], ArrowRight: [step, 0], ArrowUp: [0, -step], ArrowDown: [0, step] }[event.key];
    if (!by) return;
    event.preventDefault();
    put(clamp(x + by[0], 0, 100), clamp(y + by[1], 0, 100));
  };
  const press = (event) => {
    const box = layer.getBoundingClientRect();
    held = true;
    drag(event, (moved) => put(clamp((100 * (moved.clientX - box.left)) / box.width, 0, 100), clamp((100 * (moved.clientY - box.top)) / box.height, 0, 100)),
      () => { held = false; showHandles(layer); });
  };
  const element = h('button', { type: 'button', class: `handle ${kind}`, 'aria-label': label, title: label, dataset: { handle: label }, on: { pointerdown: press, keydown: keys } });
  element.style.left = `${x}%`;
  element.style.top = `${y}%`;
  return element;
}

function outline(kind, left, top, width, height) {
  const element = h('div', { class: `outline ${kind}` });
  Object.assign(element.style, { left: `${left}%`, top: `${top}%`, width: `${width}%`, height: `${height}%` });
  return element;
}

const percent = (value) => `${shortNumber(value)}%`;

function circle(layer, card, info, made) {
  const [px, py, pr] = ['_x', '_y', '_r'].map((ending) => find(info, ending));
  if (!px || !py) return;
  const x = percentOf(px, nowOf(card, px));
  const y = percentOf(py, nowOf(card, py));
  made.push(handle(layer, 'point', `Centre of ${info.title}`, clamp(x, 0, 100), clamp(y, 0, 100), (newX, newY) =>
    change(`${card.key} centre`, () => { putNow(card, px, percent(newX)); putNow(card, py, percent(newY)); })));
  if (!pr) return;
  const pixels = (percentOf(pr, nowOf(card, pr)) * sideOf(pr)) / 100;
  const [across, down] = [(100 * pixels) / state.clip.width, (100 * pixels) / state.clip.height];
  made.unshift(outline('ellipse', x - across, y - down, 2 * across, 2 * down));
  made.push(handle(layer, 'radius', `Radius of ${info.title}`, clamp(x + across, 0, 100), clamp(y, 0, 100), (newX, newY) => {
    const far = Math.hypot(((newX - x) * state.clip.width) / 100, ((newY - y) * state.clip.height) / 100);
    putNow(card, pr, percent((100 * far) / sideOf(pr)));
  }));
}

function rectangle(layer, card, info, made) {
  const ends = ['_x1', '_y1', '_x2', '_y2'].map((ending) => find(info, ending));
  if (ends.some((property) => !property) || info.properties.some((property) => property.name.includes('horizontal'))) return;
  const [x1, y1, x2, y2] = ends.map((property) => percentOf(property, nowOf(card, property)));
  made.unshift(outline('rectangle', x1, y1, x2 - x1, y2 - y1));
  const corner = (label, x, y, a, b) => handle(layer, 'corner', `${label} of ${info.title}`, x, y, (newX, newY) =>
    change(`${card.key} corner`, () => { putNow(card, a, percent(newX)); putNow(card, b, percent(newY)); }));
  made.push(corner('First corner', x1, y1, ends[0], ends[1]), corner('Last corner', x2, y2, ends[2], ends[3]));
}

function bands(layer, card, info, made) {
  for (const property of info.properties) {
    const way = /_(vertical|horizontal)_([xy])[12]$/.exec(property.name);
    if (!way) continue;
    const at = percentOf(property, nowOf(card, property));
    const across = way[2] === 'x';
    made.unshift(across ? outline('line', at, 0, 0, 100) : outline('line', 0, at, 100, 0));
    made.push(handle(layer, 'band', property.title, across ? at : 50, across ? 50 : at, (x, y) => putNow(card, property, percent(across ? x : y))));
  }
}

function area(layer, card, made) {
  const text = card.values['@area'];
  if (!text || moves(text)) return;
  const [shape, ...numbers] = text.split(',');
  const [x, y, width, height] = numbers.map(Number);
  const put = (...values) => setValue(card, '@area', [shape, ...values.map((value) => shortNumber(value, 1))].join(','));
  made.unshift(outline(`${shape} area`, x, y, width, height));
  made.push(
    handle(layer, 'corner', 'Place of the area', x, y, (newX, newY) => put(newX, newY, width, height)),
    handle(layer, 'corner', 'Size of the area', x + width, y + height, (newX, newY) => put(x, y, Math.max(1, newX - x), Math.max(1, newY - y))));
}

/** Shows the handles of what is selected in a layer that lies on the picture. */
export function showHandles(layer) {
  const card = selectedCard();
  const made = [];
  if (card && card.on && state.clip?.pictures) {
    const info = infoOf(card);
    circle(layer, card, info, made);
    rectangle(layer, card, info, made);
    bands(layer, card, info, made);
    area(layer, card, made);
  }
  const old = [...layer.children];
  if (held && old.length === made.length) { // the one under the pointer has to stay
    old.forEach((element, index) => { element.style.cssText = made[index].style.cssText; });
    return;
  }
  const label = layer.contains(document.activeElement) ? document.activeElement.dataset.handle : null;
  layer.replaceChildren(...made);
  if (label) made.find((element) => element.dataset.handle === label)?.focus({ preventScroll: true });
}
