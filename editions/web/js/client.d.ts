import type { Bytes, Format, Report } from './gridwork.js';

export interface Shown {
  /** As `Mesh.report()` gives it. */
  report: Report;
  times: { read?: number; measured: number };
  memory: number;
  /**
   * What a viewer draws: three numbers a node, from the middle of the box on; three nodes, a quality, a piece and an outline
   * a triangle; two nodes an edge. Bit k of an outline: the side opposite to corner k is one of the element.
   */
  arrays: {
    positions: Float32Array; surface: Uint32Array; qualities: Float32Array; pieces: Uint32Array;
    outlines: Uint8Array; freeEdges: Uint32Array; sharedEdges: Uint32Array;
  };
  chains: { free: Chains; shared: Chains };
  /** Of the ball round the middle that holds all nodes. */
  radius: number;
}

/** Edges that hang together, as those round a hole: how many chains, and the 20 longest of them. */
export interface Chains { count: number; longest: { edges: number; middle: [number, number, number] }[] }

/** A mesh in a worker. */
export class Client {
  static start(module?: URL | string | ArrayBuffer | WebAssembly.Module, worker?: Worker): Promise<Client>;
  open(file: File | Blob | Uint8Array, options?: { format?: Format; onProgress?(position: number, size: number): void }): Promise<Shown>;
  clean(tolerance?: number): Promise<Shown & { merged: number; removedElements: number; removedNodes: number }>;
  write(format: Format, options?: { text?: boolean }): Promise<Bytes[]>;
  /** Stops whatever goes on; start another client then. */
  cancel(): void;
}
