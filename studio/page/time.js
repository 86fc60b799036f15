// The time bar with thumbnails, playing, and the keyframes of what is selected.
import { media } from './api.js';
import { button, clamp, clock, drag, h } from './dom.js';
import { chainWords, infoOf, isSound, on, selectedCard, setValue, span, state, tell } from './state.js';
import { playTo, say, stopPlaying } from './view.js';
import { motions, moves, readKeys, writeKeys } from './wording.js';

const place = document.getElementById('time');
const keysPlace = document.getElementById('keys');
let bar, label, playButton, thumbnails;
let play = null; // while the clip plays

export function goTo(seconds) {
  const last = Math.max(0, (state.clip?.duration ?? 0) - 0.5 / span().fps);
  state.time = Number(clamp(seconds, 0, last).toFixed(3));
  tell('time');
}

function showTime() {
  if (!bar) return;
  if (document.activeElement !== bar || play) bar.value = state.time;
  bar.value = state.time;
  bar.setAttribute('aria-valuetext', clock(state.time));
  label.textContent = `${clock(state.time)} / ${clock(state.clip.duration)}`;
}

async function hear(from) {
  if (!state.clip.sound) return null;
  const piece = await media('/api/sound', { clip: state.clip.id, from, length: 30, chain: chainWords({ of: state.chain.filter(isSound) }) });
  if (!piece || !play) return null;
  const audio = new Audio(URL.createObjectURL(piece.blob));
  await audio.play().catch(() => {});
  return audio;
}

/** Shows moments as they pass, as many as the machine makes. */
async function start() {
  const own = { from: state.time, audio: null };
  play = own;
  playButton.textContent = '■';
  try {
    own.audio = await hear(own.from).catch(() => null);
    const begin = performance.now();
    while (play === own) {
      const passed = own.audio && !own.audio.ended ? own.audio.currentTime : (performance.now() - begin) / 1000;
      const now = own.from + passed;
      if (now >= state.clip.duration) break;
      await playTo(now);
      tell('time');
    }
  } catch (error) {
    say(error.message);
  }
  if (play === own) stop();
}

function stop() {
  play?.audio?.pause();
  play = null;
  playButton.textContent = '▶';
  stopPlaying();
  goTo(state.time);
}

async function showThumbnails() {
  const { clip } = state;
  const count = clamp(Math.round(thumbnails.clientWidth / 90), 4, 14);
  thumbnails.replaceChildren();
  for (let index = 0; index < count && state.clip === clip; ++index) {
    const at = ((index + 0.5) / count) * clip.duration;
    const picture = h('img', { alt: '', src: `/api/clips/${clip.id}/thumbnail?at=${at.toFixed(2)}&height=48` });
    thumbnails.append(picture);
    await picture.decode().catch(() => {});
  }
}

function build() {
  const { clip } = state;
  place.replaceChildren();
  keysPlace.replaceChildren();
  bar = null;
  if (!clip || clip.still || !(clip.duration > 0)) return;
  const frame = 1 / span().fps;
  const step = (by) => () => goTo(state.time + by * frame);
  playButton = button('▶', 'Play (space)', () => (play ? stop() : start()), { class: 'play', disabled: !clip.pictures });
  bar = h('input', { type: 'range', id: 'bar', min: 0, max: clip.duration, step: 0.001, value: 0, 'aria-label': 'Time',
    on: { input: () => { if (play) stop(); goTo(Number(bar.value)); }, keydown: (event) => {
      const by = { ArrowLeft: -1, ArrowRight: 1, PageUp: -10, PageDown: 10 }[event.key];
      if (!by) return;
      event.preventDefault();
      goTo(state.time + by * frame);
    } } });
  label = h('output', { class: 'clock', htmlFor: 'bar' });
  thumbnails = h('div', { class: 'thumbnails', 'aria-hidden': 'true' });
  place.append(h('div', { class: 'transport' }, button('|◂', 'To the beginning', () => goTo(0)), button('◂', 'Picture before', step(-1)), playButton,
    button('▸', 'Next picture', step(1)), label), h('div', { class: 'track' }, clip.pictures && thumbnails, bar));
  showTime();
  if (clip.pictures) showThumbnails();
}

function keyElement(card, name, keys, index, track) {
  const key = keys[index];
  const title = infoOf(card).properties.find((property) => property.name === name)?.title ?? name;
  const put = (changed) => setValue(card, name, writeKeys(changed));
  const moveTo = (time) => put(keys.map((one, at) => (at === index ? { ...one, time: clamp(time, 0, state.clip.duration) } : one)));
  const element = h('button', { type: 'button', class: 'diamond', title: `${title} ${key.value} at ${clock(key.time)}; double-click or Enter goes there, Delete removes it`,
    'aria-label': `${title}: ${key.value} at ${clock(key.time)}`, dataset: { key: `${name} ${index}` }, on: {
      pointerdown: (event) => {
        const box = track.getBoundingClientRect();
        drag(event, (moved) => { element.style.left = `${(100 * clamp(moved.clientX - box.left, 0, box.width)) / box.width}%`; },
          () => { const time = (parseFloat(element.style.left) / 100) * state.clip.duration; if (Math.abs(time - key.time) > 0.001) moveTo(time); });
      },
      dblclick: () => goTo(key.time),
      keydown: (event) => {
        const frame = 1 / span().fps;
        if (event.key === 'Enter') goTo(key.time);
        else if (event.key === 'Delete' || event.key === 'Backspace') keys.length > 1 ? put(keys.filter((one, at) => at !== index)) : setValue(card, name, key.value);
        else if (event.key === 'ArrowLeft') moveTo(key.time - frame);
        else if (event.key === 'ArrowRight') moveTo(key.time + frame);
        else return;
        event.preventDefault();
      },
    } }, '◆');
  element.style.left = `${(100 * key.time) / state.clip.duration}%`;
  return element;
}

function motionChoice(card, name, keys) {
  const behind = keys.findIndex((key) => key.time > state.time);
  const at = Math.max(0, behind < 0 ? keys.length - 1 : behind - 1);
  return h('select', { 'aria-label': 'How the value goes on from the keyframe before this moment', on: { change: (event) =>
    setValue(card, name, writeKeys(keys.map((key, index) => (index === at ? { ...key, motion: event.target.value } : key)))) } },
    motions.map(([value, title]) => h('option', { value, selected: value === keys[at].motion }, title)));
}

function showKeys() {
  const card = selectedCard();
  const focus = document.activeElement?.dataset?.key;
  keysPlace.replaceChildren();
  if (!card || !bar) return;
  for (const [name, value] of Object.entries(card.values)) {
    if (!moves(value)) continue;
    const keys = readKeys(value, span());
    const title = infoOf(card).properties.find((property) => property.name === name)?.title ?? name;
    const track = h('div', { class: 'keytrack' });
    track.append(h('div', { class: 'now' }), ...keys.map((key, index) => keyElement(card, name, keys, index, track)));
    track.firstChild.style.left = `${(100 * state.time) / state.clip.duration}%`;
    keysPlace.append(h('div', { class: 'keyrow' }, h('span', { class: 'keytitle' }, title), track, motionChoice(card, name, keys)));
  }
  if (focus) [...keysPlace.querySelectorAll('[data-key]')].find((element) => element.dataset.key === focus)?.focus();
}

export function startTime() {
  on('clip', () => { if (play) stop(); build(); showKeys(); });
  on('time', () => { showTime(); for (const now of keysPlace.querySelectorAll('.now')) now.style.left = `${(100 * state.time) / state.clip.duration}%`; });
  on('chain', showKeys);
  on('selected', showKeys);
  document.addEventListener('keydown', (event) => {
    if (event.key !== ' ' || event.target.closest('input, select, button, textarea, summary, dialog, a') || !playButton) return;
    event.preventDefault();
    playButton.click();
  });
}
