// What the page works on. Everything that changes the chain goes through change(), so that all of it can be undone.
import { joinEffect, splitEffect } from './wording.js';

export const state = {
  catalogue: new Map(), // effects by short name
  clip: null,
  time: 0,
  chain: [], // cards: {key, effect, preset, values, on}
  selected: null, // key of a card
  roots: [],
};

const listeners = new Map();
export function on(event, listener) {
  listeners.set(event, [...(listeners.get(event) ?? []), listener]);
}
/** Events: clip, time, chain, selected. */
export function tell(event) {
  for (const listener of listeners.get(event) ?? []) listener();
}

let nextKey = 1;
export const newCard = (effect, preset = '', values = {}, isOn = true) => ({ key: nextKey++, effect, preset, values, on: isOn });
export const cardOf = (text, isOn = true) => {
  const { effect, preset, values } = splitEffect(text);
  return newCard(effect, preset, values, isOn);
};

const past = [];
let future = [];
let lastLabel = null;
let lastChange = 0;
const kept = () => structuredClone({ chain: state.chain, selected: state.selected });
function restore(moment) {
  Object.assign(state, structuredClone(moment));
  lastLabel = null;
  tell('chain');
}

/** Does something to the chain. Changes of one label that follow at once are undone as one. */
export function change(label, act) {
  const now = performance.now();
  if (label !== lastLabel || now - lastChange > 800) past.push(kept());
  lastLabel = label;
  lastChange = now;
  future = [];
  act(state);
  tell('chain');
}
export const canUndo = () => past.length > 0;
export const canRedo = () => future.length > 0;
export function undo() {
  if (!canUndo()) return;
  future.push(kept());
  restore(past.pop());
}
export function redo() {
  if (!canRedo()) return;
  past.push(kept());
  restore(future.pop());
}

export const selectedCard = () => state.chain.find((card) => card.key === state.selected) ?? null;
export function select(key) {
  if (state.selected === key) return;
  state.selected = key;
  tell('selected');
}

export const infoOf = (card) => state.catalogue.get(card.effect);
export const isSound = (card) => infoOf(card)?.media === 'audio';
export const span = () => ({ duration: state.clip?.duration || 1, fps: state.clip?.fps || 25 });

/** What is sent: effects on pictures and on sound, those that are off where they are kept. */
export function chainWords({ off = false, of = state.chain } = {}) {
  const words = (cards) =>
    cards.filter((card) => off || card.on).map((card) => ({ text: joinEffect(card), on: card.on }));
  return { e: words(of.filter((card) => !isSound(card))), a: words(of.filter(isSound)) };
}

/** The value that a property has: set, by the preset, or at first. */
export function valueOf(card, property) {
  if (property.name in card.values) return card.values[property.name];
  const preset = infoOf(card).presets.find((one) => one.name === card.preset);
  const setting = preset?.settings.find((one) => one.property === property.name);
  if (setting) return setting.value + (setting.percentage ? '%' : '');
  if (property.default === null || property.default === undefined) return '';
  return typeof property.default === 'boolean' ? (property.default ? 'on' : 'off') : String(property.default);
}

export function setValue(card, name, value, label = `${card.key} ${name}`) {
  change(label, () => {
    const current = state.chain.find((one) => one.key === card.key);
    if (value === null) delete current.values[name];
    else current.values[name] = value;
  });
}

const kinds = { 'choice': (value, property) => property.choices.find((one) => String(one.value) === value)?.name ?? value };
export const shownValue = (value, property) => (kinds[property.kind] ?? ((text) => text))(value, property);
