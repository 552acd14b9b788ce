"""Partition a mesh: its node graph, bisected by the second eigenvector of the Laplacian, and held against networkx.

usage: partition.py    writes partition.png
"""

# %% A mesh of a ring with a gap
import gridwork as gw
import matplotlib
import networkx
import numpy as np
from gridwork.convert import to_csr
from scipy.sparse.csgraph import laplacian
from scipy.sparse.linalg import eigsh

matplotlib.use("Agg")
import matplotlib.pyplot as plt

radii, angles = 14, 120
r, phi = (a.ravel() for a in np.meshgrid(np.linspace(0.5, 1, radii), np.linspace(0.3, 5.9, angles)))
corner = np.arange(radii * angles, dtype=np.uint32).reshape(angles, radii)
quads = np.stack([corner[:-1, :-1], corner[:-1, 1:], corner[1:, 1:], corner[1:, :-1]], -1).reshape(-1, 4)
coords = np.c_[r * np.cos(phi), r * np.sin(phi)]

# %% The graph: rows of a sparse matrix, as get_node_graph() has them
offsets, adjacency = gw.get_node_graph(quads)
graph = to_csr(offsets, adjacency)
print(f"{graph.shape[0]} nodes, {graph.nnz // 2} links, {networkx.number_connected_components(networkx.from_scipy_sparse_array(graph))} component")


# %% Halve it twice, each time at the median of the vector that varies most slowly
def halves(nodes):
    part = graph[nodes][:, nodes].astype(float)
    start = np.random.default_rng(1).random(len(nodes))
    _, vectors = eigsh(laplacian(part), k=2, sigma=-1e-3, v0=start)
    upper = vectors[:, 1] > np.median(vectors[:, 1])
    return nodes[~upper], nodes[upper]


part_of_node = np.zeros(len(coords), np.uint32)
quarters = [quarter for half in halves(np.arange(len(coords))) for quarter in halves(half)]
for number, nodes in enumerate(quarters):
    part_of_node[nodes] = number

# %% Elements go with their first node; the interfaces between the parts
part = part_of_node[quads[:, 0]]
interfaces, pairs = gw.get_colors_boundaries(quads, "QUAD4", part)
print(f"elements a part: {np.bincount(part)}; {len(interfaces)} edges between parts")
for number in range(4):
    pieces, _ = gw.get_subdomains(quads[part == number], "QUAD4")
    print(f"part {number} is in {pieces} piece{'s' if pieces != 1 else ''}")

# %% Draw
from matplotlib.collections import LineCollection, PolyCollection

figure, axes = plt.subplots(figsize=(6, 6), layout="constrained")
axes.add_collection(PolyCollection(coords[quads], array=part, cmap="Set2", edgecolor="white", linewidth=0.3))
axes.add_collection(LineCollection(coords[interfaces], colors="black", linewidths=2))
axes.set(aspect="equal", xlim=(-1.05, 1.05), ylim=(-1.05, 1.05), title=f"{len(interfaces)} edges between four parts")
axes.set_axis_off()
figure.savefig("partition.png", dpi=100)
