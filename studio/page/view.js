// The picture: before and after, compared, as large as one likes.
import { media } from './api.js';
import { button, clamp, drag, h } from './dom.js';
import { showHandles } from './handles.js';
import { chainWords, isSound, on, state } from './state.js';

const restMs = 300; // a knob that has rested so long gets exact pixels
const modes = [['after', 'After'], ['wipe', 'Wipe'], ['side', 'Side by side'], ['difference', 'Difference']];
const zooms = [['fit', 'Fit'], ['0.5', '50%'], ['1', '100%'], ['2', '200%'], ['4', '400%'], ['8', '800%']];

const after = h('canvas', { class: 'after', role: 'img', 'aria-label': 'The picture with the effects' });
const before = h('canvas', { class: 'before', role: 'img', 'aria-label': 'The picture as it was' });
const handles = h('div', { class: 'handles' });
const wipe = h('div', { class: 'divider', role: 'slider', tabIndex: 0, 'aria-label': 'Where before and after meet', 'aria-valuemin': 0, 'aria-valuemax': 100 });
const paper = h('div', { class: 'paper' }, after, before, handles, wipe);
const pane = h('div', { class: 'pane', tabIndex: 0, 'aria-label': 'Picture; scroll when it is larger than its place' }, paper);

const view = { mode: 'after', zoom: 'fit', wipe: 50 };
const message = document.getElementById('message');

let drawingFailed = false; // and the message says so

export function say(text) {
  message.textContent = text;
  drawingFailed = false;
}

/** Draws a picture as it is: the canvas has its pixels. */
async function draw(canvas, blob) {
  const bitmap = await createImageBitmap(blob, { colorSpaceConversion: 'none', premultiplyAlpha: 'none' });
  canvas.width = bitmap.width;
  canvas.height = bitmap.height;
  canvas.getContext('2d').drawImage(bitmap, 0, 0);
  bitmap.close();
}

/** One of the two pictures: asks for a small one at once, and for the exact one when nothing changes any more. */
class Shown {
  constructor(canvas, lane, chain) {
    Object.assign(this, { canvas, lane, chain, asked: '', running: false, timer: 0, exact: null });
  }
  request() {
    return { clip: state.clip.id, at: state.time, chain: this.chain() };
  }
  refresh() {
    if (!state.clip?.pictures) return;
    const wanted = JSON.stringify(this.request());
    if (wanted === this.asked) return;
    this.asked = wanted;
    this.canvas.dataset.exact = '';
    clearTimeout(this.timer);
    this.exact?.abort();
    if (!this.running) this.run();
  }
  async run() {
    this.running = true;
    let shown = '';
    while (shown !== this.asked) {
      shown = this.asked;
      await this.show({ ...JSON.parse(shown), width: previewWidth(), lane: this.lane });
    }
    this.running = false;
    if (!playing) this.timer = setTimeout(() => this.settle(shown), view.zoom === 'fit' ? restMs : 0);
  }
  async settle(shown) {
    this.exact = new AbortController();
    const done = await this.show({ ...JSON.parse(shown), width: 0, lane: `${this.lane} exact` }, this.exact.signal, () => shown === this.asked);
    if (done && shown === this.asked) this.canvas.dataset.exact = shown;
  }
  async show(request, signal, still = () => true) {
    try {
      const made = await media('/api/frame', request, signal);
      if (!made || !still()) return false;
      await draw(this.canvas, made.blob);
      if (drawingFailed) say('');
      layOut();
      return true;
    } catch (error) {
      say(error.message);
      drawingFailed = true;
      return false;
    }
  }
}

let playing = false;
const page = Math.random().toString(36).slice(2, 10); // several may be open, each with lanes of its own
const shownAfter = new Shown(after, `${page} after`, () => chainWords({ of: state.chain.filter((card) => !isSound(card)) }));
const shownBefore = new Shown(before, `${page} before`, () => ({ e: [] }));

function previewWidth() {
  const place = Math.max(320, pane.clientWidth) * Math.min(2, devicePixelRatio);
  return Math.min(Math.ceil((view.mode === 'side' ? place / 2 : place) / 160) * 160, 1280, state.clip.width);
}

function refresh() {
  showHandles(handles);
  shownAfter.refresh();
  if (view.mode !== 'after') shownBefore.refresh();
}

/** While the clip plays: the next moment's picture, as soon as it is made. */
export async function playTo(time) {
  playing = true;
  state.time = time;
  await shownAfter.show({ ...shownAfter.request(), width: previewWidth(), lane: shownAfter.lane });
  if (view.mode !== 'after') await shownBefore.show({ ...shownBefore.request(), width: previewWidth(), lane: shownBefore.lane });
}
export function stopPlaying() {
  playing = false;
  shownAfter.asked = shownBefore.asked = '';
  refresh();
}

function layOut() {
  const { clip } = state;
  if (!clip?.pictures) return;
  const side = view.mode === 'side';
  const fits = Math.min(pane.clientWidth / (clip.width * (side ? 2 : 1)), pane.clientHeight / clip.height, 8);
  const scale = view.zoom === 'fit' ? fits : Number(view.zoom) / (clip.width > 0 ? devicePixelRatio : 1);
  paper.style.width = `${clip.width * scale * (side ? 2 : 1)}px`;
  paper.style.height = `${clip.height * scale}px`;
  paper.className = `paper ${view.mode}${scale * devicePixelRatio >= 2 ? ' pixels' : ''}`;
  before.hidden = view.mode === 'after';
  wipe.hidden = view.mode !== 'wipe';
  before.style.clipPath = view.mode === 'wipe' ? `inset(0 ${100 - view.wipe}% 0 0)` : '';
  wipe.style.left = `${view.wipe}%`;
  wipe.setAttribute('aria-valuenow', String(Math.round(view.wipe)));
}

function setWipe(percent) {
  view.wipe = clamp(percent, 0, 100);
  layOut();
}

export function startView() {
  document.getElementById('view').append(pane);
  const choose = (label, name, choices, id) => h('label', {}, label, h('select', { id, on: { change: (event) => {
    view[name] = event.target.value;
    layOut();
    shownAfter.asked = '';
    refresh();
  } } }, choices.map(([value, title]) => h('option', { value }, title))));
  document.getElementById('view-tools').append(choose('Compare ', 'mode', modes, 'compare'), choose('Zoom ', 'zoom', zooms, 'zoom'),
    button('Full screen', 'Full screen', () => pane.requestFullscreen?.()));
  wipe.addEventListener('pointerdown', (event) => drag(event, (moved) => {
    const box = paper.getBoundingClientRect();
    setWipe((100 * (moved.clientX - box.left)) / box.width);
  }));
  wipe.addEventListener('keydown', (event) => {
    const by = { ArrowLeft: -2, ArrowRight: 2, Home: -100, End: 100 }[event.key];
    if (!by) return;
    event.preventDefault();
    setWipe(view.wipe + by);
  });
  new ResizeObserver(layOut).observe(pane);
  on('chain', refresh);
  on('selected', () => showHandles(handles));
  on('time', () => { if (!playing) refresh(); else showHandles(handles); });
  on('clip', () => {
    document.getElementById('view').hidden = !state.clip?.pictures;
    layOut();
    refresh();
  });
}
