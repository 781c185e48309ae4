// For a page to evaluate: texts whose contrast with what is behind them is below
// WCAG's AA for small text.
export const poorContrast = () => {
  const canvas = document.createElement('canvas').getContext('2d', { willReadFrequently: true });
  const paint = (colours) => {
    canvas.clearRect(0, 0, 1, 1);
    for (const colour of colours) {
      canvas.fillStyle = colour;
      canvas.fillRect(0, 0, 1, 1);
    }
    return Array.from(canvas.getImageData(0, 0, 1, 1).data).slice(0, 3);
  };
  const luminance = (rgb) => {
    const [r, g, b] = rgb.map((value) => {
      const part = value / 255;
      return part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4;
    });
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
  const behind = (element) => {
    const colours = [];
    for (let at = element; at; at = at.parentElement) colours.unshift(getComputedStyle(at).backgroundColor);
    return colours;
  };
  const poor = [];
  let looked = 0;
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (walker.nextNode()) {
    const element = walker.currentNode.parentElement;
    if (!walker.currentNode.data.trim() || !element.checkVisibility()) continue;
    const background = behind(element);
    const under = luminance(paint(background));
    const text = luminance(paint([...background, getComputedStyle(element).color]));
    const ratio = (Math.max(text, under) + 0.05) / (Math.min(text, under) + 0.05);
    looked += 1;
    if (ratio < 4.5) poor.push(`${element.className || element.tagName}: ${ratio.toFixed(2)}`);
  }
  return { looked, poor: Array.from(new Set(poor)) };
};
