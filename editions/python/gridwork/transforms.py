"""Geometric transforms, bounding boxes, repeated and mirrored copies of a part, meshes clipped at a line or plane.

The dimension of a transform is that of its point or vector: a 2-D one works on the first two columns. Coordinates that
have fewer columns get them, with zeros. Angles are in radians.
"""

from __future__ import annotations

from typing import Tuple, Union

import numpy as np

from . import _core
from ._arrays import (
    ArrayLike,
    Floats,
    Indices,
    apart,
    destination,
    index_rows,
    indices_of_any_shape,
    points,
    real,
    vector,
    whole,
    writable,
)
from ._errors import ArgumentError
from .elements import TypeLike, element_type
from .topology import elements

__all__ = ["bounding_box", "clip_exact", "clip_whole", "copy_mesh", "copy_sym_mesh", "rotate", "translate", "zoom"]

_Nodes = Union[Tuple[()], Tuple[Indices]]


def _space_vector(value: ArrayLike, name: str) -> Floats:
    array = vector(value, name)
    if array.shape[0] not in (2, 3):
        raise ValueError(f"{name}: shape {array.shape}, expected (2,) or (3,)")
    return array


def _check_nodes(ids: Indices, coords: Floats, function: str, name: str) -> None:
    """What the library does not test: indices that are no nodes would make it leave its memory."""
    if not _core.check_ids(ids, coords.shape[0]):
        raise ArgumentError(f"{function}: {name} holds an index that is neither NONE nor a row of coords", function, 0)


def _nodes(nodes: ArrayLike | None, coords: Floats, function: str) -> _Nodes:
    if nodes is None:
        return ()
    ids = indices_of_any_shape(nodes, "nodes")
    _check_nodes(ids, coords, function, "nodes")
    return (ids[ids != 0xFFFFFFFF],) if ids.ndim == 1 else (ids,)


def _target(coords: ArrayLike, d: int, out: Floats | None) -> Floats:
    """Where the moved nodes go: a copy of `coords` with d columns or more, or `out`."""
    source = points(coords, columns=())
    n, k = source.shape
    if k >= d:
        return destination(source, out)
    target = np.empty((n, d)) if out is None else writable(out, (n, d), np.float64)
    target[:, :k] = source
    target[:, k:] = 0
    return target


def translate(
    coords: ArrayLike, shift: ArrayLike, nodes: ArrayLike | None = None, *, out: Floats | None = None
) -> Floats:
    """Moves nodes by `shift`, (2,) or (3,).

    coords: (n, k); nodes: the nodes to move, (m,) indices, each as often as it is listed, or a connectivity (e, k),
    each once; all by default. out: array that takes the result, or `coords` itself.

    >>> translate([[0.0, 0.0], [1.0, 0.0]], [0.5, 2.0], [1])
    array([[0. , 0. ],
           [1.5, 2. ]])
    """
    by = apart(_space_vector(shift, "shift"), out)
    target = _target(coords, by.shape[0], out)
    _core.translate(target, by, *_nodes(nodes, target, "translate"))
    return target


def rotate(
    coords: ArrayLike,
    center: ArrayLike,
    rotation: float | ArrayLike,
    nodes: ArrayLike | None = None,
    *,
    out: Floats | None = None,
) -> Floats:
    """Turns nodes about `center`: (2,) and an angle, counter-clockwise, or (3,) and a rotation vector.

    coords: (n, k). The direction of a rotation vector is the axis, its length the angle. nodes, out: as in `translate`.

    >>> rotate([[1.0, 0.0]], [0.0, 0.0], np.pi / 2).round(12)
    array([[0., 1.]])
    """
    point = apart(_space_vector(center, "center"), out)
    turn = apart(_rotation(rotation, point.shape[0]), out)
    target = _target(coords, point.shape[0], out)
    _core.rotate(target, point, turn, *_nodes(nodes, target, "rotate"))
    return target


def _rotation(rotation: float | ArrayLike, d: int) -> Floats:
    if d == 2:
        return vector(np.ravel(rotation), "rotation", 1)
    return vector(rotation, "rotation", 3)


def zoom(
    coords: ArrayLike,
    center: ArrayLike,
    factor: float,
    nodes: ArrayLike | None = None,
    *,
    out: Floats | None = None,
) -> Floats:
    """Scales nodes about `center`, (2,) or (3,).

    coords: (n, k). A negative factor mirrors through the center. nodes, out: as in `translate`.

    >>> zoom([[1.0, 2.0]], [0.0, 0.0], 3)
    array([[3., 6.]])
    """
    point, scale = apart(_space_vector(center, "center"), out), real(factor, "factor")
    target = _target(coords, point.shape[0], out)
    _core.zoom(target, point, scale, *_nodes(nodes, target, "zoom"))
    return target


def bounding_box(coords: ArrayLike, nodes: ArrayLike | None = None) -> tuple[Floats, Floats]:
    """The corners (d,) and (d,) of the box round all nodes, or the given ones; inf and -inf without any.

    coords: (n, 2) or (n, 3); nodes: (m,) indices or a connectivity (e, k).

    >>> bounding_box([[0.0, 5.0], [2.0, 1.0]])
    (array([0., 1.]), array([2., 5.]))
    """
    array = points(coords)
    if nodes is None:
        return _core.bounding_box(array)
    return _core.bounding_box(array, indices_of_any_shape(nodes, "nodes"))


def copy_mesh(
    coords: ArrayLike,
    connectivity: ArrayLike,
    *,
    shift: ArrayLike | None = None,
    center: ArrayLike | None = None,
    rotation: float | ArrayLike | None = None,
    n: int = 1,
) -> tuple[Floats, Indices]:
    """Copies a part n times, each copy a step further: a row, a circular or a helical array.

    coords: (m, k); connectivity: (e, k). A step turns about `center` by `rotation` (an angle in 2-D, a vector in 3-D),
    then moves by `shift`. Returns the coordinates, with the new nodes behind the old ones, and the elements of the
    copies (n * e, k).

    >>> coords, copies = copy_mesh([[0.0, 0], [1, 0], [0, 1]], [[0, 1, 2]], shift=[2, 0], n=2)
    >>> copies
    array([[3, 4, 5],
           [6, 7, 8]], dtype=uint32)
    """
    array, part = points(coords, columns=()), index_rows(connectivity, "connectivity")
    _check_nodes(part, array, "copy_mesh", "connectivity")
    if shift is None and rotation is None and center is None and n == 1:
        return _core.copy_mesh(array, part)
    given = [v for v in (shift, center) if v is not None]
    d = _space_vector(given[0], "shift").shape[0] if given else 2 if np.size(rotation) == 1 else 3  # type: ignore[arg-type]
    zeros = np.zeros(d)
    move = zeros if shift is None else vector(shift, "shift", d)
    fixed = zeros if center is None else vector(center, "center", d)
    turn = zeros if rotation is None else _rotation(rotation, d)
    return _core.copy_mesh(array, part, move, fixed, turn, whole(n, "n"))


def copy_sym_mesh(
    coords: ArrayLike, connectivity: ArrayLike, point: ArrayLike, normal: ArrayLike
) -> tuple[Floats, Indices]:
    """Copies a part, mirrored in the line or plane through `point` with the normal `normal`, (d,) each.

    coords: (m, k); connectivity: (e, k). Elements keep the order of their nodes, so they are turned over. Returns the
    coordinates, with the new nodes behind the old ones, and the elements of the copy (e, k).

    >>> coords, copy = copy_sym_mesh([[1.0, 0], [2, 0], [1, 1]], [[0, 1, 2]], [0, 0], [1, 0])
    >>> coords[3:]
    array([[-1.,  0.],
           [-2.,  0.],
           [-1.,  1.]])
    """
    array, part = points(coords, columns=()), index_rows(connectivity, "connectivity")
    _check_nodes(part, array, "copy_sym_mesh", "connectivity")
    origin = _space_vector(point, "point")
    return _core.copy_sym_mesh(array, part, origin, vector(normal, "normal", origin.shape[0]))


def clip_whole(
    coords: ArrayLike,
    connectivity: ArrayLike,
    point: ArrayLike,
    normal: ArrayLike,
    *,
    mode: int = 0,
    tol: float = 0.0,
) -> tuple[Indices, Indices]:
    """Keeps the elements on the side of a line or plane that `normal` points to, as they are.

    coords: (n, k); connectivity: (e, k) of any type; point, normal: (2,) or (3,). mode 0: elements without a node
    behind; 1: also crossed ones; 2: crossed ones only. tol: how far from the plane nodes are on it. Returns the
    connectivity, and the place that each element came from.

    >>> clip_whole([[0.0, 0], [1, 0], [0, 1], [-1, 0]], [[0, 1, 2], [0, 2, 3]], [0, 0], [1, 0])
    (array([[0, 1, 2]], dtype=uint32), array([0], dtype=uint32))
    """
    origin = _space_vector(point, "point")
    array, part = points(coords, columns=()), index_rows(connectivity, "connectivity")
    towards = vector(normal, "normal", origin.shape[0])
    return _core.clip_whole(array, part, origin, towards, whole(mode, "mode"), real(tol, "tol"))


def clip_exact(
    coords: ArrayLike,
    connectivity: ArrayLike,
    type: TypeLike,
    point: ArrayLike,
    normal: ArrayLike,
    *,
    tol: float = 0.0,
) -> tuple[Floats, Indices, Indices, Indices, Floats]:
    """Cuts a mesh at a line or plane and keeps the part that `normal` points to.

    coords: (n, k), of which columns beyond the dimension may hold fields; connectivity: (e, k) of EDGE2, TRIA3, QUAD4,
    FACE_MIX or TETRA4; point, normal, tol: as in `clip_whole`. Of QUAD4 come triangles, too: read it as FACE_MIX.

    Returns the coordinates with c new nodes behind the old ones, the connectivity, the place that each element came
    from, and of each new node its edge (c, 2) and where it lies on it, (c,), from 0 at the lower node to 1.

    >>> coords, triangles, elements, edges, weights = clip_exact(
    ...     [[0.0, 0], [4, 0], [0, 1]], [[0, 1, 2]], "TRIA3", [1, 0], [-1, 0])
    >>> edges, weights
    (array([[0, 1],
           [1, 2]], dtype=uint32), array([0.25, 0.75]))
    """
    kind = element_type(type)
    origin = _space_vector(point, "point")
    array, part = points(coords, columns=()), elements(connectivity, kind)
    return _core.clip_exact(array, part, kind, origin, vector(normal, "normal", origin.shape[0]), real(tol, "tol"))
