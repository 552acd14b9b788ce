"""Meshes in parts, on the ranks of an MPI communicator, with the results of the functions on the whole mesh.

Every function that takes a communicator of mpi4py is collective: all its ranks call it, with the same scalars, and all
return or all raise the same error; only what is no argument at all, a text for an array, is refused where it is found.
Nodes and elements have 64-bit IDs, which are the indices in the whole mesh. The rules are in the C++ header
``qel/gridwork/mpi.h``.

    from mpi4py import MPI
    import gridwork.mpi as gwm

    comm = MPI.COMM_WORLD
    part = gwm.stl_input(comm, "large.stl")
    part = gwm.migrate(comm, part, gwm.partition_by_curve(comm, part))
    sharing = gwm.share_nodes(comm, part)
    neighbors = gwm.get_neighbors(comm, part, "TRIA3", sharing)
"""

from __future__ import annotations

import errno
import os
from typing import Any, NamedTuple, Union

import numpy as np
import numpy.typing as npt
from mpi4py import MPI

from . import _mpi
from ._arrays import ArrayLike, Floats, Indices, floats, index_rows, points
from ._errors import Error, make_error
from .elements import TypeLike, element_type

__all__ = [
    "MeshPart",
    "NodeSharing",
    "NO_ID",
    "bounding_box",
    "get_connected_elements",
    "get_ghosts",
    "get_mesh_boundaries",
    "get_neighbors",
    "get_subdomains",
    "make_part",
    "merge",
    "migrate",
    "min_quality",
    "number_edges",
    "partition_by_curve",
    "partition_graph",
    "quality_histogram",
    "remove_degenerated",
    "share_nodes",
    "simplify",
    "stl_input",
    "stl_output",
]

if _mpi.implementation() != (MPI._sizeof(MPI.Comm), MPI.Get_library_version()):
    raise ImportError("mpi4py and gridwork.mpi were built with different MPI libraries")

IDs = npt.NDArray[np.uint64]
Ranks = npt.NDArray[np.int32]
Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

NO_ID = 0xFFFFFFFFFFFFFFFF
"""No neighbour, as an int."""

_MPI_FAILED = -200
_ANY = {
    -199: "memory ran out on a rank",
    _MPI_FAILED: "an MPI call failed",
    -201: "the square of the tolerance overflows",
    -202: "built without PT-Scotch",
    -1: "the part is none, or has a wrong number of columns",
}
_SHARING = "sharing does not go with the part"
_TYPE = "the type differs between ranks"
_WORDS = {
    "STL_input": {-2: "the file has no header", -3: "the file is damaged or cut"},
    "STL_output": {-2: "coordinates have neither 2 nor 3 columns", -3: "elements are no triangles, or too many"},
    "make_part": {-1: "an index is no node, or numbers of columns differ between ranks"},
    "merge": {-3: "the tolerance is negative or NaN, or differs between ranks"},
    "remove_degenerated": {-3: "strict differs between ranks"},
    "get_neighbors": {-2: "the type is not accepted", -3: _TYPE, -4: _SHARING, -5: "the rule differs between ranks"},
    "get_mesh_boundaries": {-2: "neighbors has another shape", -3: "the type is not accepted"},
    "get_subdomains": {-2: "the type is not accepted", -3: _TYPE, -4: _SHARING, -5: "neighbors has another shape"},
    "get_connected_elements": {-3: _SHARING},
    "get_ghosts": {-3: _SHARING},
    "number_edges": {-3: _TYPE},
    "partition_by_curve": {-3: "the number of parts is not above 0, or differs between ranks"},
    "partition_graph": {-3: "neighbors has another shape", -4: "the number of parts is not above 0, or differs"},
    "migrate": {-3: "targets are not one rank for each element"},
    "min_quality": {-3: _TYPE},
    "quality_histogram": {-3: _TYPE, -4: "the range differs", -5: "the range is empty or differs", -6: "bins differ"},
}


def _make_error(function: str, code: int) -> Error:
    """The exception of a result code; the core raises it."""
    words = _WORDS.get(function, {}).get(code, _ANY.get(code, "the type is not accepted"))
    return Error(f"{function}: {words}", function, code) if code == _MPI_FAILED else make_error(function, code, words)


class MeshPart(NamedTuple):
    """One rank's part of a mesh. Both arrays of IDs strictly increase; indices are those of the part."""

    coords: Floats
    """(n, 2) or (n, 3)"""
    node_ids: IDs
    """(n,)"""
    connectivity: Indices
    """(e, k)"""
    element_ids: IDs
    """(e,)"""


class NodeSharing(NamedTuple):
    """The other ranks that have node i of a part: ``ranks[offsets[i]:offsets[i + 1]]``, increasing."""

    offsets: Indices
    ranks: Ranks


def _handle(comm: MPI.Intracomm) -> int:
    if isinstance(comm, MPI.Comm) and comm == MPI.COMM_NULL:
        raise ValueError("comm: the null communicator")
    if not isinstance(comm, MPI.Intracomm):
        raise TypeError(f"comm: {type(comm).__name__} where an Intracomm of mpi4py is expected")
    return int(MPI._addressof(comm))


def _integers(value: Any, dtype: type, name: str) -> npt.NDArray[Any]:
    array = np.asarray(value)
    if array.size != 0:
        if array.dtype.kind not in "iu":
            raise TypeError(f"{name}: {array.dtype} where integers are expected")
        if not np.iinfo(dtype).min <= int(array.min()) <= int(array.max()) <= np.iinfo(dtype).max:
            raise ValueError(f"{name}: numbers beyond {np.dtype(dtype).name}")
    return np.ascontiguousarray(array, dtype)


def _part(part: MeshPart) -> MeshPart:
    coords, node_ids, connectivity, element_ids = part
    return MeshPart(
        floats(coords, "part.coords"),
        _integers(node_ids, np.uint64, "part.node_ids"),
        index_rows(connectivity, "part.connectivity"),
        _integers(element_ids, np.uint64, "part.element_ids"),
    )


def _sharing(sharing: NodeSharing) -> NodeSharing:
    offsets, ranks = sharing
    return NodeSharing(_integers(offsets, np.uint32, "sharing.offsets"), _integers(ranks, np.int32, "sharing.ranks"))


def _links(neighbors: ArrayLike) -> IDs:
    return _integers(neighbors, np.uint64, "neighbors")


def stl_input(comm: MPI.Intracomm, file: Path) -> MeshPart:
    """Reads a text or binary STL file, each rank a piece of it."""
    try:
        return MeshPart(*_mpi.stl_input(_handle(comm), os.fsencode(file)))
    except Error as error:
        if error.code != -1:
            raise
    with open(file, "rb"):  # an OSError where this rank is one that cannot open it
        raise OSError(errno.EIO, "not all ranks can open the file", os.fsdecode(file))


def stl_output(comm: MPI.Intracomm, file: Path, part: MeshPart) -> None:
    """Writes the triangles of all parts as a binary STL file, in the order of their IDs."""
    try:
        _mpi.stl_output(_handle(comm), os.fsencode(file), _part(part))
        return
    except Error as error:
        if error.code != -1:
            raise
    raise OSError(errno.EIO, "the part is none, or the file cannot be written", os.fsdecode(file))


def make_part(comm: MPI.Intracomm, coords: ArrayLike, connectivity: ArrayLike) -> MeshPart:
    """Makes parts of meshes that each rank has for itself: the whole mesh is these one behind the other."""
    given = points(coords), index_rows(connectivity, "connectivity")
    return MeshPart(*_mpi.make_part(_handle(comm), *given))


def merge(comm: MPI.Intracomm, part: MeshPart, tol: float = 0.0) -> tuple[int, MeshPart]:
    """Merges all nodes that lie within `tol` of one another: how many, and the part."""
    merged, result = _mpi.merge(_handle(comm), _part(part), tol)
    return merged, MeshPart(*result)


def remove_degenerated(comm: MPI.Intracomm, part: MeshPart, *, strict: bool = False) -> tuple[int, MeshPart]:
    """Removes the elements that hold a node twice: how many, and the part."""
    removed, result = _mpi.remove_degenerated(_handle(comm), _part(part), strict)
    return removed, MeshPart(*result)


def simplify(comm: MPI.Intracomm, part: MeshPart) -> tuple[int, MeshPart]:
    """Numbers the nodes that elements use anew from 0: how many, and the part."""
    nodes, result = _mpi.simplify(_handle(comm), _part(part))
    return nodes, MeshPart(*result)


def share_nodes(comm: MPI.Intracomm, part: MeshPart) -> NodeSharing:
    """Finds the other ranks that have each node of the part."""
    return NodeSharing(*_mpi.share_nodes(_handle(comm), _part(part)))


def get_neighbors(
    comm: MPI.Intracomm, part: MeshPart, type: TypeLike, sharing: NodeSharing, *, pair_non_manifold: bool = False
) -> IDs:
    """The ID of the element across each boundary of each element, (e, B); `NO_ID` where there is none."""
    kind = element_type(type)
    return _mpi.get_neighbors(_handle(comm), _part(part), kind, _sharing(sharing), pair_non_manifold)


def get_mesh_boundaries(part: MeshPart, type: TypeLike, neighbors: ArrayLike) -> tuple[IDs, IDs]:
    """The part's boundaries without a neighbour, (b, k) IDs of nodes, and their slots, (b,). Not collective."""
    return _mpi.get_mesh_boundaries(_part(part), element_type(type), _links(neighbors))


def get_subdomains(
    comm: MPI.Intracomm, part: MeshPart, type: TypeLike, sharing: NodeSharing, neighbors: ArrayLike
) -> tuple[int, IDs]:
    """How many connected parts the whole mesh has, and that of each element, (e,)."""
    kind = element_type(type)
    return _mpi.get_subdomains(_handle(comm), _part(part), kind, _sharing(sharing), _links(neighbors))


def get_connected_elements(comm: MPI.Intracomm, part: MeshPart, sharing: NodeSharing) -> tuple[Indices, IDs]:
    """The elements of all ranks that hold node i of the part: ``elements[offsets[i]:offsets[i + 1]]``."""
    return _mpi.get_connected_elements(_handle(comm), _part(part), _sharing(sharing))


def number_edges(comm: MPI.Intracomm, part: MeshPart, type: TypeLike) -> tuple[int, Indices, IDs]:
    """How many edges the whole mesh has; the part's edges, (m, 2) indices of the part; their numbers, (m,)."""
    return _mpi.number_edges(_handle(comm), _part(part), element_type(type))


def partition_by_curve(comm: MPI.Intracomm, part: MeshPart, parts: int | None = None) -> Ranks:
    """The part of each element, (e,), by a curve that fills space; as many parts as ranks unless told."""
    return _mpi.partition_by_curve(_handle(comm), _part(part), comm.size if parts is None else parts)


def partition_graph(comm: MPI.Intracomm, part: MeshPart, neighbors: ArrayLike, parts: int | None = None) -> Ranks:
    """The part of each element, (e,), by PT-Scotch; as many parts as ranks unless told."""
    wanted = comm.size if parts is None else parts
    return _mpi.partition_graph(_handle(comm), _part(part), _links(neighbors), wanted)


def migrate(comm: MPI.Intracomm, part: MeshPart, targets: ArrayLike) -> MeshPart:
    """Moves each element to the rank `targets`, (e,), has for it."""
    return MeshPart(*_mpi.migrate(_handle(comm), _part(part), _integers(targets, np.int32, "targets")))


def get_ghosts(comm: MPI.Intracomm, part: MeshPart, sharing: NodeSharing) -> tuple[MeshPart, Ranks]:
    """The elements of other ranks that hold a node of the part, as a part of their own, and the rank of each."""
    ghosts, owners = _mpi.get_ghosts(_handle(comm), _part(part), _sharing(sharing))
    return MeshPart(*ghosts), owners


def min_quality(comm: MPI.Intracomm, part: MeshPart, type: TypeLike) -> tuple[float, int | None]:
    """The worst shape quality of the whole mesh, and the ID of the first element that has it; None if none is below 1."""
    quality, element = _mpi.min_quality(_handle(comm), _part(part), element_type(type))
    return quality, None if element == NO_ID else element


def quality_histogram(
    comm: MPI.Intracomm, part: MeshPart, type: TypeLike, bins: int, range: tuple[float, float] = (0.0, 1.0)
) -> tuple[IDs, float]:
    """The shape qualities of the whole mesh in equal bins, and their mean."""
    return _mpi.quality_histogram(_handle(comm), _part(part), element_type(type), bins, *range)


def bounding_box(comm: MPI.Intracomm, part: MeshPart) -> tuple[Floats, Floats]:
    """The corners of the box around all nodes, (3,) each; infinite and the wrong way round where there is no node."""
    return _mpi.bounding_box(_handle(comm), _part(part))
