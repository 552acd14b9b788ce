"""Quality of elements (shape), their Jacobians, and quality of edges: length against prescribed size."""

from __future__ import annotations

from typing import Any

import numpy as np

from . import _core
from ._arrays import NONE, ArrayLike, Floats, OneOrMany, floats, index_rows, points, vector
from .elements import TypeLike, element_type
from .topology import OneOrManyTypes, elements, typed_blocks

__all__ = ["edge_qualities", "edge_quality", "jacobians", "min_quality", "shape_qualities"]


def shape_qualities(coords: ArrayLike, connectivity: ArrayLike, type: TypeLike) -> Floats:
    """The shape quality of every element, (e,): 1 is ideal, 0 flat, negative turned over.

    coords: (n, 2) or (n, 3); connectivity: (e, k) of a linear type. A tetrahedron is positive when 0-1-2 turns
    clockwise seen from 3, the mirror image of the order that is usual elsewhere.

    >>> shape_qualities([[0.0, 0], [1, 0], [0, 1], [1, 1]], [[0, 1, 3, 2]], "QUAD4")
    array([1.])
    """
    kind = element_type(type)
    return _core.shape_qualities(points(coords), elements(connectivity, kind), kind)


def jacobians(coords: ArrayLike, connectivity: ArrayLike, type: TypeLike) -> Floats:
    """The smallest corner Jacobian of every element, (e,): a length, twice an area, six times a volume.

    coords: (n, 2) or (n, 3); connectivity: (e, k) of a linear type.

    >>> jacobians([[0.0, 0], [3, 0], [0, 1]], [[0, 1, 2]], "TRIA3")
    array([3.])
    """
    kind = element_type(type)
    return _core.jacobians(points(coords), elements(connectivity, kind), kind)


def min_quality(coords: ArrayLike, connectivity: ArrayLike, type: TypeLike) -> tuple[float, int | None]:
    """The worst shape quality and the first element that has it; 1.0 and None where none is below 1.

    coords: (n, 2) or (n, 3); connectivity: (e, k) of a linear type.

    >>> quality, element = min_quality([[0.0, 0], [1, 0], [0, 1]], [[0, 1, 2]], "TRIA3")
    >>> round(quality, 3), element
    (0.717, 0)
    """
    kind = element_type(type)
    worst, element = _core.min_quality(points(coords), elements(connectivity, kind), kind)
    return worst, None if element == NONE else element


def together(*given: tuple[ArrayLike, str]) -> tuple[list[Floats], tuple[int, ...]]:
    """Numbers or (m,) of each, broadcast to lists of one size, and the shape of the result."""
    arrays = np.broadcast_arrays(*(floats(value, name) for value, name in given))
    return [vector(np.ravel(array), name) for array, (_, name) in zip(arrays, given)], arrays[0].shape


def edge_quality(length: ArrayLike, h1: ArrayLike, h2: ArrayLike) -> Any:
    """The length of an edge in relation to the sizes at its ends: 1 is as prescribed, less is short, more is long.

    length, h1, h2: numbers or arrays, which are broadcast; sizes are greater than 0.

    >>> edge_quality(2.0, [1.0, 2.0], [1.0, 2.0])
    array([2., 1.])
    """
    lists, shape = together((length, "length"), (h1, "h1"), (h2, "h2"))
    result = _core.edge_quality(*lists)
    return result.reshape(shape) if shape else float(result[0])


def metric_array(value: ArrayLike, name: str = "metric") -> Floats:
    """(n,) sizes, or (n, 3) or (n, 6) tensors."""
    array = floats(value, name)
    if array.ndim == 1 or array.ndim == 2 and array.shape[1] in (3, 6):
        return array
    raise ValueError(f"{name}: shape {array.shape}, expected (n,), (n, 3) or (n, 6)")


def edge_qualities(
    coords: ArrayLike,
    connectivity: OneOrMany,
    type: OneOrManyTypes,
    metric: ArrayLike,
    excluded: ArrayLike | None = None,
) -> Floats:
    """The quality of every edge, (m,), in the order of `copy_edges`.

    coords: (n, 2) or (n, 3); connectivity: (e, k) of a type, or lists of both; metric: sizes (n,), or tensors (n, 3)
    in 2-D, (n, 6) in 3-D; excluded: (x, 2) edges that are left out.

    >>> edge_qualities([[0.0, 0], [1, 0], [0, 1]], [[0, 1, 2]], "TRIA3", [1.0, 1.0, 1.0]).round(3)
    array([1.   , 1.   , 1.414])
    """
    arrays, types = typed_blocks(connectivity, type)
    without = index_rows([] if excluded is None else excluded, "excluded", [2])
    return _core.edge_qualities(points(coords), arrays, types, metric_array(metric), without)
