"""Mesh files: STL, OBJ, VTK, MEDIT, NASTRAN and FEMAP, read and written; EnSight, written.

A file that cannot be opened, or not be written in full, is an `OSError` as in the rest of Python; contents that cannot
be read are a `FormatError`.
"""

from __future__ import annotations

import os
from collections.abc import Callable
from typing import Any, List, NamedTuple, Tuple, Union

import numpy as np

from . import _core
from ._arrays import NONE, ArrayLike, Floats, Indices, OneOrMany, floats, index_list, is_many, points, whole
from .elements import ElementType, TypeLike, element_type
from .topology import OneOrManyTypes, elements, typed_blocks

__all__ = [
    "DeckMesh",
    "MeditMesh",
    "Mesh",
    "ObjMesh",
    "VtkMesh",
    "ensight_output",
    "femap_input",
    "femap_output",
    "medit_input",
    "medit_output",
    "medit_solution",
    "medit_solution_input",
    "nastran_input",
    "nastran_output",
    "read",
    "stl_input",
    "stl_output",
    "vtk_convert",
    "vtk_input",
    "vtk_output",
    "wavefront_obj_input",
    "wavefront_obj_output",
    "write",
]

Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
Block = Tuple[ElementType, Indices]


class Mesh(NamedTuple):
    """Coordinates (n, d), and the connectivity (e, k) of each element type as (type, connectivity)."""

    coords: Floats
    blocks: List[Block]


class ObjMesh(NamedTuple):
    """What an OBJ file holds: (n, 3), (m, 3), (t, 1 to 3); triangles (e, 3) and quadrangles (e, 4)."""

    coords: Floats
    normals: Floats
    uvs: Floats
    triangles: Indices
    quads: Indices


class VtkMesh(NamedTuple):
    """A mesh with the number of the cell of each element, over all blocks; `skipped` cells had no element."""

    coords: Floats
    blocks: List[Block]
    cell_ids: Indices
    skipped: int


class MeditMesh(NamedTuple):
    """A mesh with the reference of each element, over all blocks, and each node; `skipped` could not be read."""

    coords: Floats
    blocks: List[Block]
    references: Indices
    node_references: Indices
    skipped: int


class DeckMesh(NamedTuple):
    """A mesh with properties and IDs of the elements, over all blocks, and IDs of the nodes.

    `skipped` counts NASTRAN's INCLUDE statements that are not followed, FEMAP's elements that are left out.
    """

    coords: Floats
    blocks: List[Block]
    property_ids: Indices
    element_ids: Indices
    node_ids: Indices
    skipped: int


AnyMesh = Union[Mesh, VtkMesh, MeditMesh, DeckMesh]


def _path(file: Path) -> bytes:
    path = os.fsencode(file)
    if b"\0" in path:
        raise ValueError("file: embedded null byte")
    return path


def _named(blocks: list[tuple[int, Indices]]) -> list[Block]:
    return [(ElementType(kind), connectivity) for kind, connectivity in blocks]


def stl_input(file: Path) -> tuple[Floats, Indices]:
    """Reads a text or binary STL file: coordinates (n, 3) and triangles (e, 3) that share their nodes.

    Coincident and very near nodes are merged, triangles that hold a node twice and unused nodes removed.
    """
    return _core.stl_input(_path(file))


def stl_output(file: Path, coords: ArrayLike, triangles: ArrayLike, *, ascii: bool = False) -> None:
    """Writes triangles (e, 3) on (n, 2) or (n, 3) coordinates as a binary or text STL file."""
    _core.stl_output(_path(file), points(coords), elements(triangles, ElementType.TRIA3, "triangles"), bool(ascii))


def wavefront_obj_input(file: Path) -> ObjMesh:
    """Reads the triangles and quadrangles of an OBJ file. Their nodes are not compared with the vertices: `check_ids`."""
    return ObjMesh(*_core.wavefront_obj_input(_path(file)))


def wavefront_obj_output(
    file: Path,
    coords: ArrayLike,
    connectivity: OneOrMany,
    type: OneOrManyTypes,
    normals: ArrayLike | None = None,
    uvs: ArrayLike | None = None,
) -> None:
    """Writes triangles and quadrangles, also mixed ones, as an OBJ file: first all triangles, then all quadrangles.

    coords: (n, 2) or (n, 3); connectivity: (e, k) of a type, or lists of both; normals: (n, 3); uvs: (n, 2).
    """
    faces: dict[int, list[Indices]] = {3: [np.empty((0, 3), np.uint32)], 4: [np.empty((0, 4), np.uint32)]}
    for array, kind in zip(*typed_blocks(connectivity, type)):
        _require("wavefront_obj_output", kind, _HELD[".obj"])
        for part in _faces(array):
            faces[part.shape[1]].append(part)
    triangles, quads = (parts[1] if len(parts) == 2 else np.concatenate(parts) for parts in faces.values())
    empty = np.empty((0, 3))
    _core.wavefront_obj_output(
        _path(file),
        points(coords),
        empty if normals is None else points(normals, "normals", [3]),
        empty[:, :2].copy() if uvs is None else points(uvs, "uvs", [2]),
        triangles,
        quads,
    )


def _faces(array: Indices) -> list[Indices]:
    """Triangles and quadrangles of faces of one kind or mixed."""
    if array.size == 0:
        return []
    if array.shape[1] != 4 or not (array[:, 3] == NONE).any():
        return [array]
    is_triangle = array[:, 3] == NONE
    return [np.ascontiguousarray(array[is_triangle, :3]), array[~is_triangle]]


def vtk_convert(connectivity: OneOrMany, type: OneOrManyTypes) -> tuple[int, Indices, Indices]:
    """Cells of VTK: their number, the list of node counts and nodes, and the type of each.

    connectivity: (e, k) of a plain type, or lists of both.

    >>> vtk_convert([[0, 1, 2]], "TRIA3")
    (1, array([3, 0, 1, 2], dtype=uint32), array([5], dtype=uint32))
    """
    return _core.vtk_convert(*typed_blocks(connectivity, type))


def vtk_input(file: Path) -> VtkMesh:
    """Reads a legacy VTK file, text or binary, of an unstructured grid or of polydata."""
    coords, blocks, cell_ids, skipped = _core.vtk_input(_path(file))
    return VtkMesh(coords, _named(blocks), cell_ids, skipped)


def vtk_output(file: Path, coords: ArrayLike, connectivity: OneOrMany, type: OneOrManyTypes) -> None:
    """Writes a legacy VTK file of text. Numbers below 5e-7 become 0: its numbers have six decimals.

    coords: (n, 2) or (n, 3); connectivity: (e, k) of a type, or lists of both.
    """
    _core.vtk_output(_path(file), points(coords), *typed_blocks(connectivity, type))


def medit_input(file: Path) -> MeditMesh:
    """Reads a MEDIT mesh of text."""
    coords, blocks, references, node_references, skipped = _core.medit_input(_path(file))
    return MeditMesh(coords, _named(blocks), references, node_references, skipped)


def medit_output(
    file: Path,
    coords: ArrayLike,
    connectivity: OneOrMany,
    type: OneOrManyTypes,
    references: ArrayLike | None = None,
) -> None:
    """Writes a MEDIT mesh of text; quadratic elements lose their middle nodes.

    coords: (n, 1 to 3); connectivity: (e, k) of a type, or lists of both. references: (e,) of one array; those of
    reference `NONE` are left out.
    """
    arrays, types = typed_blocks(connectivity, type)
    rows = points(coords, columns=(1, 2, 3))
    if references is None:
        _core.medit_output(_path(file), rows, arrays, types)
    elif len(arrays) == 1:
        _core.medit_output(_path(file), rows, arrays[0], types[0], index_list(references, "references"))
    else:
        raise ValueError("references: only with one connectivity")


def medit_solution_input(file: Path) -> tuple[int, Floats, list[int]]:
    """Reads the fields at the nodes of a MEDIT solution: dimension, values (n, all fields side by side), kinds.

    Kinds: 1 a scalar, 2 a vector (dim columns), 3 a symmetric tensor, 4 a matrix.
    """
    return _core.medit_solution_input(_path(file))


def medit_solution(file: Path, dim: int, values: ArrayLike) -> None:
    """Writes a field at the nodes as a MEDIT solution.

    values: (n,) scalars; (n, dim) vectors; metric tensors (n, 3) of dim = 2 and (n, 6) of dim = 3.
    """
    array, dim = floats(values, "values"), whole(dim, "dim")
    if array.ndim == 1:
        _core.medit_scalar(_path(file), dim, array)
    elif array.ndim == 2 and array.shape[1] == dim * (dim + 1) // 2 and dim > 1:
        _core.medit_tensor(_path(file), array)
    else:
        _core.medit_vector(_path(file), dim, points(array, "values", [dim]))


def _deck(mesh: tuple[Floats, list[tuple[int, Indices]], Indices, Indices, Indices, int]) -> DeckMesh:
    return DeckMesh(mesh[0], _named(mesh[1]), *mesh[2:])


def nastran_input(file: Path) -> DeckMesh:
    """Reads the nodes and elements of NASTRAN bulk data."""
    return _deck(_core.nastran_input(_path(file)))


def femap_input(file: Path) -> DeckMesh:
    """Reads the nodes and elements of a FEMAP neutral file of text."""
    return _deck(_core.femap_input(_path(file)))


def _properties(arrays: list[Indices], property_ids: ArrayLike | None) -> Indices:
    """One an element; by default the number of its connectivity, from 1 on."""
    if property_ids is not None:
        return index_list(property_ids, "property_ids")
    return np.repeat(np.arange(1, len(arrays) + 1, dtype=np.uint32), [len(array) for array in arrays])


def _write_deck(
    write: Callable[..., None],
    file: Path,
    coords: ArrayLike,
    connectivity: OneOrMany,
    type: OneOrManyTypes,
    property_ids: ArrayLike | None,
) -> None:
    arrays, types = typed_blocks(connectivity, type)
    if len(arrays) == 1 and property_ids is None:
        write(_path(file), points(coords), arrays[0], types[0])
    else:
        write(_path(file), points(coords), arrays, types, _properties(arrays, property_ids))


def nastran_output(
    file: Path,
    coords: ArrayLike,
    connectivity: OneOrMany,
    type: OneOrManyTypes,
    property_ids: ArrayLike | None = None,
) -> None:
    """Writes NASTRAN bulk data. Without elements no file is made.

    coords: (n, 2) or (n, 3); connectivity: (e, k) of a type, or lists of both; property_ids: one an element, over all
    connectivities, by default 1 for those of the first, 2 for those of the second, ...
    """
    _write_deck(_core.nastran_output, file, coords, connectivity, type, property_ids)


def femap_output(
    file: Path,
    coords: ArrayLike,
    connectivity: OneOrMany,
    type: OneOrManyTypes,
    property_ids: ArrayLike | None = None,
) -> None:
    """Writes a FEMAP neutral file of text, coordinates bit for bit. Arguments as in `nastran_output`."""
    _write_deck(_core.femap_output, file, coords, connectivity, type, property_ids)


def ensight_output(file: Path, coords: ArrayLike, connectivity: OneOrMany, type: OneOrManyTypes) -> None:
    """Writes an EnSight geometry file of text, one part a connectivity. Mixed types and pyramids are left out.

    coords: (n, 1 to 3); connectivity: (e, k) of a type, or lists of both.
    """
    _core.ensight_output(_path(file), points(coords, columns=(1, 2, 3)), *typed_blocks(connectivity, type))


# --- By extension ----------------------------------------------------------------------------------------------------

_FACES = {ElementType.TRIA3, ElementType.QUAD4, ElementType.FACE_MIX}
_NOWHERE = {ElementType.UNKNOWN, ElementType.NODE, ElementType.EDGE_MIX}
_MIXED = {ElementType.FACE_MIX, ElementType.SOLID_MIX}
_PYRAMIDS = {ElementType.PYRAMID5, ElementType.PYRAMID13, ElementType.PYRAMID14}
_ALL = set(ElementType) - _NOWHERE

# What each format holds; the functions of a format leave out, without a word, what it does not.
_HELD = {
    ".stl": {ElementType.TRIA3},
    ".obj": _FACES,
    ".vtk": _ALL - {ElementType.PYRAMID13, ElementType.WEDGE15},
    ".mesh": _ALL - {ElementType.PYRAMID13, ElementType.WEDGE15},
    ".bdf": _ALL,
    ".nas": _ALL,
    ".dat": _ALL,
    ".neu": _ALL,
    ".geo": _ALL - _MIXED - _PYRAMIDS - {ElementType.WEDGE15},
}

_READERS: dict[str, Callable[..., Any]] = {
    ".vtk": _core.vtk_input,
    ".mesh": _core.medit_input,
    ".bdf": _core.nastran_input,
    ".nas": _core.nastran_input,
    ".dat": _core.nastran_input,
    ".neu": _core.femap_input,
}

_DECKS: dict[str, Callable[..., None]] = {
    ".bdf": nastran_output,
    ".nas": nastran_output,
    ".dat": nastran_output,
    ".neu": femap_output,
}

_WRITERS: dict[str, Callable[..., None]] = {
    ".obj": wavefront_obj_output,
    ".vtk": vtk_output,
    ".mesh": medit_output,
    ".geo": ensight_output,
    **_DECKS,
}


def _require(name: str, kind: ElementType, held: set[ElementType]) -> None:
    if kind not in held:
        raise ValueError(f"{name}: the format does not hold {kind.name}")


def _extension(file: Path, known: set[str]) -> str:
    extension = os.path.splitext(os.fsdecode(file))[1].lower()
    if extension not in known:
        raise ValueError(f"{os.fsdecode(file)}: not one of {', '.join(sorted(known))}")
    return extension


def read(file: Path, type: TypeLike | None = None) -> Mesh:
    """Reads a mesh of the format that the extension tells: .stl, .obj, .vtk, .mesh, .bdf, .nas, .dat, .neu.

    type: only the elements of this type; mixed types take the linear elements of their family. The functions of the
    formats return more: normals, references, IDs.
    """
    extension = _extension(file, {".stl", ".obj"} | set(_READERS))
    kind = None if type is None else element_type(type)
    if extension in _READERS:
        return _read_blocks(extension, file, kind)
    if kind is not None and kind in _NOWHERE:
        raise ValueError(f"type: {kind.name} has no connectivity of its own")
    quads = np.empty((0, 4), np.uint32)
    if extension == ".stl":
        coords, triangles = stl_input(file)
    else:
        coords, _, _, triangles, quads = wavefront_obj_input(file)
    blocks = [(ElementType.TRIA3, triangles), (ElementType.QUAD4, quads)]
    if kind == ElementType.FACE_MIX:
        blocks = [(ElementType.FACE_MIX, _mixed(triangles, quads))]
    return Mesh(coords, [(t, i) for t, i in blocks if len(i) and kind in (None, t)])


def _mixed(triangles: Indices, quads: Indices) -> Indices:
    """Triangles, then quadrangles."""
    mixed = np.full((len(triangles) + len(quads), 4), NONE, np.uint32)
    mixed[: len(triangles), :3] = triangles
    mixed[len(triangles) :] = quads
    return mixed


def _read_blocks(extension: str, file: Path, kind: ElementType | None) -> Mesh:
    reader = _READERS[extension]
    if kind is None:
        coords, blocks = reader(_path(file))[:2]
        return Mesh(coords, _named(blocks))
    coords, connectivity = reader(_path(file), kind)
    return Mesh(coords, [(kind, connectivity)] if len(connectivity) else [])


def write(
    file: Path,
    mesh: AnyMesh | ArrayLike,
    connectivity: OneOrMany | None = None,
    type: OneOrManyTypes | None = None,
) -> None:
    """Writes a mesh in the format that the extension tells: those of `read`, and .geo for EnSight.

    Either a `Mesh`, or coordinates (n, d), the connectivity (e, k) and its type, or lists of these. Types that the
    format does not hold are refused. Properties go along from deck to deck; other references, and IDs, are not written.
    """
    extension = _extension(file, set(_HELD))
    coords, arrays, types = _parts(mesh, connectivity, type)
    for kind in types:
        _require(os.fsdecode(file), kind, _HELD[extension])
    if extension == ".stl":
        triangles = arrays[0] if len(arrays) == 1 else np.concatenate([np.empty((0, 3), np.uint32), *arrays])
        stl_output(file, coords, triangles)
    elif isinstance(mesh, DeckMesh) and extension in _DECKS:
        _DECKS[extension](file, coords, arrays, types, mesh.property_ids)
    else:
        _WRITERS[extension](file, coords, arrays, types)


def _parts(
    mesh: AnyMesh | ArrayLike, connectivity: OneOrMany | None, type: OneOrManyTypes | None
) -> tuple[ArrayLike, list[Indices], list[ElementType]]:
    if isinstance(mesh, (Mesh, VtkMesh, MeditMesh, DeckMesh)):
        return mesh.coords, [i for _, i in mesh.blocks], [t for t, _ in mesh.blocks]
    if connectivity is None or type is None:
        raise TypeError("write: coordinates need a connectivity and its type")
    return (mesh, *typed_blocks(connectivity, type))
