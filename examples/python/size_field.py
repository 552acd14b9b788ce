"""Adapt a size field: sizes prescribed at a few nodes, bounded, and graded so that neighbours differ by little.

usage: size_field.py    writes size_field.png
"""

# %% A mesh of the unit square, and sizes that jump
import gridwork as gw
import matplotlib
import numpy as np

matplotlib.use("Agg")
import matplotlib.pyplot as plt
from matplotlib.tri import Triangulation

n = 120
x, y = (a.ravel() for a in np.meshgrid(np.linspace(0, 1, n + 1), np.linspace(0, 1, n + 1)))
corner = np.arange((n + 1) ** 2).reshape(n + 1, n + 1)
a, b, c, d = corner[:-1, :-1].ravel(), corner[:-1, 1:].ravel(), corner[1:, 1:].ravel(), corner[1:, :-1].ravel()
triangles = np.vstack([np.c_[a, b, c], np.c_[a, c, d]]).astype(np.uint32)
coords = np.c_[x, y]

sizes = np.full(len(coords), 0.3)
sizes[np.abs(np.hypot(x - 0.4, y - 0.55) - 0.25) < 0.006] = 0.002  # a circle that has to be resolved
sizes[np.hypot(x - 0.85, y - 0.2) < 0.03] = 0.01

# %% How fast they change, and sizes that change by 20 % from edge to edge at most
bounded, _ = gw.bound_metrics(sizes, 0.004, 0.2)
graded, changed = gw.bound_metric_gradations(coords, triangles, "TRIA3", bounded, 1.2)
for name, field in (("given", sizes), ("graded", graded)):
    print(f"{name}: largest H-shock {gw.h_shocks(coords, triangles, 'TRIA3', field).max():.3g}")
print(f"{len(changed)} of {len(coords)} nodes were changed")
elements = (gw.jacobians(coords, triangles, "TRIA3")[:, None] / 2 / (np.sqrt(3) / 4 * graded[triangles] ** 2)).mean(axis=1).sum()
print(f"a mesh of these sizes has about {elements:.0f} triangles")

# %% The same with tensors: thin across the circle, long along it
angle = np.arctan2(y - 0.55, x - 0.4)
near = sizes == 0.002
thin, long = np.where(near, 0.004, 0.2), np.where(near, 0.05, 0.2)
c, s = np.cos(angle), np.sin(angle)
tensors = np.c_[c * c / thin**2 + s * s / long**2, c * s * (1 / thin**2 - 1 / long**2), s * s / thin**2 + c * c / long**2]
tensors, _ = gw.bound_metric_variations(coords, triangles, "TRIA3", tensors, np.log(1.2))
w, v, ok = gw.eigen_pairs(tensors)
assert ok.all()

# %% Draw
mesh = Triangulation(x, y, triangles)
figure, axes = plt.subplots(1, 3, figsize=(14, 4.3), layout="constrained")
for ax, field, title in zip(axes, (sizes, graded, w[:, 1] ** -0.5), ("given sizes", "graded sizes", "smaller size of the tensors")):
    shades = ax.tripcolor(mesh, np.log10(field), shading="gouraud", vmin=-2.5, vmax=-0.5)
    ax.set(title=title, aspect="equal", xlim=(0, 1), ylim=(0, 1), xticks=[], yticks=[])
figure.colorbar(shades, ax=axes, label="log10 of the size")
some = np.flatnonzero((corner % 9 == 4).ravel() & (np.arange(len(x)) // (n + 1) % 9 == 4))
for k in some:
    turn = np.linspace(0, 2 * np.pi, 25)
    ellipse = v[k] @ (0.35 * w[k, :, None] ** -0.5 * np.stack([np.cos(turn), np.sin(turn)]))
    axes[2].plot(x[k] + ellipse[0], y[k] + ellipse[1], color="white", linewidth=0.6)
axes[2].set(xlim=(0, 1), ylim=(0, 1))
figure.savefig("size_field.png", dpi=100)
