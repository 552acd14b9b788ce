"""Repair an STL file, and show its holes and its worst triangles.

usage: repair_stl.py [FILE]    writes repaired.stl and repair_stl.png
"""

# %% A file that is broken, unless one is named: the bracket without the triangles round three nodes
import pathlib
import sys

import gridwork as gw
import matplotlib
import numpy as np

matplotlib.use("Agg")
import matplotlib.pyplot as plt
from mpl_toolkits.mplot3d.art3d import Line3DCollection, Poly3DCollection

bracket = pathlib.Path(__file__).parents[1] / "data" / "bracket.stl"
file = sys.argv[1] if len(sys.argv) > 1 else "broken.stl"
if len(sys.argv) == 1:
    coords, triangles = gw.stl_input(bracket)
    gw.stl_output(file, coords, triangles[~np.isin(triangles, [30, 877, 1105]).any(axis=1)])

# %% Read: nodes that coincide or nearly do become one
coords, triangles = gw.stl_input(file)

# %% What is wanting: open edges, pieces, bad triangles
edges = gw.get_mesh_boundaries(triangles, "TRIA3")
holes, hole_of_edge = gw.get_subdomains(edges, "EDGE2")
pieces, piece_of_triangle = gw.get_subdomains(triangles, "TRIA3")
quality = gw.shape_qualities(coords, triangles, "TRIA3")
print(f"{len(coords)} nodes, {len(triangles)} triangles in {pieces} pieces")
print(f"{len(edges)} open edges round {holes} holes, worst quality {quality.min():.3g}")

# %% The area of a hole: that of the fan round its middle
for hole in range(holes):
    a, b = coords[edges[hole_of_edge == hole].T]
    middle = a.mean(axis=0)
    area = np.linalg.norm(np.cross(a - middle, b - middle).sum(axis=0)) / 2
    print(f"hole {hole}: {len(a)} edges, area {area:.4g}, round {middle.round(3)}")

# %% Close the holes by such fans, and write the part
fans = [np.c_[edges[hole_of_edge == hole][:, ::-1], np.full((hole_of_edge == hole).sum(), len(coords) + hole)] for hole in range(holes)]
middles = [coords[edges[hole_of_edge == hole, 0]].mean(axis=0) for hole in range(holes)]
closed = np.vstack([triangles, *fans]).astype(np.uint32)
nodes = np.vstack([coords, *middles])
print(f"{len(gw.get_mesh_boundaries(closed, 'TRIA3'))} open edges are left")
gw.write("repaired.stl", nodes, closed, "TRIA3")

# %% Draw: the part, coloured by quality, and its open edges
figure = plt.figure(figsize=(9, 6))
axes = figure.add_subplot(projection="3d", computed_zorder=False)  # so that edges are seen through the part
normals = np.cross(*(coords[triangles[:, k]] - coords[triangles[:, 0]] for k in (1, 2)))
length = np.linalg.norm(normals, axis=1, keepdims=True)
light = 0.65 + 0.35 * np.abs((normals / np.where(length == 0, 1, length)) @ [0.4, -0.5, 0.77])
colors = plt.cm.viridis(quality)
colors[:, :3] *= light[:, None]
axes.add_collection3d(Poly3DCollection(coords[triangles], facecolors=colors, edgecolor=(0, 0, 0, 0.15), linewidth=0.3))
axes.add_collection3d(Line3DCollection(coords[edges], colors="red", linewidths=2))
lower, upper = gw.bounding_box(coords)
axes.set(xlim=(lower[0], upper[0]), ylim=(lower[1], upper[1]), zlim=(lower[2], upper[2]))
axes.set_box_aspect(upper - lower)
axes.set_axis_off()
axes.set_title(f"{pathlib.Path(file).name}: {len(edges)} open edges round {holes} holes")
bar = figure.colorbar(plt.cm.ScalarMappable(cmap="viridis"), ax=axes, shrink=0.6, label="shape quality")
figure.savefig("repair_stl.png", dpi=110, bbox_inches="tight")
