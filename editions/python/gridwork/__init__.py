"""QEL Gridwork: finite-element mesh utilities on plain numpy arrays.

A mesh is coordinates, (n, 2) or (n, 3) float64, one row a node, and connectivities, (e, k) uint32, one row an element,
each with an `ElementType`. Arguments of these types are looked at, not copied; other types and layouts are copied, and a
copy of 1 MiB or more is a `CopyWarning`. Functions return new arrays; only what is passed as `out` is written to.

>>> import gridwork as gw
>>> coords, triangles, _, _ = gw.clean([[0.0, 0], [1, 0], [0, 1], [1, 0], [1, 1], [0, 1]], [[0, 1, 2], [3, 4, 5]])
>>> gw.get_mesh_boundaries(triangles, "TRIA3").tolist()
[[2, 0], [0, 1], [3, 2], [1, 3]]
"""

from . import _core
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

__all__ = [
    "ArgumentError",
    "CopyWarning",
    "DeckMesh",
    "ElementType",
    "Error",
    "FormatError",
    "MeditMesh",
    "Mesh",
    "NONE",
    "NodeDetector",
    "ObjMesh",
    "OutOfMemory",
    "SizeRule",
    "VtkMesh",
    "aniso3d_to_aniso2d",
    "bound_metric_gradations",
    "bound_metric_variations",
    "bound_metrics",
    "bounding_box",
    "change_indices",
    "check_ids",
    "clean",
    "clip_exact",
    "clip_whole",
    "copy_edges",
    "copy_mesh",
    "copy_sym_mesh",
    "count_unique_indices",
    "edge_qualities",
    "edge_quality",
    "eigen_pairs",
    "ensight_output",
    "femap_input",
    "femap_output",
    "get_ancestors",
    "get_colors_boundaries",
    "get_connected_elements",
    "get_element_boundaries",
    "get_elements_on_boundaries",
    "get_ids",
    "get_mesh_boundaries",
    "get_mesh_bounding_elements",
    "get_neighbors",
    "get_node_graph",
    "get_sorted_order",
    "get_subdomains",
    "h_shock",
    "h_shocks",
    "is_valid_metric",
    "is_valid_size",
    "iso_to_aniso",
    "jacobians",
    "max_id",
    "maximum_metric",
    "medit_input",
    "medit_output",
    "medit_solution",
    "medit_solution_input",
    "merge",
    "merge_elements",
    "merge_lists",
    "metrics_gen_iso",
    "min_quality",
    "minimum_metric",
    "nastran_input",
    "nastran_output",
    "overwrite_invalid_metrics",
    "permutation",
    "read",
    "remove_degenerated",
    "rotate",
    "shape_qualities",
    "shift_indices",
    "simplify",
    "sort_elfes",
    "stl_input",
    "stl_output",
    "translate",
    "unique_indices",
    "vtk_convert",
    "vtk_input",
    "vtk_output",
    "wavefront_obj_input",
    "wavefront_obj_output",
    "write",
    "zoom",
]
