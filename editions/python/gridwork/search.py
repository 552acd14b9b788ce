"""Search over nodes, merging of near nodes, removal of degenerate elements and of unused nodes."""

from __future__ import annotations

import os
from collections.abc import Sequence
from typing import Any, overload

import numpy as np

from . import _core
from ._arrays import (
    NONE,
    ArrayLike,
    Floats,
    Indices,
    OneOrMany,
    blocks,
    floats,
    index_list,
    index_rows,
    indices_of_any_shape,
    is_many,
    points,
    real,
    whole,
)

__all__ = ["NodeDetector", "clean", "merge", "merge_elements", "merge_lists", "remove_degenerated", "simplify"]


def _threads(workers: int) -> int:
    if whole(workers, "workers", -(2**31), 2**31 - 1) == -1:
        return os.cpu_count() or 1
    if workers < 1:
        raise ValueError(f"workers: {workers}, expected a number from 1 on, or -1 for all processors")
    return workers


def _restored(coords: Floats, ids: Indices | None, inserted: Sequence[Indices]) -> NodeDetector:
    detector = NodeDetector(coords, ids)
    for more in inserted:
        detector.insert(more)
    return detector


class NodeDetector:
    """Search over a set of nodes: the closest one to a point, those in a box.

    coords: (n, 2) or (n, 3). The detector looks at this array, without a copy where type and layout allow it, and keeps
    it alive; do not move nodes that it holds. ids: (k,) or (e, k) indices of the nodes that it holds, all by default.

    Queries of several threads run side by side, `insert` waits for them.

    >>> detector = NodeDetector([[0.0, 0.0], [1.0, 0.0], [0.0, 1.0]])
    >>> detector.find_closest([0.9, 0.2])
    (1, 0.22360679774997896)
    >>> detector.find_in_box([-1, -1], [1, 0.5])
    array([0, 1], dtype=uint32)
    """

    def __init__(self, coords: ArrayLike, ids: ArrayLike | None = None) -> None:
        self._coords = points(coords)
        self._ids = None if ids is None else _list_of_nodes(ids).copy()
        self._inserted: list[Indices] = []
        self._core = _core.Detector(self._coords, self._ids)

    @property
    def coords(self) -> Floats:
        """The coordinates that the detector looks at: the array that it was given, or a copy of it."""
        return self._coords

    def __len__(self) -> int:
        """Nodes held, one for each insertion."""
        return self._core.size()

    def __repr__(self) -> str:
        return f"<NodeDetector of {len(self)} nodes in {self._coords.shape[1]}-D>"

    def insert(self, ids: ArrayLike) -> int:
        """Adds nodes, also such as are held already; returns how many. Indices that are no nodes are skipped."""
        more = _list_of_nodes(ids).copy()
        count = self._core.insert(more)
        self._inserted.append(more)
        return count

    @overload
    def find_closest(self, points: Sequence[float], *, workers: int = 1) -> tuple[int, float]: ...
    @overload
    def find_closest(self, points: Any, *, workers: int = 1) -> tuple[Any, Any]: ...
    def find_closest(self, points: Any, *, workers: int = 1) -> tuple[Any, Any]:
        """The closest node to each point, and its distance; `NONE` and inf where there is none.

        points: (d,) or (m, d). Returns an index and a distance, or (m,) of each. workers: threads, -1 for one a
        processor; results are the same.
        """
        many = _rows(points, "points", self._coords.shape[1])
        ids, distances = self._core.find_closest(many[0], _threads(workers))
        return (ids, distances) if many[1] else (int(ids[0]), float(distances[0]))

    def find_closest_node(self, nodes: int | ArrayLike, *, workers: int = 1) -> tuple[Any, Any]:
        """The closest other node to each node, and its distance; `NONE` and inf where there is none.

        nodes: an index or (m,) indices, of nodes that need not be held. Returns an index and a distance, or (m,) of
        each.
        """
        one = np.ndim(nodes) == 0
        ids, distances = self._core.find_closest_node(
            index_list([nodes] if one else nodes, "nodes"), _threads(workers)  # type: ignore[arg-type]
        )
        return (int(ids[0]), float(distances[0])) if one else (ids, distances)

    def find_in_box(self, lower: ArrayLike, upper: ArrayLike) -> Indices:
        """The nodes in the closed box from `lower` to `upper`, (d,) each."""
        d = self._coords.shape[1]
        corners = [_rows(corner, name, d) for corner, name in ((lower, "lower"), (upper, "upper"))]
        if any(many for _, many in corners):
            raise ValueError(f"lower, upper: expected ({d},); find_in_boxes takes many")
        return self._core.find_in_boxes(corners[0][0], corners[1][0], 1)[1]

    def find_in_boxes(self, lower: ArrayLike, upper: ArrayLike, *, workers: int = 1) -> tuple[Indices, Indices]:
        """The nodes in many boxes: those of box i are ``ids[offsets[i]:offsets[i + 1]]``.

        lower, upper: (m, d). Returns offsets (m + 1,) and ids. workers: as in `find_closest`.
        """
        d = self._coords.shape[1]
        low, high = points(lower, "lower", [d]), points(upper, "upper", [d])
        if low.shape != high.shape:
            raise ValueError(f"upper: shape {high.shape}, but lower has {low.shape}")
        return self._core.find_in_boxes(low, high, _threads(workers))

    def __copy__(self) -> NodeDetector:
        twin = NodeDetector.__new__(NodeDetector)
        twin._coords, twin._ids, twin._inserted = self._coords, self._ids, list(self._inserted)
        twin._core = _core.Detector(self._core)
        return twin

    def __reduce__(self) -> tuple[Any, ...]:
        return _restored, (self._coords, self._ids, self._inserted)


def _list_of_nodes(ids: ArrayLike) -> Indices:
    """A list, also of a connectivity: its distinct nodes."""
    array = indices_of_any_shape(ids, "ids")
    return array if array.ndim == 1 else _core.unique_indices([array], index_list([], "excluded"))


def _rows(value: ArrayLike, name: str, d: int) -> tuple[Floats, bool]:
    """(m, d) points, and whether there were many; a single one becomes a row."""
    array = floats(value, name)
    if array.shape == (d,):
        return array.reshape(1, d), False
    if array.ndim != 2 or array.shape[1] != d:
        raise ValueError(f"{name}: shape {array.shape}, expected ({d},) or (m, {d})")
    return array, True


def merge(coords: ArrayLike, tol: float = 0.0) -> tuple[int, Floats, Indices]:
    """Merges all nodes within `tol` of one another: every one gets its survivor's position.

    coords: (n, 2) or (n, 3). Returns the number of merged nodes, the coordinates (n, d), and new_ids (n,), the survivor
    of each node. Apply it by ``change_indices(connectivity, new_ids)``, or do all in one with `clean`.

    >>> merged, coords, new_ids = merge([[0.0, 0.0], [1.0, 0.0], [1e-9, 0.0]], 1e-6)
    >>> merged, new_ids
    (1, array([0, 1, 0], dtype=uint32))
    """
    return _core.merge(points(coords), real(tol, "tol"))


def merge_lists(
    coords: ArrayLike, ids1: ArrayLike, ids2: ArrayLike | None = None, tol: float = 0.0
) -> tuple[int, Indices]:
    """Merges the nodes of one list, or those of `ids1` onto those of `ids2`; only the map is made.

    coords: (n, 2) or (n, 3); ids1, ids2: (k,) indices. Returns the number of merged nodes and new_ids (n,).

    >>> merge_lists([[0.0, 0.0], [0.0, 0.0], [0.0, 0.0]], [1], [2])
    (1, array([0, 2, 2], dtype=uint32))
    """
    first = index_list(ids1, "ids1")
    distance = real(tol, "tol")
    if ids2 is None:
        return _core.merge_lists(points(coords), first, distance)
    return _core.merge_lists(points(coords), first, index_list(ids2, "ids2"), distance)


def merge_elements(
    coords: ArrayLike, connectivity: OneOrMany, tol: float = 0.0, mode: int = 0
) -> tuple[int, Any, Indices]:
    """Merges nodes that the elements use, and renumbers these. Coordinates stay.

    coords: (n, 2) or (n, 3); connectivity: (e, k) indices, or a list of such. mode: 0 merges near nodes of all
    elements; 1 only nodes of one same element, closest pairs first; 2 repeats this until nothing merges.

    Returns the number of merged nodes, the connectivity (or list), and new_ids (n,).

    >>> count, triangles, new_ids = merge_elements([[0.0, 0], [1, 0], [0, 1], [0, 0]], [[0, 1, 2], [3, 2, 1]])
    >>> triangles
    array([[0, 1, 2],
           [0, 2, 1]], dtype=uint32)
    """
    merged, result, new_ids = _core.merge_elements(
        points(coords), blocks(connectivity), real(tol, "tol"), whole(mode, "mode")
    )
    return merged, result if is_many(connectivity) else result[0], new_ids


def remove_degenerated(connectivity: ArrayLike, *, strict: bool = False) -> tuple[Indices, Indices]:
    """Removes the elements that hold a node twice.

    connectivity: (e, k). strict: a `NONE` that is there twice counts, too. Returns the connectivity, and new_elements
    (e,): the new place of each element, or `NONE`.

    >>> remove_degenerated([[0, 1, 1], [0, 1, 2]])
    (array([[0, 1, 2]], dtype=uint32), array([4294967295,          0], dtype=uint32))
    """
    return _core.remove_degenerated(index_rows(connectivity, "connectivity"), bool(strict))


def simplify(coords: ArrayLike, connectivity: OneOrMany, first_node: int = 0) -> tuple[Floats, Any, Indices]:
    """Removes the nodes that no element uses.

    coords: (n, k); connectivity: (e, k) indices, or a list of such. Nodes before `first_node` are kept in any case.
    Returns the coordinates, the connectivity (or list), and new_ids (n,): the new place of each node, or `NONE`.

    >>> coords, triangles, new_ids = simplify([[0.0, 0], [9, 9], [1, 0], [0, 1]], [[0, 2, 3]])
    >>> new_ids
    array([         0, 4294967295,          1,          2], dtype=uint32)
    """
    kept = whole(first_node, "first_node")
    rows, result, new_ids = _core.simplify(points(coords, columns=()), blocks(connectivity), kept)
    return rows, result if is_many(connectivity) else result[0], new_ids


def clean(
    coords: ArrayLike, connectivity: ArrayLike, tol: float = 0.0
) -> tuple[Floats, Indices, Indices, Indices]:
    """Merges near nodes, removes degenerate elements, then unused nodes.

    coords: (n, 2) or (n, 3); connectivity: (e, k). Returns coordinates, connectivity, new_ids (n,) and new_elements
    (e,): the new place of each node and element, or `NONE`.

    >>> soup = [[0.0, 0], [1, 0], [0, 1], [1, 0], [1, 1], [0, 1]]
    >>> coords, triangles, new_ids, new_elements = clean(soup, [[0, 1, 2], [3, 4, 5]])
    >>> triangles
    array([[0, 1, 2],
           [1, 3, 2]], dtype=uint32)
    """
    return _core.clean(points(coords), index_rows(connectivity, "connectivity"), real(tol, "tol"))
