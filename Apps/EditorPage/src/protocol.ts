// The shapes of the edit protocol's replies and events, as README.md lists them.

export type Vec2 = [number, number];

export interface PortView {
  key: string;
  path: string;
  name: string;
  type: string;
  color: number[];
  addedByUser: boolean;
  list?: string;
}

export interface ParameterOption {
  value: string;
  label: string;
}

export interface ParameterNodeView {
  key: string;
  path: string;
  kind: 'parameter' | 'group' | 'bundleList' | 'bundle';
  name?: string;
  type?: string;
  value?: unknown;
  components?: number;
  flags?: string[];
  editorType?: string | null;
  addedByUser?: boolean;
  options?: ParameterOption[];
  referent?: string | null;
  allowed?: string[];
  children?: ParameterNodeView[];
  rowContinuation?: boolean;
  rowLabel?: string;
  separatorAbove?: boolean;
}

export interface OperatorView {
  key: string;
  path: string;
  type: string;
  name: string;
  position: Vec2;
  graph: boolean;
  inputs: PortView[];
  outputs: PortView[];
  parameters: ParameterNodeView[];
}

export interface Connection {
  output: string;
  input: string;
  links?: [number, number][];
}

export interface GraphView {
  path: string;
  name: string;
  operators: OperatorView[];
  dataConnections: Connection[];
  parameterConnections: Connection[];
}

export interface Entry {
  name: string;
  type: string;
  description: string;
  summary?: string;
  kinds?: { name: string; parameters: Entry[] }[];
}

export interface OperatorTypeInfo {
  type: string;
  name: string;
  category: string;
  summary: string;
  tags: string[];
  doc: string;
  inputs: Entry[];
  outputs: Entry[];
  parameters: Entry[];
}

export interface TypesView {
  operators: OperatorTypeInfo[];
  parameters: { type: string; name: string; summary: string }[];
  dataTypes: { id: string; name: string; color: number[] | null }[];
}

export interface HistoryStep {
  name: string;
  records: string[];
}

export interface HistoryView {
  undo: HistoryStep[];
  redo: HistoryStep[];
}

export interface StateView {
  running: boolean;
  frame: number;
  time: number;
  canUndo: boolean;
  canRedo: boolean;
}

export interface FrameEvent {
  event: 'frame';
  frame: number;
  time: number;
  frameMilliseconds: number;
  operatorsRun: number;
  values?: Record<string, unknown>;
  previews?: Record<string, string>;
}

export type SessionEvent =
  | { event: 'changed'; transaction?: HistoryStep; undone?: string; redone?: string }
  | FrameEvent
  | ({ event: 'state' } & StateView)
  | { event: 'log'; line: string };
