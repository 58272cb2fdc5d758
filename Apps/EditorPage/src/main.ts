// The editor page: joins the session's channels to the canvas, palette, panel, toolbar and log.
import './style.css';

import { Api } from './api';
import { GraphCanvas } from './canvas';
import { setDataTypes } from './colors';
import { Editor } from './editor';
import { LogView } from './logView';
import { Palette } from './palette';
import { Panel } from './panel';
import type { SessionEvent, StateView, TypesView } from './protocol';
import { Toolbar } from './toolbar';

const byId = <T extends HTMLElement>(id: string) => document.getElementById(id) as T;

function isTyping(target: EventTarget | null): boolean {
  return target instanceof HTMLInputElement || target instanceof HTMLTextAreaElement || target instanceof HTMLSelectElement;
}

function bindKeys(editor: Editor, palette: Palette): void {
  document.addEventListener('keydown', (event) => {
    const command = event.ctrlKey || event.metaKey;
    const key = event.key.toLowerCase();
    if (command && key === 's') {
      event.preventDefault();
      void editor.save();
      return;
    }
    if (isTyping(event.target)) {
      return;
    }
    if (command && key === 'z') {
      event.preventDefault();
      void (event.shiftKey ? editor.redo() : editor.undo());
    } else if (command && key === 'y') {
      event.preventDefault();
      void editor.redo();
    } else if (command && key === 'c') {
      void editor.copySelected();
    } else if (command && key === 'v') {
      void editor.paste();
    } else if (command && key === 'g') {
      event.preventDefault();
      void editor.groupSelected();
    } else if (command && key === 'a') {
      event.preventDefault();
      editor.select(editor.graph.operators.map((op) => op.path));
    } else if (key === 'delete' || key === 'backspace') {
      event.preventDefault();
      void editor.removeSelected();
    } else if (key === 'escape') {
      editor.select([]);
    } else if (key === '/') {
      event.preventDefault();
      palette.open();
    }
  });
}

async function start(): Promise<void> {
  const token = new URLSearchParams(location.search).get('token') ?? '';
  const log = new LogView(byId('log'), byId('toast'));
  // A fault of the page itself is shown like the library's, not left in the console.
  window.addEventListener('error', (event) => log.error(`page: ${event.message}`));
  window.addEventListener('unhandledrejection', (event) => log.error(`page: ${String(event.reason)}`));
  const editor = new Editor(new Api(token), log);
  const canvas = new GraphCanvas(byId<HTMLCanvasElement>('graph'), editor);
  const panel = new Panel(byId('panel'), editor);
  const toolbar = new Toolbar(editor);
  const palette = new Palette(
    byId('palette'),
    byId<HTMLInputElement>('palette-search'),
    byId('palette-list'),
    byId('palette-doc'),
    () => editor.types.operators,
    (type) => void editor.addOperator(type, canvas.viewCentre()),
  );
  editor.onGraph(() => toolbar.renderCrumbs());
  bindKeys(editor, palette);
  byId('group').addEventListener('click', () => void editor.groupSelected());
  byId('delete').addEventListener('click', () => void editor.removeSelected());

  const onEvent = (event: SessionEvent) => {
    if (event.event === 'changed') {
      void editor.reload();
      void editor.send<StateView>({ type: 'getState' }).then((state) => state && toolbar.showState(state));
    } else if (event.event === 'frame') {
      for (const [path, url] of Object.entries(event.previews ?? {})) {
        editor.previews.set(path, url);
      }
      for (const [path, value] of Object.entries(event.values ?? {})) {
        editor.values.set(path, value);
      }
      panel.update(event.values, event.previews);
      toolbar.showFrame(event);
      if (event.previews) {
        canvas.invalidate();
      }
    } else if (event.event === 'state') {
      toolbar.showState(event);
    } else if (event.event === 'log') {
      log.addLibraryLine(event.line);
    }
  };
  let lost = false;
  editor.api.listen(
    onEvent,
    () => {
      if (lost) {
        log.add('reconnected to the session', 'info');
        lost = false;
        void editor.reload();
      }
    },
    () => {
      if (!lost) {
        log.error('lost the connection to the session; retrying');
        lost = true;
      }
    },
  );

  const [types, state] = await Promise.all([
    editor.send<TypesView>({ type: 'getTypes' }),
    editor.send<StateView>({ type: 'getState' }),
  ]);
  if (types) {
    editor.types = types;
    setDataTypes(types);
    palette.render();
  }
  if (state) {
    toolbar.showState(state);
  }
  await editor.reload();
  // For the browser test and for a person at the console: what is drawn, and how to reach it.
  Object.assign(window, { vantelEditor: { editor, canvas } });
}

void start();
