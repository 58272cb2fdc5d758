// The parameter panel of the selected operator: the parameter tree with its rows, labels and separators, a
// control per parameter, the sources of driven parameters, bundles, and a graph's own ports and parameters.
import { type Control, makeControl } from './controls';
import type { Editor } from './editor';
import { displayName } from './layout';
import type { OperatorView, ParameterNodeView } from './protocol';

function element<K extends keyof HTMLElementTagNameMap>(tag: K, className = '', text = ''): HTMLElementTagNameMap[K] {
  const made = document.createElement(tag);
  made.className = className;
  made.textContent = text;
  return made;
}

function button(text: string, title: string, action: () => void): HTMLButtonElement {
  const made = element('button', 'small', text);
  made.title = title;
  made.addEventListener('click', action);
  return made;
}

export class Panel {
  private controls = new Map<string, Control>();
  private previews = new Map<string, HTMLImageElement>();
  private renderOnBlur = false;

  constructor(
    private readonly root: HTMLElement,
    private readonly editor: Editor,
  ) {
    editor.onSelection(() => this.render());
    editor.onGraph(() => this.render());
  }

  // Live values and previews from a frame update, for the controls on show.
  update(values: Record<string, unknown> | undefined, previews: Record<string, string> | undefined): void {
    for (const [path, value] of Object.entries(values ?? {})) {
      this.controls.get(path)?.update(value);
    }
    for (const [path, url] of Object.entries(previews ?? {})) {
      const image = this.previews.get(path);
      if (image) {
        image.src = url;
      }
    }
  }

  render(): void {
    // A control being typed into keeps its text: the panel is rebuilt once it loses focus.
    if (this.root.contains(document.activeElement) && document.activeElement !== document.body) {
      if (!this.renderOnBlur) {
        this.renderOnBlur = true;
        const leave = (event: FocusEvent) => {
          if (this.root.contains(event.relatedTarget as Node | null)) {
            return;  // Tab to the next field: still editing
          }
          this.root.removeEventListener('focusout', leave);
          this.renderOnBlur = false;
          this.render();
        };
        this.root.addEventListener('focusout', leave);
      }
      return;
    }
    this.controls.clear();
    this.previews.clear();
    const selected = [...this.editor.selection];
    const op = selected.length === 1 ? this.editor.findOperator(selected[0]) : undefined;
    this.root.replaceChildren();
    if (!op) {
      this.root.append(element('p', 'hint', selected.length > 1 ? `${selected.length} operators selected` : 'Select an operator to edit it.'));
      if (this.editor.crumbs.length > 1) {
        this.root.append(this.userMembers(this.editor.graphPath));
      }
      return;
    }
    this.root.append(this.header(op));
    for (const output of op.outputs) {
      if (output.type.includes('Image')) {
        const image = element('img', 'preview');
        image.alt = `${output.name} preview`;
        image.dataset.path = output.path;
        const known = this.editor.previews.get(output.path);
        if (known) {
          image.src = known;
        }
        this.previews.set(output.path, image);
        this.root.append(image);
      }
    }
    this.root.append(this.tree(op, op.parameters));
    if (op.graph) {
      this.root.append(this.userMembers(op.path));
    }
  }

  private header(op: OperatorView): HTMLElement {
    const box = element('div', 'panel-header');
    const name = element('input', 'op-name');
    name.value = displayName(op);
    name.addEventListener('change', () => void this.editor.send({ type: 'renameOperator', path: op.path, name: name.value }));
    box.append(name, element('div', 'op-type', op.type));
    return box;
  }

  private tree(op: OperatorView, nodes: ParameterNodeView[]): HTMLElement {
    const box = element('div', 'parameters');
    let row: HTMLElement | null = null;
    for (const node of nodes) {
      if (node.separatorAbove) {
        box.append(element('hr'));
      }
      if (node.kind !== 'parameter') {
        box.append(this.group(op, node));
        row = null;
        continue;
      }
      if (!node.rowContinuation || !row) {
        row = element('div', 'row');
        row.append(element('label', 'row-label', node.rowLabel ?? node.name ?? node.key));
        box.append(row);
      } else if (node.rowLabel) {
        row.append(element('span', 'row-sub', node.rowLabel));
      }
      row.append(this.parameter(node));
    }
    return box;
  }

  private group(op: OperatorView, node: ParameterNodeView): HTMLElement {
    const box = element('fieldset', `group group-${node.kind}`);
    box.append(element('legend', '', node.name ?? node.key));
    if (node.kind === 'bundle') {
      const index = () => this.siblings(op, node).indexOf(node.path);
      box.append(
        button('↑', 'Move up', () => void this.editor.send({ type: 'moveBundle', path: node.path, index: Math.max(0, index() - 1) })),
        button('↓', 'Move down', () => void this.editor.send({ type: 'moveBundle', path: node.path, index: index() + 1 })),
        button('✕', 'Remove', () => void this.editor.send({ type: 'removeBundle', path: node.path })),
      );
    }
    box.append(this.tree(op, node.children ?? []));
    if (node.kind === 'bundleList') {
      box.append(this.bundleAdder(op, node));
    }
    return box;
  }

  private siblings(op: OperatorView, bundle: ParameterNodeView): string[] {
    const listPath = bundle.path.slice(0, bundle.path.lastIndexOf('/'));
    const find = (nodes: ParameterNodeView[]): ParameterNodeView | undefined => {
      for (const n of nodes) {
        if (n.path === listPath) {
          return n;
        }
        const inner = find(n.children ?? []);
        if (inner) {
          return inner;
        }
      }
      return undefined;
    };
    return (find(op.parameters)?.children ?? []).map((n) => n.path);
  }

  private bundleAdder(op: OperatorView, list: ParameterNodeView): HTMLElement {
    const info = this.editor.types.operators.find((t) => t.type === op.type);
    const entry = info?.parameters.find((e) => e.name === list.key || e.name === list.name);
    const box = element('div', 'bundle-adder');
    for (const kind of entry?.kinds ?? []) {
      box.append(button(`+ ${kind.name}`, `Add a ${kind.name}`, () => void this.editor.send({ type: 'addBundle', list: list.path, kind: kind.name })));
    }
    return box;
  }

  private parameter(p: ParameterNodeView): HTMLElement {
    const cell = element('span', 'parameter');
    cell.dataset.path = p.path;
    cell.dataset.type = p.type ?? '';
    const source = this.editor.graph.parameterConnections.find((c) => c.input === p.path);
    const control = makeControl(this.editor, p);
    this.controls.set(p.path, control);
    // Frame updates carry only changes: the newest value seen beats the one read with the graph.
    if (this.editor.values.has(p.path)) {
      control.update(this.editor.values.get(p.path));
    }
    cell.append(control.element);
    if (source) {
      control.element.classList.add('driven');
      const from = element('span', 'driven-by', `← ${source.output.split('/').slice(-2).join('/')}`);
      from.title = `driven by ${source.output}`;
      cell.append(from, button('✕', 'Remove this parameter connection', () => void this.editor.send({ type: 'disconnectParameter', output: source.output, input: p.path })));
    } else if (!p.flags?.includes('output') && !p.flags?.includes('notConnectable')) {
      cell.append(this.sourcePicker(p));
    }
    return cell;
  }

  // The output parameters of the graph on show, listed when the menu is opened (a large graph has many).
  private sourcePicker(p: ParameterNodeView): HTMLElement {
    const menu = element('select', 'source-picker');
    menu.title = 'Drive this parameter from an output parameter';
    menu.append(new Option('⇠', ''));
    menu.addEventListener('focus', () => {
      menu.replaceChildren(new Option('⇠ drive from…', ''));
      for (const op of this.editor.graph.operators) {
        const walk = (nodes: ParameterNodeView[]) =>
          nodes.forEach((n) => {
            if (n.kind === 'parameter' && n.flags?.includes('output') && n.path !== p.path) {
              menu.append(new Option(`${displayName(op)} / ${n.name ?? n.key}`, n.path));
            }
            walk(n.children ?? []);
          });
        walk(op.parameters);
      }
    });
    menu.addEventListener('change', () => {
      if (menu.value) {
        void this.editor.send({ type: 'connectParameter', output: menu.value, input: p.path, replace: true });
      }
    });
    return menu;
  }

  private userMembers(graph: string): HTMLElement {
    const box = element('fieldset', 'group user-members');
    box.append(element('legend', '', 'Ports and parameters of this graph'));
    const dataType = element('select');
    for (const t of this.editor.types.dataTypes) {
      dataType.append(new Option(t.name, t.id));
    }
    const parameterType = element('select');
    for (const t of this.editor.types.parameters) {
      parameterType.append(new Option(t.name, t.type));
    }
    const addPort = (direction: string) => () =>
      void this.editor.send({ type: 'addUserPort', graph, direction, dataType: dataType.value });
    const addParameter = (output: boolean) => () =>
      void this.editor.send({ type: 'addUserParameter', graph, parameterType: parameterType.value, output });
    const ports = element('div', 'row');
    ports.append(dataType, button('+ input', 'Add an input port', addPort('input')), button('+ output', 'Add an output port', addPort('output')));
    const parameters = element('div', 'row');
    parameters.append(parameterType, button('+ input', 'Add a parameter', addParameter(false)), button('+ output', 'Add an output parameter', addParameter(true)));
    box.append(ports, parameters);
    return box;
  }
}
