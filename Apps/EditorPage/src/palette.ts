// The palette: the type library, searched by name, type and tag, with the chosen type's doc rendered from
// its Markdown. A click on "Add" (or Enter in the search) adds it at the view's centre; a drag drops it.
import { Marked } from 'marked';

import type { OperatorTypeInfo } from './protocol';

// Docs come from plug-ins: raw HTML in them is shown as text, never run.
const markdown = new Marked({
  renderer: {
    html: ({ text }) => escapeHtml(text),
  },
});

function escapeHtml(text: string): string {
  return text.replace(/[&<>"']/g, (c) => `&#${c.charCodeAt(0)};`);
}

export function matches(info: OperatorTypeInfo, query: string): boolean {
  const words = query.toLowerCase().split(/\s+/).filter(Boolean);
  const haystack = [info.name, info.type, info.category, ...info.tags].join(' ').toLowerCase();
  return words.every((word) => haystack.includes(word));
}

export class Palette {
  private chosen: OperatorTypeInfo | undefined;
  private shown: OperatorTypeInfo[] = [];

  constructor(
    private readonly root: HTMLElement,
    private readonly search: HTMLInputElement,
    private readonly list: HTMLElement,
    private readonly doc: HTMLElement,
    private readonly types: () => OperatorTypeInfo[],
    private readonly add: (type: string) => void,
  ) {
    search.addEventListener('input', () => this.render());
    search.addEventListener('keydown', (event) => {
      if (event.key === 'Enter' && this.shown.length > 0) {
        this.add((this.chosen && this.shown.includes(this.chosen) ? this.chosen : this.shown[0]).type);
      } else if (event.key === 'Escape') {
        search.blur();
      } else if (event.key === 'ArrowDown' || event.key === 'ArrowUp') {
        event.preventDefault();
        const at = this.chosen ? this.shown.indexOf(this.chosen) : -1;
        const next = this.shown[Math.min(this.shown.length - 1, Math.max(0, at + (event.key === 'ArrowDown' ? 1 : -1)))];
        if (next) {
          this.choose(next);
        }
      }
    });
  }

  // Opens the search with the keyboard: focuses it and selects what was typed before.
  open(): void {
    this.root.classList.remove('collapsed');
    this.search.focus();
    this.search.select();
  }

  render(): void {
    const query = this.search.value.trim();
    this.shown = this.types().filter((info) => !query || matches(info, query));
    this.list.replaceChildren();
    let category = '';
    for (const info of [...this.shown].sort((a, b) => a.category.localeCompare(b.category) || a.name.localeCompare(b.name))) {
      if (info.category !== category) {
        category = info.category;
        const heading = document.createElement('div');
        heading.className = 'palette-category';
        heading.textContent = category || 'Other';
        this.list.append(heading);
      }
      this.list.append(this.item(info));
    }
    if (this.shown.length === 0) {
      this.list.textContent = `No type matches "${query}".`;
    }
    if (!this.chosen || !this.shown.includes(this.chosen)) {
      this.choose(this.shown[0]);
    } else {
      this.markChosen();
    }
  }

  private item(info: OperatorTypeInfo): HTMLElement {
    const row = document.createElement('div');
    row.className = 'palette-item';
    row.draggable = true;
    row.dataset.type = info.type;
    row.title = info.summary;
    const name = document.createElement('span');
    name.textContent = info.name;
    const add = document.createElement('button');
    add.textContent = 'Add';
    add.className = 'palette-add';
    add.addEventListener('click', (event) => {
      event.stopPropagation();
      this.add(info.type);
    });
    row.append(name, add);
    row.addEventListener('click', () => this.choose(info));
    row.addEventListener('dblclick', () => this.add(info.type));
    row.addEventListener('dragstart', (event) => {
      event.dataTransfer?.setData('application/x-vantel-operator', info.type);
    });
    return row;
  }

  private choose(info: OperatorTypeInfo | undefined): void {
    this.chosen = info;
    this.markChosen();
    if (!info) {
      this.doc.replaceChildren();
      return;
    }
    const entries = (title: string, list: { name: string; type: string; description: string }[]) =>
      list.length === 0
        ? ''
        : `<h4>${title}</h4><ul>${list
            .map((e) => `<li><b>${escapeHtml(e.name)}</b> <i>${escapeHtml(e.type)}</i> ${escapeHtml(e.description)}</li>`)
            .join('')}</ul>`;
    this.doc.innerHTML =
      `<div class="doc-type">${escapeHtml(info.type)}</div>` +
      markdown.parse(info.doc || info.summary || '', { async: false }) +
      entries('Inputs', info.inputs) +
      entries('Outputs', info.outputs) +
      entries('Parameters', info.parameters);
  }

  private markChosen(): void {
    for (const row of this.list.querySelectorAll<HTMLElement>('.palette-item')) {
      row.classList.toggle('chosen', row.dataset.type === this.chosen?.type);
    }
  }
}
