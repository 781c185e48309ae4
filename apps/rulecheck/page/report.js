// SPDX-License-Identifier: Apache-2.0

'use strict';
(() => {
  // Does something to each item of a list, in slices that leave the browser time
  // to answer. The first slice is done at once. A list that is started replaces
  // what is left of the one before.
  const gradually = (sliceMs, each, atEnd = () => {}) => {
    let left = [];
    let timer;
    const advance = (end) => {
      let done = 0;
      while (done < left.length && performance.now() < end) each(left[done++]);
      left = left.slice(done);
      if (left.length > 0) timer = setTimeout(() => advance(performance.now() + sliceMs));
      else atEnd();
    };
    const start = (list) => {
      clearTimeout(timer);
      left = list;
      advance(performance.now() + sliceMs);
    };
    const finish = () => {
      clearTimeout(timer);
      advance(Infinity);
    };
    return { start, finish };
  };

  // Sections hold blocks of groups, and groups hold lists of findings. A part has
  // the number of its findings, of those that match the filter (count), and of
  // those that the page shows as matching (shown). Elements below blocks are looked
  // up when they are needed: to keep tens of thousands slows down the browser's
  // collection of garbage.
  const placeIn = (group) => group.lastElementChild.lastElementChild;
  const partFor = (holder, index, size) => ({ holder, index, size, count: size, shown: size });
  const hold = (part, place, partOf) => {
    part.parts = Array.from(place.children, (element, index) => partOf(element, part, index));
    part.size = part.parts.reduce((sum, inner) => sum + inner.size, 0);
    part.count = part.size;
    part.shown = part.size;
    return part;
  };
  const findingOf = (element, list, index) =>
    Object.assign(partFor(list, index, 1), { kind: element.getAttribute('data-kind'), text: '' });
  const listOf = (element, group, index) => hold(partFor(group, index), element, findingOf);
  const groupOf = (element, block, index) =>
    hold(Object.assign(partFor(block, index), { isGroup: true, text: '' }), placeIn(element), listOf);
  const blockOf = (element, section, index) =>
    hold(Object.assign(partFor(section, index), { element }), element, groupOf);
  const sectionOf = (element) =>
    hold(Object.assign(partFor(), { element }), element.querySelector('.groups'), blockOf);

  const elementOf = (part) => part.element ?? placeOf(part.holder).children[part.index];
  const placeOf = (part) => part.isGroup ? placeIn(elementOf(part)) : elementOf(part);

  const textOf = (elements) =>
    Array.from(elements, (element) => element.textContent).join(' ').toLowerCase();
  const readFinding = (finding) => {
    finding.text = textOf(elementOf(finding).querySelectorAll('.level, .id, .message, dd'));
  };

  const isOpen = (group) => group.querySelector('.fold').getAttribute('aria-expanded') === 'true';
  // What is folded can still be found by the browser's own search.
  const setOpen = (group, open) => {
    group.querySelector('.fold').setAttribute('aria-expanded', open);
    group.lastElementChild.hidden = open ? false : 'until-found';
  };
  const readGroup = (group) => {
    const element = elementOf(group);
    const button = element.querySelector('.fold');
    group.text = textOf([button]);
    button.disabled = false;
    if (!isOpen(element)) setOpen(element, false);
  };
  const readPart = (part) => (part.isGroup ? readGroup(part) : readFinding(part));

  const countMatches = (part, kinds, words) => {
    const isUnmet = (word) => !part.text.includes(word);
    if (part.parts) {
      const sought = part.isGroup ? words.filter(isUnmet) : words;
      part.count = 0;
      for (const inner of part.parts) part.count += countMatches(inner, kinds, sought);
    } else {
      part.count = kinds.has(part.kind) && !words.some(isUnmet) ? 1 : 0;
    }
    return part.count;
  };

  // The parts inside whose counts the page does not show, those that hold others
  // first. What is inside a part without matches is hidden with it.
  const stalePartsOf = (part, found = []) => {
    for (const inner of part.parts) if (inner.count !== inner.shown) found.push(inner);
    for (const inner of part.parts) if (inner.parts && inner.count > 0) stalePartsOf(inner, found);
    return found;
  };
  const noteCount = (bar, { count, size }) => {
    bar.querySelector('.shown')?.remove();
    if (count === 0 || count === size) return;
    const note = document.createElement('span');
    note.className = 'shown';
    note.textContent = `${count} of ${size} shown`;
    bar.append(note);
  };
  const showCount = (part) => {
    const element = elementOf(part);
    element.hidden = part.count === 0;
    part.shown = part.count;
    if (part.isGroup) noteCount(element.firstElementChild, part);
  };

  const byId = (id) => document.getElementById(id);

  // On paper there is nothing to click. The style sheet unfolds the groups.
  const unfoldOnPaper = (beforehand) => {
    let opened = [];
    window.addEventListener('beforeprint', () => {
      beforehand();
      opened = Array.from(document.querySelectorAll('details:not([open])'));
      for (const details of opened) details.open = true;
    });
    window.addEventListener('afterprint', () => {
      for (const details of opened) details.open = false;
    });
  };

  const start = () => {
    const query = byId('query');
    const boxes = Array.from(byId('toolbar').querySelectorAll('input[type=checkbox]'));
    const sections = Array.from(document.querySelectorAll('section.findings'), sectionOf);
    const groups = sections.flatMap((section) => section.parts).flatMap((block) => block.parts);
    const total = sections.reduce((sum, section) => sum + section.size, 0);
    const update = gradually(6, showCount);

    // What people wait for is done first: the numbers, and what they tell.
    const apply = () => {
      const words = query.value.toLowerCase().split(/\s+/).filter(Boolean);
      const kinds = new Set(boxes.filter((box) => box.checked).map((box) => box.value));
      const count = sections.reduce((sum, section) => sum + countMatches(section, kinds, words), 0);
      const isNothing = count === 0 && total > 0;
      byId('status').textContent = `${count} of ${total} findings shown`;
      byId('nothing').hidden = !isNothing;
      document.body.classList.toggle('is-filtered', count !== total);
      document.body.classList.toggle('is-empty', isNothing);
      for (const { element, count } of sections) {
        const filtered = element.querySelector('.filtered');
        if (filtered) filtered.hidden = count > 0;
      }
      update.start(sections.flatMap((section) => stalePartsOf(section)));
    };

    let scheduled;
    const schedule = () => {
      cancelAnimationFrame(scheduled);
      scheduled = requestAnimationFrame(apply);
    };

    // A filter that was set while the findings were read is applied, too.
    const read = gradually(40, readPart, () => {
      document.addEventListener('input', schedule);
      apply();
    });
    read.start(groups.flatMap((group) => [group, ...group.parts.flatMap((list) => list.parts)]));

    let open;
    const turn = gradually(6, (group) => {
      setOpen(elementOf(group), open);
    });
    const turnAll = (value) => {
      open = value;
      turn.start(groups);
    };
    const clear = () => {
      query.value = '';
      for (const box of boxes) box.checked = true;
      apply();
      query.focus();
    };
    const actions = { expand: () => turnAll(true), collapse: () => turnAll(false), clear };
    document.addEventListener('click', (event) => {
      const bar = event.target.closest('.bar');
      if (bar) setOpen(bar.parentElement, !isOpen(bar.parentElement));
      actions[event.target.closest('button')?.id]?.();
    });
    document.addEventListener('beforematch', (event) => setOpen(event.target.closest('.group'), true));
    unfoldOnPaper(update.finish);
  };

  document.documentElement.classList.add('scripted');
  document.addEventListener('DOMContentLoaded', start);
})();
