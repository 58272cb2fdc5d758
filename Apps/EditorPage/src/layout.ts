// Where an operator and its ports sit, in graph units; the canvas scales these by its zoom.
import type { OperatorView, Vec2 } from './protocol';

export const kNodeWidth = 170;
export const kHeaderHeight = 24;
export const kPortRow = 18;
export const kPreviewHeight = 72;

export interface NodeBox {
  x: number;
  y: number;
  width: number;
  height: number;
  hasPreview: boolean;
}

export function hasImageOutput(op: OperatorView): boolean {
  return op.outputs.some((port) => port.type.includes('Image'));
}

// Without building a box: the renderer asks this of every operator in every frame.
export function nodeHeight(op: OperatorView): number {
  const rows = Math.max(op.inputs.length, op.outputs.length, 1);
  return kHeaderHeight + rows * kPortRow + 6 + (hasImageOutput(op) ? kPreviewHeight : 0);
}

export function nodeBox(op: OperatorView): NodeBox {
  return { x: op.position[0], y: op.position[1], width: kNodeWidth, height: nodeHeight(op), hasPreview: hasImageOutput(op) };
}

export function inputAnchor(op: OperatorView, index: number): Vec2 {
  return [op.position[0], op.position[1] + kHeaderHeight + index * kPortRow + kPortRow / 2];
}

export function outputAnchor(op: OperatorView, index: number): Vec2 {
  return [op.position[0] + kNodeWidth, op.position[1] + kHeaderHeight + index * kPortRow + kPortRow / 2];
}

export function displayName(op: OperatorView): string {
  if (op.name) {
    return op.name;
  }
  return op.key.replace(/ \[[^\]]*\]$/, '');
}
