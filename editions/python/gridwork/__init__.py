"""QEL Gridwork: finite-element mesh utilities on plain numpy arrays.

A mesh is coordinates, (n, 2) or (n, 3) float64, one row a node, and connectivities, (e, k) uint32, one row an element,
each with an `ElementType`. Arguments of these types are looked at, not copied; other types and layouts are copied, and a
copy of 1 MiB or more is a `CopyWarning`. Functions return new arrays; only what is passed as `out` is written to.

>>> import gridwork as gw
>>> coords, triangles, _, _ = gw.clean([[0.0, 0], [1, 0], [0, 1], [1, 0], [1, 1], [0, 1]], [[0, 1, 2], [3, 4, 5]])
>>> gw.get_mesh_boundaries(triangles, "TRIA3").tolist()
[[2, 0], [0, 1], [3, 2], [1, 3]]
"""

from . import _core, ids, io, metrics, quality, search, topology, transforms
from ._arrays import NONE, CopyWarning
from ._errors import ArgumentError, Error, FormatError, OutOfMemory
from .elements import ElementType
from .ids import *
from .io import *
from .metrics import *
from .quality import *
from .search import *
from .topology import *
from .transforms import *

__version__: str = _core.version

__all__ = ["ArgumentError", "CopyWarning", "ElementType", "Error", "FormatError", "NONE", "OutOfMemory"]
__all__ += ids.__all__
__all__ += io.__all__
__all__ += metrics.__all__
__all__ += quality.__all__
__all__ += search.__all__
__all__ += topology.__all__
__all__ += transforms.__all__
