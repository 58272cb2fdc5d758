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

export function nodeBox(op: OperatorView): NodeBox {
  const rows = Math.max(op.inputs.length, op.outputs.length, 1);
  const hasPreview = hasImageOutput(op);
  return {
    x: op.position[0],
    y: op.position[1],
    width: kNodeWidth,
    height: kHeaderHeight + rows * kPortRow + 6 + (hasPreview ? kPreviewHeight : 0),
    hasPreview,
  };
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
