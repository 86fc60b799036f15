import { get } from './api.js';
import { startChain } from './chain.js';
import { startCommand } from './command.js';
import { showName, startFiles, useClip, useFilm } from './files.js';
import { startLibrary } from './library.js';
import { startQueue } from './queue.js';
import { startSound } from './sound.js';
import { on, state } from './state.js';
import { startTime } from './time.js';
import { say, startView } from './view.js';

async function start() {
  const catalogue = await get('/api/catalogue');
  for (const effect of catalogue.effects) state.catalogue.set(effect.shortName, effect);
  startFiles();
  startChain();
  startLibrary();
  startView();
  startTime();
  startSound();
  await startQueue();
  startCommand();
  on('clip', showName);
  showName();
  const opened = await get('/api/start');
  state.roots = opened.roots;
  if (opened.film) await useFilm(opened.film);
  else if (opened.clips.length > 0) await useClip(opened.clips[0]);
  if (opened.notes.length > 0) say(opened.notes.join(' '));
  else if (!state.clip) say('Open a clip or a photo to begin.');
  document.documentElement.dataset.ready = 'yes';
}

start().catch((error) => say(error.message));
