import type { Format } from './gridwork.js';

export interface Shown {
  /** As `Mesh.report()` gives it. */
  report: Record<string, unknown>;
  times: { read?: number; measured: number };
  memory: number;
  /** What a viewer draws: three numbers a node; three nodes, a quality and a piece a triangle; two nodes an edge. */
  arrays: {
    positions: Float32Array; surface: Uint32Array; qualities: Float32Array; pieces: Uint32Array;
    freeEdges: Uint32Array; sharedEdges: Uint32Array;
  };
}

/** A mesh in a worker. */
export class Client {
  static start(module?: URL | string | ArrayBuffer | WebAssembly.Module, worker?: Worker): Promise<Client>;
  open(file: File | Blob | Uint8Array, options?: { format?: Format; onProgress?(position: number, size: number): void }): Promise<Shown>;
  clean(tolerance?: number): Promise<Shown & { merged: number; removedElements: number; removedNodes: number }>;
  write(format: Format, options?: { text?: boolean }): Promise<Uint8Array[]>;
  /** Stops whatever goes on; start another client then. */
  cancel(): void;
}
