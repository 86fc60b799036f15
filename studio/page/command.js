// The command line and the film that do the same as the page, always in view.
import { send } from './api.js';
import { button, h } from './dom.js';
import { besideClip } from './files.js';
import { chainWords, on, state } from './state.js';
import { say } from './view.js';
import { renderOptions } from './queue.js';

const place = document.getElementById('command');
let words = {};

async function copy(text, from) {
  try {
    await navigator.clipboard.writeText(text);
  } catch {
    getSelection().selectAllChildren(from);
    document.execCommand('copy');
  }
  say('Copied.');
}

export function startCommand() {
  const kinds = [['render', 'Render'], ['frame', 'This picture'], ['otio', 'Film (.otio)']];
  const kind = h('select', { 'aria-label': 'What is shown', on: { change: () => show() } }, kinds.map(([value, title]) => h('option', { value }, title)));
  const text = h('code', { id: 'command-text', tabIndex: 0, 'aria-label': 'The same, as text' });
  const notes = h('p', { class: 'wrong', role: 'status' });
  const film = h('input', { type: 'text', id: 'film-path', spellcheck: false, 'aria-label': 'Where the film is saved' });
  const replace = h('input', { type: 'checkbox', id: 'film-replace' });
  const save = async () => {
    try {
      await send('/api/save', { clip: state.clip.id, chain: chainWords({ off: true }), output: film.value, overwrite: replace.checked });
      say(`Saved ${film.value}.`);
    } catch (error) {
      say(error.message);
    }
  };
  place.append(h('div', { class: 'line' }, kind, text, button('Copy', 'Copy', () => copy(text.textContent, text))), notes,
    h('div', { class: 'line' }, h('label', { for: 'film-path' }, 'Save as film'), film, h('label', { class: 'tick' }, replace, 'replace'), button('Save', 'Save', save)));
  const show = () => {
    text.textContent = words[kind.value] ?? '';
    text.className = kind.value === 'otio' ? 'long' : '';
    notes.textContent = (words.notes ?? []).join(' ');
  };
  let timer = 0;
  let newest = 0;
  const update = () => {
    clearTimeout(timer);
    if (!state.clip) return;
    timer = setTimeout(async () => {
      const own = ++newest;
      try {
        const made = await send('/api/command', { clip: state.clip.id, at: state.time, chain: chainWords({ off: true }), ...renderOptions() });
        if (own === newest) words = made;
      } catch (error) {
        if (own === newest) words = { notes: [error.message] };
      }
      show();
    }, 150);
  };
  for (const event of ['chain', 'time', 'options']) on(event, update);
  on('clip', () => { film.value = besideClip('.otio'); update(); });
}
