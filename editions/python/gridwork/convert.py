"""Meshes of other packages, which are imported when they are needed: meshio, VTK, pyvista, scipy.

Coordinates are (n, 3) there; two columns get a third one of zeros. `blocks` are (type, connectivity) pairs, as in
`gridwork.Mesh`.
"""

from __future__ import annotations

from collections.abc import Iterable
from typing import Any

import numpy as np

from ._arrays import NONE, ArrayLike, Floats, Indices, index_list, points
from .elements import ElementType, TypeLike, element_type
from .io import Mesh
from .topology import elements

__all__ = ["from_meshio", "from_pyvista", "from_vtk", "to_csr", "to_meshio", "to_pyvista", "to_vtk"]

# VTK's number of a cell type, meshio's name, and the place in a cell of the nodes of ours where the orders differ: node k
# of a cell is node order[k] of the element. meshio has VTK's order. The orders are those of vtk_input() and vtk_output(),
# so that a mesh is the same whichever way it comes. Wedges stand as they are; VTK takes their volumes for negative.
_CELLS: dict[ElementType, tuple[int, str, list[int] | None]] = {
    ElementType.NODE: (1, "vertex", None),
    ElementType.EDGE2: (3, "line", None),
    ElementType.EDGE3: (21, "line3", None),
    ElementType.TRIA3: (5, "triangle", None),
    ElementType.QUAD4: (9, "quad", None),
    ElementType.TRIA6: (22, "triangle6", [0, 1, 2, 5, 3, 4]),
    ElementType.QUAD8: (23, "quad8", None),
    ElementType.QUAD9: (28, "quad9", None),
    ElementType.TETRA4: (10, "tetra", [0, 1, 3, 2]),
    ElementType.TETRA10: (24, "tetra10", [0, 1, 3, 2, 6, 8, 7, 5, 4, 9]),
    ElementType.PYRAMID5: (14, "pyramid", None),
    ElementType.PYRAMID13: (27, "pyramid13", None),
    ElementType.WEDGE6: (13, "wedge", None),
    ElementType.WEDGE15: (26, "wedge15", [*range(6), 11, 9, 10, 14, 12, 13, 6, 7, 8]),
    ElementType.WEDGE18: (32, "wedge18", [*range(6), 11, 9, 10, 14, 12, 13, 6, 7, 8, 17, 15, 16]),
    ElementType.HEXA8: (12, "hexahedron", None),
    ElementType.HEXA20: (25, "hexahedron20", None),
    ElementType.HEXA27: (29, "hexahedron27", None),
}

_MEMBERS = {
    ElementType.FACE_MIX: (ElementType.TRIA3, ElementType.QUAD4),
    ElementType.SOLID_MIX: (ElementType.TETRA4, ElementType.PYRAMID5, ElementType.WEDGE6, ElementType.HEXA8),
}

Blocks = Iterable["tuple[TypeLike, ArrayLike]"]


def _in_space(coords: ArrayLike) -> Floats:
    array = points(coords)
    return array if array.shape[1] == 3 else np.pad(array, ((0, 0), (0, 1)))


def _members(kind: ElementType, connectivity: Indices) -> list[tuple[ElementType, Indices]]:
    """The plain types of a mixed one, each with its elements."""
    if kind not in _MEMBERS:
        return [(kind, connectivity)]
    counts = (connectivity != NONE).sum(axis=1)
    members = [(member, connectivity[counts == member.nbr_nodes, : member.nbr_nodes]) for member in _MEMBERS[kind]]
    return [(member, part) for member, part in members if len(part)]


def _plain(blocks: Blocks) -> list[tuple[ElementType, Indices]]:
    plain = []
    for given, connectivity in blocks:
        kind = element_type(given)
        for member, part in _members(kind, elements(connectivity, kind)):
            if member not in _CELLS:
                raise ValueError(f"blocks: {member.name} has no counterpart")
            plain.append((member, part))
    return plain


def _to_cells(kind: ElementType, connectivity: Indices) -> Indices:
    order = _CELLS[kind][2]
    return connectivity if order is None else connectivity[:, order]


def _from_cells(kind: ElementType, cells: Any) -> Indices:
    order = _CELLS[kind][2]
    array = np.asarray(cells)
    return np.ascontiguousarray(array if order is None else array[:, np.argsort(order)], dtype=np.uint32)


def to_meshio(coords: ArrayLike, blocks: Blocks) -> Any:
    """A `meshio.Mesh`; mixed types become plain ones."""
    import meshio

    return meshio.Mesh(points(coords), [(_CELLS[kind][1], _to_cells(kind, part)) for kind, part in _plain(blocks)])


def from_meshio(mesh: Any) -> Mesh:
    """The mesh of a `meshio.Mesh`; cells that have no element type are refused."""
    types = {name: kind for kind, (_, name, _) in _CELLS.items()}
    blocks = []
    for cells in mesh.cells:
        if cells.type not in types:
            raise ValueError(f"mesh: cells of type {cells.type} have no counterpart")
        blocks.append((types[cells.type], _from_cells(types[cells.type], cells.data)))
    return Mesh(points(mesh.points), blocks)


def _offsets(parts: list[tuple[ElementType, Indices]]) -> Indices:
    sizes = np.concatenate([np.full(len(part), part.shape[1]) for _, part in parts] or [np.empty(0, np.int64)])
    offsets: Indices = np.concatenate([[0], np.cumsum(sizes)]).astype(np.uint32)
    return offsets


def _joined(parts: list[tuple[ElementType, Indices]]) -> Indices:
    """The nodes of all cells in one list."""
    lists: list[Indices] = [np.ravel(_to_cells(kind, part)) for kind, part in parts]
    nodes: Indices = np.concatenate([np.empty(0, np.uint32), *lists])
    return nodes


def to_vtk(coords: ArrayLike, blocks: Blocks) -> Any:
    """A `vtkUnstructuredGrid`. It looks at (n, 3) coordinates as they are; cells are copied."""
    from vtkmodules.util.numpy_support import numpy_to_vtk
    from vtkmodules.vtkCommonCore import vtkPoints
    from vtkmodules.vtkCommonDataModel import vtkCellArray, vtkUnstructuredGrid

    parts = _plain(blocks)
    nodes = vtkPoints()
    nodes.SetData(numpy_to_vtk(np.ascontiguousarray(_in_space(coords))))
    cells = vtkCellArray()
    # A cell array would share the memory of what it is given, but not its owner: it gets copies.
    cells.SetData(*(numpy_to_vtk(part.view(np.int32), deep=True) for part in (_offsets(parts), _joined(parts))))
    kinds = [np.full(len(part), _CELLS[kind][0], np.uint8) for kind, part in parts]
    grid = vtkUnstructuredGrid()
    grid.SetPoints(nodes)
    grid.SetCells(numpy_to_vtk(np.concatenate(kinds or [np.empty(0, np.uint8)])), cells)
    return grid


def _grid_parts(grid: Any) -> tuple[Any, Any, Any]:
    """Cell types, offsets and nodes of an unstructured grid, or of the polygons of polydata."""
    from vtkmodules.util.numpy_support import vtk_to_numpy

    cells = grid.GetPolys() if hasattr(grid, "GetPolys") else grid.GetCells()
    if cells.GetNumberOfCells() == 0:
        return np.empty(0, int), np.zeros(1, int), np.empty(0, int)
    offsets = vtk_to_numpy(cells.GetOffsetsArray())
    nodes = vtk_to_numpy(cells.GetConnectivityArray())
    if hasattr(grid, "GetPolys"):
        sizes = np.diff(offsets)
        return np.where(sizes == 3, 5, np.where(sizes == 4, 9, 7)), offsets, nodes
    return vtk_to_numpy(grid.GetCellTypesArray()), offsets, nodes


def from_vtk(grid: Any) -> Mesh:
    """The mesh of a `vtkUnstructuredGrid`, or the polygons of `vtkPolyData`, one block a type, in the order of types."""
    from vtkmodules.util.numpy_support import vtk_to_numpy

    kinds, offsets, nodes = _grid_parts(grid)
    types = {number: kind for kind, (number, _, _) in _CELLS.items()}
    unknown = set(np.unique(kinds).tolist()) - set(types)
    if unknown:
        raise ValueError(f"grid: cells of VTK's type {min(unknown)} have no counterpart")
    blocks = []
    for kind in sorted(types[number] for number in np.unique(kinds).tolist()):
        first = offsets[:-1][kinds == _CELLS[kind][0]]
        blocks.append((kind, _from_cells(kind, nodes[first[:, None] + np.arange(kind.nbr_nodes)])))
    coords = grid.GetPoints()
    return Mesh(np.empty((0, 3)) if coords is None else points(vtk_to_numpy(coords.GetData())), blocks)


def to_pyvista(coords: ArrayLike, blocks: Blocks) -> Any:
    """A `pyvista.UnstructuredGrid`, as `to_vtk` makes it."""
    import pyvista

    return pyvista.wrap(to_vtk(coords, blocks))


def from_pyvista(mesh: Any) -> Mesh:
    """The mesh of a `pyvista.UnstructuredGrid` or `pyvista.PolyData`: `from_vtk`."""
    return from_vtk(mesh)


def to_csr(offsets: ArrayLike, members: ArrayLike, columns: int | None = None) -> Any:
    """Compressed rows, as `get_node_graph` and `get_connected_elements` return them, as a `scipy.sparse.csr_matrix`.

    columns: of the matrix; by default as many as rows, as for the graph of the nodes.

    >>> to_csr([0, 1, 3, 4], [1, 0, 2, 1]).toarray().tolist()
    [[0, 1, 0], [1, 0, 1], [0, 1, 0]]
    """
    from scipy.sparse import csr_matrix

    ends, where = index_list(offsets, "offsets"), index_list(members, "members")
    rows = len(ends) - 1
    ones = np.ones(len(where), np.uint8)
    narrow = np.int64 if len(where) >= 2**31 else np.int32
    return csr_matrix((ones, where.astype(narrow), ends.astype(narrow)), shape=(rows, rows if columns is None else columns))
