// Files: which are opened, and where others are put.
import { get, send } from './api.js';
import { button, h } from './dom.js';
import { cardOf, change, state, tell } from './state.js';
import { say } from './view.js';

export async function useClip(clip) {
  state.clip = clip;
  state.time = 0;
  tell('clip');
  tell('time');
  tell('chain');
}

export async function openClip(path) {
  await useClip(await send('/api/clips', { path }));
}

/** A film's clip and chain: everything as it was saved. */
export async function useFilm(film) {
  await useClip(film.clip);
  change('open', () => {
    state.chain = [...film.chain.e, ...film.chain.a].map((effect) => cardOf(effect.text, effect.on));
    state.selected = state.chain.at(-1)?.key ?? null;
  });
  say(film.notes.join(' '));
}

async function open(entry) {
  if (entry.kind === 'film') await useFilm(await send('/api/open', { path: entry.path }));
  else await openClip(entry.path);
}

export function startFiles() {
  const path = h('p', { class: 'path' });
  const list = h('ul', { class: 'files' });
  const wrong = h('p', { class: 'wrong', role: 'alert' });
  const dialog = h('dialog', { 'aria-labelledby': 'open-title' }, h('h2', { id: 'open-title' }, 'Open a clip, a picture, sound or a film'), path, wrong, list,
    h('div', { class: 'buttons' }, button('Close', 'Close', () => dialog.close())));
  document.body.append(dialog);
  const tryTo = async (act) => {
    try {
      wrong.textContent = '';
      await act();
    } catch (error) {
      wrong.textContent = error.message;
    }
  };
  const show = (folder) => tryTo(async () => {
    const found = await get(`/api/files?path=${encodeURIComponent(folder)}`);
    path.textContent = found.path;
    const up = found.path !== '' && h('li', {}, button('↑ up', 'The folder above', () => show(found.parent ?? '')));
    list.replaceChildren(...[up, ...found.entries.filter((entry) => entry.folder || entry.kind !== 'other').map((entry) => h('li', {},
      h('button', { type: 'button', on: { click: () => (entry.folder ? show(entry.path) : tryTo(async () => { await open(entry); dialog.close(); })) } },
        entry.name + (entry.folder ? '/' : ''))))].filter(Boolean));
  });
  document.getElementById('file-tools').append(button('Open…', 'Open…', () => {
    dialog.showModal();
    show(state.roots.length === 1 ? state.roots[0] : '');
  }), h('output', { id: 'clip-name' }));
}

export function showName() {
  const { clip } = state;
  document.getElementById('clip-name').textContent = !clip ? 'Nothing is open'
    : `${clip.name}${clip.pictures ? ` · ${clip.width} × ${clip.height}` : ''}${clip.fps ? ` · ${Number(clip.fps.toFixed(2))} a second` : ''}`;
}

/** A place for a file beside the clip. */
export function besideClip(ending) {
  return state.clip.path.replace(/(\.[^./]*)?$/, ending);
}
