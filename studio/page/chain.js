// The chain as cards.
import { button, h } from './dom.js';
import { areas, propertyRow, reachProperties } from './controls.js';
import { media } from './api.js';
import { moves } from './wording.js';
import { canRedo, canUndo, change, chainWords, infoOf, isSound, on, newCard, redo, select, selectedCard, setValue, state, undo } from './state.js';

const list = document.getElementById('cards');
let rows = []; // of the selected card, to be refreshed as time goes on
let shape = ''; // what the cards were built for

function indexOf(card) {
  return state.chain.findIndex((one) => one.key === card.key);
}

function move(card, by) {
  const from = indexOf(card);
  const to = from + by;
  if (to < 0 || to >= state.chain.length) return;
  change(`move ${card.key}`, () => {
    const [moved] = state.chain.splice(from, 1);
    state.chain.splice(to, 0, moved);
  });
  document.querySelector(`[data-card="${card.key}"] .name`)?.focus();
}

function removeCard(card) {
  change(`remove ${card.key}`, () => {
    state.chain.splice(indexOf(card), 1);
    if (state.selected === card.key) state.selected = state.chain.at(-1)?.key ?? null;
  });
}

function duplicate(card) {
  change(`duplicate ${card.key}`, () => {
    const copy = newCard(card.effect, card.preset, structuredClone(card.values), card.on);
    state.chain.splice(indexOf(card) + 1, 0, copy);
    state.selected = copy.key;
  });
}

/** Adds an effect behind the last one. */
export function addEffect(name, preset = '') {
  change(`add ${name}`, () => {
    const card = newCard(name, preset);
    state.chain.push(card);
    state.selected = card.key;
  });
}

function startDrag(event, card) {
  const item = event.currentTarget.closest('li');
  event.currentTarget.setPointerCapture(event.pointerId);
  item.classList.add('dragged');
  const over = (y) => [...list.children].findIndex((other) => {
    const box = other.querySelector('.head').getBoundingClientRect();
    return y < box.top + box.height / 2;
  });
  const stop = (end) => {
    item.classList.remove('dragged');
    event.target.removeEventListener('pointerup', stop);
    const place = over(end.clientY);
    const to = (place < 0 ? list.children.length : place) - (place > indexOf(card) || place < 0 ? 1 : 0);
    if (to !== indexOf(card)) move(card, to - indexOf(card));
  };
  event.target.addEventListener('pointerup', stop);
}

/** Whether a card is what a preset says, and nothing else. */
const isPlain = (card, preset) => card.preset === preset && Object.keys(card.values).every((name) => name.startsWith('@'));

function presetButtons(card) {
  const info = infoOf(card);
  if (info.presets.length === 0) return null;
  const one = (preset, help) => h('button', { type: 'button', class: 'preset', title: help, 'aria-pressed': String(isPlain(card, preset)),
    dataset: { preset }, on: { click: () => change(`preset ${card.key}`, () => {
      const current = state.chain[indexOf(card)];
      current.preset = preset;
      for (const name of Object.keys(current.values)) if (!name.startsWith('@')) delete current.values[name];
    }) } }, h('span', { class: 'shot' }), preset || 'plain');
  return h('div', { class: 'presets', role: 'group', 'aria-label': `Presets of ${info.title}` },
    info.needsSettings ? [] : one('', 'Without a preset'), info.presets.map((preset) => one(preset.name, preset.help)));
}

// Small pictures of the user's own frame through what stands before the card and each preset.
let shotsFor = '';
async function showShots(card) {
  const info = infoOf(card);
  const before = state.chain.slice(0, indexOf(card));
  const request = JSON.stringify([state.clip?.id, card.effect, chainWords({ of: before }), Math.round(state.time)]);
  if (isSound(card) || !state.clip?.pictures || info.presets.length === 0) return;
  const again = shotsFor === request;
  shotsFor = request;
  for (const place of list.querySelectorAll(`[data-card="${card.key}"] .preset`)) {
    if (shotsFor !== request) return;
    if (again && place.querySelector('img')) continue;
    const chain = chainWords({ of: [...before, newCard(card.effect, place.dataset.preset)] });
    try {
      const shot = await media('/api/frame', { clip: state.clip.id, at: state.time, width: 112, chain });
      if (!shot) continue;
      const url = URL.createObjectURL(shot.blob);
      const picture = h('img', { alt: '', src: url, on: { load: () => URL.revokeObjectURL(url) } });
      place.querySelector('.shot').replaceChildren(picture);
    } catch { /* the main picture tells what is wrong */ }
  }
}

function areaTools(card) {
  const current = (card.values['@area'] ?? '').split(',')[0].replace(/.*=/, '');
  return h('div', { class: 'row' }, h('label', { for: `area${card.key}` }, 'Where'),
    h('select', { id: `area${card.key}`, on: { change: (event) => setValue(card, '@area', areas[event.target.value]) } },
      Object.keys(areas).map((name) => h('option', { value: name, selected: name === current }, name || 'everywhere'))));
}

function settings(card) {
  const info = infoOf(card);
  rows = info.properties.filter((property) => property.name !== 'duration').map((property) => propertyRow(card, property));
  const reach = reachProperties(isSound(card)).map((property) => propertyRow(card, property));
  const isSet = Object.keys(card.values).some((name) => name.startsWith('@'));
  const own = rows.map((row) => row.element);
  rows.push(...reach);
  return h('div', { class: 'settings' }, h('p', { class: 'help' }, info.help), presetButtons(card), own,
    h('details', { open: isSet }, h('summary', {}, 'When, where and how strongly'), !isSound(card) && areaTools(card), reach.map((row) => row.element)));
}

function cardElement(card) {
  const info = infoOf(card);
  const selected = state.selected === card.key;
  const keys = (event) => {
    if (event.altKey && event.key === 'ArrowUp') move(card, -1);
    else if (event.altKey && event.key === 'ArrowDown') move(card, 1);
    else if (event.key === 'Delete') removeCard(card);
    else return;
    event.preventDefault();
  };
  return h('li', { class: `card${selected ? ' selected' : ''}${card.on ? '' : ' off'}`, dataset: { card: card.key } },
    h('div', { class: 'head' },
      h('span', { class: 'grip', title: 'Drag to move; Alt and an arrow key do so too', on: { pointerdown: (event) => startDrag(event, card) } }, '≡'),
      h('button', { type: 'button', class: 'name', 'aria-expanded': String(selected), on: { click: () => select(selected ? null : card.key), keydown: keys } },
        info.title, card.preset && h('small', {}, card.preset)),
      button('▲', `Move ${info.title} up`, () => move(card, -1), { disabled: indexOf(card) === 0 }),
      button('▼', `Move ${info.title} down`, () => move(card, 1), { disabled: indexOf(card) === state.chain.length - 1 }),
      h('input', { type: 'checkbox', class: 'switch', checked: card.on, 'aria-label': `${info.title} is on`, title: card.on ? 'Switch off' : 'Switch on',
        on: { change: () => change(`switch ${card.key}`, () => { state.chain[indexOf(card)].on = !card.on; }) } }),
      button('+', `Duplicate ${info.title}`, () => duplicate(card)),
      button('✕', `Remove ${info.title}`, () => removeCard(card))),
    selected && settings(card));
}

// A knob that is being turned must stay in its place: cards are built anew only when their form changes.
const formOf = (card, [name, value]) => {
  const pixels = infoOf(card).properties.find((property) => property.name === name)?.percentOf && !value.endsWith('%');
  return moves(value) ? `${name} moves` : pixels ? `${name} pixels` : '';
};
const shapeOf = () => JSON.stringify([state.selected, state.clip?.id, state.chain.map((card) =>
  [card.key, card.effect, card.preset, card.on, Object.entries(card.values).map((entry) => formOf(card, entry)).filter(Boolean)])]);

function show() {
  const now = shapeOf();
  if (now !== shape) {
    shape = now;
    const focused = document.activeElement?.closest('[data-card]') && { card: document.activeElement.closest('[data-card]').dataset.card,
      row: document.activeElement.closest('[data-property]')?.dataset.property, tag: document.activeElement.tagName, kind: document.activeElement.type };
    list.replaceChildren(...state.chain.map(cardElement));
    if (focused?.row) {
      const row = list.querySelector(`[data-card="${focused.card}"] [data-property="${CSS.escape(focused.row)}"]`);
      [...(row?.querySelectorAll(focused.tag) ?? [])].find((one) => one.type === focused.kind)?.focus();
    }
    document.getElementById('empty').hidden = state.chain.length > 0;
    const card = selectedCard();
    if (card) showShots(card);
  } else {
    for (const row of rows) row.refresh();
    for (const preset of list.querySelectorAll('.preset')) preset.setAttribute('aria-pressed', String(isPlain(selectedCard(), preset.dataset.preset)));
  }
}

export function startChain() {
  const tools = document.getElementById('edit-tools');
  const back = button('↶', 'Undo (Ctrl+Z)', undo);
  const forth = button('↷', 'Redo (Ctrl+Shift+Z)', redo);
  tools.append(back, forth);
  const update = () => { back.disabled = !canUndo(); forth.disabled = !canRedo(); };
  update();
  on('chain', () => { show(); update(); });
  on('selected', show);
  on('clip', show);
  on('time', () => { for (const row of rows) row.refresh(); });
  document.addEventListener('keydown', (event) => {
    if (!(event.ctrlKey || event.metaKey) || event.altKey) return;
    const key = event.key.toLowerCase();
    if (key !== 'z' && key !== 'y') return;
    event.preventDefault();
    if (key === 'y' || event.shiftKey) redo();
    else undo();
  });
}
