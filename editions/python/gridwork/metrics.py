"""Metric tensors, the size prescriptions of a mesh: validity, bounds, eigen-pairs, intersection and union, gradation.

A size h > 0 prescribes the length of edges; a symmetric positive definite tensor M prescribes the size
1 / sqrt(u' M u) in each direction u. Tensors are packed: (a11, a12, a22) in 2-D, (a11, a12, a22, a13, a23, a33) in 3-D.
"""

from __future__ import annotations

import enum
from collections.abc import Callable, Sequence
from typing import Any

import numpy as np

from . import _core
from ._arrays import ArrayLike, Bools, Floats, Indices, apart, destination, floats, points, real, vector
from .elements import TypeLike, element_type
from .quality import metric_array, together
from .topology import elements

__all__ = [
    "SizeRule",
    "aniso3d_to_aniso2d",
    "bound_metric_gradations",
    "bound_metric_variations",
    "bound_metrics",
    "eigen_pairs",
    "h_shock",
    "h_shocks",
    "is_valid_metric",
    "is_valid_size",
    "iso_to_aniso",
    "maximum_metric",
    "metrics_gen_iso",
    "minimum_metric",
    "overwrite_invalid_metrics",
]


class SizeRule(enum.IntEnum):
    """Which of the lengths of a node's edges becomes its size."""

    MEAN = 0
    SHORTEST = 1
    LONGEST = 2


def _tensors(value: ArrayLike, name: str, columns: Sequence[int] = (3, 6)) -> tuple[Floats, bool]:
    """(n, k) tensors, and whether there were many; a single one becomes a row."""
    array = floats(value, name)
    many = array.ndim != 1
    return points(array if many else array.reshape(1, -1), name, columns), many


def is_valid_metric(m: ArrayLike) -> Any:
    """True where the smallest eigenvalue of a tensor is greater than 0.

    m: (k,) or (n, k), k = 3 or 6. Returns a bool or (n,) of bool.

    >>> is_valid_metric([[1.0, 0.0, 1.0], [1.0, 2.0, 1.0]])
    array([ True, False])
    """
    tensors, many = _tensors(m, "m")
    valid = _core.are_valid_metrics(tensors)
    return valid if many else bool(valid[0])


def is_valid_size(h: ArrayLike) -> Bools:
    """True where 0 < h < the largest float.

    >>> is_valid_size([1.0, 0.0, np.inf])
    array([ True, False, False])
    """
    sizes = floats(h, "h")
    return np.asarray((sizes > 0) & (sizes < np.finfo(float).max))


def eigen_pairs(m: ArrayLike, m2: ArrayLike | None = None) -> tuple[Any, Any, Any]:
    """Eigenvalues, ascending, and eigenvectors of tensors; with `m2` those of m2 v = w m v.

    m, m2: (k,) or (n, k), k = 3 or 6. Returns w (d,), v (d, d) with the vectors as columns, as `numpy.linalg.eigh`, and
    ok, False where w and v are of no use; or (n, d), (n, d, d) and (n,) of these.

    >>> w, v, ok = eigen_pairs([2.0, 0.0, 1.0])
    >>> w, ok
    (array([1., 2.]), True)
    """
    tensors, many = _tensors(m, "m")
    if m2 is None:
        w, v, ok = _core.eigen_pairs(tensors)
    else:
        w, v, ok = _core.eigen_pairs(tensors, _same_shape(m2, "m2", tensors))
    d = w.shape[1]
    v = v.reshape(-1, d, d)
    return (w, v, ok) if many else (w[0], v[0], bool(ok[0]))


def _same_shape(value: ArrayLike, name: str, tensors: Floats) -> Floats:
    other, _ = _tensors(value, name)
    if other.shape != tensors.shape:
        raise ValueError(f"{name}: shape {np.shape(value)}, but the first one is of {tensors.shape}")
    return other


def _combined(combine: Callable[[Floats, Floats], tuple[Floats, Bools]], m1: ArrayLike, m2: ArrayLike) -> tuple[Any, Any]:
    first, many = _tensors(m1, "m1")
    m, ok = combine(first, _same_shape(m2, "m2", first))
    return (m, ok) if many else (m[0], bool(ok[0]))


def minimum_metric(m1: ArrayLike, m2: ArrayLike) -> tuple[Any, Any]:
    """Intersection of metrics: in every direction the smaller of the two sizes, or less.

    m1, m2: (k,) or (n, k), k = 3 or 6. Returns the tensors, and ok: False where one is not positive definite, and the
    result is `m1`.

    >>> minimum_metric([1.0, 0.0, 4.0], [4.0, 0.0, 1.0])
    (array([4., 0., 4.]), True)
    """
    return _combined(_core.minimum_metric, m1, m2)


def maximum_metric(m1: ArrayLike, m2: ArrayLike) -> tuple[Any, Any]:
    """Union of metrics: in every direction the larger of the two sizes, or more. As `minimum_metric` otherwise.

    >>> maximum_metric([1.0, 0.0, 4.0], [4.0, 0.0, 1.0])
    (array([1., 0., 1.]), True)
    """
    return _combined(_core.maximum_metric, m1, m2)


def _frames(frames: ArrayLike) -> Floats:
    array = floats(frames, "frames")
    return points(array.reshape(-1, 6) if array.ndim == 3 else array, "frames", [6])


def iso_to_aniso(sizes: ArrayLike, dim: int, frames: ArrayLike | None = None) -> Floats:
    """The tensors of sizes, (n, 3) for dim = 2, (n, 6) for dim = 3; 0 where a size is not greater than 0.

    sizes: (n,). frames: (n, 2, 3) or (n, 6), two vectors in space each: tensors in the planes that they span, dim = 2.

    >>> iso_to_aniso([0.5], 2)
    array([[4., 0., 4.]])
    """
    list_of_sizes = vector(sizes, "sizes")
    if dim not in (2, 3) or dim == 3 and frames is not None:
        raise ValueError(f"dim: {dim}, expected 2 or 3, and 2 with frames")
    if frames is None:
        return _core.iso_to_aniso(list_of_sizes, dim)
    return _core.iso_to_aniso(list_of_sizes, _frames(frames))


def aniso3d_to_aniso2d(m: ArrayLike, frames: ArrayLike) -> Any:
    """The metrics `m` in the planes of frames: F' M F.

    m: (6,) or (n, 6); frames: (2, 3), or (n, 2, 3) or (n, 6). Returns (3,) or (n, 3).

    >>> aniso3d_to_aniso2d([1.0, 0, 4, 0, 0, 9], [[1.0, 0, 0], [0, 0, 1]])
    array([1., 0., 9.])
    """
    tensors, many = _tensors(m, "m", [6])
    planes = _frames(frames if many else np.reshape(frames, (1, -1)))
    result = _core.aniso3d_to_aniso2d(tensors, planes)
    return result if many else result[0]


def _finite(bound: float) -> float:
    return float(np.finfo(float).max) if bound == np.inf else bound


def bound_metrics(
    m: ArrayLike, hmin: float = 0.0, hmax: float = np.inf, *, out: Floats | None = None
) -> tuple[Floats, Indices]:
    """Brings sizes, or the sizes of tensors, into [hmin, hmax]. Returns them, and which were changed.

    m: (n,), or (n, 3) or (n, 6). hmin = 0 and hmax = inf are no bounds. out: array of the same shape that takes the
    result, or `m` itself.

    >>> bound_metrics([0.1, 1.0, 9.0], 0.5, 2.0)
    (array([0.5, 1. , 2. ]), array([0, 2], dtype=uint32))
    """
    lower, upper = real(hmin, "hmin"), _finite(real(hmax, "hmax"))
    target = destination(metric_array(m, "m"), out)
    return target, _core.bound_metrics(target, lower, upper)


def overwrite_invalid_metrics(
    m: ArrayLike, defaults: ArrayLike, *, out: Floats | None = None
) -> tuple[Floats, int]:
    """Replaces sizes of 0 or less, or invalid tensors, by their defaults where these are valid.

    m: (n,), or (n, 3) or (n, 6); defaults: of the same shape, or sizes (n,) for tensors, too. out: as in
    `bound_metrics`. Returns the metrics, and how many were replaced.

    >>> overwrite_invalid_metrics([0.0, 2.0], [1.0, 1.0])
    (array([1., 2.]), 1)
    """
    source, others = metric_array(m, "m"), metric_array(defaults, "defaults")
    if source.ndim == 1 and others.ndim != 1:
        raise ValueError(f"defaults: shape {others.shape}, expected (n,)")
    others = apart(others, out)
    target = destination(source, out)
    return target, _core.overwrite_invalid_metrics(target, others)


def metrics_gen_iso(
    coords: ArrayLike, connectivity: ArrayLike, type: TypeLike, rule: SizeRule = SizeRule.MEAN
) -> Floats:
    """The sizes that a mesh has already, (n,): mean, smallest or largest length of a node's edges, 0 without any.

    coords: (n, 2) or (n, 3); connectivity: (e, k).

    >>> metrics_gen_iso([[0.0, 0], [3, 0], [0, 4]], [[0, 1, 2]], "TRIA3", SizeRule.LONGEST)
    array([4., 5., 5.])
    """
    kind = element_type(type)
    return _core.metrics_gen_iso(points(coords), elements(connectivity, kind), kind, SizeRule(rule))


def h_shock(length: ArrayLike, h1: ArrayLike, h2: ArrayLike) -> Any:
    """How fast sizes change along an edge: exp(abs(h2 - h1) / length), 1 where they are equal.

    length, h1, h2: numbers or arrays, which are broadcast.

    >>> round(h_shock(1.0, 1.0, 1.5), 3)
    1.649
    """
    lists, shape = together((length, "length"), (h1, "h1"), (h2, "h2"))
    result = _core.h_shock(*lists)
    return result.reshape(shape) if shape else float(result[0])


def h_shocks(coords: ArrayLike, connectivity: ArrayLike, type: TypeLike, metric: ArrayLike) -> Floats:
    """The H-shock of every edge, (m,), in the order of `copy_edges`.

    coords: (n, 2) or (n, 3); connectivity: (e, k); metric: sizes (n,), or tensors (n, 3) in 2-D, (n, 6) in 3-D. The
    largest is ``h_shocks(...).max(initial=1.0)``.

    >>> h_shocks([[0.0, 0], [1, 0], [0, 1]], [[0, 1, 2]], "TRIA3", [1.0, 1.0, 1.5]).round(3)
    array([1.   , 1.649, 1.424])
    """
    kind = element_type(type)
    return _core.h_shocks(points(coords), elements(connectivity, kind), kind, metric_array(metric))


def bound_metric_variations(
    coords: ArrayLike,
    connectivity: ArrayLike,
    type: TypeLike,
    metric: ArrayLike,
    max_variation: float,
    *,
    out: Floats | None = None,
) -> tuple[Floats, Indices]:
    """Lowers sizes until they grow by at most `max_variation` times the length along every edge.

    coords: (n, 2) or (n, 3); connectivity: (e, k); metric: sizes (n,), or tensors (n, 3) in 2-D, (n, 6) in 3-D. out: as
    in `bound_metrics`. Returns the metric, and the nodes that were changed.

    >>> bound_metric_variations([[0.0, 0], [1, 0]], [[0, 1]], "EDGE2", [1.0, 9.0], 0.5)
    (array([1. , 1.5]), array([1], dtype=uint32))
    """
    kind, bound = element_type(type), real(max_variation, "max_variation")
    nodes, mesh = apart(points(coords), out), apart(elements(connectivity, kind), out)
    target = destination(metric_array(metric), out)
    return target, _core.bound_metric_variations(nodes, mesh, kind, target, bound)


def bound_metric_gradations(
    coords: ArrayLike,
    connectivity: ArrayLike,
    type: TypeLike,
    metric: ArrayLike,
    max_gradation: float,
    *,
    out: Floats | None = None,
) -> tuple[Floats, Indices]:
    """Lowers sizes until the lengths of adjacent edges differ by at most the factor `max_gradation`, 1 or more.

    Arguments and results as in `bound_metric_variations`; for sizes ``max_variation = log(max_gradation)``.

    >>> sizes, changed = bound_metric_gradations([[0.0, 0], [1, 0]], [[0, 1]], "EDGE2", [1.0, 9.0], 1.5)
    >>> sizes.round(3)
    array([1.   , 1.405])
    """
    kind, bound = element_type(type), real(max_gradation, "max_gradation")
    nodes, mesh = apart(points(coords), out), apart(elements(connectivity, kind), out)
    target = destination(metric_array(metric), out)
    return target, _core.bound_metric_gradations(nodes, mesh, kind, target, bound)
