// The manual's pages work without this: it moves the edge between two pictures, searches, copies, and stops what moves.
'use strict';

// Both pictures under one slider. Keys are the slider's own; a finger or the mouse may be put down anywhere.
for (const compare of document.querySelectorAll('.compare')) {
  const slider = compare.querySelector('input');
  const show = () => compare.style.setProperty('--edge', slider.value + '%');
  const follow = (event) => {
    if (!event.buttons) return;
    const place = slider.getBoundingClientRect();
    slider.value = Math.round((event.clientX - place.left) / place.width * 100);
    show();
  };
  slider.addEventListener('input', show);
  slider.addEventListener('pointerdown', follow);
  slider.addEventListener('pointermove', follow);
  show();
}

// Search and kinds.
const finder = document.querySelector('.finder');
if (finder) {
  const search = finder.querySelector('#search');
  const cards = [...document.querySelectorAll('.card')];
  const shown = () => cards.filter((card) => !card.hidden);
  const find = () => {
    const words = search.value.toLowerCase().split(/\s+/).filter(Boolean);
    const kind = finder.elements.kind.value;
    for (const card of cards)
      card.hidden = (kind && card.dataset.kind !== kind) || !words.every((word) => card.dataset.words.includes(word));
    for (const section of document.querySelectorAll('.kind'))
      section.hidden = !section.querySelector('.card:not([hidden])');
    const count = shown().length;
    finder.querySelector('#found').textContent = count === 1 ? '1 effect' : count + ' effects';
  };
  finder.addEventListener('input', find);
  finder.addEventListener('submit', (event) => {
    event.preventDefault();
    if (shown().length) shown()[0].querySelector('a').click();
  });
  finder.hidden = false;
  find();
}

// Commands to copy. The older way is for pages that are opened as files where browsers refuse the newer one.
async function copy(text) {
  try {
    await navigator.clipboard.writeText(text);
    return true;
  } catch {
    const field = document.createElement('textarea');
    field.value = text;
    document.body.append(field);
    field.select();
    const done = document.execCommand('copy');
    field.remove();
    return done;
  }
}

for (const lines of document.querySelectorAll('pre')) {
  const frame = document.createElement('div');
  const button = document.createElement('button');
  frame.className = 'command';
  button.type = 'button';
  button.textContent = 'Copy';
  button.setAttribute('aria-live', 'polite');
  button.addEventListener('click', async () => {
    button.textContent = await copy(lines.textContent.trimEnd()) ? 'Copied' : 'Not copied';
    button.focus();
    setTimeout(() => { button.textContent = 'Copy'; }, 2000);
  });
  lines.tabIndex = 0;
  lines.replaceWith(frame);
  frame.append(lines, button);
}

// What moves can be stopped, all of a page at once.
const moving = [...document.querySelectorAll('.moving')];
if (moving.length && !matchMedia('(prefers-reduced-motion: reduce)').matches) {
  const button = document.createElement('button');
  button.type = 'button';
  button.className = 'stop';
  button.textContent = 'Stop what moves';
  button.addEventListener('click', () => {
    const stop = button.textContent.startsWith('Stop');
    for (const picture of moving) {
      const source = picture.querySelector('source');
      source.media = stop ? 'all' : '(prefers-reduced-motion: reduce)';
    }
    button.textContent = stop ? 'Let it move' : 'Stop what moves';
  });
  document.querySelector('h1').after(button);
}
