"""The element types."""

from __future__ import annotations

import enum
from typing import Union

from . import _core


class ElementType(enum.IntEnum):
    """The type of the elements of a connectivity.

    Vertices come first in a row, the other nodes of quadratic elements follow. The mixed types hold the linear elements
    of a family in one array, with `NONE` in the last places of a row that are not used: `FACE_MIX` (4 columns)
    triangles and quadrangles, `SOLID_MIX` (8 columns) tetrahedra, pyramids, wedges and hexahedra.

    >>> ElementType.TETRA4.nbr_nodes, ElementType.TETRA4.nbr_boundaries
    (4, 4)
    """

    UNKNOWN = 0
    NODE = 1
    EDGE_MIX = 2
    EDGE2 = 3
    EDGE3 = 4
    FACE_MIX = 5
    TRIA3 = 6
    QUAD4 = 7
    TRIA6 = 8
    QUAD8 = 9
    QUAD9 = 10
    SOLID_MIX = 11
    TETRA4 = 12
    TETRA10 = 13
    PYRAMID5 = 14
    PYRAMID13 = 15
    PYRAMID14 = 16
    WEDGE6 = 17
    WEDGE15 = 18
    WEDGE18 = 19
    HEXA8 = 20
    HEXA20 = 21
    HEXA27 = 22

    @property
    def nbr_nodes(self) -> int:
        """Nodes of an element: the columns of a connectivity of this type."""
        return _core.element_table(self)[0]

    @property
    def nbr_base_nodes(self) -> int:
        """Vertices of an element."""
        return _core.element_table(self)[1]

    @property
    def element_dim(self) -> int:
        """Dimension of an element: 0 (node) to 3 (solid)."""
        return _core.element_table(self)[2]

    @property
    def nbr_boundaries(self) -> int:
        """Boundaries of an element: faces of a solid, edges of a face, ends of an edge."""
        return _core.element_table(self)[3]


TypeLike = Union[ElementType, int, str]
"""An element type, its number or its name."""


def element_type(value: TypeLike) -> ElementType:
    """The element type of a number or a name.

    >>> element_type("tria3")
    <ElementType.TRIA3: 6>
    """
    if isinstance(value, str):
        try:
            return ElementType[value.upper()]
        except KeyError:
            raise ValueError(f"type: {value!r} is no element type") from None
    return ElementType(value)
