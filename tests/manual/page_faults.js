// What is wrong with the page that is open, a line each: for those who don't see it, and for everybody.
const faults = [];
const need = (right, text) => { if (!right) faults.push(text); };
const all = (selector) => [...document.querySelectorAll(selector)];
need(document.documentElement.lang, 'no language');
need(all('h1').length === 1, 'not one h1');
all('h1,h2,h3,h4').reduce((before, heading) => {
  const level = Number(heading.tagName[1]);
  need(level <= before + 1, 'heading skips a level: ' + heading.textContent);
  return level;
}, 0);
const ids = all('[id]').map((element) => element.id);
need(new Set(ids).size === ids.length, 'an id stands twice');
all('img').forEach((image) => need(image.alt || image.closest('button,[aria-hidden]'), 'no alt: ' + image.src));
all('button,a,input').forEach((control) => need(control.textContent.trim() || control.getAttribute('aria-label') ||
  control.labels?.length || control.querySelector('img[alt]'), 'no name: ' + control.outerHTML));
need(document.documentElement.scrollWidth <= innerWidth, 'scrolls sideways: ' + document.documentElement.scrollWidth);

// Contrast of each text with what lies behind it, as WCAG 2 computes it.
const channels = (colour) => colour.match(/[\d.]+/g).map(Number);
const light = (colour) => channels(colour).slice(0, 3)
  .map((c) => c / 255).map((c) => c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
  .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
const ground = (element) => {
  for (; element; element = element.parentElement) {
    const colour = getComputedStyle(element).backgroundColor;
    if (channels(colour)[3] !== 0) return colour;
  }
  return 'rgb(255, 255, 255)';
};
const poor = new Set();
const words = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
while (words.nextNode()) {
  const element = words.currentNode.parentElement;
  if (!words.currentNode.data.trim() || !element.getClientRects().length) continue;
  const levels = [light(getComputedStyle(element).color), light(ground(element))].sort((a, b) => b - a);
  if ((levels[0] + 0.05) / (levels[1] + 0.05) < 4.5) poor.add('poor contrast: ' + element.outerHTML.slice(0, 80));
}
return faults.concat([...poor]);
