// The graph canvas: the view (pan, zoom) and the pointer work on it (select, move, connect, enter a nested
// graph, drop a type from the palette); GraphRenderer draws it.
import type { Editor } from './editor';
import { displayName, nodeBox, kNodeWidth, kPortRow } from './layout';
import type { Connection, OperatorView, Vec2 } from './protocol';
import { anchorOf, type Gesture, GraphRenderer, kDetailZoom, kPortRadius, type PortPlace } from './renderer';

export class GraphCanvas {
  camera = { x: -40, y: -40, zoom: 1 };
  drawnOperators = 0;
  lastDrawMilliseconds = 0;
  // When the graph last read from the session was first drawn, in the page's clock (0: page opened).
  graphShownAt = 0;
  private shownGraph: unknown = null;
  private framedPath = '';

  private readonly renderer: GraphRenderer;
  private ports = new Map<string, PortPlace>();
  private gesture: Gesture = { kind: 'none' };
  private pending = false;
  private width = 0;
  private height = 0;

  constructor(
    readonly element: HTMLCanvasElement,
    private readonly editor: Editor,
  ) {
    const context = element.getContext('2d', { alpha: false }) as CanvasRenderingContext2D;
    this.renderer = new GraphRenderer(context, editor, () => this.invalidate());
    new ResizeObserver(() => this.resize()).observe(element);
    this.resize();
    editor.onGraph(() => {
      this.indexPorts();
      // A graph entered or left is shown whole; a graph re-read after an edit keeps the view.
      if (editor.graph.path !== this.framedPath) {
        this.framedPath = editor.graph.path;
        this.frameAll();
      }
      this.invalidate();
    });
    editor.onSelection(() => this.invalidate());
    this.listen();
  }

  // Redraws on the next animation frame; several calls in one frame draw once.
  invalidate(): void {
    if (this.pending) {
      return;
    }
    this.pending = true;
    requestAnimationFrame(() => {
      this.pending = false;
      this.draw();
    });
  }

  panBy(dx: number, dy: number): void {
    this.camera.x -= dx / this.camera.zoom;
    this.camera.y -= dy / this.camera.zoom;
    this.invalidate();
  }

  // Shows the whole graph, or its first thousand units when it is larger than a screen at the smallest
  // readable zoom, so that it opens where the work is.
  frameAll(): void {
    const ops = this.editor.graph.operators;
    if (ops.length === 0) {
      this.camera = { x: -40, y: -40, zoom: 1 };
    } else {
      const xs = ops.map((op) => op.position[0]);
      const ys = ops.map((op) => op.position[1]);
      const left = Math.min(...xs) - 40;
      const top = Math.min(...ys) - 40;
      const w = Math.max(...xs) + kNodeWidth + 40 - left;
      const h = Math.max(...ys) + 160 - top;
      const zoom = Math.min(1, Math.max(kDetailZoom, Math.min(this.width / w, this.height / h)));
      this.camera = { x: left, y: top, zoom };
    }
    this.invalidate();
  }

  toWorld(screen: Vec2): Vec2 {
    return [screen[0] / this.camera.zoom + this.camera.x, screen[1] / this.camera.zoom + this.camera.y];
  }

  toScreen(world: Vec2): Vec2 {
    return [(world[0] - this.camera.x) * this.camera.zoom, (world[1] - this.camera.y) * this.camera.zoom];
  }

  // The centre of the view, where an operator added without a drop point goes.
  viewCentre(): Vec2 {
    return this.toWorld([this.width / 2 - (kNodeWidth * this.camera.zoom) / 2, this.height / 3]);
  }

  portScreen(path: string): Vec2 | undefined {
    const place = this.ports.get(path);
    return place && this.toScreen(this.anchor(place));
  }

  private resize(): void {
    const ratio = window.devicePixelRatio || 1;
    this.width = this.element.clientWidth;
    this.height = this.element.clientHeight;
    this.element.width = Math.round(this.width * ratio);
    this.element.height = Math.round(this.height * ratio);
    this.invalidate();
  }

  private indexPorts(): void {
    this.ports.clear();
    for (const op of this.editor.graph.operators) {
      op.inputs.forEach((port, index) => this.ports.set(port.path, { op, port, side: 'input', index }));
      op.outputs.forEach((port, index) => this.ports.set(port.path, { op, port, side: 'output', index }));
    }
  }

  private anchor(place: PortPlace): Vec2 {
    return anchorOf(place);
  }

  private draw(): void {
    const started = performance.now();
    this.drawnOperators = this.renderer.draw({
      camera: this.camera,
      width: this.width,
      height: this.height,
      ports: this.ports,
      gesture: this.gesture,
    });
    this.lastDrawMilliseconds = performance.now() - started;
    if (this.shownGraph !== this.editor.graph) {
      this.shownGraph = this.editor.graph;
      this.graphShownAt = performance.now();
    }
  }

  // ---- Hit tests, topmost (last drawn) first ----

  private operatorAt(world: Vec2): OperatorView | undefined {
    const ops = this.editor.graph.operators;
    for (let i = ops.length - 1; i >= 0; i -= 1) {
      const box = nodeBox(ops[i]);
      if (world[0] >= box.x && world[0] <= box.x + box.width && world[1] >= box.y && world[1] <= box.y + box.height) {
        return ops[i];
      }
    }
    return undefined;
  }

  private portAt(world: Vec2): PortPlace | undefined {
    const reach = (kPortRadius + 4) / Math.min(this.camera.zoom, 1);
    for (const place of this.ports.values()) {
      const at = this.anchor(place);
      if (Math.abs(at[0] - world[0]) <= reach && Math.abs(at[1] - world[1]) <= Math.min(reach, kPortRow / 2)) {
        return place;
      }
    }
    return undefined;
  }

  // ---- Pointer work ----

  private point(event: MouseEvent): Vec2 {
    const rect = this.element.getBoundingClientRect();
    return [event.clientX - rect.left, event.clientY - rect.top];
  }

  private listen(): void {
    const el = this.element;
    el.addEventListener('pointerdown', (event) => this.pointerDown(event));
    el.addEventListener('pointermove', (event) => this.pointerMove(event));
    el.addEventListener('pointerup', (event) => void this.pointerUp(event));
    el.addEventListener('wheel', (event) => this.wheel(event), { passive: false });
    el.addEventListener('dblclick', (event) => this.doubleClick(event));
    el.addEventListener('contextmenu', (event) => event.preventDefault());  // the right button pans
    el.addEventListener('dragover', (event) => event.preventDefault());
    el.addEventListener('drop', (event) => {
      event.preventDefault();
      const type = event.dataTransfer?.getData('application/x-vantel-operator');
      if (type) {
        void this.editor.addOperator(type, this.toWorld(this.point(event)));
      }
    });
  }

  private pointerDown(event: PointerEvent): void {
    this.element.setPointerCapture(event.pointerId);
    this.element.focus();
    const screen = this.point(event);
    const world = this.toWorld(screen);
    if (event.button === 1 || event.button === 2) {
      this.gesture = { kind: 'pan', last: screen };
      return;
    }
    const port = this.camera.zoom >= kDetailZoom ? this.portAt(world) : undefined;
    if (port) {
      this.startConnect(port, world);
      return;
    }
    const op = this.operatorAt(world);
    if (!op) {
      this.gesture = event.shiftKey ? { kind: 'box', from: world, to: world } : { kind: 'pan', last: screen };
      if (!event.shiftKey) {
        this.editor.select([]);
      }
      return;
    }
    const additive = event.shiftKey || event.ctrlKey || event.metaKey;
    if (additive || !this.editor.selection.has(op.path)) {
      this.editor.select([op.path], additive);
    }
    const starts = new Map<string, Vec2>();
    for (const path of this.editor.selection) {
      const selected = this.editor.findOperator(path);
      if (selected) {
        starts.set(path, [...selected.position]);
      }
    }
    this.gesture = { kind: 'move', from: world, starts, moved: false };
  }

  // From an output a new connection starts; from a connected input its connection is picked up again.
  private startConnect(port: PortPlace, world: Vec2): void {
    if (port.side === 'output') {
      this.gesture = { kind: 'connect', from: port, to: world };
      return;
    }
    const connection = this.editor.graph.dataConnections.find((c) => c.input === port.port.path);
    const from = connection && this.ports.get(connection.output);
    if (connection && from) {
      this.gesture = { kind: 'connect', from, to: world, detached: connection };
      this.invalidate();
    } else {
      this.gesture = { kind: 'none' };
    }
  }

  private pointerMove(event: PointerEvent): void {
    const screen = this.point(event);
    const world = this.toWorld(screen);
    const gesture = this.gesture;
    if (gesture.kind === 'pan') {
      this.panBy(screen[0] - gesture.last[0], screen[1] - gesture.last[1]);
      gesture.last = screen;
    } else if (gesture.kind === 'move') {
      const dx = world[0] - gesture.from[0];
      const dy = world[1] - gesture.from[1];
      gesture.moved ||= Math.abs(dx) + Math.abs(dy) > 2 / this.camera.zoom;
      for (const [path, start] of gesture.starts) {
        const op = this.editor.findOperator(path);
        if (op) {
          op.position = [start[0] + dx, start[1] + dy];
        }
      }
      this.invalidate();
    } else if (gesture.kind === 'connect' || gesture.kind === 'box') {
      gesture.to = world;
      this.invalidate();
    }
  }

  // A move is sent once, on release, so that one drag is one step of the history.
  private async pointerUp(event: PointerEvent): Promise<void> {
    const gesture = this.gesture;
    this.gesture = { kind: 'none' };
    const world = this.toWorld(this.point(event));
    if (gesture.kind === 'move' && gesture.moved) {
      const moves: [string, Vec2][] = [];
      for (const path of gesture.starts.keys()) {
        const op = this.editor.findOperator(path);
        if (op) {
          moves.push([path, op.position]);
        }
      }
      await this.editor.move(moves);
    } else if (gesture.kind === 'connect') {
      await this.finishConnect(gesture.from, world, gesture.detached);
    } else if (gesture.kind === 'box') {
      this.selectBox(gesture.from, gesture.to);
    }
    this.invalidate();
  }

  private async finishConnect(from: PortPlace, world: Vec2, detached?: Connection): Promise<void> {
    const target = this.portAt(world);
    if (detached && target?.port.path === detached.input) {
      return;  // put back where it was
    }
    if (detached) {
      await this.editor.disconnect(detached);
    }
    if (target && target.side === 'input') {
      await this.editor.connect(from.port.path, target.port.path);
    } else if (target) {
      this.editor.log.error(`connect: drop the connection on an input, not on the output ${target.port.name}`);
    }
  }

  private selectBox(a: Vec2, b: Vec2): void {
    const left = Math.min(a[0], b[0]);
    const right = Math.max(a[0], b[0]);
    const top = Math.min(a[1], b[1]);
    const bottom = Math.max(a[1], b[1]);
    const inside = this.editor.graph.operators.filter((op) => {
      const box = nodeBox(op);
      return box.x >= left && box.x + box.width <= right && box.y >= top && box.y + box.height <= bottom;
    });
    this.editor.select(inside.map((op) => op.path), true);
  }

  private wheel(event: WheelEvent): void {
    event.preventDefault();
    const screen = this.point(event);
    const before = this.toWorld(screen);
    const zoom = Math.min(3, Math.max(0.05, this.camera.zoom * Math.exp(-event.deltaY * 0.0015)));
    this.camera.zoom = zoom;
    this.camera.x = before[0] - screen[0] / zoom;
    this.camera.y = before[1] - screen[1] / zoom;
    this.invalidate();
  }

  private doubleClick(event: MouseEvent): void {
    const op = this.operatorAt(this.toWorld(this.point(event)));
    if (op?.graph) {
      void this.editor.enter(op.path, displayName(op));
    }
  }
}
