// Uses of the package that its types allow, and one that they refuse.
import { load, GridworkError, Matrix, type Report } from 'qel-gridwork';
import { Client } from 'qel-gridwork/client';

const gw = await load();
using mesh = gw.mesh();
await mesh.read('part.stl', { format: 'stl', onProgress: (position, size) => postMessage(position / size) });
const report: Report = mesh.report();
const found: (number | undefined)[] = [report.topology?.open, mesh.topology().freeEdges, report.elements.TRIA3];
const least: number | null | undefined = mesh.quality('TRIA3')?.least;
postMessage([mesh.merge(1e-6), found, least], { transfer: [mesh.copy('triangles').buffer] });
const file = new Blob(mesh.write('vtk'));
const { neighbors } = gw.getNeighbors(mesh.view('triangles'), 'TRIA3', false);
const matrix: Matrix<Uint32Array> = neighbors;
const parts = gw.stlOutput(mesh.view('coords'), matrix, false);
const nodes: Uint32Array = gw.nodeDetector(gw.stlInput(parts[0]).coords).findInBox([0, 0, 0], [1, 1, 1]);
const client = await Client.start();
const { radius, chains } = await client.open(file, { format: 'vtk' }).catch((error: GridworkError) => Promise.reject(error.cause));
postMessage([nodes, radius, chains.free.longest[0]?.middle[2], new Blob(await client.write('stl'))]);
// @ts-expect-error There is no such type of elements.
mesh.quality('TRIA4');
