// A control for each property, made from the catalogue.
import { button, h, shortNumber } from './dom.js';
import { setValue, shownValue, span, state, valueOf } from './state.js';
import { moves, readKeys, valueAt, writeKeys } from './wording.js';

let nextId = 1;

/** A moving value at the moment that is shown, or the value. */
export function nowOf(card, property) {
  const value = valueOf(card, property);
  return moves(value) ? valueAt(readKeys(value, span()), state.time) : value;
}

/** Sets a value: of what moves, its keyframe at this moment. */
export function putNow(card, property, text) {
  const value = valueOf(card, property);
  if (!moves(value)) return setValue(card, property.name, text);
  const nearness = 0.5 / span().fps;
  const keys = readKeys(value, span());
  const here = keys.find((key) => Math.abs(key.time - state.time) < nearness);
  if (here) here.value = text;
  else keys.push({ time: state.time, motion: '=', value: text });
  setValue(card, property.name, writeKeys(keys));
}

const hexOf = (text) => '#' + (text.startsWith('#') ? text.slice(1) : Number(text || 0).toString(16)).padStart(6, '0').slice(-6);

/** Pixels of the side that a percentage of the property is taken of. */
export function sideOf(property) {
  const { width = 0, height = 0 } = state.clip ?? {};
  return { width, height, 'smaller side': Math.min(width, height) }[property.percentOf] ?? 0;
}

/** The share of its side, in percent. */
export function percentOf(property, text) {
  return text.endsWith('%') ? parseFloat(text) : (100 * Number(text || 0)) / (sideOf(property) || 1);
}

// Sliders go where settings are of use; the field beside them takes the whole range.
function reachOf(property, value) {
  if (property.percentOf) return { least: 0, most: 100, step: 0.1 };
  const least = Math.max(property.minimum, -1000);
  const usual = { '/256': 256, '/200': 200 }[property.unit] ?? 10;
  const most = property.maximum > 1000 ? Math.max(usual, 2 * Number(value || 0)) : property.maximum;
  return { least, most, step: property.type === 'double' ? (most - least) / 400 : 1 };
}

function numberControl(card, property, id) {
  const pixels = Boolean(property.percentOf);
  const value = () => nowOf(card, property);
  const asPixels = () => pixels && !value().endsWith('%') && property.name in card.values;
  const shown = () => (pixels && !asPixels() ? shortNumber(percentOf(property, value())) : value());
  const { least, most, step } = reachOf(property, shown());
  const unit = () => (asPixels() ? '' : pixels ? '%' : '');
  const put = (number) => putNow(card, property, number + unit());
  const scaled = asPixels() ? sideOf(property) / 100 : 1;
  const slider = h('input', { id, type: 'range', min: least * scaled, max: most * scaled, step: asPixels() ? 1 : step, value: shown(),
    on: { input: () => { field.value = shortNumber(Number(slider.value)); put(field.value); } } });
  const field = h('input', { type: 'number', class: 'number', step: 'any', value: shown(), 'aria-label': `${property.title}, as a number`,
    on: { change: () => put(field.value || '0') } });
  const marks = property.neutral !== null && !pixels && property.neutral >= least && property.neutral <= most;
  const neutral = marks && h('button', { type: 'button', class: 'neutral', title: `${property.neutral} changes nothing`,
    'aria-label': `Set ${property.title} to ${property.neutral}, which changes nothing`,
    on: { click: () => put(String(property.neutral)) } });
  if (neutral) neutral.style.left = `calc(9px + (100% - 18px) * ${(property.neutral - least) / (most - least || 1)} - 12px)`;
  const units = pixels
    ? h('select', { class: 'unit', 'aria-label': `Unit of ${property.title}`, on: { change: (event) => {
        const side = sideOf(property);
        const percent = percentOf(property, value());
        putNow(card, property, event.target.value === '%' ? `${shortNumber(percent)}%` : String(Math.round((percent * side) / 100)));
      } } }, h('option', { value: '%', selected: !asPixels() }, '%'), h('option', { value: 'px', selected: asPixels() }, 'px'))
    : property.unit && h('span', { class: 'unit' }, property.unit);
  const refresh = () => { if (document.activeElement !== field) field.value = shown(); slider.value = shown(); };
  return { element: h('div', { class: 'knob' }, h('div', { class: 'slide' }, slider, neutral), field, units), refresh };
}

function switchControl(card, property, id) {
  const box = h('input', { id, type: 'checkbox', class: 'switch', on: { change: () => putNow(card, property, box.checked ? 'on' : 'off') } });
  const refresh = () => { box.checked = ['on', 'true', 'yes', '1'].includes(nowOf(card, property)); };
  refresh();
  return { element: box, refresh };
}

function choiceControl(card, property, id) {
  const list = h('select', { id, on: { change: () => putNow(card, property, list.value) } },
    property.choices.map((choice) => h('option', { value: choice.name, title: choice.help }, choice.name)));
  const refresh = () => { list.value = shownValue(nowOf(card, property), property); };
  refresh();
  return { element: list, refresh };
}

function colourControl(card, property, id) {
  const well = h('input', { id, type: 'color', on: { input: () => putNow(card, property, well.value) } });
  const refresh = () => { well.value = hexOf(nowOf(card, property)); };
  refresh();
  return { element: well, refresh };
}

function textControl(card, property, id) {
  const field = h('input', { id, type: 'text', value: nowOf(card, property), spellcheck: false,
    on: { change: () => setValue(card, property.name, field.value === '' ? null : field.value) } });
  return { element: field, refresh: () => { if (document.activeElement !== field) field.value = nowOf(card, property); } };
}

const makers = { number: numberControl, switch: switchControl, choice: choiceControl, colour: colourControl, path: textControl, text: textControl };

/** Turns a still value into a moving one at this moment, and back. */
function moveButton(card, property) {
  const isMoving = () => moves(valueOf(card, property));
  return button('◆', isMoving() ? `Let ${property.title} stand still` : `Let ${property.title} move: a keyframe at this moment`, () => {
    if (isMoving()) setValue(card, property.name, nowOf(card, property), 'stand still');
    else setValue(card, property.name, writeKeys([{ time: state.time, motion: '=', value: nowOf(card, property) || '0' }]), 'move');
  }, { class: 'key', 'aria-pressed': String(isMoving()) });
}

/** A row with label, control and keyframe button: {element, refresh}. */
export function propertyRow(card, property) {
  const id = `p${nextId++}`;
  const { element, refresh } = (makers[property.kind] ?? textControl)(card, property, id);
  const animates = !['text', 'path'].includes(property.kind) && state.clip && !state.clip.still;
  const reset = button('↺', `Set ${property.title} back`, () => setValue(card, property.name, null), { class: 'reset' });
  const showReset = () => { reset.style.visibility = property.name in card.values ? '' : 'hidden'; };
  showReset();
  return {
    element: h('div', { class: 'row', dataset: { property: property.name } },
      h('label', { for: id, title: property.help }, property.title), element, h('span', { class: 'ends' }, animates && moveButton(card, property), reset)),
    refresh: () => { refresh(); showReset(); },
  };
}

const number = (name, title, help, extra) =>
  ({ name, title, help, kind: 'number', type: 'double', unit: '%', minimum: 0, maximum: 100, neutral: null, percentOf: null, choices: [], ...extra });
const text = (name, title, help) => ({ ...number(name, title, help), kind: 'text', default: '' });

/** Settings that every effect has: when, where and how strongly it works. */
export function reachProperties(sound) {
  const all = [
    number('@mix', 'Mix', 'How much of the effect is seen or heard', { default: 100, neutral: 0 }),
    text('@from', 'From', 'When it begins: seconds, mm:ss, 25f or 50%'),
    text('@to', 'To', 'When it ends'),
    text('@fade-in', 'Fade in', 'How long its strength rises'),
    text('@fade-out', 'Fade out', 'How long its strength falls'),
  ];
  if (sound) return all;
  return [...all, text('@area', 'Area', 'rectangle or ellipse, and left, top, width, height in percent: ellipse,30,20,40,60'),
    text('@mask', 'Mask', 'Picture or clip that is white where the effect is seen'),
    { ...number('@mask-invert', 'Outside', 'Seen outside of the area or mask'), kind: 'switch', default: false },
    number('@mask-feather', 'Feather', "Softness of the area's or mask's edge", { unit: 'px', percentOf: 'smaller side', default: 0, neutral: null })];
}

/** The next area of a card: none, a rectangle, an ellipse. */
export const areas = { '': null, rectangle: 'rectangle,25,25,50,50', ellipse: 'ellipse,25,25,50,50' };
