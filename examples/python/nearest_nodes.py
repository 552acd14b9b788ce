"""How far two meshes of one surface are apart: the nearest nodes of one to all nodes of the other.

usage: nearest_nodes.py    writes nearest_nodes.png
"""

# %% Two meshes of a wavy sheet: a regular one, and a coarse one of random points
import time

import gridwork as gw
import matplotlib
import numpy as np

matplotlib.use("Agg")
import matplotlib.pyplot as plt
from matplotlib.tri import Triangulation

rng = np.random.default_rng(4)


def on_the_sheet(x, y, bump):
    return np.c_[x, y, 0.15 * np.sin(5 * x) * np.cos(4 * y) + bump * np.exp(-40 * ((x - 0.7) ** 2 + (y - 0.35) ** 2))]


x, y = np.meshgrid(np.linspace(0, 1, 300), np.linspace(0, 1, 300))
fine = on_the_sheet(x.ravel(), y.ravel(), bump=0.0)
coarse = on_the_sheet(*rng.random((2, 30_000)), bump=0.05)

# %% The nearest node of the coarse mesh to each of the fine one, on all processors
start = time.perf_counter()
detector = gw.NodeDetector(coarse)
ids, distances = detector.find_closest(fine, workers=-1)
print(f"{len(fine)} queries in {time.perf_counter() - start:.3f} s; the largest distance is {distances.max():.3g}")

# %% Carry a field over, and count the nodes within a box round each
field = np.hypot(*(coarse[:, :2] - 0.5).T)[ids]
offsets, inside = detector.find_in_boxes(fine - 0.01, fine + 0.01, workers=-1)
print(f"{np.diff(offsets).mean():.1f} nodes in a box, on average")

# %% Draw
sheet = Triangulation(fine[:, 0], fine[:, 1])
figure, (left, right) = plt.subplots(1, 2, figsize=(11, 4.6), layout="constrained")
for axes, values, label in ((left, distances, "distance to the nearest node"), (right, field, "field of that node")):
    shades = axes.tripcolor(sheet, values, shading="gouraud", cmap="magma" if axes is left else "viridis")
    figure.colorbar(shades, ax=axes, label=label)
    axes.set_aspect("equal")
left.set_title("where the meshes differ")
right.set_title("a field, carried over")
figure.savefig("nearest_nodes.png", dpi=110)
