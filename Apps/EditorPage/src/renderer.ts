// Draws a graph on a 2D canvas: the grid, the connections, the operators with their ports and previews, and
// the gesture under way. Only what lies in view is drawn, and below a readable zoom only the boxes.
import { portColor } from './colors';
import type { Editor } from './editor';
import { displayName, inputAnchor, kHeaderHeight, kNodeWidth, nodeBox, nodeHeight, outputAnchor } from './layout';
import type { Connection, OperatorView, PortView, Vec2 } from './protocol';

export const kDetailZoom = 0.35;
export const kPortRadius = 5;

export interface PortPlace {
  op: OperatorView;
  port: PortView;
  side: 'input' | 'output';
  index: number;
}

export type Gesture =
  | { kind: 'none' }
  | { kind: 'pan'; last: Vec2 }
  | { kind: 'box'; from: Vec2; to: Vec2 }
  | { kind: 'move'; from: Vec2; starts: Map<string, Vec2>; moved: boolean }
  | { kind: 'connect'; from: PortPlace; to: Vec2; detached?: Connection };

export interface Frame {
  camera: { x: number; y: number; zoom: number };
  width: number;
  height: number;
  ports: Map<string, PortPlace>;
  gesture: Gesture;
}

export function anchorOf(place: PortPlace): Vec2 {
  return place.side === 'input' ? inputAnchor(place.op, place.index) : outputAnchor(place.op, place.index);
}

export class GraphRenderer {
  private frame!: Frame;
  private images = new Map<string, { url: string; image: HTMLImageElement }>();

  // `redraw` is called when a preview picture has loaded.
  constructor(
    private readonly context: CanvasRenderingContext2D,
    private readonly editor: Editor,
    private readonly redraw: () => void,
  ) {}

  // Draws the frame and returns how many operators were in view.
  draw(frame: Frame): number {
    this.frame = frame;
    const ctx = this.context;
    const ratio = window.devicePixelRatio || 1;
    const { x, y, zoom } = frame.camera;
    ctx.setTransform(ratio, 0, 0, ratio, 0, 0);
    ctx.fillStyle = '#1e2126';
    ctx.fillRect(0, 0, this.frame.width, this.frame.height);
    this.drawGrid();
    ctx.setTransform(ratio * zoom, 0, 0, ratio * zoom, -x * zoom * ratio, -y * zoom * ratio);
    const view = { left: x, top: y, right: x + this.frame.width / zoom, bottom: y + this.frame.height / zoom };
    this.drawConnections(view);
    let drawn = 0;
    for (const op of this.editor.graph.operators) {
      const [left, top] = op.position;
      if (left > view.right || top > view.bottom || left + kNodeWidth < view.left || top + nodeHeight(op) < view.top) {
        continue;
      }
      this.drawNode(op);
      drawn += 1;
    }
    this.drawGesture();
    return drawn;
  }

  private drawGrid(): void {
    const ctx = this.context;
    const step = 40 * this.frame.camera.zoom;
    if (step < 12) {
      return;
    }
    ctx.strokeStyle = '#262a30';
    ctx.lineWidth = 1;
    ctx.beginPath();
    for (let sx = (-this.frame.camera.x * this.frame.camera.zoom) % step; sx < this.frame.width; sx += step) {
      ctx.moveTo(sx, 0);
      ctx.lineTo(sx, this.frame.height);
    }
    for (let sy = (-this.frame.camera.y * this.frame.camera.zoom) % step; sy < this.frame.height; sy += step) {
      ctx.moveTo(0, sy);
      ctx.lineTo(this.frame.width, sy);
    }
    ctx.stroke();
  }

  private drawConnections(view: { left: number; top: number; right: number; bottom: number }): void {
    const ctx = this.context;
    ctx.lineWidth = 2 / Math.max(this.frame.camera.zoom, 0.5);
    const detached = this.frame.gesture.kind === 'connect' ? this.frame.gesture.detached : undefined;
    for (const connection of this.editor.graph.dataConnections) {
      const from = this.frame.ports.get(connection.output);
      const to = this.frame.ports.get(connection.input);
      if (!from || !to || connection === detached) {
        continue;
      }
      const a = anchorOf(from);
      const b = anchorOf(to);
      if (Math.max(a[0], b[0]) < view.left || Math.min(a[0], b[0]) > view.right) {
        continue;
      }
      if (Math.max(a[1], b[1]) < view.top || Math.min(a[1], b[1]) > view.bottom) {
        continue;
      }
      ctx.strokeStyle = portColor(from.port.type);
      this.curve(a, b);
    }
  }

  private curve(a: Vec2, b: Vec2): void {
    const ctx = this.context;
    const bend = Math.max(40, Math.abs(b[0] - a[0]) / 2);
    ctx.beginPath();
    ctx.moveTo(a[0], a[1]);
    ctx.bezierCurveTo(a[0] + bend, a[1], b[0] - bend, b[1], b[0], b[1]);
    ctx.stroke();
  }

  private drawNode(op: OperatorView): void {
    const ctx = this.context;
    const box = nodeBox(op);
    const selected = this.editor.selection.has(op.path);
    ctx.fillStyle = op.graph ? '#34405a' : '#30343b';
    ctx.fillRect(box.x, box.y, box.width, box.height);
    ctx.fillStyle = op.graph ? '#4a5d86' : '#454b55';
    ctx.fillRect(box.x, box.y, box.width, kHeaderHeight);
    if (selected) {
      ctx.strokeStyle = '#f2b84b';
      ctx.lineWidth = 2 / this.frame.camera.zoom;
      ctx.strokeRect(box.x, box.y, box.width, box.height);
    }
    if (this.frame.camera.zoom < kDetailZoom) {
      return;
    }
    ctx.fillStyle = '#e8e8e8';
    ctx.font = '12px system-ui, sans-serif';
    ctx.textBaseline = 'middle';
    ctx.fillText(displayName(op) + (op.graph ? '  ▸' : ''), box.x + 8, box.y + kHeaderHeight / 2, box.width - 16);
    ctx.font = '11px system-ui, sans-serif';
    op.inputs.forEach((port, index) => this.drawPort(port, inputAnchor(op, index), 'input'));
    op.outputs.forEach((port, index) => this.drawPort(port, outputAnchor(op, index), 'output'));
    if (box.hasPreview) {
      this.drawPreview(op, box.x + 8, box.y + box.height - 70, box.width - 16, 64);
    }
  }

  private drawPort(port: PortView, at: Vec2, side: 'input' | 'output'): void {
    const ctx = this.context;
    ctx.fillStyle = portColor(port.type);
    ctx.beginPath();
    ctx.arc(at[0], at[1], kPortRadius, 0, Math.PI * 2);
    ctx.fill();
    ctx.fillStyle = '#c8c8c8';
    ctx.textAlign = side === 'input' ? 'left' : 'right';
    ctx.fillText(port.name, at[0] + (side === 'input' ? 10 : -10), at[1], kNodeWidth / 2 - 12);
    ctx.textAlign = 'left';
  }

  private drawPreview(op: OperatorView, px: number, py: number, width: number, height: number): void {
    const port = op.outputs.find((p) => this.editor.previews.has(p.path));
    const url = port && this.editor.previews.get(port.path);
    const ctx = this.context;
    ctx.fillStyle = '#17191c';
    ctx.fillRect(px, py, width, height);
    if (!port || !url) {
      return;
    }
    let cached = this.images.get(port.path);
    if (!cached || cached.url !== url) {
      const image = new Image();
      image.onload = () => this.redraw();
      image.src = url;
      cached = { url, image };
      this.images.set(port.path, cached);
    }
    const image = cached.image;
    if (!image.complete || image.naturalWidth === 0) {
      return;
    }
    const scale = Math.min(width / image.naturalWidth, height / image.naturalHeight);
    const w = image.naturalWidth * scale;
    const h = image.naturalHeight * scale;
    ctx.drawImage(image, px + (width - w) / 2, py + (height - h) / 2, w, h);
  }

  private drawGesture(): void {
    const ctx = this.context;
    const gesture = this.frame.gesture;
    if (gesture.kind === 'connect') {
      ctx.strokeStyle = portColor(gesture.from.port.type);
      ctx.setLineDash([6, 4]);
      this.curve(anchorOf(gesture.from), gesture.to);
      ctx.setLineDash([]);
    } else if (gesture.kind === 'box') {
      ctx.strokeStyle = '#f2b84b';
      ctx.lineWidth = 1 / this.frame.camera.zoom;
      ctx.strokeRect(gesture.from[0], gesture.from[1], gesture.to[0] - gesture.from[0], gesture.to[1] - gesture.from[1]);
    }
  }
}
