// What a clip's sound looks like before and after the effects on it, and how it sounds.
import { media, send } from './api.js';
import { button, h } from './dom.js';
import { chainWords, isSound, on, state } from './state.js';
import { say } from './view.js';

const place = document.getElementById('wave');
const columns = 600;
const chain = () => chainWords({ of: state.chain.filter(isSound) });
let canvas;
let peaks = { before: [], after: [] };
let asked = '';

function drawPeaks() {
  const context = canvas.getContext('2d');
  const [width, height] = [canvas.width, canvas.height];
  context.clearRect(0, 0, width, height);
  for (const [name, colour] of [['before', getComputedStyle(canvas).getPropertyValue('--faint')], ['after', getComputedStyle(canvas).getPropertyValue('--accent')]]) {
    context.fillStyle = colour;
    const all = peaks[name];
    all.forEach(([low, high], index) => {
      const top = (height / 2) * (1 - high);
      context.fillRect((index * width) / all.length, top, Math.max(1, width / all.length), Math.max(1, (height / 2) * (high - low)));
    });
  }
  if (state.clip.duration > 0) {
    context.fillStyle = getComputedStyle(canvas).color;
    context.fillRect((state.time / state.clip.duration) * width, 0, 2, height);
  }
}

async function refresh() {
  if (!canvas) return;
  const now = JSON.stringify([state.clip.id, chain()]);
  if (now === asked) return drawPeaks();
  asked = now;
  try {
    if (peaks.before.length === 0) peaks.before = (await send('/api/waveform', { clip: state.clip.id, columns })).peaks;
    const after = (await send('/api/waveform', { clip: state.clip.id, columns, chain: chain() })).peaks;
    if (asked === now) peaks.after = after;
    if (canvas) drawPeaks();
  } catch (error) {
    say(error.message);
  }
}

let playing = null;
async function hear(withEffects) {
  playing?.pause();
  try {
    const made = await media('/api/sound', { clip: state.clip.id, from: state.time, length: 10, ...(withEffects ? { chain: chain() } : {}) });
    playing = new Audio(URL.createObjectURL(made.blob));
    await playing.play();
  } catch (error) {
    say(error.message);
  }
}

function show() {
  const wanted = state.clip?.sound && (state.chain.some(isSound) || !state.clip.pictures);
  if (!wanted) {
    place.replaceChildren();
    canvas = null;
    asked = '';
    return;
  }
  if (!canvas) {
    canvas = h('canvas', { width: columns * 2, height: 120, role: 'img', 'aria-label': 'The sound before (faint) and after the effects' });
    place.replaceChildren(canvas, h('div', { class: 'line' }, button('Hear before', 'Hear before', () => hear(false)), button('Hear after', 'Hear after', () => hear(true)),
      button('Stop', 'Stop', () => playing?.pause())));
  }
  refresh();
}

export function startSound() {
  on('clip', () => { peaks = { before: [], after: [] }; canvas = null; show(); });
  on('chain', show);
  on('time', () => { if (canvas) drawPeaks(); });
}
