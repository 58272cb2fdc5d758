// One control per parameter type. Each control sends its own request when the person commits a change, and
// takes live values from the frame updates while it is not being edited.
import type { Editor } from './editor';
import type { ParameterNodeView } from './protocol';

export interface Control {
  element: HTMLElement;
  // A new value from the session; ignored while the person is editing the control.
  update(value: unknown): void;
}

function isEditing(element: HTMLElement): boolean {
  return element.contains(document.activeElement);
}

function numberField(value: number, integer: boolean, commit: (value: number) => void): HTMLInputElement {
  const input = document.createElement('input');
  input.type = 'number';
  input.step = integer ? '1' : 'any';
  input.value = String(value);
  input.addEventListener('change', () => {
    const parsed = Number(input.value);
    if (input.value.trim() !== '' && Number.isFinite(parsed)) {
      commit(integer ? Math.round(parsed) : parsed);
    }
  });
  // Dragging sideways with Alt held, or on the field's handle, scrubs the value; the request goes on release.
  let dragFrom: { x: number; value: number } | null = null;
  input.addEventListener('pointerdown', (event) => {
    if (!event.altKey) {
      return;
    }
    event.preventDefault();
    input.setPointerCapture(event.pointerId);
    dragFrom = { x: event.clientX, value: Number(input.value) || 0 };
  });
  input.addEventListener('pointermove', (event) => {
    if (dragFrom) {
      const delta = (event.clientX - dragFrom.x) * (integer ? 1 : 0.01);
      const next = dragFrom.value + delta;
      input.value = String(integer ? Math.round(next) : Number(next.toFixed(4)));
    }
  });
  input.addEventListener('pointerup', () => {
    if (dragFrom) {
      dragFrom = null;
      input.dispatchEvent(new Event('change'));
    }
  });
  input.title = 'Alt+drag to scrub';
  return input;
}

function componentsOf(value: unknown): number[] {
  if (Array.isArray(value)) {
    return value.flat(2).map(Number);
  }
  if (value && typeof value === 'object') {
    return Object.values(value as Record<string, unknown>).map(Number);
  }
  return [Number(value)];
}

function numbersControl(editor: Editor, p: ParameterNodeView, integer: boolean): Control {
  const box = document.createElement('div');
  box.className = `numbers numbers-${p.components}`;
  const count = p.components ?? 1;
  const fields: HTMLInputElement[] = [];
  const values = componentsOf(p.value);
  for (let i = 0; i < count; i += 1) {
    const field = numberField(values[i] ?? 0, integer, (v) =>
      count === 1
        ? void editor.send({ type: 'setValue', path: p.path, value: v })
        : void editor.send({ type: 'setComponent', path: p.path, component: i, value: v }),
    );
    field.dataset.component = String(i);
    fields.push(field);
    box.append(field);
  }
  return {
    element: box,
    update(value) {
      if (isEditing(box)) {
        return;
      }
      componentsOf(value).forEach((v, i) => {
        if (fields[i]) {
          fields[i].value = String(Number.isInteger(v) ? v : Number(v.toFixed(5)));
        }
      });
    },
  };
}

function intControl(editor: Editor, p: ParameterNodeView): Control {
  if (p.editorType === 'slider') {
    const slider = document.createElement('input');
    slider.type = 'range';
    // The library gives an Int no bounds: the slider spans 0..100, or twice the value's size past that.
    const span = (value: unknown) => {
      const size = Math.max(100, Math.abs(Number(value)) * 2);
      slider.min = Number(value) < 0 ? String(-size) : '0';
      slider.max = String(size);
    };
    span(p.value);
    slider.value = String(p.value);
    const shown = document.createElement('span');
    shown.textContent = String(p.value);
    slider.addEventListener('input', () => (shown.textContent = slider.value));
    slider.addEventListener('change', () => void editor.send({ type: 'setValue', path: p.path, value: Number(slider.value) }));
    const box = document.createElement('div');
    box.className = 'slider';
    box.append(slider, shown);
    return {
      element: box,
      update(value) {
        if (!isEditing(box)) {
          span(value);
          slider.value = String(value);
          shown.textContent = String(value);
        }
      },
    };
  }
  const control = numbersControl(editor, p, true);
  if (p.editorType === 'seed') {
    const dice = document.createElement('button');
    dice.textContent = 'New seed';
    dice.addEventListener('click', () =>
      void editor.send({ type: 'setValue', path: p.path, value: Math.floor(Math.random() * 2147483647) }),
    );
    control.element.append(dice);
  }
  return control;
}

function hex(channel: number): string {
  return Math.round(Math.min(1, Math.max(0, channel)) * 255)
    .toString(16)
    .padStart(2, '0');
}

function colorControl(editor: Editor, p: ParameterNodeView): Control {
  const box = document.createElement('div');
  box.className = 'color';
  const picker = document.createElement('input');
  picker.type = 'color';
  const alpha = document.createElement('input');
  alpha.type = 'range';
  alpha.min = '0';
  alpha.max = '1';
  alpha.step = '0.01';
  alpha.title = 'alpha';
  const show = (value: unknown) => {
    const c = (value ?? {}) as { r?: number; g?: number; b?: number; a?: number };
    picker.value = `#${hex(c.r ?? 0)}${hex(c.g ?? 0)}${hex(c.b ?? 0)}`;
    alpha.value = String(c.a ?? 1);
  };
  const commit = () => {
    const channel = (at: number) => parseInt(picker.value.slice(at, at + 2), 16) / 255;
    void editor.send({
      type: 'setValue',
      path: p.path,
      value: { r: channel(1), g: channel(3), b: channel(5), a: Number(alpha.value) },
    });
  };
  picker.addEventListener('change', commit);
  alpha.addEventListener('change', commit);
  show(p.value);
  box.append(picker, alpha);
  return { element: box, update: (value) => !isEditing(box) && show(value) };
}

function enumControl(editor: Editor, p: ParameterNodeView): Control {
  const menu = document.createElement('select');
  for (const option of p.options ?? [{ value: String(p.value), label: String(p.value) }]) {
    const item = document.createElement('option');
    item.value = option.value;
    item.textContent = option.label;
    menu.append(item);
  }
  menu.value = String(p.value);
  menu.addEventListener('change', () => void editor.send({ type: 'setValue', path: p.path, value: menu.value }));
  return { element: menu, update: (value) => !isEditing(menu) && (menu.value = String(value)) };
}

function stringControl(editor: Editor, p: ParameterNodeView): Control {
  const several = p.editorType === 'multiLine' || p.editorType === 'code';
  const field = document.createElement(several ? 'textarea' : 'input') as HTMLInputElement | HTMLTextAreaElement;
  field.value = String(p.value ?? '');
  field.className = `string string-${p.editorType ?? 'singleLine'}`;
  if (p.editorType === 'filePath') {
    field.placeholder = 'a file path, relative to the project';
  }
  field.spellcheck = p.editorType !== 'code';
  field.addEventListener('change', () => void editor.send({ type: 'setValue', path: p.path, value: field.value }));
  return { element: field, update: (value) => !isEditing(field) && (field.value = String(value ?? '')) };
}

function boolControl(editor: Editor, p: ParameterNodeView): Control {
  const box = document.createElement('input');
  box.type = 'checkbox';
  box.checked = Boolean(p.value);
  box.addEventListener('change', () => void editor.send({ type: 'setValue', path: p.path, value: box.checked }));
  return { element: box, update: (value) => (box.checked = Boolean(value)) };
}

function triggerControl(editor: Editor, p: ParameterNodeView): Control {
  const button = document.createElement('button');
  button.textContent = p.name ?? 'Trigger';
  button.addEventListener('click', () => void editor.send({ type: 'trigger', path: p.path }));
  return { element: button, update: () => undefined };
}

// The objects a reference may name, as the library lists them; the value goes by absolute path.
function referenceControl(editor: Editor, p: ParameterNodeView): Control {
  const menu = document.createElement('select');
  menu.append(new Option('(none)', ''));
  for (const path of p.allowed ?? []) {
    menu.append(new Option(path, path));
  }
  menu.value = p.referent ?? '';
  menu.addEventListener('change', () =>
    void editor.send({ type: 'setReference', path: p.path, target: menu.value || null }),
  );
  // Frame values are the library's relative form; the menu is re-read with the graph after each change.
  return { element: menu, update: () => undefined };
}

// A 3D transform is a 4x4 matrix, by columns; a changed field sends the whole matrix.
function transformControl(editor: Editor, p: ParameterNodeView): Control {
  const box = document.createElement('div');
  box.className = 'numbers numbers-16';
  const fields: HTMLInputElement[] = [];
  const send = () => {
    const columns = [0, 1, 2, 3].map((c) => [0, 1, 2, 3].map((r) => Number(fields[c * 4 + r].value) || 0));
    void editor.send({ type: 'setValue', path: p.path, value: columns });
  };
  // Shown row by row, as a matrix is written; stored column by column.
  const order = [0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15];
  const cells = componentsOf(p.value);
  for (let i = 0; i < 16; i += 1) {
    fields.push(numberField(cells[i] ?? 0, false, send));
  }
  order.forEach((index) => box.append(fields[index]));
  return {
    element: box,
    update(value) {
      if (!isEditing(box)) {
        componentsOf(value).forEach((v, i) => fields[i] && (fields[i].value = String(Number(v.toFixed(5)))));
      }
    },
  };
}

function readOnlyControl(p: ParameterNodeView): Control {
  const text = document.createElement('output');
  const show = (value: unknown) =>
    (text.textContent = typeof value === 'number' ? String(Number(value.toFixed(5))) : JSON.stringify(value));
  show(p.value);
  return { element: text, update: show };
}

export function makeControl(editor: Editor, p: ParameterNodeView): Control {
  if (p.flags?.includes('output')) {
    return readOnlyControl(p);
  }
  switch (p.type) {
    case 'Vantel.FloatParameter':
    case 'Vantel.Vector2Parameter':
    case 'Vantel.Vector3Parameter':
    case 'Vantel.Vector4Parameter':
      return numbersControl(editor, p, false);
    case 'Vantel.Transform3DParameter':
      return transformControl(editor, p);
    case 'Vantel.IntParameter':
      return intControl(editor, p);
    case 'Vantel.Vector2IntParameter':
    case 'Vantel.Vector3IntParameter':
    case 'Vantel.Vector4IntParameter':
      return numbersControl(editor, p, true);
    case 'Vantel.ColorParameter':
      return colorControl(editor, p);
    case 'Vantel.EnumParameter':
      return enumControl(editor, p);
    case 'Vantel.StringParameter':
      return stringControl(editor, p);
    case 'Vantel.BoolParameter':
      return boolControl(editor, p);
    case 'Vantel.TriggerParameter':
      return triggerControl(editor, p);
    case 'Vantel.PtrParameter':
      return referenceControl(editor, p);
    default:
      return readOnlyControl(p);
  }
}
