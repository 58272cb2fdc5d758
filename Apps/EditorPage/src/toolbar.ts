// The toolbar: run, pause and step with the frame rate; undo, redo and the history menu; save; and the
// breadcrumb of nested graphs back to the project.
import type { Editor } from './editor';
import type { FrameEvent, HistoryView, StateView } from './protocol';

export class Toolbar {
  private readonly byId = (id: string) => document.getElementById(id) as HTMLElement;
  private frames: { at: number; frame: number }[] = [];

  constructor(private readonly editor: Editor) {
    const click = (id: string, action: () => unknown) => this.byId(id).addEventListener('click', () => void action());
    click('run', () => this.setState('run'));
    click('pause', () => this.setState('pause'));
    click('step', () => this.setState('step'));
    click('undo', () => editor.undo());
    click('redo', () => editor.redo());
    click('save', () => editor.save());
    click('history', () => this.toggleHistory());
    document.addEventListener('click', (event) => {
      const menu = this.byId('history-menu');
      if (!menu.hidden && !menu.contains(event.target as Node) && event.target !== this.byId('history')) {
        menu.hidden = true;
      }
    });
  }

  private async setState(type: 'run' | 'pause' | 'step'): Promise<void> {
    const state = await this.editor.send<StateView>({ type });
    if (state) {
      this.showState(state);
    }
  }

  showState(state: StateView): void {
    this.editor.state = state;
    (this.byId('run') as HTMLButtonElement).disabled = state.running;
    (this.byId('pause') as HTMLButtonElement).disabled = !state.running;
    (this.byId('step') as HTMLButtonElement).disabled = state.running;
    (this.byId('undo') as HTMLButtonElement).disabled = !state.canUndo;
    (this.byId('redo') as HTMLButtonElement).disabled = !state.canRedo;
    this.byId('frame').textContent = `frame ${state.frame}`;
    if (!state.running) {
      this.byId('fps').textContent = 'paused';
      this.frames = [];
    }
  }

  // The rate is measured over the last two seconds of frame updates, as the session ran them.
  showFrame(frame: FrameEvent): void {
    const now = performance.now();
    this.frames.push({ at: now, frame: frame.frame });
    while (this.frames.length > 2 && now - this.frames[0].at > 2000) {
      this.frames.shift();
    }
    this.byId('frame').textContent = `frame ${frame.frame}`;
    const first = this.frames[0];
    const seconds = (now - first.at) / 1000;
    if (this.editor.state.running && seconds > 0.25) {
      const fps = (frame.frame - first.frame) / seconds;
      this.byId('fps').textContent = `${fps.toFixed(1)} fps · ${frame.frameMilliseconds.toFixed(2)} ms`;
    }
  }

  renderCrumbs(): void {
    const bar = this.byId('crumbs');
    bar.replaceChildren();
    this.editor.crumbs.forEach((crumb, index) => {
      if (index > 0) {
        bar.append(' › ');
      }
      const link = document.createElement('button');
      link.className = 'crumb';
      link.textContent = crumb.label;
      link.disabled = index === this.editor.crumbs.length - 1;
      link.addEventListener('click', () => void this.editor.enter(crumb.path, crumb.label));
      bar.append(link);
    });
  }

  private async toggleHistory(): Promise<void> {
    const menu = this.byId('history-menu');
    if (!menu.hidden) {
      menu.hidden = true;
      return;
    }
    const history = await this.editor.send<HistoryView>({ type: 'getHistory' });
    if (!history) {
      return;
    }
    menu.replaceChildren();
    // Redo steps above the present, undo steps below it, nearest first: a click walks to that step.
    [...history.redo].reverse().forEach((step, i, all) =>
      menu.append(this.entry(step.name, 'redo', step.records, all.length - i, () => this.editor.redo())),
    );
    const now = document.createElement('div');
    now.className = 'history-now';
    now.textContent = history.undo.length ? 'now' : 'now (nothing to undo)';
    menu.append(now);
    history.undo.forEach((step, i) => menu.append(this.entry(step.name, 'undo', step.records, i + 1, () => this.editor.undo())));
    menu.hidden = false;
  }

  private entry(name: string, kind: string, records: string[], steps: number, walk: () => Promise<void>): HTMLElement {
    const row = document.createElement('button');
    row.className = `history-entry history-${kind}`;
    row.textContent = name;
    row.title = records.join('\n');
    row.addEventListener('click', async () => {
      this.byId('history-menu').hidden = true;
      for (let i = 0; i < steps; i += 1) {
        await walk();
      }
    });
    return row;
  }
}
