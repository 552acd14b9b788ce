"""Result codes as exceptions, and indices that would harm."""

import copy
import os
import pickle
import re

import gridwork as gw
import numpy as np
import pytest
from gridwork import _core
from gridwork._errors import in_numpys_words, make_error

SQUARE = np.array([[0.0, 0], [1, 0], [1, 1], [0, 1]])
TRIANGLES = np.array([[0, 1, 2], [0, 2, 3]], np.uint32)
FAR = np.array([[0, 1, 4_000_000]], np.uint32)


def test_sentences_speak_of_numpys_rows_and_columns():
    rows = _core.result_codes()
    assert len(rows) > 150
    for function, code, sentence in rows:
        told = in_numpys_words(sentence)
        assert "~0U" not in told
        for word, other in (("row", "column"), ("rows", "columns")):
            assert len(re.findall(rf"\b{word}\b", sentence)) == len(re.findall(rf"\b{other}\b", told))
        error = make_error(function, code, sentence)
        assert isinstance(error, gw.Error) and str(error) == f"{function}: {told}"
        assert (error.function, error.code) == (function, code)
    assert in_numpys_words("coords has neither 2 nor 3 rows") == "coords has neither 2 nor 3 columns"
    assert in_numpys_words("a node index is neither ~0U nor a column of coords") == "a node index is neither NONE nor a row of coords"


def test_the_parents_of_the_exceptions():
    assert issubclass(gw.ArgumentError, (gw.Error, ValueError)) and issubclass(gw.FormatError, ValueError)
    assert isinstance(make_error("merge", -199, "memory ran out"), MemoryError)
    assert isinstance(make_error("STL_input", -2, "x"), gw.FormatError)
    assert isinstance(make_error("STL_output", -2, "x"), gw.ArgumentError)
    error = pickle.loads(pickle.dumps(make_error("merge", -3, "x")))
    assert (type(error), str(error), error.code) == (gw.ArgumentError, "merge: x", -3)


CALLS = {
    "merge -3": lambda: gw.merge(SQUARE, -1),
    "merge -2": lambda: gw.merge_elements(SQUARE, FAR),
    "merge -5": lambda: gw.merge_elements(SQUARE, TRIANGLES, np.nan),
    "merge -6": lambda: gw.merge_elements(SQUARE, TRIANGLES, 0, 3),
    "merge -4": lambda: gw.merge_lists(SQUARE, [0], tol=-1),
    "simplify -2": lambda: gw.simplify(SQUARE, FAR),
    "reinit -2": lambda: gw.NodeDetector(SQUARE, [4]),
    "get_IDs -2": lambda: gw.get_ids(TRIANGLES, SQUARE.astype(int)),
    "inc_bounding_box -2": lambda: gw.bounding_box(SQUARE, FAR),
    "copy_sym_mesh -4": lambda: gw.copy_sym_mesh(SQUARE, TRIANGLES, [0, 0], [0, 0]),
    "clip -4": lambda: gw.clip_whole(SQUARE, TRIANGLES, [0, 0], [0, 0]),
    "clip -3": lambda: gw.clip_whole(SQUARE, TRIANGLES, [0, np.inf], [0, 1]),
    "clip -5": lambda: gw.clip_whole(SQUARE, FAR, [0, 0], [0, 1]),
    "clip -7": lambda: gw.clip_exact(SQUARE, TRIANGLES, "TRIA3", [0, 0], [0, 1], tol=-1),
    "clip -1": lambda: gw.clip_exact(SQUARE, TRIANGLES, "TRIA3", [0, 0, 0], [0, 0, 1]),
    "get_neighbors -2": lambda: gw.get_neighbors(np.zeros((1, 6), int), "TRIA6"),
    "get_mesh_boundaries -2": lambda: gw.get_mesh_boundaries(TRIANGLES, "TRIA3", [[0, 1, 2]]),
    "get_elements_on_boundaries -1": lambda: gw.get_elements_on_boundaries(TRIANGLES, TRIANGLES, "TRIA3"),
    "get_elements_on_boundaries -4": lambda: gw.get_elements_on_boundaries([[0, 1]], TRIANGLES, "TRIA3", None, [9] * 4),
    "get_subdomains -4": lambda: gw.get_subdomains(TRIANGLES, "TRIA3", walls=[77]),
    "get_colors_boundaries -5": lambda: gw.get_colors_boundaries(TRIANGLES, "TRIA3", [0, 1], mode=3),
    "get_colors_boundaries -4": lambda: gw.get_colors_boundaries(TRIANGLES, "TRIA3", [0]),
    "sort_elfes -3": lambda: gw.sort_elfes([[0, 1, 0]], [0], [3]),
    "shape_qualities -2": lambda: gw.shape_qualities(SQUARE, FAR, "TRIA3"),
    "min_quality -3": lambda: gw.min_quality(SQUARE, [[0, 1, 2, 3, 0, 1]], "TRIA6"),
    "jacobians -2": lambda: gw.jacobians(SQUARE, FAR, "TRIA3"),
    "edge_quality -2": lambda: gw.edge_quality(1, 0, 1),
    "edge_qualities -5": lambda: gw.edge_qualities(SQUARE, TRIANGLES, "TRIA3", [1.0]),
    "edge_qualities -7": lambda: gw.edge_qualities(SQUARE, TRIANGLES, "TRIA3", np.ones(4), [[0, 9]]),
    "bound_metrics -2": lambda: gw.bound_metrics([1.0], np.inf),
    "overwrite_invalid_metrics -2": lambda: gw.overwrite_invalid_metrics(np.ones((1, 3)), np.ones((1, 6))),
    "metrics_aniso3d_to_aniso2d -2": lambda: gw.aniso3d_to_aniso2d(np.ones((2, 6)), np.ones((1, 6))),
    "H_shock -3": lambda: gw.h_shock(1, 1, np.inf),
    "H_shock -4": lambda: gw.h_shocks(SQUARE, TRIANGLES, "TRIA3", np.zeros(4)),
    "bound_metric_variations -5": lambda: gw.bound_metric_variations(SQUARE, TRIANGLES, "TRIA3", np.ones(4), -1),
    "bound_metric_gradations -5": lambda: gw.bound_metric_gradations(SQUARE, TRIANGLES, "TRIA3", np.ones(4), 0.5),
    "vtk_convert -2": lambda: gw.vtk_convert(np.zeros((1, 15), int), "WEDGE15"),
}


@pytest.mark.parametrize("name", CALLS)
def test_codes(name):
    function, code = name.split()
    with pytest.raises(gw.ArgumentError, match=f"^{function}: ") as raised:
        CALLS[name]()
    assert (raised.value.function, raised.value.code) == (function, int(code))


@pytest.mark.parametrize(
    "call",
    [
        lambda: gw.zoom(SQUARE, [0, 0], 2, [4]),
        lambda: gw.zoom(SQUARE, [0, 0], 2, FAR),
        lambda: gw.translate(SQUARE, [1, 0], FAR),
        lambda: gw.rotate(SQUARE, [0, 0], 1, [2**32 - 2]),
        lambda: gw.copy_mesh(SQUARE, FAR),
        lambda: gw.copy_mesh(SQUARE, FAR, shift=[1, 0]),
        lambda: gw.copy_sym_mesh(SQUARE, FAR, [0, 0], [1, 0]),
    ],
)
def test_indices_that_the_library_does_not_test(call):
    with pytest.raises(gw.ArgumentError, match="neither NONE nor a row of coords"):
        call()


def test_none_is_no_node_to_move():
    moved = gw.zoom(SQUARE, [0, 0], 2, [2, -1, gw.NONE])
    np.testing.assert_array_equal(moved, [[0, 0], [1, 0], [2, 2], [0, 1]])


ANY_INDEX = [0, 3, 4, 2**31 - 1, 2**31, 2**32 - 2, gw.NONE]


@pytest.mark.parametrize("index", ANY_INDEX)
def test_no_index_crashes(index):
    """Any index in any place: a result or an exception."""
    bad = np.array([[0, 1, index], [index, index, 2]], np.uint32)
    detector = gw.NodeDetector(SQUARE)
    calls = [
        lambda: detector.find_closest_node(index),
        lambda: detector.insert([index]),
        lambda: gw.NodeDetector(SQUARE, bad),
        lambda: gw.clean(SQUARE, bad),
        lambda: gw.merge_elements(SQUARE, bad, 0.1, 2),
        lambda: gw.merge_lists(SQUARE, bad[0], bad[1]),
        lambda: gw.change_indices(bad, [index]),
        lambda: gw.permutation(SQUARE[:, 0].copy(), bad[0]),
        lambda: gw.get_ids(bad, bad),
        lambda: gw.unique_indices([bad, bad], bad[0]),
        lambda: gw.remove_degenerated(bad, strict=True),
        lambda: gw.get_neighbors(bad, "TRIA3"),
        lambda: gw.get_mesh_boundaries(bad, "TRIA3", bad),
        lambda: gw.get_mesh_bounding_elements(bad, "TRIA3", bad),
        lambda: gw.get_elements_on_boundaries(bad[:, :2], bad, "TRIA3", bad, bad[0]),
        lambda: gw.get_subdomains(bad, "TRIA3", bad, walls=bad[0]),
        lambda: gw.get_colors_boundaries(bad, "TRIA3", bad[0, :2], bad, mode=2),
        lambda: gw.sort_elfes(bad, bad[0, :2], bad[1]),
        lambda: gw.copy_edges(bad, "TRIA3"),
        lambda: gw.shape_qualities(SQUARE, bad, "TRIA3"),
        lambda: gw.edge_qualities(SQUARE, bad, "TRIA3", np.ones(4), bad[:, :2]),
        lambda: gw.metrics_gen_iso(SQUARE, bad, "TRIA3"),
        lambda: gw.h_shocks(SQUARE, bad, "TRIA3", np.ones(4)),
        lambda: gw.bound_metric_gradations(SQUARE, bad, "TRIA3", np.ones((1, 3)), 1.5),
        lambda: gw.clip_exact(SQUARE, bad, "TRIA3", [0.5, 0], [1, 0]),
        lambda: gw.vtk_convert(bad, "TRIA3"),
        lambda: gw.stl_output(os.devnull, SQUARE, bad),
        lambda: gw.vtk_output(os.devnull, SQUARE, bad, "TRIA3"),
        lambda: gw.wavefront_obj_output(os.devnull, SQUARE, bad, "TRIA3"),
        lambda: gw.nastran_output(os.devnull, SQUARE, [bad, bad], ["TRIA3", "TRIA3"], [1, 2, 3]),
        lambda: gw.ensight_output(os.devnull, SQUARE, bad, "TRIA3"),
        lambda: gw.medit_output(os.devnull, SQUARE, bad, "TRIA3", bad[0]),
    ]
    for call in calls:
        try:
            call()
        except (gw.Error, ValueError):
            pass


def test_detectors_are_copied():
    detector = gw.NodeDetector(SQUARE, [0, 1])
    twin = copy.copy(detector)
    detector.insert([2])
    assert (len(detector), len(twin)) == (3, 2) and twin.coords is detector.coords
