"""Whole-array tools on node indices: largest, check, shift, renumber, permute, match, distinct, sorted order."""

from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt

from . import _core
from ._arrays import (
    NONE,
    ArrayLike,
    Indices,
    OneOrMany,
    apart,
    blocks,
    destination,
    index_list,
    index_rows,
    indices_of_any_shape,
    is_many,
    vector,
    whole,
)
from .elements import ElementType, TypeLike, element_type

__all__ = [
    "change_indices",
    "check_ids",
    "count_unique_indices",
    "get_ids",
    "get_sorted_order",
    "max_id",
    "permutation",
    "shift_indices",
    "unique_indices",
]


def check_ids(ids: ArrayLike, n: int, type: TypeLike | None = None) -> bool:
    """True when every index is below `n` or `NONE`; of an element `type`, also the shape must be right.

    ids: (k,) or (e, k) indices. With a type, `NONE` is allowed only where it ends a row of a mixed type.

    >>> check_ids([[0, 1, 2], [2, 1, 3]], 4, ElementType.TRIA3)
    True
    >>> check_ids([0, 1, 4], 4)
    False
    """
    if type is not None:
        return _core.check_ids(index_rows(ids, "ids"), element_type(type), whole(n, "n"))
    return _core.check_ids(indices_of_any_shape(ids, "ids"), whole(n, "n"))


def max_id(ids: ArrayLike) -> int | None:
    """The largest index other than `NONE`; None where there is no entry, 0 where there is nothing but `NONE`.

    ids: (k,) or (e, k) indices.

    >>> max_id([[0, 1, 7], [7, 1, -1]])
    7
    """
    largest = _core.max_id(indices_of_any_shape(ids, "ids"))
    return None if largest == NONE else largest


def shift_indices(ids: ArrayLike, shift: int, type: TypeLike | None = None, *, out: Indices | None = None) -> Indices:
    """Adds `shift` to the indices, modulo 2**32.

    ids: (k,) or (e, k) indices. `NONE` stays in lists, in arrays without a type, and in the mixed types; in an array
    of any other type every entry is shifted. out: array of the same shape that takes the result, or `ids` itself.

    >>> shift_indices([0, 1, -1], 10)
    array([        10,         11, 4294967295], dtype=uint32)
    """
    source, by = indices_of_any_shape(ids, "ids"), whole(shift, "shift", -(2**31), 2**31 - 1)
    target = destination(source, out)
    if target.ndim == 1:
        _core.shift_indices(target, by)
    else:
        _core.shift_indices(target, by, ElementType.SOLID_MIX if type is None else element_type(type))
    return target if out is None else out


def change_indices(ids: ArrayLike, new_ids: ArrayLike, *, out: Indices | None = None) -> Indices:
    """Replaces every index e by ``new_ids[e]``; those beyond the table stay, `NONE` too.

    ids: (k,) or (e, k) indices; new_ids: (n,) indices. out: as in `shift_indices`.

    >>> change_indices([[0, 1, 3]], [5, 6])
    array([[5, 6, 3]], dtype=uint32)
    """
    table = apart(index_list(new_ids, "new_ids"), out)
    target = destination(indices_of_any_shape(ids, "ids"), out)
    _core.change_indices(target, table)
    return target if out is None else out


def permutation(values: ArrayLike, perm: ArrayLike) -> npt.NDArray[Any]:
    """Moves entry i to place ``perm[i]``: ``result[perm[i]] == values[i]``.

    values: (n,) floats or indices; perm: (n,) indices. Entries of `perm` that are not below n move nothing.

    >>> permutation([1.5, 2.5, 3.5], [2, 0, 1])
    array([2.5, 3.5, 1.5])
    """
    array, places = np.asarray(values), index_list(perm, "perm")
    if array.dtype.kind == "f":
        return _core.permutation(vector(array, "values"), places)
    return _core.permutation(index_list(array, "values"), places)


def get_ids(a: ArrayLike, b: ArrayLike, *, exact: bool = True) -> tuple[Indices, Indices]:
    """Finds equal entries of two lists, or equal rows of two arrays.

    a, b: (n,) and (m,), or (n, k) and (m, k) indices. Returns `b_in_a`, (m,): the first place in `a` of each entry of
    `b`, or `NONE`; and `a_in_b`, (n,). exact=False: rows are equal when they are the same cycle of nodes, in either
    direction.

    >>> b_in_a, a_in_b = get_ids([[0, 1, 2], [2, 1, 3]], [[1, 3, 2]], exact=False)
    >>> b_in_a
    array([1], dtype=uint32)
    """
    first, second = indices_of_any_shape(a, "a"), indices_of_any_shape(b, "b")
    if first.ndim != second.ndim:
        raise ValueError(f"b: shape {second.shape}, but a has {first.shape}")
    if first.ndim == 1:
        return _core.get_ids(first, second)
    return _core.get_ids(first, second, bool(exact))


def unique_indices(ids: OneOrMany, excluded: ArrayLike | None = None) -> Indices:
    """The distinct indices, in order of first appearance, without `NONE`.

    ids: (k,) or (e, k) indices, or a list of (e, k) arrays; excluded: (m,) indices that are left out.

    >>> unique_indices([[4, 1, 2], [2, 1, 0]])
    array([4, 1, 2, 0], dtype=uint32)
    """
    without = index_list([] if excluded is None else excluded, "excluded")
    if is_many(ids):
        return _core.unique_indices(blocks(ids, "ids"), without)
    one = indices_of_any_shape(ids, "ids")  # type: ignore[arg-type]
    return _core.unique_indices(one if one.ndim == 1 else [one], without)


def count_unique_indices(ids: OneOrMany) -> int:
    """How many distinct indices there are, without `NONE`.

    ids: (k,) or (e, k) indices, or a list of (e, k) arrays.

    >>> count_unique_indices([[4, 1, 2], [2, 1, 0]])
    4
    """
    if is_many(ids):
        return _core.count_unique_indices(blocks(ids, "ids"))
    one = indices_of_any_shape(ids, "ids")  # type: ignore[arg-type]
    return _core.count_unique_indices([one.reshape(-1, 1) if one.ndim == 1 else one])


def get_sorted_order(values: ArrayLike) -> tuple[Indices, Indices]:
    """Sorts places by value: turns "node of each corner" into "corners of each node".

    values: (n,) indices, of which `NONE` is left out. Returns `order`, the places by value, and `offsets`, one more
    than values up to the largest: those of v are ``order[offsets[v]:offsets[v + 1]]``.

    >>> get_sorted_order([2, 0, 2])
    (array([1, 0, 2], dtype=uint32), array([0, 1, 1, 3], dtype=uint32))
    """
    return _core.get_sorted_order(index_list(values, "values"))
