// The effects, each with a picture of the user's own frame, and the search among them.
import { media } from './api.js';
import { addEffect } from './chain.js';
import { h } from './dom.js';
import { on, state } from './state.js';

const place = document.getElementById('effects');
const search = document.getElementById('search');
const groups = [['filter', 'Colour and focus'], ['look', 'Looks'], ['distortion', 'Shape'], ['fade', 'Fades'], ['stereo', '3D'], ['audio', 'Sound']];
let entries = [];

// Every word of the question stands in the name, the title, what it does, or another word for it.
function fits(effect, words) {
  const text = [effect.shortName, effect.title, effect.help, effect.synonyms, ...effect.presets.map((preset) => preset.name)].flat().join(' ').toLowerCase();
  return words.every((word) => text.includes(word));
}

function filter() {
  const words = search.value.toLowerCase().split(/\s+/).filter(Boolean);
  for (const { effect, element } of entries) element.hidden = !fits(effect, words);
  for (const group of place.querySelectorAll('.group')) group.hidden = !group.querySelector('li:not([hidden])');
  const none = entries.every(({ element }) => element.hidden);
  document.getElementById('none').hidden = !none;
}

function add(effect) {
  // An effect that does nothing by itself begins with its first preset, so that something is seen.
  addEffect(effect.shortName, effect.needsSettings ? (effect.presets[0]?.name ?? '') : '');
}

function entryOf(effect) {
  const shot = h('span', { class: 'shot' }, effect.media === 'audio' ? '♪' : '');
  const element = h('li', {}, h('button', { type: 'button', class: 'effect', title: effect.help, dataset: { effect: effect.shortName }, on: { click: () => add(effect) } },
    shot, h('span', {}, effect.title)));
  return { effect, element, shot };
}

// One after the other, those that are seen first; they wait for nothing but for the picture itself.
let drawnFor = null;
const seen = new Set();
let drawing = false;
async function drawShots() {
  if (drawing) return;
  drawing = true;
  for (let entry; (entry = entries.find((one) => seen.has(one) && one.drawn !== drawnFor && one.effect.media !== 'audio'));) {
    const clip = drawnFor;
    entry.drawn = clip;
    if (!clip?.pictures) continue;
    const { shortName, presets, needsSettings } = entry.effect;
    const middle = clip.duration > 0 ? clip.duration / 2 : 0;
    const text = shortName + (presets.length > 0 && needsSettings ? `/${presets[0].name}` : '');
    try {
      const made = await media('/api/frame', { clip: clip.id, at: middle, width: 160, chain: { e: [text] } });
      if (!made || clip !== drawnFor) continue;
      const url = URL.createObjectURL(made.blob);
      entry.shot.replaceChildren(h('img', { alt: '', src: url, on: { load: () => URL.revokeObjectURL(url) } }));
    } catch { /* some effects want two views: they keep an empty place */ }
  }
  drawing = false;
}

export function startLibrary() {
  const effects = [...state.catalogue.values()].filter((effect) => effect.kind !== 'transition');
  for (const [kind, title] of groups) {
    const made = effects.filter((effect) => effect.kind === kind).map(entryOf);
    entries.push(...made);
    place.append(h('div', { class: 'group' }, h('h2', {}, title), h('ul', {}, made.map((entry) => entry.element))));
  }
  place.append(h('p', { id: 'none', hidden: true }, 'No effect has all these words.'));
  const watcher = new IntersectionObserver((changes) => {
    for (const change of changes) {
      const entry = entries.find((one) => one.element === change.target);
      if (change.isIntersecting) seen.add(entry);
      else seen.delete(entry);
    }
    drawShots();
  });
  for (const entry of entries) watcher.observe(entry.element);
  search.addEventListener('input', filter);
  search.addEventListener('keydown', (event) => {
    if (event.key !== 'Enter') return;
    const first = entries.find(({ element }) => !element.hidden);
    if (first) add(first.effect);
  });
  on('clip', () => { drawnFor = state.clip; setTimeout(drawShots, 400); });
}
