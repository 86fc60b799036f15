// Renders: what they are written as, and the queue.
import { get, remove, send } from './api.js';
import { button, h } from './dom.js';
import { besideClip } from './files.js';
import { chainWords, on, state, tell } from './state.js';

const place = document.getElementById('queue');
const form = {};

/** As the command line has them; nothing that is left as it usually is. */
export function renderOptions() {
  if (!form.output) return {};
  const options = {};
  if (form.size.value) options.size = form.size.value;
  if (!form.codec.disabled && form.codec.selectedIndex > 0) options.codec = form.codec.value;
  if (!form.quality.disabled && form.quality.value) options[form.quality.dataset.option] = form.quality.value;
  if (form.from.value) options.from = form.from.value;
  if (form.to.value) options.to = form.to.value;
  return { output: form.output.value, options };
}

function showChoice(choices) {
  const choice = choices.find((one) => one.extension === form.format.value);
  form.codec.replaceChildren(h('option', { value: '' }, 'usual'), ...choice.codecs.map((codec) => h('option', { value: codec }, codec)));
  form.codec.disabled = choice.codecs.length < 2 && choice.kind !== 'clip';
  const photo = ['jpg', 'webp'].includes(choice.extension);
  form.quality.disabled = !(choice.kind === 'clip' && choice.extension !== 'gif') && !photo;
  form.quality.dataset.option = photo ? 'quality' : 'crf';
  form.qualityLabel.textContent = photo ? 'Quality, 1 to 100' : 'Quality (crf), lower is better';
  form.size.disabled = choice.kind === 'sound';
  if (state.clip) form.output.value = besideClip(`-studio.${choice.extension}`);
  tell('options');
}

function jobElement(job) {
  const name = job.output.split('/').at(-1);
  const words = { waiting: 'waits', running: `${Math.round(100 * job.progress)} %`, done: 'done', failed: 'failed', cancelled: 'cancelled' };
  const shownAs = /\.(mp4|webm|mov|mkv)$/i.test(name) ? 'video' : /\.(wav|flac|mp3|ogg|m4a)$/i.test(name) ? 'audio' : 'img';
  const result = h('div', { class: 'result', hidden: true });
  const show = () => {
    result.hidden = !result.hidden;
    const source = `/api/jobs/${job.id}/file`;
    result.replaceChildren(h(shownAs, shownAs === 'img' ? { src: source, alt: name } : { src: source, controls: true }));
  };
  return h('li', { dataset: { job: job.id, state: job.state } }, h('span', { class: 'output', title: job.output }, name),
    h('progress', { max: 1, value: job.progress, 'aria-label': `Progress of ${name}` }), h('span', { class: 'state' }, words[job.state]),
    ['waiting', 'running'].includes(job.state) && button('Cancel', `Cancel ${name}`, () => remove(`/api/jobs/${job.id}`)),
    job.state === 'done' && button('Show', `Show ${name}`, show), job.message && h('p', { class: 'wrong' }, job.message), result);
}

// Elements of jobs that have not changed stay, with what they show.
function showJobs(list, jobs) {
  const old = new Map([...list.children].map((element) => [element.dataset.job, element]));
  list.replaceChildren(...jobs.map((job) => {
    const kept = old.get(job.id);
    return kept && kept.dataset.state === job.state && job.state !== 'running' ? kept : jobElement(job);
  }).reverse());
}

export async function startQueue() {
  const choices = await get('/api/formats');
  const field = (name, label, element) => {
    form[name] = element;
    element.id = `render-${name}`;
    element.addEventListener('change', () => tell('options'));
    const title = h('label', { for: element.id }, label);
    if (name === 'quality') form.qualityLabel = title;
    return h('div', { class: 'field' }, title, element);
  };
  const replace = h('input', { type: 'checkbox' });
  const wrong = h('p', { class: 'wrong', role: 'alert' });
  const list = h('ol', { class: 'jobs' });
  const text = (hint) => h('input', { type: 'text', spellcheck: false, placeholder: hint });
  const dialog = h('dialog', { 'aria-labelledby': 'render-title', class: 'render' }, h('h2', { id: 'render-title' }, 'Render'),
    field('format', 'Format', h('select', {}, choices.map((one) => h('option', { value: one.extension }, one.title)))),
    field('codec', 'Codec', h('select', {})), field('size', 'Size', text('as it is; 1280x720, 1280:, 50%')), field('quality', 'Quality', text('usual')),
    field('from', 'From', text('beginning; 5, 0:05')), field('to', 'To', text('end')), field('output', 'File', text('')),
    h('label', { class: 'tick' }, replace, 'Replace the file if it is there'), wrong,
    h('div', { class: 'buttons' }, button('Close', 'Close', () => dialog.close()), button('Add to the queue', 'Add to the queue', async () => {
      try {
        wrong.textContent = '';
        await send('/api/jobs', { clip: state.clip.id, chain: chainWords(), overwrite: replace.checked, ...renderOptions() });
        dialog.close();
      } catch (error) {
        wrong.textContent = error.message;
      }
    }, { class: 'main' })));
  document.body.append(dialog);
  form.format.addEventListener('change', () => showChoice(choices));
  const open = button('Render…', 'Render…', () => dialog.showModal(), { class: 'main', disabled: true });
  document.getElementById('render-tools').append(open);
  on('clip', () => {
    open.disabled = !state.clip;
    const kind = !state.clip?.pictures ? 'sound' : state.clip.still ? 'picture' : 'clip';
    form.format.value = choices.find((one) => one.kind === kind)?.extension ?? choices[0].extension;
    showChoice(choices);
  });
  place.append(h('h2', {}, 'Renders'), list);
  place.hidden = true;
  const events = new EventSource('/api/events');
  events.addEventListener('jobs', (event) => {
    const jobs = JSON.parse(event.data);
    place.hidden = jobs.length === 0;
    showJobs(list, jobs);
  });
  events.addEventListener('closing', () => events.close());
}
