// The page's state: the graph on show, the path to it, the selection, the live values and previews, and the
// edits, each one request of the protocol whose refusal is shown and changes nothing here.
import { Api, RequestFailed } from './api';
import type { LogView } from './logView';
import type { Connection, GraphView, OperatorView, StateView, TypesView, Vec2 } from './protocol';

export interface Crumb {
  path: string;
  label: string;
}

type Listener = () => void;

export class Editor {
  types: TypesView = { operators: [], parameters: [], dataTypes: [] };
  graph: GraphView = { path: '/', name: '', operators: [], dataConnections: [], parameterConnections: [] };
  crumbs: Crumb[] = [{ path: '/', label: 'Project' }];
  selection = new Set<string>();
  values = new Map<string, unknown>();
  previews = new Map<string, string>();
  state: StateView = { running: true, frame: 0, time: 0, canUndo: false, canRedo: false };

  private clipboard: unknown = null;
  private copying: Promise<unknown> = Promise.resolve();
  private pasteCount = 0;
  private readonly graphListeners: Listener[] = [];
  private readonly selectionListeners: Listener[] = [];
  private readonly valueListeners: Listener[] = [];
  private reloading: Promise<void> | null = null;
  private reloadAgain = false;

  constructor(
    readonly api: Api,
    readonly log: LogView,
  ) {}

  onGraph(listener: Listener): void {
    this.graphListeners.push(listener);
  }
  onSelection(listener: Listener): void {
    this.selectionListeners.push(listener);
  }
  onValues(listener: Listener): void {
    this.valueListeners.push(listener);
  }
  notifyValues(): void {
    this.valueListeners.forEach((l) => l());
  }

  get graphPath(): string {
    return this.crumbs[this.crumbs.length - 1].path;
  }

  findOperator(path: string): OperatorView | undefined {
    return this.graph.operators.find((op) => op.path === path);
  }

  // Sends one request; a refusal goes to the log and the toast, and comes back as undefined.
  // `what` names the edit in the refusal; by default the request's type.
  async send<T = unknown>(body: Record<string, unknown>, what = String(body.type)): Promise<T | undefined> {
    try {
      return await this.api.request<T>(body);
    } catch (error) {
      const reason = error instanceof RequestFailed ? error.message : `cannot reach the session: ${String(error)}`;
      this.log.error(`${what}: ${reason}`);
      return undefined;
    }
  }

  // Re-reads the graph on show; calls that come while one read runs are folded into one more read.
  async reload(): Promise<void> {
    if (this.reloading) {
      this.reloadAgain = true;
      return this.reloading;
    }
    this.reloading = (async () => {
      do {
        this.reloadAgain = false;
        const graph = await this.send<GraphView>({ type: 'getGraph', path: this.graphPath });
        if (!graph) {
          // The graph on show is gone (undone, removed): fall back to the project's root.
          if (this.crumbs.length > 1) {
            this.crumbs = [this.crumbs[0]];
            this.reloadAgain = true;
          }
          continue;
        }
        this.graph = graph;
        const present = new Set(graph.operators.map((op) => op.path));
        const before = this.selection.size;
        this.selection = new Set([...this.selection].filter((path) => present.has(path)));
        this.graphListeners.forEach((l) => l());
        if (before !== this.selection.size) {
          this.selectionListeners.forEach((l) => l());
        }
      } while (this.reloadAgain);
      this.reloading = null;
    })();
    return this.reloading;
  }

  async enter(path: string, label: string): Promise<void> {
    const index = this.crumbs.findIndex((crumb) => crumb.path === path);
    this.crumbs = index >= 0 ? this.crumbs.slice(0, index + 1) : [...this.crumbs, { path, label }];
    this.select([]);
    await this.reload();
  }

  select(paths: string[], add = false): void {
    if (!add) {
      this.selection.clear();
    }
    for (const path of paths) {
      if (add && this.selection.has(path)) {
        this.selection.delete(path);
      } else {
        this.selection.add(path);
      }
    }
    this.selectionListeners.forEach((l) => l());
  }

  async addOperator(operatorType: string, position: Vec2): Promise<string | undefined> {
    const info = this.types.operators.find((t) => t.type === operatorType);
    const reply = await this.send<{ path: string }>({
      type: 'addOperator',
      graph: this.graphPath,
      operatorType,
      name: info?.name ?? '',
      position: position.map(Math.round),
    });
    if (reply) {
      await this.reload();
      this.select([reply.path]);
    }
    return reply?.path;
  }

  // Several edits as one step of the history, or one edit as itself.
  async sendEdits(name: string, edits: Record<string, unknown>[]): Promise<unknown> {
    if (edits.length === 1) {
      return this.send(edits[0]);
    }
    return edits.length > 0 ? this.send({ type: 'batch', name, requests: edits }) : undefined;
  }

  // A drag of the selection is one step, however many operators it moved.
  async move(moves: [string, Vec2][]): Promise<void> {
    const edits = moves.map(([path, position]) => ({ type: 'moveOperator', path, position: position.map(Math.round) }));
    if ((await this.sendEdits(`Move ${moves.length} operators`, edits)) === undefined) {
      await this.reload();  // put back what the session refused to move
    }
  }

  // An input takes one connection: dropping onto a connected input replaces what fed it.
  async connect(output: string, input: string): Promise<boolean> {
    const taken = this.graph.dataConnections.some((c) => c.input === input);
    const short = (path: string) => path.split('/').slice(-2).join('/');
    const reply = await this.send({ type: 'connectData', output, input, replace: taken }, `connect ${short(output)} → ${short(input)}`);
    return reply !== undefined;
  }

  async disconnect(connection: Connection): Promise<void> {
    await this.send({ type: 'disconnectData', output: connection.output, input: connection.input });
  }

  async removeSelected(): Promise<void> {
    const paths = [...this.selection];
    await this.sendEdits(`Delete ${paths.length} operators`, paths.map((path) => ({ type: 'removeOperator', path })));
    this.select([]);
  }

  async copySelected(): Promise<boolean> {
    if (this.selection.size === 0) {
      return false;
    }
    this.copying = this.send({ type: 'copy', paths: [...this.selection] });
    const clipboard = await this.copying;
    if (clipboard) {
      this.clipboard = clipboard;
      this.pasteCount = 0;
    }
    return clipboard !== undefined;
  }

  async paste(): Promise<void> {
    // Ctrl+V straight after Ctrl+C pastes what was just copied, not what was before.
    await this.copying;
    if (!this.clipboard) {
      this.log.add('paste: nothing copied yet', 'info');
      return;
    }
    this.pasteCount += 1;
    const offset = 30 * this.pasteCount;
    const reply = await this.send<{ paths: string[] }>({
      type: 'paste',
      graph: this.graphPath,
      clipboard: this.clipboard,
      offset: [offset, offset],
    });
    if (reply) {
      await this.reload();
      this.select(reply.paths);
    }
  }

  // Moves the selection into a new nested graph (two steps of the history: the graph, then the move), with
  // the connections among the moved operators. A connection to the rest of the graph would need ports the
  // person chooses, so a selection with one is refused, naming it, and nothing changes.
  async groupSelected(): Promise<void> {
    const paths = [...this.selection];
    const ops = paths.map((p) => this.findOperator(p)).filter((op): op is OperatorView => !!op);
    if (ops.length === 0) {
      return;
    }
    const inside = (port: string) => paths.some((p) => port.startsWith(p + '/'));
    const crossing = [...this.graph.dataConnections, ...this.graph.parameterConnections].filter(
      (c) => inside(c.input) !== inside(c.output),
    );
    if (crossing.length > 0) {
      const names = crossing.map((c) => `${c.output} → ${c.input}`).join(', ');
      this.log.error(`group: these connections cross the selection's edge; select both ends or disconnect them first: ${names}`);
      return;
    }
    const clipboard = await this.send({ type: 'copy', paths });
    if (!clipboard) {
      return;
    }
    const group = await this.send<{ path: string }>({
      type: 'addOperator',
      graph: this.graphPath,
      operatorType: 'Vantel.General.Graph',
      name: 'Group',
      position: [Math.min(...ops.map((op) => op.position[0])), Math.min(...ops.map((op) => op.position[1]))],
    });
    if (!group) {
      return;
    }
    const moved = await this.send({
      type: 'batch',
      name: `Group ${paths.length} operators`,
      requests: [
        { type: 'paste', graph: group.path, clipboard, offset: [0, 0] },
        ...paths.map((path) => ({ type: 'removeOperator', path })),
      ],
    });
    if (moved) {
      await this.reload();
      this.select([group.path]);
    }
  }

  async undo(): Promise<void> {
    await this.send({ type: 'undo' });
  }
  async redo(): Promise<void> {
    await this.send({ type: 'redo' });
  }

  async save(): Promise<void> {
    const reply = await this.send<{ file: string }>({ type: 'save' });
    if (reply) {
      this.log.add(`saved ${reply.file}`, 'info');
    }
  }
}
