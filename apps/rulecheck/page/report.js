// SPDX-License-Identifier: Apache-2.0

'use strict';
(() => {
  // How many rows or groups the page shows at first, how many more at a click, and on paper.
  const firstRows = 200;
  const expandedRows = 1000;
  const moreRows = 500;
  const printedRows = 5000;

  // As "100,000"; numbers' own function for this is slow.
  const grouped = new Intl.NumberFormat('en').format;
  const byId = (id) => document.getElementById(id);
  const make = (tag, className, ...content) => {
    const element = document.createElement(tag);
    if (className) element.className = className;
    element.append(...content);
    return element;
  };
  // Only for HTML that the page was written with.
  const makeOf = (tag, className, html) => {
    const element = make(tag, className);
    element.innerHTML = html;
    return element;
  };
  const makeButton = (className, label) =>
    Object.assign(make('button', className), { type: 'button', ariaLabel: label });

  const references = { '&lt;': '<', '&gt;': '>', '&quot;': '"', '&#39;': "'", '&amp;': '&' };
  const plain = (html) => /[<&]/.test(html)
    ? html.replace(/<[^>]*>/g, '').replace(/&(?:lt|gt|quot|#39|amp);/g, (name) => references[name])
    : html;

  const readData = () => {
    const data = JSON.parse(byId('data').textContent);
    data.kinds = data.kinds.map(([word, slug]) => ({ word, slug }));
    data.marks = data.marks.map(([word, slug]) => ({ word, slug }));
    data.files = data.files.map(([path, address]) => ({ path, address, name: path.slice(path.lastIndexOf('/') + 1) }));
    data.rules = data.rules.map(([key, name, facts, more]) => ({ key, name, facts, more }));
    data.plainTexts = data.texts.map(plain);
    data.findings = data.findings.map((row, index) => {
      const [kind, severity, mark, rule, file, line, column, module, number, link, text, args, ...facts] = row;
      return { index, kind, severity, mark, rule, file, line, column, module, number, link, text, args, facts };
    });
    for (const finding of data.findings) finding.words = wordsOf(data, finding);
    return data;
  };

  const plainMessage = (data, { text, args }) => {
    let i = 0;
    return data.plainTexts[text].replaceAll('\u0001', () => plain(args[i++]));
  };
  const positionOf = ({ line, column }) => (line ? `:${line}` : '') + (line && column ? `:${column}` : '');
  // What a search looks at.
  const wordsOf = (data, finding) => {
    const { key, name } = data.rules[finding.rule];
    let words = `#${finding.number} ${key} ${name} ${data.files[finding.file].path}${positionOf(finding)} ${plainMessage(data, finding)} ` +
      `${data.kinds[finding.kind].word} ${data.kinds[finding.severity].word} ${data.modules[finding.module]}`;
    for (let fact = 1; fact < finding.facts.length; fact += 2) words += ` ${data.plainTexts[finding.facts[fact]]}`;
    return words.toLowerCase();
  };

  // Words, "phrases", and -words that must not occur.
  const parseQuery = (query) =>
    Array.from(query.toLowerCase().matchAll(/(-?)(?:"([^"]*)"?|([^\s"]+))/g), ([, minus, phrase, word]) =>
      ({ text: phrase ?? word, isWanted: !minus })).filter(({ text }) => text && text !== '-');

  const start = () => {
    const data = readData();
    const { kinds, marks, files, rules, modules, texts, labels, findings } = data;
    const slugNumber = (slug) => kinds.findIndex((kind) => kind.slug === slug);
    const firstSpecial = slugNumber('not-checked');
    const list = byId('findings');
    const query = byId('query');
    const template = byId('template');
    const boxes = Array.from(byId('filters').querySelectorAll('input:enabled'));
    const selected = new Set();
    const canWaive = ({ kind }) => kind < firstSpecial;
    // Groups that the reader opened or closed, and what holds for all others.
    let turned = new Map();
    let allOpen;
    let groups = [];
    let showGroups;
    let shown = findings;
    // A search is one entry of the browser's history, however many words it has.
    let isSearching = false;

    // What groups are called by, and their order.
    const groupings = {
      rule: { of: ({ rule }) => rule, order: (a, b) => a.worst - b.worst || (rules[a.of].key < rules[b.of].key ? -1 : 1) },
      file: { of: ({ file }) => file, order: (a, b) => !a.of - !b.of || a.of - b.of },
      module: { of: ({ module }) => module, order: (a, b) => !a.of - !b.of || (modules[a.of] < modules[b.of] ? -1 : 1) },
      severity: { of: ({ severity }) => severity, order: (a, b) => a.of - b.of },
    };
    const collect = (shown) => {
      const name = byId('group').value;
      const { of, order } = groupings[name];
      const found = new Map();
      for (const finding of shown) {
        const { kind } = finding;
        const isSpecial = kind >= firstSpecial;
        const number = isSpecial ? -kind : of(finding);
        let group = found.get(number);
        if (!group) {
          group = { key: `${isSpecial || name} ${number}`, isSpecial, of: Math.abs(number), findings: [], counts: kinds.map(() => 0) };
          found.set(number, group);
        }
        group.counts[kind] += 1;
        group.findings.push(finding);
      }
      for (const group of found.values()) group.worst = group.counts.findIndex(Boolean);
      return Array.from(found.values()).sort((a, b) =>
        a.isSpecial - b.isSpecial || (a.isSpecial ? a.of - b.of : order(a, b)));
    };

    const pathOf = (path) => {
      const end = path.lastIndexOf('/') + 1;
      return [make('span', 'folder', path.slice(0, end)), path.slice(end)];
    };
    const ruleTitle = ({ key, name }) =>
      [make('code', 'key', key.trim() || 'No rule named'), ' ', make('span', 'name', name)];
    const titleOf = ({ isSpecial, of }) => {
      if (isSpecial) return [make('span', 'word', kinds[of].word)];
      switch (byId('group').value) {
        case 'rule': return ruleTitle(rules[of]);
        case 'file': return files[of].path ? [make('span', 'key', ...pathOf(files[of].path))] : ['No file named'];
        case 'module': return modules[of] ? [make('code', 'key', modules[of])] : ['No module or instance named'];
        default: return [make('span', 'word', kinds[of].word)];
      }
    };
    const countsOf = ({ counts }) => counts.flatMap((count, kind) => count === 0 ? [] : [
      make('span', `level ${kinds[kind].slug}`, `${kinds[kind].word} `, make('b', '', grouped(count))), ' ']);

    const factList = (className, pairs) => {
      const facts = make('dl', className);
      for (let i = 0; i < pairs.length; i += 2) {
        const value = makeOf('dd', '', pairs[i + 1]);
        // What is this long gets a scroll bar.
        if (pairs[i + 1].length > 2000 || pairs[i + 1].split('\n').length > 20) value.tabIndex = 0;
        facts.append(make('div', 'fact', make('dt', '', pairs[i]), value));
      }
      return facts;
    };
    const about = ({ name, facts, more }) => {
      const element = make('div', 'about');
      if (!name && facts.length === 0 && more.length === 0) {
        element.append(make('p', 'absent', 'The result does not describe this rule.'));
      }
      if (facts.length > 0) element.append(factList('facts', facts));
      if (more.length > 0) {
        element.append(make('details', '', make('summary', '', 'More about this rule'), factList('facts', more)));
      }
      return element;
    };

    const linkTo = ({ file, line, column }) => {
      const { path, address } = files[file];
      if (!template.value.trim() || !template.validity.valid) {
        return address && (line ? `${address}#L${line}${column && address.startsWith('file:') ? `C${column}` : ''}` : address);
      }
      const values = {
        path: path.split('/').map(encodeURIComponent).join('/'),
        absolute: address.startsWith('file://') ? address.slice(7) : '',
        line: line || 1,
        column: column || 1,
      };
      return template.value.replace(/\{(path|absolute|line|column)\}/g, (_, name) => values[name]);
    };
    const placeOf = (finding) => {
      const { path } = files[finding.file];
      const target = path && linkTo(finding);
      const element = make(target ? 'a' : 'span', 'place', make('span', 'path', ...pathOf(path)), make('span', 'position', positionOf(finding)));
      if (target) element.href = target;
      element.title = path + positionOf(finding);
      return element;
    };

    const argument = (html) => `<code class="arg">${html}</code>`;
    const messageOf = ({ text, args }) => {
      let i = 0;
      // A text that is all there is needs no frame.
      if (texts[text] === '\u0001') return args[0];
      return texts[text].replaceAll('\u0001', () => argument(args[i++]));
    };
    const factOf = (finding, label) => {
      const at = finding.facts.findIndex((fact, i) => i % 2 === 0 && labels[fact] === label);
      return at < 0 ? undefined : texts[finding.facts[at + 1]];
    };

    const rowOf = (finding) => {
      const { index, kind, mark, number } = finding;
      const { slug } = kinds[kind];
      const message = makeOf('span', 'message', messageOf(finding) || '<span class="absent">No message.</span>');
      const reason = factOf(finding, 'Reason');
      if (reason) message.append(' ', makeOf('span', 'reason', reason));
      const turn = makeButton('turn', `Details of finding ${number}`);
      turn.ariaExpanded = 'false';
      const box = Object.assign(make('input'), { type: 'checkbox', checked: selected.has(finding), disabled: !canWaive(finding), ariaLabel: `Select finding ${number}` });
      const row = make('div', 'row', turn, box, make('span', `level ${slug}`, kinds[kind].word), placeOf(finding), message,
        make('code', 'rule', rules[finding.rule].key));
      if (mark && marks[mark].slug !== 'unchanged') row.append(make('span', `mark ${marks[mark].slug}`, marks[mark].word));
      const element = make('li', `finding ${slug}`, row);
      element.dataset.index = index;
      return element;
    };

    // The lines around a place, with a caret under the column.
    const sourceOf = (finding) => {
      const own = factOf(finding, 'Source');
      const runs = own === undefined ? data.sources[finding.file] : [[finding.line, plain(own)]];
      const run = runs.find(([first, ...lines]) => finding.line >= first && finding.line < first + lines.length);
      if (!run) return undefined;
      const [first, ...lines] = run;
      const element = make('pre', 'source');
      element.tabIndex = 0;
      lines.forEach((text, i) => {
        const line = first + i;
        if (Math.abs(line - finding.line) > 2) return;
        const isPlace = line === finding.line;
        element.append(make('span', isPlace ? 'at' : '', make('span', 'line', `${line || ''}`.padStart(6)), ` ${text}\n`));
        // Tabs stay, so that the caret is where the column is.
        const before = text.slice(0, finding.column - 1).replace(/[^\t]/g, ' ');
        if (isPlace && finding.column > 0 && finding.column <= text.length) {
          element.append(make('span', 'caret', `${' '.repeat(7)}${before}^\n`));
        }
      });
      return element;
    };
    const detailsOf = (finding, isCut) => {
      const element = make('div', 'more');
      if (isCut) {
        const message = makeOf('p', 'whole', messageOf(finding));
        message.tabIndex = 0;
        element.append(message);
      }
      const source = sourceOf(finding);
      if (source) element.append(source);
      const pairs = [];
      for (let i = 0; i < finding.facts.length; i += 2) {
        const label = labels[finding.facts[i]];
        if (label !== 'Source') pairs.push(label, texts[finding.facts[i + 1]]);
      }
      const permalink = Object.assign(make('a', '', `#${finding.number}`), { href: `#finding=${finding.link}` });
      const facts = factList('facts', pairs);
      if (finding.kind !== finding.severity && finding.severity < firstSpecial - 1) {
        facts.append(make('div', 'fact', make('dt', '', 'Severity'), make('dd', '', kinds[finding.severity].word)));
      }
      facts.append(make('div', 'fact', make('dt', '', 'Link'), make('dd', '', permalink)));
      element.append(facts);
      if (finding.kind >= firstSpecial || byId('group').value !== 'rule') {
        element.append(make('details', '', make('summary', '', 'About the rule ', ...ruleTitle(rules[finding.rule])), about(rules[finding.rule])));
      }
      return element;
    };

    // Fills an element with what is made of a list, a part at a time. Returns a function
    // that shows that many of it.
    const fill = (holder, items, makeItem, first, what) => {
      let shown = 0;
      const button = makeButton('further');
      const show = (count) => {
        holder.append(...items.slice(shown, count).map(makeItem));
        shown = Math.max(shown, Math.min(count, items.length));
        const left = items.length - shown;
        button.textContent = `Show ${grouped(Math.min(left, moreRows))} more of ${grouped(items.length)} ${what}`;
        if (left === 0) button.remove();
        else holder.after(button);
      };
      button.addEventListener('click', () => {
        const next = shown;
        show(shown + moreRows);
        holder.children[next]?.querySelector('button')?.focus();
      });
      show(first);
      return show;
    };

    const isOpen = (group, total) => turned.get(group.key) ?? allOpen ??
      (total <= firstRows && (!group.isSpecial || query.value.trim() !== ''));
    const openGroup = (group, count) => {
      group.fold.ariaExpanded = 'true';
      const body = make('div', 'body');
      if (!group.isSpecial && byId('group').value === 'rule') body.append(about(rules[group.of]));
      const rows = make('ul', `rows ${group.isSpecial ? 'special' : `by-${byId('group').value}`}`);
      body.append(rows);
      group.show = fill(rows, group.findings, rowOf, count, 'findings');
      group.element.append(body);
    };
    const closeGroup = (group) => {
      group.fold.ariaExpanded = 'false';
      group.element.querySelector('.body')?.remove();
      group.show = undefined;
    };
    const groupElement = (group) => {
      group.fold = makeButton('fold');
      group.fold.ariaExpanded = 'false';
      group.fold.append(...titleOf(group));
      const title = make('h2', '', group.fold);
      group.element = make('section', `group ${kinds[group.worst].slug}`,
        make('div', 'bar', title, make('span', 'levels', ...countsOf(group))));
      return group.element;
    };

    const stateOf = () => {
      const state = new URLSearchParams();
      if (query.value.trim()) state.set('q', query.value.trim());
      if (byId('group').value !== 'rule') state.set('group', byId('group').value);
      const hidden = boxes.filter((box) => !box.checked).map((box) => box.value);
      if (hidden.length > 0) state.set('hide', hidden.join(','));
      return state.toString();
    };
    const matching = () => {
      const wanted = parseQuery(query.value);
      const hidden = new Set(boxes.filter((box) => !box.checked).map((box) => box.value));
      const hidesKind = kinds.map(({ slug }) => hidden.has(slug));
      const hidesMark = marks.map(({ slug }) => hidden.has(slug));
      const matches = ({ kind, mark, words }) => {
        if (hidesKind[kind] || hidesMark[mark]) return false;
        for (const { text, isWanted } of wanted) if (words.includes(text) !== isWanted) return false;
        return true;
      };
      return wanted.length === 0 && hidden.size === 0 ? findings : findings.filter(matches);
    };
    const render = (most = allOpen ? expandedRows : firstRows, opensAll = false) => {
      shown = matching();
      groups = collect(shown);
      const holder = make('div', 'groups');
      list.replaceChildren(holder);
      showGroups = fill(holder, groups, groupElement, opensAll ? printedRows : firstRows, 'groups');
      let left = most;
      for (const group of groups) {
        if (group.element && (opensAll || isOpen(group, shown.length))) {
          openGroup(group, left);
          left = Math.max(0, left - group.findings.length);
        }
      }
      const count = grouped(shown.length);
      const all = `${grouped(findings.length)} finding${findings.length === 1 ? '' : 's'}`;
      byId('status').textContent = shown.length === findings.length ? all : `${count} of ${all}`;
      byId('nothing').hidden = shown.length > 0 || findings.length === 0;
    };
    const update = (isSearch) => {
      byId('gone').hidden = true;
      turned = new Map();
      allOpen = undefined;
      render();
      const state = stateOf();
      if (state === location.hash.slice(1)) return;
      if (isSearching && isSearch) history.replaceState(null, '', `#${state}`);
      else history.pushState(null, '', `#${state}`);
      isSearching = isSearch;
    };

    const turnRow = (element, open) => {
      const turn = element.querySelector('.turn');
      turn.ariaExpanded = String(open);
      element.querySelector('.more')?.remove();
      const message = element.querySelector('.message');
      if (open) element.append(detailsOf(findings[element.dataset.index], message.scrollHeight > message.clientHeight + 2));
    };
    const turnGroup = (group) => {
      const open = !group.show;
      turned.set(group.key, open);
      if (open) openGroup(group, moreRows);
      else closeGroup(group);
    };
    const turnAll = (open) => {
      turned = new Map();
      allOpen = open;
      render();
    };

    // Shows the finding that the address names, or says that it is gone.
    const reveal = (link) => {
      const finding = shown.find((each) => each.link === link);
      byId('gone').hidden = finding !== undefined;
      if (!finding) return;
      const group = groups.find((each) => each.findings.includes(finding));
      showGroups(groups.indexOf(group) + 1);
      if (!group.show) turnGroup(group);
      group.show(group.findings.indexOf(finding) + 1);
      const element = list.querySelector(`[data-index="${finding.index}"]`);
      turnRow(element, true);
      element.classList.add('target');
      element.querySelector('.turn').focus({ preventScroll: true });
      element.scrollIntoView({ block: 'center' });
    };
    const followAddress = () => {
      isSearching = false;
      const state = new URLSearchParams(location.hash.slice(1));
      query.value = state.get('q') ?? '';
      byId('group').value = Object.hasOwn(groupings, state.get('group')) ? state.get('group') : 'rule';
      const hidden = (state.get('hide') ?? '').split(',');
      for (const box of boxes) box.checked = !hidden.includes(box.value);
      render();
      byId('gone').hidden = true;
      if (state.has('finding')) reveal(state.get('finding'));
    };

    // Which end a name in a waiver. Other blanks have several bytes, of which ? and . mean one.
    const blanks = /[\t\n\f\r ]/g;
    const nameOf = (text) => text.replaceAll('\ufffd', '*').replace(blanks, '?').replace(/^#/, '?');
    // The rule and the place of a waiver; undefined if one has no name.
    const waiverOf = (rule, path, line) => {
      const [key, name] = [nameOf(rules[rule].key), nameOf(path)];
      return key && name ? `${key} ${name}${line ? `:${line}` : ''}` : undefined;
    };
    const patternOf = (finding) => ` match=^${plainMessage(data, finding)
      .replace(/[\\^$.|?*+()[\]{}]/g, '\\$&').replace(blanks, '.').replaceAll('\ufffd', '.*')}$`;
    // Waivers of a finding that name no line. They may have the last parts of its path only.
    const waiversOf = ({ rule, file }) => {
      const parts = files[file].path.split('/');
      return parts.map((_, i) => waiverOf(rule, parts.slice(i).join('/'), 0));
    };
    // The waivers of selected findings that would accept others, too, with the patterns of these.
    // To compose waivers takes long.
    const ambiguous = () => {
      const waivers = new Set(Array.from(selected, ({ rule, file, line }) => waiverOf(rule, files[file].path, line)));
      const wanted = new Set(Array.from(waivers, (waiver) => waiver?.replace(/:\d+$/, '')));
      const known = new Map();
      const found = new Set();
      for (const finding of findings) {
        if (!canWaive(finding) || selected.has(finding)) continue;
        const number = finding.rule * files.length + finding.file;
        if (!known.has(number)) known.set(number, waiversOf(finding).filter((waiver) => wanted.has(waiver)));
        for (const anywhere of known.get(number)) {
          for (const waiver of [anywhere, `${anywhere}:${finding.line}`]) {
            if (waivers.has(waiver)) found.add(waiver).add(waiver + patternOf(finding));
          }
        }
      }
      return found;
    };
    const showSelection = () => {
      const others = ambiguous();
      const lineOf = (finding) => {
        const waiver = waiverOf(finding.rule, files[finding.file].path, finding.line);
        const key = nameOf(rules[finding.rule].key);
        if (!waiver) return `# no waiver for a finding ${key ? `of ${key} that names no file` : 'that names no rule'}`;
        const pattern = others.has(waiver) ? patternOf(finding) : '';
        if (pattern && others.has(waiver + pattern)) return `# no waiver for ${waiver}: it would accept one that is not ticked`;
        return `${waiver}${pattern} -- ${byId('reason').value.trim()}`;
      };
      const lines = new Set(findings.filter((finding) => selected.has(finding)).map(lineOf));
      byId('selection').hidden = selected.size === 0;
      byId('waivers').value = Array.from(lines, (line) => `${line}\n`).join('');
    };
    const selectAll = (each) => {
      if (each) for (const finding of shown.filter(canWaive)) selected.add(finding);
      else selected.clear();
      for (const box of list.querySelectorAll('.row input')) box.checked = selected.has(findings[box.closest('li').dataset.index]);
      showSelection();
    };

    const remember = (value) => {
      try {
        if (value === undefined) return localStorage.getItem('rulecheck link template');
        return localStorage.setItem('rulecheck link template', value);
      } catch {
        return null;  // the browser keeps nothing for this page
      }
    };

    const actions = {
      expand: () => turnAll(true),
      collapse: () => turnAll(false),
      clear: () => {
        query.value = '';
        for (const box of boxes) box.checked = true;
        update(false);
        query.focus();
      },
      choose: () => {
        byId('settings').hidden = !byId('settings').hidden;
        byId('choose').ariaExpanded = String(!byId('settings').hidden);
        if (!byId('settings').hidden) template.focus();
      },
      copy: () => {
        if (!byId('reason').reportValidity()) return;
        byId('waivers').select();
        document.execCommand('copy');
      },
      'select-all': () => selectAll(true),
      deselect: () => selectAll(false),
    };
    document.addEventListener('click', ({ target }) => {
      actions[target.closest('button')?.id]?.();
      const bar = target.closest('.bar');
      if (bar && list.contains(bar)) turnGroup(groups.find(({ element }) => element === bar.parentElement));
      const row = target.closest('.row');
      const isControl = target.closest('a, input') || (!target.closest('button') && String(getSelection()));
      if (row && list.contains(row) && !isControl) turnRow(row.parentElement, row.querySelector('.turn').ariaExpanded === 'false');
    });
    query.addEventListener('change', () => { isSearching = false; });
    list.addEventListener('change', ({ target }) => {
      const finding = findings[target.closest('li').dataset.index];
      if (target.checked) selected.add(finding);
      else selected.delete(finding);
      showSelection();
    });

    let scheduled;
    document.addEventListener('input', ({ target }) => {
      if (target === byId('reason')) showSelection();
      if (target === template) remember(template.value);
      if (!target.closest('#toolbar, #filters')) return;
      cancelAnimationFrame(scheduled);
      scheduled = requestAnimationFrame(() => update(target === query));
    });
    // Where the arrows lead: from the search to groups and rows.
    const nextOf = (element, step) => {
      const all = [query, ...list.querySelectorAll('.turn, .fold')];
      return all.includes(element) ? all[all.indexOf(element) + step] : undefined;
    };
    document.addEventListener('keydown', (event) => {
      const isText = event.target.matches('input:not([type=checkbox]), textarea, select');
      if (event.key === '/' && !isText) {
        event.preventDefault();
        query.select();
      }
      const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
      const next = step && nextOf(event.target, step);
      if (next) {
        event.preventDefault();
        next.focus();
      }
    });
    // The address keeps the filter.
    document.querySelector('.skip').addEventListener('click', (event) => {
      event.preventDefault();
      list.focus();
    });
    window.addEventListener('hashchange', followAddress);
    window.addEventListener('beforeprint', () => {
      render(printedRows, true);
      byId('unprinted').hidden = shown.length <= printedRows;
      byId('unprinted').textContent = `Printed: the first ${grouped(printedRows)} of ${grouped(shown.length)} findings.`;
    });
    window.addEventListener('afterprint', () => {
      byId('unprinted').hidden = true;
      render();
    });

    // The column of places is as wide as the longest, up to a limit.
    const longest = findings.reduce((most, finding) =>
      Math.max(most, files[finding.file].path.length + positionOf(finding).length), 0);
    list.style.setProperty('--place', `${Math.min(Math.max(longest, 8), 44) * 0.5}rem`);
    template.value = remember() ?? template.value;
    followAddress();
  };

  document.documentElement.classList.add('scripted');
  document.addEventListener('DOMContentLoaded', start);
})();
