"""Files that other software writes, to be read by the library and compared point by point and node by node."""
import json
import shutil
import subprocess
from collections import Counter

import meshio
import numpy

try:
    import vtk
except ImportError:
    vtk = None

# By VTK's type: the library's type, and the local node that VTK lists as number k.
VTK_CELLS = {3: (3, range(2)), 5: (6, range(3)), 8: (7, (0, 1, 3, 2)), 9: (7, range(4)), 10: (12, (0, 1, 3, 2)),
             11: (20, (0, 1, 3, 2, 4, 5, 7, 6)), 12: (20, range(8)), 13: (17, range(6)), 14: (14, range(5)),
             21: (4, range(3)), 22: (8, (0, 1, 2, 5, 3, 4)), 23: (9, range(8)),
             24: (13, (0, 1, 3, 2, 6, 8, 7, 5, 4, 9)), 25: (21, range(20)),
             26: (18, (0, 1, 2, 3, 4, 5, 11, 9, 10, 14, 12, 13, 6, 7, 8)), 27: (15, range(13)), 28: (10, range(9)),
             29: (22, range(27)),
             32: (19, (0, 1, 2, 3, 4, 5, 11, 9, 10, 14, 12, 13, 6, 7, 8, 17, 15, 16))}
MESHIO_CELLS = {"line": 3, "triangle": 5, "quad": 9, "tetra": 10, "pyramid": 14, "hexahedron": 12, "wedge": 13,
                "triangle6": 22, "quad8": 23, "tetra10": 24, "hexahedron20": 25}
# By meshio's name: the library's type, and the local node that NASTRAN's card lists as number k. gmsh writes the middle
# node of a line as one that tells a direction.
NASTRAN_CELLS = {"line": (3, range(2)), "line3": (3, range(2)), "triangle": (6, range(3)), "quad": (7, range(4)),
                 "tetra": (12, (0, 2, 1, 3)), "pyramid": (14, range(5)), "wedge": (17, range(6)),
                 "hexahedron": (20, range(8)), "triangle6": (8, (0, 1, 2, 5, 3, 4)),
                 "tetra10": (13, (0, 2, 1, 3, 5, 4, 6, 7, 9, 8))}


def turned(form, nodes):
    """What the library makes of nodes in the order of a format."""
    type_code, order = form
    result = [0] * len(order)
    for local, node in zip(order, nodes):
        result[local] = int(node)
    return (type_code, *result)


def element(vtk_type, nodes):
    """What the library makes of a cell."""
    return turned(VTK_CELLS[vtk_type], nodes)


def difference(program, path, points, elements, precision, left_out=0):
    """What the library reads otherwise, or None."""
    found = json.loads(subprocess.run([program, str(path)], check=True, capture_output=True, timeout=60).stdout)
    if found["result"] != left_out:
        return f"{path.name}: result {found['result']}"
    ours = numpy.array(found["points"])
    if ours.shape != numpy.shape(points) or numpy.abs(ours - points).max() > precision:
        return f"{path.name}: other points"
    cells, wanted = Counter(tuple(e) for e in found["elements"]), Counter(elements)
    if cells != wanted:
        return f"{path.name}: {next(iter(cells - wanted), None)}, not {next(iter(wanted - cells), None)}"
    return None


def grid_of_all_types():
    """Two cells of each type, with nodes of their own."""
    grid, points, elements = vtk.vtkUnstructuredGrid(), vtk.vtkPoints(), []
    points.SetDataTypeToDouble()
    for vtk_type, (_, order) in sorted(VTK_CELLS.items()) * 2:
        nodes = []
        for _ in order:
            k = points.GetNumberOfPoints()
            nodes.append(points.InsertNextPoint(*(3 * numpy.sin([3.0 * k, 3.0 * k + 1, 3.0 * k + 2]))))
        grid.InsertNextCell(vtk_type, len(nodes), nodes)
        elements.append(element(vtk_type, nodes))
    grid.SetPoints(points)
    return grid, elements


def surface_of_all_lists():
    points, lists = vtk.vtkPoints(), [vtk.vtkCellArray() for _ in range(3)]
    for k in range(12):
        points.InsertNextPoint(k, k * k, 0.5 * k)
    for cells, nodes in zip((0, 1, 1, 2), ((0, 1, 2), (3, 4, 5), (6, 7, 8, 9), (8, 9, 10, 11))):
        lists[cells].InsertNextCell(len(nodes), nodes)
    surface = vtk.vtkPolyData()
    surface.SetPoints(points), surface.SetLines(lists[0]), surface.SetPolys(lists[1]), surface.SetStrips(lists[2])
    return surface, [(3, 0, 1), (3, 1, 2), (6, 3, 4, 5), (7, 6, 7, 8, 9), (6, 8, 9, 10), (6, 10, 9, 11)]


def add_data(data_set):
    """What has to be passed over."""
    arrays = (vtk.vtkFloatArray(), "a field"), (vtk.vtkStringArray(), "words"), (vtk.vtkBitArray(), "bits")
    for values, name in arrays:
        values.SetName(name)
        for k in range(9):
            values.InsertNextValue("a b" if name == "words" else k % 2)
        if name == "words":
            data_set.GetPointData().AddArray(values)
        else:
            values.SetComponentName(0, "first")
            data_set.GetFieldData().AddArray(values)


def files_of_vtk(folder):
    for data_set, elements in (grid_of_all_types(), surface_of_all_lists()):
        add_data(data_set)
        points = numpy.array([data_set.GetPoint(i) for i in range(data_set.GetNumberOfPoints())])
        for version in (42, 51):
            for binary in (False, True):
                is_grid = isinstance(data_set, vtk.vtkUnstructuredGrid)
                writer = vtk.vtkUnstructuredGridWriter() if is_grid else vtk.vtkPolyDataWriter()
                path = folder / f"vtk_{'grid' if is_grid else 'poly'}_{version}_{'binary' if binary else 'text'}.vtk"
                writer.SetInputData(data_set)
                writer.SetFileName(str(path))
                writer.SetFileVersion(version)
                (writer.SetFileTypeToBinary if binary else writer.SetFileTypeToASCII)()
                writer.Write()
                yield path, points, elements, 0 if binary else 1e-5


def files_of_meshio(folder):
    for name, vtk_type in MESHIO_CELLS.items():
        size = len(VTK_CELLS[vtk_type][1])
        points = 3 * numpy.sin(numpy.arange(6.0 * size)).reshape(2 * size, 3)
        mesh = meshio.Mesh(points, [(name, numpy.arange(2 * size).reshape(2, size))])
        forms = [("vtk", True), ("vtk", False), ("vtk42", True)] if name != "wedge" else []  # meshio turns these
        forms += [("medit", None)] if vtk_type <= 14 else []
        for form, binary in forms:
            path = folder / f"meshio_{form}_{name}_{binary}.{'mesh' if form == 'medit' else 'vtk'}"
            options = {} if binary is None else {"binary": binary}
            meshio.write(str(path), mesh, file_format=form, **options)
            is_vtk = form != "medit"
            type_code = VTK_CELLS[vtk_type][0]
            elements = [element(vtk_type, c) if is_vtk else (type_code, *map(int, c)) for c in mesh.cells[0].data]
            yield path, points, elements, 1e-9


def decks_of_meshio(folder):
    """Linear elements in all forms of fields that it can write, with places that fit in eight columns."""
    for name, form in NASTRAN_CELLS.items():
        size = len(form[1])
        points = (7 * numpy.arange(6.0 * size) % 11 / 8).reshape(2 * size, 3)
        mesh = meshio.Mesh(points, [(name, numpy.arange(2 * size).reshape(2, size))])
        elements = [turned(form, c) for c in mesh.cells[0].data]
        for fields in ("free", "fixed-small", "fixed-large") if size <= 8 and name[-1].isalpha() else ():
            path = folder / f"meshio_{name}_{fields}.bdf"
            cells = "fixed-small" if fields == "free" else fields
            meshio.write(str(path), mesh, file_format="nastran", point_format=fields, cell_format=cells)
            yield path, points, elements, 0


def run_gmsh(folder, path, *options):
    subprocess.run(["gmsh", "-3", str(folder / "box.geo"), "-save_all", *options, "-o", str(path)], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=60)


def decks_of_gmsh(folder):
    """The box, linear and quadratic, in each form of fields; nodes as in the VTK file of the same mesh."""
    for order in "12":
        run_gmsh(folder, folder / "box.vtk", "-format", "vtk", "-order", order)
        mesh = meshio.read(str(folder / "box.vtk"))
        elements = [turned(NASTRAN_CELLS[b.type], c) for b in mesh.cells if b.type != "vertex" for c in b.data]
        for fields in "012":
            path = folder / f"gmsh_box_{order}_{fields}.bdf"
            run_gmsh(folder, path, "-format", "bdf", "-order", order, "-setnumber", "Mesh.BdfFieldFormat", fields)
            yield path, mesh.points, elements, 1e-7 if fields == "2" else 1e-4


def files_of_gmsh(folder):
    """A box of tetrahedra with its faces and edges, as meshio reads it."""
    (folder / "box.geo").write_text('SetFactory("OpenCASCADE"); Box(1) = {0, 0, 0, 1, 2, 3}; Mesh.MeshSizeMax = 1;\n')
    for suffix, form in ((".mesh", "mesh"), (".vtk", "vtk")):
        path = folder / f"gmsh_box{suffix}"
        run_gmsh(folder, path, "-format", form)
        mesh, elements, left_out = meshio.read(str(path)), [], 0
        for block in mesh.cells:
            vtk_type = MESHIO_CELLS.get(block.type)
            is_vtk = suffix == ".vtk"
            left_out += len(block.data) if is_vtk and not vtk_type else 0
            for nodes in block.data if vtk_type else []:
                elements.append(element(vtk_type, nodes) if is_vtk else (VTK_CELLS[vtk_type][0], *map(int, nodes)))
        yield path, mesh.points, elements, 1e-9, left_out
    yield from decks_of_gmsh(folder)


def differences(program, folder):
    """The number of files, and what the library reads of them otherwise than it was written."""
    files = [*files_of_meshio(folder), *decks_of_meshio(folder)]
    files += list(files_of_vtk(folder)) if vtk else []
    files += list(files_of_gmsh(folder)) if shutil.which("gmsh") else []
    return len(files), [d for d in (difference(program, *file) for file in files) if d]
