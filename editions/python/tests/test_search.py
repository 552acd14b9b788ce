"""The detector against scipy's cKDTree and numpy; merging against numpy; threads."""

import pickle
import threading

import gridwork as gw
import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from hypothesis.extra import numpy as hnp
from meshes import sphere_soup
from scipy.spatial import cKDTree


def clustered(rng, n, d):
    centers = rng.random((20, d))
    return centers[rng.integers(20, size=n)] + 1e-3 * rng.standard_normal((n, d))


def lattice(rng, n, d):
    return rng.integers(0, 6, size=(n, d)).astype(float)


@pytest.mark.parametrize("d", [2, 3])
@pytest.mark.parametrize("make", [lambda rng, n, d: rng.random((n, d)), clustered, lattice])
def test_closest_nodes_are_those_of_ckdtree(rng, make, d):
    coords, queries = make(rng, 4000, d), make(rng, 3000, d) + 0.01
    ids, distances = gw.NodeDetector(coords).find_closest(queries, workers=2)
    expected, _ = cKDTree(coords).query(queries)
    np.testing.assert_allclose(distances, expected, rtol=1e-12)
    np.testing.assert_array_equal(distances, np.sqrt(((coords[ids] - queries) ** 2).sum(1)))
    one = gw.NodeDetector(coords).find_closest(queries[7])
    assert one == (ids[7], distances[7])


def test_closest_other_nodes(rng):
    coords = rng.random((500, 3))
    detector = gw.NodeDetector(coords, np.arange(100))
    ids, distances = detector.find_closest_node(np.arange(500), workers=-1)
    expected, neighbours = cKDTree(coords[:100]).query(coords, k=2)
    own = np.arange(500) < 100
    np.testing.assert_array_equal(ids, np.where(own, neighbours[:, 1], neighbours[:, 0]))
    np.testing.assert_allclose(distances, np.where(own, expected[:, 1], expected[:, 0]))
    assert detector.find_closest_node(10**9) == (gw.NONE, np.inf)


@pytest.mark.parametrize("workers", [1, 3])
def test_boxes_are_those_of_numpy(rng, workers):
    coords = lattice(rng, 300, 3)
    lower = rng.integers(-1, 6, size=(700, 3)).astype(float)
    upper = lower + rng.integers(-1, 3, size=(700, 3))
    detector = gw.NodeDetector(coords)
    offsets, ids = detector.find_in_boxes(lower, upper, workers=workers)
    inside = (lower[:, None] <= coords).all(2) & (coords <= upper[:, None]).all(2)
    np.testing.assert_array_equal(np.diff(offsets), inside.sum(1))
    for i in range(700):
        assert set(ids[offsets[i] : offsets[i + 1]]) == set(np.flatnonzero(inside[i]))
    np.testing.assert_array_equal(detector.find_in_box(lower[5], upper[5]), ids[offsets[5] : offsets[6]])


@given(hnp.arrays(np.float64, st.tuples(st.integers(0, 30), st.sampled_from([2, 3])), elements=st.floats(allow_subnormal=False)))
def test_detectors_of_any_coordinates(coords):
    detector = gw.NodeDetector(coords)
    ids, distances = detector.find_closest(coords)
    assert ((ids < len(coords)) | (ids == gw.NONE)).all() and (distances[ids == gw.NONE] == np.inf).all()
    merged, moved, new_ids = gw.merge(coords, 0.5)
    assert merged == (new_ids != np.arange(len(coords))).sum()
    np.testing.assert_array_equal(moved, coords[new_ids])


def test_pickled_detectors_answer_alike(rng):
    coords = lattice(rng, 200, 2)
    detector = gw.NodeDetector(coords, np.arange(50))
    detector.insert(np.arange(50, 200))
    twin = pickle.loads(pickle.dumps(detector))
    queries = rng.random((100, 2)) * 6
    np.testing.assert_array_equal(detector.find_closest(queries)[0], twin.find_closest(queries)[0])
    np.testing.assert_array_equal(detector.find_in_box([1, 1], [4, 4]), twin.find_in_box([1, 1], [4, 4]))


def test_eight_threads_query_while_one_inserts(rng):
    coords = rng.random((20_000, 3))
    detector = gw.NodeDetector(coords, np.arange(10_000))
    queries = rng.random((500, 3))
    before, after = (cKDTree(coords[:n]).query(queries)[0] for n in (10_000, 20_000))
    wrong, done = [], threading.Event()

    def ask():
        while not done.is_set():
            distances = detector.find_closest(queries)[1]
            wrong.append((distances > before * (1 + 1e-12)).any() or (distances < after * (1 - 1e-12)).any())

    threads = [threading.Thread(target=ask) for _ in range(8)]
    for thread in threads:
        thread.start()
    for first in range(10_000, 20_000, 1000):
        assert detector.insert(np.arange(first, first + 1000)) == 1000
    done.set()
    for thread in threads:
        thread.join()
    assert len(wrong) >= 8 and not any(wrong)
    np.testing.assert_allclose(detector.find_closest(queries)[1], after, rtol=1e-12)


def test_other_threads_run_during_a_call():
    coords = np.random.default_rng(1).random((400_000, 3))
    ticks, done = [0], threading.Event()

    def tick():
        while not done.is_set():
            ticks[0] += 1

    thread = threading.Thread(target=tick)
    thread.start()
    before = ticks[0]
    gw.NodeDetector(coords)
    during = ticks[0] - before
    done.set()
    thread.join()
    assert during > 1000


def test_coincident_nodes_are_those_of_numpy(rng):
    coords = lattice(rng, 2000, 3)
    merged, _, new_ids = gw.merge(coords)
    _, first, inverse = np.unique(coords, axis=0, return_index=True, return_inverse=True)
    np.testing.assert_array_equal(new_ids, first[inverse.ravel()])
    assert merged == len(coords) - len(first)


def test_a_sphere_of_loose_triangles_closes():
    soup, triangles = sphere_soup()
    coords, connectivity, new_ids, new_elements = gw.clean(soup, triangles, 1e-9)
    assert len(gw.get_mesh_boundaries(connectivity, "TRIA3")) == 0
    edges = gw.copy_edges(connectivity, "TRIA3")
    assert len(coords) - len(edges) + len(connectivity) == 2
    np.testing.assert_allclose(coords[new_ids], soup, atol=1e-9)
    np.testing.assert_array_equal(connectivity[new_elements], new_ids[triangles])


def test_clean_drops_what_collapsed():
    coords, connectivity, new_ids, new_elements = gw.clean([[0.0, 0], [1, 0], [1, 1e-6], [0, 1]], [[0, 1, 2], [0, 2, 3]], 1e-3)
    np.testing.assert_array_equal(new_elements, [gw.NONE, 0])
    np.testing.assert_array_equal(new_ids, [0, 1, 1, 2])
    np.testing.assert_array_equal(connectivity, [[0, 1, 2]])
    coords, connectivity, new_ids, _ = gw.clean([[9.0, 9], [0, 0], [1, 0], [0, 1]], [[1, 2, 3]])
    np.testing.assert_array_equal(new_ids, [gw.NONE, 0, 1, 2])


def test_workers_are_counted(rng):
    detector = gw.NodeDetector(rng.random((5, 2)))
    for workers in (0, -2):
        with pytest.raises(ValueError, match="workers"):
            detector.find_closest([0.0, 0.0], workers=workers)
