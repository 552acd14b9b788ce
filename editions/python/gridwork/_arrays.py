"""What becomes of array arguments: a view where type and layout allow it, else a copy that is told."""

from __future__ import annotations

import operator
import sys
import warnings
from collections.abc import Sequence
from typing import Any, Tuple, Union

import numpy as np
import numpy.typing as npt

Floats = npt.NDArray[np.float64]
Indices = npt.NDArray[np.uint32]
Bools = npt.NDArray[np.bool_]
ArrayLike = npt.ArrayLike
OneOrMany = Union[npt.ArrayLike, Sequence[npt.ArrayLike]]

NONE = 0xFFFFFFFF
"""No node, no neighbour, nothing found, an unused place in an element: the library's ``~0U``, as an int."""

_LOUD_COPY = 1 << 20


class CopyWarning(ResourceWarning):
    """An argument of 1 MiB or more was copied, because of its type or its layout."""


def _caller_level() -> int:
    """The stack level of the first frame outside of this package, for warnings."""
    level, frame = 1, sys._getframe(1)
    while frame.f_back is not None and frame.f_globals.get("__name__", "").startswith("gridwork"):
        level, frame = level + 1, frame.f_back
    return level


def _is_viewable(array: npt.NDArray[Any]) -> bool:
    """True when the core takes the array as it is: native, aligned, every row in one piece, rows in order and apart."""
    if not (array.flags.aligned and array.dtype.isnative):
        return False
    if array.size == 0 or array.ndim == 0:
        return True
    entry = array.itemsize
    if array.shape[-1] != 1 and array.strides[-1] != entry:
        return False
    if array.ndim == 1 or array.shape[0] == 1:
        return True
    return array.strides[0] >= array.shape[1] * entry and array.strides[0] % entry == 0


def _copied(array: npt.NDArray[Any], dtype: type, name: str) -> npt.NDArray[Any]:
    if array.nbytes >= _LOUD_COPY:
        why = "layout" if array.dtype == dtype else f"type {array.dtype}"
        wanted = "rows in one piece" if array.dtype == dtype else np.dtype(dtype).name
        warnings.warn(
            f"{name}: {array.nbytes >> 20} MiB copied because of the {why}; {wanted} would be taken as it is",
            CopyWarning,
            stacklevel=_caller_level(),
        )
    return np.array(array, dtype=dtype, order="C")


def _as_array(value: Any, name: str) -> npt.NDArray[Any]:
    try:
        array = np.asarray(value)
    except ValueError as error:  # rows of different lengths
        raise ValueError(f"{name}: {error}") from None
    if array.dtype == object and array.size != 0:
        raise TypeError(f"{name}: not an array of numbers")
    return array


def floats(value: ArrayLike, name: str) -> Floats:
    """An array of float64 as the core takes it."""
    array = _as_array(value, name)
    if array.dtype == np.float64 and _is_viewable(array):
        return array
    if array.dtype.kind not in "fiu":
        raise TypeError(f"{name}: {array.dtype} where float64 is expected")
    return _copied(array, np.float64, name)


def _check_range(array: npt.NDArray[Any], name: str) -> None:
    if array.size == 0:
        return
    for extreme in (array.min(), array.max()):
        if not -1 <= int(extreme) <= NONE:
            raise ValueError(f"{name}: {extreme} is no index; these go from 0 to 2**32 - 1, and -1 is NONE")


def indices(value: ArrayLike, name: str) -> Indices:
    """An array of uint32 as the core takes it; -1 is NONE."""
    array = _as_array(value, name)
    if array.dtype == np.int32 and array.dtype.isnative:
        array = array.view(np.uint32)
    if array.dtype == np.uint32 and _is_viewable(array):
        return array
    if array.size == 0 and array.dtype.kind in "fO":  # an empty list
        return np.empty(array.shape, np.uint32)
    if array.dtype.kind not in "iu":
        raise TypeError(f"{name}: {array.dtype} where indices are expected")
    if array.dtype.newbyteorder("=") != np.int32:
        _check_range(array, name)
    return _copied(array, np.uint32, name)


def _refuse(array: npt.NDArray[Any], name: str, expected: str) -> None:
    raise ValueError(f"{name}: shape {array.shape}, expected {expected}")


def _check_columns(array: npt.NDArray[Any], name: str, letter: str, columns: Sequence[int]) -> None:
    fits = array.ndim == 2 and (not columns or array.shape[1] in columns)
    if not fits:
        shapes = [f"({letter}, {k})" for k in columns] or [f"({letter}, k)"]
        _refuse(array, name, " or ".join(shapes))


def points(value: ArrayLike, name: str = "coords", columns: Sequence[int] = (2, 3)) -> Floats:
    """(n, d) coordinates, tensors or the like; `columns` are those allowed, all when empty."""
    array = floats(value, name)
    _check_columns(array, name, "n", columns)
    return array


def vector(value: ArrayLike, name: str, size: int | None = None) -> Floats:
    """One float64 after the other, `size` of them if it is given."""
    array = floats(value, name)
    if array.ndim != 1 or size is not None and array.shape[0] != size:
        _refuse(array, name, f"({'n' if size is None else size},)")
    return array


def index_list(value: ArrayLike, name: str) -> Indices:
    """(k,) indices."""
    array = indices(value, name)
    if array.ndim != 1:
        _refuse(array, name, "(k,)")
    return array


def index_rows(value: ArrayLike, name: str, columns: Sequence[int] = ()) -> Indices:
    """(e, k) indices."""
    array = indices(value, name)
    if array.shape == (0,):
        array = array.reshape(0, columns[0] if columns else 0)
    _check_columns(array, name, "e", columns)
    return array


def indices_of_any_shape(value: ArrayLike, name: str) -> Indices:
    """(k,) or (e, k) indices."""
    array = indices(value, name)
    if array.ndim not in (1, 2):
        _refuse(array, name, "(k,) or (e, k)")
    return array


def real(value: Any, name: str) -> float:
    """One number."""
    array = np.asarray(value)
    if array.ndim != 0 or array.dtype.kind not in "fiu":
        raise TypeError(f"{name}: {type(value).__name__} where a number is expected")
    return float(array)


def whole(value: Any, name: str, least: int = 0, most: int = NONE) -> int:
    """One whole number within bounds."""
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError(f"{name}: {type(value).__name__} where a whole number is expected") from None
    if not least <= number <= most:
        raise ValueError(f"{name}: {number}, expected a number from {least} to {most}")
    return number


def is_many(value: Any) -> bool:
    """True for a list of arrays, not for the rows of one."""
    if not isinstance(value, (list, tuple)):
        return False
    return all(isinstance(item, np.ndarray) and item.ndim == 2 for item in value)


def blocks(value: OneOrMany, name: str = "connectivity") -> list[Indices]:
    """The connectivities of one array or a list of them, in a list of our own."""
    if not is_many(value):
        return [index_rows(value, name)]  # type: ignore[arg-type]
    return [index_rows(item, f"{name}[{k}]") for k, item in enumerate(value)]  # type: ignore[arg-type]


def writable(out: Any, shape: Tuple[int, ...], dtype: type, name: str = "out") -> npt.NDArray[Any]:
    """`out` itself, which is never copied."""
    if not isinstance(out, np.ndarray):
        raise TypeError(f"{name}: {type(out).__name__} where an array is expected")
    fits = out.dtype == dtype or (dtype is np.uint32 and out.dtype == np.int32 and out.dtype.isnative)
    if not fits or not out.flags.writeable or not _is_viewable(out):
        raise TypeError(f"{name}: expected a writeable {np.dtype(dtype).name} array with rows in one piece")
    if out.shape != shape:
        _refuse(out, name, str(shape))
    return out.view(dtype) if out.dtype != dtype else out


def apart(array: npt.NDArray[Any], out: Any) -> npt.NDArray[Any]:
    """The array, or a copy where writing to `out` could change it."""
    shares = isinstance(out, np.ndarray) and np.may_share_memory(array, out)
    return array.copy() if shares else array


def destination(source: npt.NDArray[Any], out: Any) -> npt.NDArray[Any]:
    """Where a function that works in place may write: `out`, or a new array, with the values of `source`."""
    if out is None:
        return np.array(source, order="C")
    target = writable(out, source.shape, source.dtype.type)
    if target is not source:
        np.copyto(target, source)
    return target
