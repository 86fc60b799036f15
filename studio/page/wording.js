// Effects as the command line has them: NAME[/PRESET][:setting=value...], and settings that move.

/** Cuts at colons that no backslash protects and that no value's time has, as the program does. */
function parts(text) {
  const found = [''];
  for (let index = 0; index < text.length; ++index) {
    const last = found.length - 1;
    const inTime = /\d/.test(text[index + 1] ?? '') && found[last].includes('=');
    if (text[index] === ':' && !inTime) {
      found.push('');
      continue;
    }
    found[last] += text[index];
    if (text[index] === '\\' && index + 1 < text.length) found[last] += text[++index];
  }
  return found;
}

export function splitEffect(text) {
  const [head, ...settings] = parts(text);
  const [effect, preset = ''] = head.split('/');
  const values = {};
  for (const setting of settings) {
    const equals = setting.indexOf('=');
    values[setting.slice(0, equals)] = setting.slice(equals + 1).replace(/\\([:\\])/g, '$1');
  }
  return { effect, preset, values };
}

export function joinEffect({ effect, preset, values }) {
  const settings = Object.entries(values).map(([name, value]) => `:${name}=${value.replace(/[\\:]/g, '\\$&')}`);
  return effect + (preset ? `/${preset}` : '') + settings.join('');
}

export const motions = [
  ['=', 'evenly'], ['|=', 'hold'], ['~=', 'smoothly'], ['[ease-in]=', 'slow start'], ['[ease-out]=', 'slow end'],
  ['[ease-in-out]=', 'slow start and end']];

export const moves = (value) => value !== undefined && value.includes('=');

/** Seconds of a time in a span: "1.5", "1:02", "25f", "50%", "-1". */
export function secondsOf(text, span) {
  const back = text.startsWith('-');
  const plain = back ? text.slice(1) : text;
  let seconds;
  if (plain.endsWith('%')) seconds = (span.duration * Number(plain.slice(0, -1))) / 100;
  else if (plain.endsWith('f')) seconds = Number(plain.slice(0, -1)) / (span.fps || 25);
  else seconds = plain.split(':').reduce((sum, part) => 60 * sum + Number(part), 0);
  return back ? span.duration - seconds : seconds;
}

/** [{time (s), motion, value}] of "TIME=VALUE;TIME=VALUE...". */
export function readKeys(text, span) {
  return text.split(';').map((key) => {
    const [, time, motion, value] = /^(.*?)(=|\|=|~=|\[ease-(?:in|out|in-out)\]=)(.*)$/.exec(key) ?? [null, '0', '=', key];
    return { time: secondsOf(time, span), motion, value };
  });
}

export function writeKeys(keys) {
  const rising = [...keys].sort((a, b) => a.time - b.time);
  return rising.map(({ time, motion, value }) => Number(time.toFixed(3)) + motion + value).join(';');
}

/** About what a moving setting is at a moment, for its knob. */
export function valueAt(keys, time) {
  const behind = keys.findIndex((key) => key.time > time);
  if (behind === 0) return keys[0].value;
  if (behind < 0) return keys[keys.length - 1].value;
  const [first, second] = [keys[behind - 1], keys[behind]];
  const [from, to] = [parseFloat(first.value), parseFloat(second.value)];
  if (first.motion === '|=' || !Number.isFinite(from) || !Number.isFinite(to) || first.value.startsWith('#')) return first.value;
  const share = (time - first.time) / (second.time - first.time);
  return Number((from + share * (to - from)).toFixed(2)) + (first.value.endsWith('%') ? '%' : '');
}
