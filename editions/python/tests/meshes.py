"""Meshes to try things on."""

import numpy as np

_PATHS = np.array([[0, 1, 3], [0, 1, 5], [0, 2, 3], [0, 2, 6], [0, 4, 5], [0, 4, 6]])


def tetrahedra(cells):
    """A unit cube of `cells`**3 cubes, six tetrahedra each; every tetrahedron has a positive quality."""
    side = cells + 1
    coords = np.stack(np.meshgrid(*[np.arange(side)] * 3, indexing="ij"), -1).reshape(-1, 3) / cells
    base = np.stack(np.meshgrid(*[np.arange(cells)] * 3, indexing="ij"), -1).reshape(-1, 3) @ [side * side, side, 1]
    corner = np.array([(k >> 2) * side * side + (k >> 1 & 1) * side + (k & 1) for k in range(8)])
    local = np.concatenate([_PATHS, np.full((6, 1), 7)], axis=1)
    elements = (base[:, None, None] + corner[local]).reshape(-1, 4).astype(np.uint32)
    a, b, c, d = (coords[elements[:, k]] for k in range(4))
    turned = np.einsum("ij,ij->i", np.cross(a - d, b - d), c - d) < 0
    elements[turned] = elements[turned][:, [1, 0, 2, 3]]
    return coords, elements


def sphere_soup(parallels=24, meridians=48):
    """Triangles of a sphere, none of them sharing a node: (n, 3) and (e, 3)."""
    theta = np.linspace(0, np.pi, parallels + 1)
    phi = np.linspace(0, 2 * np.pi, meridians, endpoint=False)
    grid = np.stack(
        [np.outer(np.sin(theta), np.cos(phi)), np.outer(np.sin(theta), np.sin(phi)), np.outer(np.cos(theta), np.ones_like(phi))],
        -1,
    )
    nodes = np.arange((parallels + 1) * meridians).reshape(parallels + 1, meridians)
    east = np.roll(nodes, -1, axis=1)
    lower = np.stack([nodes[:-1], nodes[1:], east[1:]], -1)[:-1].reshape(-1, 3)
    upper = np.stack([nodes[:-1], east[1:], east[:-1]], -1)[1:].reshape(-1, 3)
    corners = grid.reshape(-1, 3)[np.concatenate([lower, upper]).ravel()]
    return corners, np.arange(len(corners), dtype=np.uint32).reshape(-1, 3)
