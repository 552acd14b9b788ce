#!/usr/bin/env python3
"""Reads what the library writes with other software, and with the library what that writes: compares nodes, cells and
the order of the nodes of each cell.

usage: clients.py WRITE_SAMPLES READ_MESH [FOLDER]

Uses meshio (without it, nothing is tested: exit code 77), and VTK and gmsh where they are installed.
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile
from collections import Counter

try:
    import meshio
    import numpy
except ImportError:
    print("python3-meshio is not installed: skipped")
    sys.exit(77)

sys.dont_write_bytecode = True  # nothing is left in the source folder
import client_files

try:
    import vtk
except ImportError:
    vtk = None

EDGE, TRIA, QUAD, TETRA, PYRAMID, WEDGE, HEXA = "line", "triangle", "quad", "tetra", "pyramid", "wedge", "hexahedron"
PLAIN = {3: EDGE, 6: TRIA, 7: QUAD, 8: TRIA, 9: QUAD, 12: TETRA, 13: TETRA, 14: PYRAMID, 17: WEDGE, 18: WEDGE,
         20: HEXA, 21: HEXA}
VERTICES = {EDGE: 2, TRIA: 3, QUAD: 4, TETRA: 4, PYRAMID: 5, WEDGE: 6, HEXA: 8}
MIXED = {5: {3: TRIA, 4: QUAD}, 11: {4: TETRA, 5: PYRAMID, 6: WEDGE, 8: HEXA}}

# The nodes of the elements of each sample, which take turns.
SIZES = {3: [2], 5: [3, 4], 6: [3], 7: [4], 8: [6], 9: [8], 11: [8, 4, 6, 5], 12: [4], 13: [10], 14: [5], 17: [6],
         18: [15], 20: [8], 21: [20]}
ELEMENTS = 12
QUADRATIC = {8, 9, 13, 18, 21}
ALL = set(range(23))

# Element types that a client does not read, or that a format does not hold.
UNREADABLE = {
    ("meshio", ".vtk"): QUADRATIC,  # refuses cells of type poly-vertex
    ("gmsh", ".vtk"): QUADRATIC,
    ("meshio", ".nas"): {18},  # knows no CPENTA of 15 nodes
    ("gmsh", ".nas"): set() if vtk else {18},
    ("vtk", ".obj"): ALL,  # refuses a corner that ends with a slash
}
UNWRITTEN = {".vtk": {18}, ".mesh": {18}, ".geo": {5, 11, 14, 18}, ".obj": ALL - {6, 7}, "-vn.obj": ALL - {6, 7}}


class Sample:
    """What write_samples.cpp makes of a type: elements with nodes of their own."""

    def __init__(self, folder, type_code):
        self.stem, self.type, self.cells, first = folder / f"type_{type_code}", type_code, [], 0
        for size in SIZES[type_code] * (ELEMENTS // len(SIZES[type_code])):
            shape = MIXED[type_code][size] if type_code in MIXED else PLAIN[type_code]
            self.cells.append((shape, list(range(first, first + size))))
            first += size
        self.coords = 3 * numpy.sin(numpy.arange(3.0 * first)).reshape(first, 3)

    def file(self, suffix):
        return self.stem.with_name(self.stem.name + suffix)

    def node_numbers(self, points, precision):
        """The sample's node at each point."""
        distances = numpy.abs(points[:, None, :] - self.coords[None, :, :]).max(axis=2)
        if distances.min(axis=1).max() > 4 * precision:
            raise ValueError("a node is somewhere else")
        return distances.argmin(axis=1)


# What a file holds of an element, as local nodes in the order of VTK, where that is not all nodes as they are.
VERTICES_ONLY = {".vtk", ".mesh", ".geo"}
TETRA_TURNED = {(TETRA, 4): (0, 2, 1, 3)}
ORDERS = {
    ".vtk": {(TETRA, 4): (0, 1, 3, 2)},
    ".geo": TETRA_TURNED,
    ".mesh": {(PYRAMID, 5): (0, 1, 2, 3, 4, 4, 4, 4), (WEDGE, 6): (0, 1, 2, 2, 3, 4, 5, 5)},
    ".nas": TETRA_TURNED | {(TRIA, 6): (0, 1, 2, 5, 3, 4), (TETRA, 10): (0, 2, 1, 3, 5, 4, 6, 7, 9, 8),
                            (WEDGE, 15): (0, 1, 2, 3, 4, 5, 11, 9, 10, 14, 12, 13, 6, 7, 8)},
}


TURNED_WEDGE = (0, 2, 1, 3, 5, 4)
TURNS_WEDGES = {("meshio", ".vtk"), ("vtk", ".geo"), ("gmsh", ".nas"), ("gmsh", ".vtk")}  # to its own orientation


def expected(cells, suffix, turns_wedges):
    """Shapes with their nodes in order. In VTK, the other nodes of quadratic elements are a cell of points."""
    result = Counter()
    for shape, nodes in cells:
        used = nodes[: VERTICES[shape]] if suffix in VERTICES_ONLY else nodes
        order = ORDERS.get(suffix, {}).get((shape, len(used)), range(len(used)))
        if turns_wedges and (shape, len(used)) == (WEDGE, 6):
            order = TURNED_WEDGE
        result[HEXA if len(order) == 8 and shape in (PYRAMID, WEDGE) else shape, tuple(used[k] for k in order)] += 1
        if suffix == ".vtk" and len(used) < len(nodes):
            result["points", tuple(nodes[len(used):])] += 1
    return result


# --- Clients: each returns the coordinates and the cells that it finds in a file -------------------------------------


def shape_of(name):
    if name.startswith("VTK_POLY") or name == "vertex":
        return "points"
    return name.rstrip("0123456789") if name not in VERTICES else name


def by_meshio(path):
    mesh = meshio.read(path)
    return mesh.points, [(shape_of(block.type), list(map(int, cell))) for block in mesh.cells for cell in block.data]


def by_gmsh(path):
    with tempfile.TemporaryDirectory() as folder:
        converted = pathlib.Path(folder) / "out.vtk"
        subprocess.run(["gmsh", "-0", str(path), "-save_all", "-format", "vtk", "-o", str(converted)], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=60)
        return by_vtk(converted) if vtk else by_meshio(converted)


def vtk_grid(grid):
    shapes = {vtk.VTK_LINE: EDGE, vtk.VTK_TRIANGLE: TRIA, vtk.VTK_QUAD: QUAD, vtk.VTK_TETRA: TETRA,
              vtk.VTK_PYRAMID: PYRAMID, vtk.VTK_WEDGE: WEDGE, vtk.VTK_HEXAHEDRON: HEXA, vtk.VTK_POLY_VERTEX: "points",
              vtk.VTK_QUADRATIC_TRIANGLE: TRIA, vtk.VTK_QUADRATIC_QUAD: QUAD, vtk.VTK_QUADRATIC_TETRA: TETRA,
              vtk.VTK_QUADRATIC_HEXAHEDRON: HEXA, vtk.VTK_QUADRATIC_WEDGE: WEDGE}
    points = numpy.array([grid.GetPoint(i) for i in range(grid.GetNumberOfPoints())])
    cells = []
    for i in range(grid.GetNumberOfCells()):
        cell = grid.GetCell(i)
        cells.append((shapes[cell.GetCellType()], [cell.GetPointId(k) for k in range(cell.GetNumberOfPoints())]))
    return points, cells


def by_vtk(path):
    if path.suffix == ".geo":
        case = path.with_suffix(".case")
        case.write_text(f"FORMAT\ntype: ensight\nGEOMETRY\nmodel: {path.name}\n")
        reader = vtk.vtkGenericEnSightReader()
        reader.SetCaseFileName(str(case))
        reader.Update()
        return vtk_grid(reader.GetOutput().GetBlock(0))
    reader = vtk.vtkOBJReader() if path.suffix == ".obj" else vtk.vtkUnstructuredGridReader()
    reader.SetFileName(str(path))
    reader.Update()
    return vtk_grid(reader.GetOutput())


# --- The comparison ------------------------------------------------------------------------------------------------


def check(client, reader, sample, suffix):
    try:
        points, cells = reader(sample.file(suffix))
        numbers = sample.node_numbers(points, 1e-5 if suffix == ".geo" else 1e-6)
        # gmsh leaves out nodes that no cell uses.
        if client != "gmsh" and sorted(numbers) != list(range(len(sample.coords))):
            return f"{client} {sample.stem.name}{suffix}: other nodes"
        found = Counter((shape, tuple(int(n) for n in numbers[nodes])) for shape, nodes in cells)
        wanted = expected(sample.cells, suffix, (client, suffix) in TURNS_WEDGES)
        if found != wanted:
            other, right = (next(iter(some), None) for some in (found - wanted, wanted - found))
            return f"{client} {sample.stem.name}{suffix}: {other}, not {right}"
    except (Exception, SystemExit) as problem:  # a client that gives up
        return f"{client} {sample.stem.name}{suffix}: {type(problem).__name__}: {problem}"
    return None


def clients():
    yield "meshio", by_meshio, {".vtk", ".mesh", ".nas", ".obj"}
    if vtk:
        yield "vtk", by_vtk, {".vtk", ".geo", ".obj", "-vn.obj"}
    else:
        print("python3-vtk9 is not installed: EnSight is not read")
    if shutil.which("gmsh"):
        yield "gmsh", by_gmsh, {".mesh", ".nas", ".vtk"}
    else:
        print("gmsh is not installed")


def main():
    with tempfile.TemporaryDirectory() as temporary:
        folder = pathlib.Path(sys.argv[3] if len(sys.argv) > 3 else temporary)
        folder.mkdir(exist_ok=True)
        subprocess.run([sys.argv[1], str(folder)], check=True)
        problems, count = [], 0
        for name, reader, suffixes in clients():
            for sample in (Sample(folder, type_code) for type_code in SIZES):
                for suffix in sorted(suffixes):
                    skipped = UNWRITTEN.get(suffix, set()) | UNREADABLE.get((name, suffix), set())
                    if sample.type not in skipped:
                        count += 1
                        problems.append(check(name, reader, sample, suffix))
        read, differences = client_files.differences(sys.argv[2], folder)
        count, problems = count + read, [p for p in problems if p] + differences
        print(f"{count} files read, {len(problems)} differ", *problems, sep="\n")
        return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
