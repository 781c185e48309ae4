'use strict';
(() => {
  const byId = (id) => document.getElementById(id);
  const query = byId('query');
  const status = byId('status');
  const nothing = byId('nothing');
  const boxes = Array.from(byId('toolbar').querySelectorAll('input[type=checkbox]'));

  // Sections hold groups, groups hold lists, lists hold findings. What does not
  // match the filter is taken out of what holds it: to hide thousands of elements
  // one by one takes browsers seconds.
  const findingOf = (element) => ({ element, kind: element.dataset.kind, text: '', size: 1 });
  const holderOf = (element, place, selector, partOf) => {
    const parts = Array.from(place.querySelectorAll(selector), partOf);
    const size = parts.reduce((sum, part) => sum + part.size, 0);
    return { element, place, parts, visible: parts, size };
  };
  const listOf = (list) => holderOf(list, list, '.finding', findingOf);
  const groupOf = (group) => holderOf(group, group.querySelector('.lists'), '.list', listOf);
  const sectionOf = (section) => holderOf(section, section.querySelector('.groups'), '.group', groupOf);
  const sections = Array.from(document.querySelectorAll('section.findings'), sectionOf);
  const groups = sections.flatMap((section) => section.parts);
  const total = sections.reduce((sum, section) => sum + section.size, 0);

  // What a search looks at is read from the page once, when it is first needed.
  let indexed = false;
  const index = () => {
    if (indexed) return;
    indexed = true;
    for (const { element, parts } of groups) {
      const rule = element.querySelector('h3').textContent;
      for (const finding of parts.flatMap((list) => list.parts)) {
        const texts = finding.element.querySelectorAll('.level, .id, .message, dd');
        finding.text = [rule, ...Array.from(texts, (text) => text.textContent)].join(' ').toLowerCase();
      }
    }
  };

  const show = (holder, visible) => {
    const same = visible.length === holder.visible.length &&
      visible.every((part, i) => part === holder.visible[i]);
    if (same) return;
    holder.visible = visible;
    // Outside of the page, a change costs the same however much there is.
    const { place } = holder;
    const parent = place.parentNode;
    const next = place.nextSibling;
    place.remove();
    place.replaceChildren();
    for (const { element } of visible) place.append(element);
    parent?.insertBefore(place, next);
  };

  // Shows the findings that match, and returns their number.
  const filter = (part, matches) => {
    if (!part.parts) return matches(part) ? 1 : 0;
    let count = 0;
    const visible = part.parts.filter((inner) => {
      const inside = filter(inner, matches);
      count += inside;
      return inside > 0;
    });
    show(part, visible);
    part.count = count;
    return count;
  };

  const noteCounts = () => {
    for (const group of groups) {
      const shown = group.element.querySelector('.shown');
      if (group.count < group.size) shown.textContent = `${group.count} of ${group.size} shown`;
      shown.hidden = group.count === group.size;
    }
    for (const section of sections) {
      const filtered = section.element.querySelector('.filtered');
      if (filtered) filtered.hidden = section.count > 0;
    }
  };

  // Writes to the page only: nothing here makes the browser compute a layout.
  const apply = () => {
    const words = query.value.toLowerCase().split(/\s+/).filter(Boolean);
    if (words.length > 0) index();
    const kinds = new Set(boxes.filter((box) => box.checked).map((box) => box.value));
    const matches = (finding) =>
      kinds.has(finding.kind) && words.every((word) => finding.text.includes(word));
    let count = 0;
    for (const section of sections) count += filter(section, matches);
    noteCounts();
    const isNothing = count === 0 && total > 0;
    nothing.hidden = !isNothing;
    for (const section of sections) section.element.hidden = isNothing;
    status.textContent = `${count} of ${total} findings shown`;
    document.body.classList.toggle('is-filtered', count !== total);
  };

  let scheduled = false;
  const schedule = () => {
    if (scheduled) return;
    scheduled = true;
    requestAnimationFrame(() => {
      scheduled = false;
      apply();
    });
  };

  const setOpen = (open) => {
    for (const group of groups) group.element.open = open;
  };

  const clear = () => {
    query.value = '';
    for (const box of boxes) box.checked = true;
    apply();
    query.focus();
  };

  const actions = { expand: () => setOpen(true), collapse: () => setOpen(false), clear };
  document.addEventListener('input', schedule);
  document.addEventListener('click', (event) => {
    const button = event.target.closest('button');
    if (button) actions[button.id]();
  });

  // On paper there is nothing to click.
  let opened = [];
  window.addEventListener('beforeprint', () => {
    opened = Array.from(document.querySelectorAll('details:not([open])'));
    for (const details of opened) details.open = true;
  });
  window.addEventListener('afterprint', () => {
    for (const details of opened) details.open = false;
  });

  byId('toolbar').hidden = total === 0;
  apply();
})();
