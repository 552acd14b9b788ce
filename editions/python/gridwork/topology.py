"""Adjacency and boundaries of element meshes: neighbours, boundaries, sub-domains, node graph, edges.

A *slot* is boundary k of element e; its code is e * B + k, where B is ``type.nbr_boundaries``. The linear types are
accepted. Where `neighbors` is an argument, it is what `get_neighbors` returns, and made when it is left out.
"""

from __future__ import annotations

from collections.abc import Sequence
from typing import Union

from . import _core
from ._arrays import ArrayLike, Indices, OneOrMany, blocks, index_list, index_rows, indices_of_any_shape, is_many, whole
from .elements import ElementType, TypeLike, element_type

__all__ = [
    "copy_edges",
    "get_ancestors",
    "get_colors_boundaries",
    "get_connected_elements",
    "get_element_boundaries",
    "get_elements_on_boundaries",
    "get_mesh_boundaries",
    "get_mesh_bounding_elements",
    "get_neighbors",
    "get_node_graph",
    "get_subdomains",
    "sort_elfes",
]

OneOrManyTypes = Union[TypeLike, Sequence[TypeLike]]

_MEMBERS = {ElementType.FACE_MIX: (3, 4), ElementType.SOLID_MIX: (4, 5, 6, 8)}


def elements(value: ArrayLike, kind: ElementType, name: str = "connectivity") -> Indices:
    """(e, k) indices of a type; a mixed type may have the columns of a member."""
    array = index_rows(value, name, () if kind.nbr_nodes else (0,))
    columns = _MEMBERS.get(kind, (kind.nbr_nodes,))
    if array.size != 0 and array.shape[1] not in columns:
        takes = " or ".join(f"(e, {k})" for k in columns)
        raise ValueError(f"{name}: shape {array.shape}, {kind.name} takes {takes}")
    return array


def typed_blocks(connectivity: OneOrMany, type: OneOrManyTypes) -> tuple[list[Indices], list[ElementType]]:
    """The connectivities of one array or a list of them, with their types."""
    arrays = blocks(connectivity)
    many = isinstance(type, (list, tuple))
    types = [element_type(t) for t in type] if many else [element_type(type)]  # type: ignore[union-attr, arg-type]
    if len(types) != len(arrays):
        raise ValueError(f"type: {len(types)} of them for {len(arrays)} connectivities")
    for k, (array, kind) in enumerate(zip(arrays, types)):
        elements(array, kind, f"connectivity[{k}]" if is_many(connectivity) else "connectivity")
    return arrays, types


def _neighbors(neighbors: ArrayLike | None, connectivity: Indices, kind: ElementType) -> Indices:
    if neighbors is None:
        return _core.get_neighbors(connectivity, kind, False)
    return index_rows(neighbors, "neighbors")


def get_neighbors(connectivity: ArrayLike, type: TypeLike, *, pair_non_manifold: bool = False) -> Indices:
    """The element across each boundary of each element, (e, B); `NONE` where there is none.

    connectivity: (e, k). A boundary that three or more elements share has no neighbours; with `pair_non_manifold` the
    first gets the last one, and each other one the first.

    >>> get_neighbors([[0, 1, 2], [2, 1, 3]], "TRIA3")
    array([[         1, 4294967295, 4294967295],
           [4294967295, 4294967295,          0]], dtype=uint32)
    """
    kind = element_type(type)
    return _core.get_neighbors(elements(connectivity, kind), kind, bool(pair_non_manifold))


def get_element_boundaries(connectivity: ArrayLike, type: TypeLike) -> Indices:
    """Every boundary of every element, inner ones from both sides, (b, k).

    connectivity: (e, k). k is 1 for edges, 2 for faces, 3 for tetrahedra, 4 for other solids (`NONE` at the end of a
    triangle).

    >>> get_element_boundaries([[0, 1, 2]], "TRIA3")
    array([[1, 2],
           [2, 0],
           [0, 1]], dtype=uint32)
    """
    kind = element_type(type)
    return _core.get_element_boundaries(elements(connectivity, kind), kind)


def get_mesh_boundaries(connectivity: ArrayLike, type: TypeLike, neighbors: ArrayLike | None = None) -> Indices:
    """The boundaries without a neighbour, (b, k): the surface of solids, the open edges of a surface.

    connectivity: (e, k); neighbors: (e, B).

    >>> get_mesh_boundaries([[0, 1, 2], [2, 1, 3]], "TRIA3")
    array([[2, 0],
           [0, 1],
           [1, 3],
           [3, 2]], dtype=uint32)
    """
    kind = element_type(type)
    array = elements(connectivity, kind)
    return _core.get_mesh_boundaries(array, _neighbors(neighbors, array, kind), kind)


def get_mesh_bounding_elements(
    connectivity: ArrayLike, type: TypeLike, neighbors: ArrayLike | None = None
) -> tuple[Indices, int]:
    """The slots without a neighbour, (b,), and B. In mixed arrays also slots that an element does not have.

    connectivity: (e, k); neighbors: (e, B). The elements are ``slots // B``, their boundaries ``slots % B``.

    >>> get_mesh_bounding_elements([[0, 1, 2], [2, 1, 3]], "TRIA3")
    (array([1, 2, 3, 4], dtype=uint32), 3)
    """
    kind = element_type(type)
    array = elements(connectivity, kind)
    return _core.get_mesh_bounding_elements(array, _neighbors(neighbors, array, kind), kind)


def get_elements_on_boundaries(
    boundaries: ArrayLike,
    connectivity: ArrayLike,
    type: TypeLike,
    neighbors: ArrayLike | None = None,
    ancestors: ArrayLike | None = None,
) -> tuple[Indices, int]:
    """The slot that coincides with each boundary, (b,), or `NONE`; and B.

    boundaries: (b, k); connectivity: (e, k); neighbors: (e, B); ancestors: (n,), what `get_ancestors` returns.

    >>> get_elements_on_boundaries([[1, 3]], [[0, 1, 2], [2, 1, 3]], "TRIA3")
    (array([3], dtype=uint32), 3)
    """
    kind = element_type(type)
    array = elements(connectivity, kind)
    links = _neighbors(neighbors, array, kind)
    first = _core.get_ancestors(array) if ancestors is None else index_list(ancestors, "ancestors")
    return _core.get_elements_on_boundaries(index_rows(boundaries, "boundaries"), array, links, first, kind)


def get_subdomains(
    connectivity: ArrayLike,
    type: TypeLike,
    neighbors: ArrayLike | None = None,
    *,
    walls: ArrayLike | None = None,
) -> tuple[int, Indices]:
    """Colours the connected parts of a mesh: their number, and the colour of each element, (e,).

    connectivity: (e, k); neighbors: (e, B). walls: boundaries that connect nothing, as (w,) slots or (w, k) nodes.

    >>> get_subdomains([[0, 1, 2], [2, 1, 3], [4, 5, 6]], "TRIA3")
    (2, array([0, 0, 1], dtype=uint32))
    """
    kind = element_type(type)
    array = elements(connectivity, kind)
    links = _neighbors(neighbors, array, kind)
    barriers = index_list([], "walls") if walls is None else indices_of_any_shape(walls, "walls")
    return _core.get_subdomains(array, links, kind, barriers)


def get_colors_boundaries(
    connectivity: ArrayLike,
    type: TypeLike,
    colors: ArrayLike,
    neighbors: ArrayLike | None = None,
    *,
    mode: int = 0,
    as_slots: bool = False,
) -> tuple[Indices, Indices]:
    """The boundaries between elements of different colours, (b, k), and the two colours of each, (b, 2).

    connectivity: (e, k); colors: (e,) any numbers; neighbors: (e, B). mode 0: boundaries between two colours, once;
    1: also the outer ones, whose second colour is `NONE`; 2: the whole boundary of every colour. as_slots: slots (b,)
    in place of nodes.

    >>> boundaries, pairs = get_colors_boundaries([[0, 1, 2], [2, 1, 3]], "TRIA3", [7, 9])
    >>> boundaries, pairs
    (array([[1, 2]], dtype=uint32), array([[7, 9]], dtype=uint32))
    """
    kind = element_type(type)
    array = elements(connectivity, kind)
    links = _neighbors(neighbors, array, kind)
    make = _core.get_colors_slots if as_slots else _core.get_colors_boundaries
    return make(array, links, kind, index_list(colors, "colors"), whole(mode, "mode"))


def sort_elfes(
    neighbors: ArrayLike, colors: ArrayLike, slots: ArrayLike
) -> tuple[Indices, Indices, Indices, Indices]:
    """Sorts slots into groups by the colours that they separate: every interface becomes one run.

    neighbors: (e, B); colors: (e,); slots: (b,). Returns the slots sorted, the place that each came from, pairs (g, 2)
    of colours, and offsets (g + 1,): the slots of group i are ``slots[offsets[i]:offsets[i + 1]]``. `NONE` comes last
    and belongs to no group.

    >>> links = get_neighbors([[0, 1, 2], [2, 1, 3]], "TRIA3")
    >>> slots, order, pairs, offsets = sort_elfes(links, [7, 9], [5, 0])
    >>> slots, pairs
    (array([0, 5], dtype=uint32), array([[7, 9],
           [9, 7]], dtype=uint32))
    """
    return _core.sort_elfes(index_rows(neighbors, "neighbors"), index_list(colors, "colors"), index_list(slots, "slots"))


def get_ancestors(connectivity: ArrayLike) -> Indices:
    """The last element that holds each node, (n,), or `NONE`; n is one more than the largest node.

    connectivity: (e, k), of any type.

    >>> get_ancestors([[0, 1, 2], [2, 1, 3]])
    array([0, 1, 1, 1], dtype=uint32)
    """
    return _core.get_ancestors(index_rows(connectivity, "connectivity"))


def get_connected_elements(connectivity: ArrayLike) -> tuple[Indices, Indices]:
    """The elements that hold each node: those of node i are ``elements[offsets[i]:offsets[i + 1]]``.

    connectivity: (e, k), of any type. Returns offsets (n + 1,) and elements.

    >>> get_connected_elements([[0, 1], [1, 2]])
    (array([0, 1, 3, 4], dtype=uint32), array([0, 0, 1, 1], dtype=uint32))
    """
    return _core.get_connected_elements(index_rows(connectivity, "connectivity"))


def get_node_graph(connectivity: ArrayLike) -> tuple[Indices, Indices]:
    """The other nodes of the elements of each node: those of node i are ``adjacency[offsets[i]:offsets[i + 1]]``.

    connectivity: (e, k), of any type. Returns offsets (n + 1,) and adjacency, as graph partitioners take them.

    >>> get_node_graph([[0, 1], [1, 2]])
    (array([0, 1, 3, 4], dtype=uint32), array([1, 0, 2, 1], dtype=uint32))
    """
    return _core.get_node_graph(index_rows(connectivity, "connectivity"))


def copy_edges(connectivity: OneOrMany, type: OneOrManyTypes) -> Indices:
    """The edges of a mesh, each once, (m, 2): lower node, higher node, in lexicographic order.

    connectivity: (e, k) of a type, or lists of both.

    >>> copy_edges([[0, 1, 2], [2, 1, 3]], "TRIA3")
    array([[0, 1],
           [0, 2],
           [1, 2],
           [1, 3],
           [2, 3]], dtype=uint32)
    """
    return _core.copy_edges(*typed_blocks(connectivity, type))
