/// <reference lib="esnext.disposable" />
import type { Functions } from './functions.js';

export type { Functions };

/** Entries column after column, as the library holds them. */
export class Matrix<Entries extends Float64Array | Uint32Array = Float64Array | Uint32Array> {
  constructor(rows: number, data: Entries);
  rows: number;
  data: Entries;
  readonly cols: number;
  column(k: number): Entries;
}

/** A call that the library refused; `cause` is what a source or onProgress threw, if that was why. */
export class GridworkError extends Error {
  operation: string;
  code: number;
}

export type ElementName =
  | 'UNKNOWN' | 'NODE' | 'EDGE_MIX' | 'EDGE2' | 'EDGE3' | 'FACE_MIX' | 'TRIA3' | 'QUAD4' | 'TRIA6' | 'QUAD8' | 'QUAD9'
  | 'SOLID_MIX' | 'TETRA4' | 'TETRA10' | 'PYRAMID5' | 'PYRAMID13' | 'PYRAMID14' | 'WEDGE6' | 'WEDGE15' | 'WEDGE18'
  | 'HEXA8' | 'HEXA20' | 'HEXA27';
export type ElementType = ElementName | number;
export const elementTypes: Readonly<Record<ElementName, number>>;

/** Bytes, a Blob in a worker, or anything that reads itself. */
export type Source =
  | Uint8Array | ArrayBuffer | Blob
  | { size: number; read(position: number, target: Uint8Array): number; close?(): void };

/** Bytes in a buffer of their own, as Blobs take them. */
export type Bytes = ReturnType<Uint8Array['slice']>;

export type Format = 'stl' | 'obj' | 'medit' | 'vtk' | 'nastran' | 'femap' | 'ensight';

/** The format that a file's name tells. */
export function formatOf(name: string | undefined): Format | undefined;

export interface Histogram {
  lower: number; upper: number; min: number; max: number; mean: number;
  below: number; above: number; notANumber: number; bins: number[];
}

export interface Topology {
  dim: number; edges: number; freeEdges: number; sharedEdges: number; pieces: number; unusedNodes: number; euler: number;
}

export interface PlacedElement { element: number; quality: number | null; centre: [number, number, number] }

/** Of one type of elements; what is no number is null. */
export interface Quality {
  type: ElementName; least: number | null; mean: number | null; most: number | null;
  histogram: number[]; worst: PlacedElement[]; inverted: number; reversed: boolean;
}

interface Shapes {
  type: ElementName; min: number | null; mean: number | null; max: number | null; inverted: number; reversed: boolean;
}

/** What `gridwork info --json` tells of a file, and what a page shows besides. */
export interface Report {
  format: string;
  encoding: 'text' | 'binary';
  bytes: number;
  dim: number;
  nodes: number;
  elements: Partial<Record<ElementName, number>>;
  elements_removed: number;
  elements_left_out?: number;
  includes_left_out?: number;
  /** Least and greatest coordinates. */
  box?: [[number, number, number], [number, number, number]];
  /** Whether all nodes of elements are there; else there is neither topology nor quality. */
  valid: boolean;
  topology?: { dim: number; sides: number; open: number; non_manifold: number; pieces: number; unused_nodes: number };
  quality?: Shapes[];
  used_nodes: number;
  measured_elements: number;
  shapes: (Shapes & { elements: number; histogram: number[]; worst: PlacedElement[] })[];
}

export type ArrayName =
  | 'coords' | 'triangles' | 'quads' | 'freeEdges' | 'sharedEdges' | 'positions' | 'surface' | 'qualities' | 'pieces'
  | 'outlines'
  | ElementName;

/** A mesh in the memory of the module. */
export interface Mesh {
  /** Gives its memory back. A mesh that nobody freed is freed some time after it was forgotten. */
  free(): void;
  [Symbol.dispose](): void;
  /** Reads a file: a path in node, a File or Blob, or bytes; the format is told by its name unless it is given. */
  read(file: string | Source, options?: { format?: Format; onProgress?(position: number, size: number): void }): Promise<Mesh>;
  /** The file that a format makes of the mesh, in parts, as `new Blob(parts)` takes them. */
  write(format: Format, options?: { text?: boolean }): Bytes[];
  merge(tolerance?: number, mode?: 0 | 1 | 2): number;
  removeDegenerated(): number;
  simplify(): number;
  report(): Report;
  topology(): Topology;
  quality(type?: ElementName): Quality | undefined;
  readonly blocks: { type: ElementName; rows: number; elements: number }[];
  /** Computes what a viewer draws: the arrays positions, surface, qualities, pieces and outlines. */
  draw(): void;
  /** No copy: valid until the next call of any function of the module, which may move its memory. */
  view(name: 'coords'): Float64Array;
  view(name: 'positions' | 'qualities'): Float32Array;
  view(name: 'outlines'): Uint8Array;
  view(name: ArrayName): Uint32Array;
  /** An array of its own, which can be transferred. */
  copy(name: 'coords'): ReturnType<Float64Array['slice']>;
  copy(name: 'positions' | 'qualities'): ReturnType<Float32Array['slice']>;
  copy(name: 'outlines'): Bytes;
  copy(name: ArrayName): ReturnType<Uint32Array['slice']>;
}

/** Nodes of a set that are near to a point, to a node or in a box. */
export interface NodeDetector {
  readonly size: number;
  insert(ids: Uint32Array): number;
  findClosest(pointOrNode: [number, number] | [number, number, number] | number): number;
  findInBox(lower: number[], upper: number[]): Uint32Array;
  free(): void;
  [Symbol.dispose](): void;
}

export interface Gridwork extends Functions {
  mesh(): Mesh;
  matrix<Entries extends Float64Array | Uint32Array>(rows: number, data: Entries): Matrix<Entries>;
  nodeDetector(coords: Matrix<Float64Array> | Float64Array, ids?: Uint32Array): NodeDetector;
  /** Bytes that the module's memory has grown to. */
  readonly memory: number;
}

/** Loads the module from beside this file, or from what is given. */
export function load(source?: URL | string | Response | ArrayBuffer | Uint8Array | WebAssembly.Module): Promise<Gridwork>;
