"""Arguments of every layout and type, results that share nothing, and what is said of copies."""

import gc
import warnings
import weakref

import gridwork as gw
import numpy as np
import pytest
from gridwork import _arrays, _core
from hypothesis import given
from hypothesis import strategies as st

COORDS = np.array([[0.0, 0, 0], [1, 0, 0], [0, 1, 0], [0, 0, 1], [1, 1, 1]])
TETRAHEDRA = np.array([[0, 2, 1, 3], [1, 2, 3, 4]], np.uint32)


def strided(array):
    wide = np.full((2 * array.shape[0], array.shape[1] + 3), 77, array.dtype)
    wide[::2, 1:-2] = array
    return wide[::2, 1:-2]


def read_only(array):
    array = array.copy()
    array.flags.writeable = False
    return array


def unaligned(array):
    raw = np.empty(array.nbytes + 1, np.uint8)[1:].view(array.dtype).reshape(array.shape)
    raw[...] = array
    return raw


VIEWS = {"C": np.ascontiguousarray, "strided": strided, "read-only": read_only}
COPIES = {
    "F": np.asfortranarray,
    "reversed": lambda a: np.ascontiguousarray(a[::-1])[::-1],
    "columns reversed": lambda a: np.ascontiguousarray(a[:, ::-1])[:, ::-1],
    "byte-swapped": lambda a: a.astype(a.dtype.newbyteorder()),
    "unaligned": unaligned,
    "list": lambda a: a.tolist(),
    "wide rows": lambda a: np.repeat(a, 2, axis=1)[:, ::2],
}
FLOATS = {"float32": np.float32, "int64": np.int64, "uint8": np.uint8, "float16": np.float16, "longdouble": np.longdouble}
INTEGERS = {"int64": np.int64, "uint64": np.uint64, "int8": np.int8, "uint16": np.uint16, ">i4": np.dtype(">i4")}


@pytest.mark.parametrize("layout", [*VIEWS, *COPIES])
def test_every_layout_gives_the_same_results(layout):
    lay_out = {**VIEWS, **COPIES}[layout]
    coords, elements = lay_out(COORDS), lay_out(TETRAHEDRA)
    np.testing.assert_array_equal(gw.shape_qualities(coords, elements, "TETRA4"), gw.shape_qualities(COORDS, TETRAHEDRA, "TETRA4"))
    np.testing.assert_array_equal(gw.get_neighbors(elements, "TETRA4"), gw.get_neighbors(TETRAHEDRA, "TETRA4"))
    np.testing.assert_array_equal(gw.merge(coords, 0.0)[1], COORDS)
    np.testing.assert_array_equal(gw.translate(coords, [1, 2, 3]), COORDS + [1, 2, 3])
    assert gw.NodeDetector(coords).find_closest([0.9, 0.9, 0.9])[0] == 4


@pytest.mark.parametrize("layout", VIEWS)
def test_viewable_arrays_are_not_copied(layout):
    array = VIEWS[layout](COORDS)
    taken = _arrays.points(array)
    assert np.shares_memory(taken, array)
    assert np.shares_memory(_arrays.index_rows(VIEWS[layout](TETRAHEDRA).view(np.int32), "i"), _arrays.NONE) is False
    detector = gw.NodeDetector(array)
    assert detector.coords is array


def test_int32_is_a_view_with_minus_one_as_none():
    ids = np.array([3, -1], np.int32)
    taken = _arrays.index_list(ids, "ids")
    assert np.shares_memory(taken, ids) and taken[1] == gw.NONE


@pytest.mark.parametrize("dtype", FLOATS)
def test_numbers_become_float64(dtype):
    np.testing.assert_array_equal(gw.merge(COORDS.astype(FLOATS[dtype]))[1], COORDS)


@pytest.mark.parametrize("dtype", INTEGERS)
def test_integers_become_indices(dtype):
    np.testing.assert_array_equal(gw.get_ancestors(TETRAHEDRA.astype(INTEGERS[dtype])), [0, 1, 1, 1, 1])


def test_indices_out_of_range_are_refused():
    for bad in (-2, 2**32, 2**63 - 1, -(2**40), np.uint64(2**63)):
        with pytest.raises(ValueError, match="no index"):
            gw.max_id(np.array([bad, bad]))
    assert gw.max_id(np.array([0, 2**32 - 2])) == 2**32 - 2
    assert gw.max_id([5, -1]) == 5


@pytest.mark.parametrize("bad", [[[0.5, 1.0]], [["a", "b"]], np.array([[0, 1]], bool), [[None, 1]], [[1j, 2]]])
def test_what_is_no_index_is_a_type_error(bad):
    with pytest.raises(TypeError, match="connectivity"):
        gw.get_ancestors(bad)


@pytest.mark.parametrize("bad", [[["a", "b"]], [[None, 1.0]], [[1j, 2]], np.zeros((2, 2), "M8[s]"), np.ones((2, 2), bool)])
def test_what_is_no_number_is_a_type_error(bad):
    with pytest.raises(TypeError, match="coords"):
        gw.merge(bad)


@pytest.mark.parametrize(
    "call, message",
    [
        (lambda: gw.merge(np.zeros((5, 4))), r"coords: shape \(5, 4\), expected \(n, 2\) or \(n, 3\)"),
        (lambda: gw.merge(np.zeros(5)), r"coords: shape \(5,\)"),
        (lambda: gw.get_neighbors(TETRAHEDRA, "TRIA3"), r"connectivity: shape \(2, 4\), TRIA3 takes \(e, 3\)"),
        (lambda: gw.get_neighbors(TETRAHEDRA[:, :2], "SOLID_MIX"), "SOLID_MIX takes .*4.* or .*8"),
        (lambda: gw.merge([[0.0, 1], [2]]), "coords: "),
        (lambda: gw.copy_edges([TETRAHEDRA], ["TETRA4", "TRIA3"]), "2 of them for 1"),
        (lambda: gw.get_neighbors(TETRAHEDRA, "TETRA5"), "no element type"),
        (lambda: gw.get_neighbors(TETRAHEDRA, 23), "23"),
        (lambda: gw.NodeDetector(COORDS).find_closest(np.zeros((3, 2))), r"points: shape \(3, 2\), expected \(3,\) or \(m, 3\)"),
        (lambda: gw.translate(COORDS, [1.0]), r"shift: shape \(1,\)"),
        (lambda: gw.get_ids([1], [[1]]), "b: shape"),
    ],
)
def test_wrong_shapes_are_named(call, message):
    with pytest.raises(ValueError, match=message):
        call()


@pytest.mark.parametrize("shape", [(0, 2), (0, 3), (4, 0)])
def test_empty_arrays(shape):
    coords = np.zeros(shape)
    if shape[1]:
        assert gw.merge(coords)[1].shape == shape
        assert gw.NodeDetector(coords).find_closest(np.zeros(shape[1])) == (gw.NONE, np.inf)
    assert gw.get_ancestors(np.zeros(shape, np.uint32)).shape == (0,)
    assert gw.simplify(coords, np.zeros((0, 3), np.uint32))[1].shape == (0, 3)


def test_results_keep_their_columns_when_they_are_empty():
    nothing = np.zeros((0, 4), np.uint32)
    assert gw.get_neighbors(nothing, "TETRA4").shape == (0, 4)
    assert gw.get_mesh_boundaries(nothing, "TETRA4").shape == (0, 3)
    assert gw.get_mesh_boundaries(np.zeros((0, 8), np.uint32), "HEXA8").shape == (0, 4)
    assert gw.copy_edges(nothing, "TETRA4").shape == (0, 2)
    assert gw.get_colors_boundaries(TETRAHEDRA, "TETRA4", [1, 1])[1].shape == (0, 2)
    assert gw.remove_degenerated([[1, 1, 2]])[0].shape == (0, 3)
    assert gw.clean(np.zeros((3, 3)), [[0, 1, 2]])[0].shape == (0, 3)
    assert gw.clip_whole(COORDS, TETRAHEDRA, [9, 0, 0], [1, 0, 0])[0].shape == (0, 4)


def results(value):
    if isinstance(value, np.ndarray):
        return [value]
    return [a for part in value for a in results(part)] if isinstance(value, (tuple, list)) else []


NOTHING_TO_DO = [
    lambda c, e: gw.merge(c, 0.0),
    lambda c, e: gw.merge_elements(c, e),
    lambda c, e: gw.merge_elements(c, [e, e]),
    lambda c, e: gw.remove_degenerated(e),
    lambda c, e: gw.simplify(c, e),
    lambda c, e: gw.clean(c, e),
    lambda c, e: gw.copy_mesh(c, e[:0]),
    lambda c, e: gw.copy_mesh(c, e, n=0),
    lambda c, e: gw.clip_whole(c, e, [-9, 0, 0], [1, 0, 0]),
    lambda c, e: gw.clip_exact(c, e, "TETRA4", [-9, 0, 0], [1, 0, 0]),
    lambda c, e: gw.translate(c, [0, 0, 0]),
    lambda c, e: gw.change_indices(e, []),
    lambda c, e: gw.permutation(e[0], []),
    lambda c, e: gw.bound_metrics(c[:, 0]),
    lambda c, e: gw.sort_elfes(gw.get_neighbors(e, "TETRA4"), e[:, 0], e[:, 1].copy()),
    lambda c, e: gw.NodeDetector(c).find_closest(c),
]


@pytest.mark.parametrize("call", NOTHING_TO_DO)
@pytest.mark.parametrize("layout", VIEWS)
def test_results_share_no_memory_with_arguments(call, layout):
    coords, elements = VIEWS[layout](COORDS), VIEWS[layout](TETRAHEDRA)
    arrays = results(call(coords, elements))
    assert arrays
    for k, array in enumerate(arrays):
        assert not np.shares_memory(array, coords) and not np.shares_memory(array, elements)
        assert not any(np.shares_memory(array, other) for other in arrays[:k])
        assert array.flags.c_contiguous and array.flags.writeable
        assert array.dtype in (np.float64, np.uint32, np.bool_)
    np.testing.assert_array_equal(coords, COORDS)
    np.testing.assert_array_equal(elements, TETRAHEDRA)


@given(st.integers(0, 5), st.integers(0, 4), st.sampled_from(["<f8", ">f8", "<u4", "<f4", "<i4"]), st.data())
def test_the_core_takes_any_strides_or_refuses_them(rows, columns, dtype, data):
    """The core itself, without the Python layer: right values or a TypeError, whatever the array."""
    base = np.arange(400).astype(dtype)
    entry = base.itemsize
    strides = [data.draw(st.sampled_from([-1, 0, 1, 2, 3, 4, 7, 0.5])) for _ in range(2)]
    start = data.draw(st.integers(100, 200)) * entry
    steps = tuple(int(s * entry) for s in strides)
    array = np.ndarray((rows, columns), dtype, base, start, steps)
    for function in (_core.simplify, _core.check_ids):
        try:
            arguments = (array, [], 0) if function is _core.simplify else (array, 400)
            result = function(*arguments)
        except TypeError:
            continue
        if function is _core.simplify:
            np.testing.assert_array_equal(result[0], array)
        else:
            assert result


def test_out_is_written_to_and_never_copied():
    ids = TETRAHEDRA.copy()
    assert gw.shift_indices(ids, 5, "TETRA4", out=ids) is ids
    np.testing.assert_array_equal(ids, TETRAHEDRA + 5)
    target = strided(COORDS)
    assert gw.zoom(COORDS, [0, 0, 0], 2, out=target) is target
    np.testing.assert_array_equal(target, 2 * COORDS)
    assert (target.base[1::2] == 77).all() and (target.base[:, 0] == 77).all()
    signed = np.zeros(3, np.int32)
    assert gw.change_indices([0, 1, 2], [2, -1, 7], out=signed).tolist() == [2, -1, 7]
    overlapping = np.arange(6.0)
    gw.bound_metrics(overlapping[1:], 0.0, 3.0, out=overlapping[:-1])
    np.testing.assert_array_equal(overlapping, [1, 2, 3, 3, 3, 5])


def test_out_may_be_another_argument():
    """All of them are read before the first entry is written."""
    table = np.array([2, 0, 1], np.uint32)
    np.testing.assert_array_equal(gw.change_indices([0, 0, 2], table, out=table), [2, 2, 1])
    defaults = np.array([5.0, 6.0])
    assert gw.overwrite_invalid_metrics([0.0, 2.0], defaults, out=defaults)[1] == 1
    np.testing.assert_array_equal(defaults, [5, 2])
    moved = COORDS + 10
    np.testing.assert_array_equal(gw.translate(COORDS, moved[0], out=moved), COORDS + 10)
    moved = COORDS + 1
    np.testing.assert_array_equal(gw.zoom(COORDS, moved[0], 3, out=moved), gw.zoom(COORDS, [1, 1, 1], 3))
    moved = COORDS + 1
    np.testing.assert_array_equal(gw.rotate(COORDS, moved[0], moved[1], out=moved), gw.rotate(COORDS, [1, 1, 1], [2, 1, 1]))


@pytest.mark.parametrize(
    "call, error, message",
    [
        (lambda: gw.merge(COORDS, "0.1"), TypeError, "tol: str where a number is expected"),
        (lambda: gw.merge(COORDS, None), TypeError, "tol: NoneType"),
        (lambda: gw.merge_elements(COORDS, TETRAHEDRA, 0, -1), ValueError, "mode: -1, expected a number from 0"),
        (lambda: gw.merge_elements(COORDS, TETRAHEDRA, 0, 1.5), TypeError, "mode: float where a whole number is expected"),
        (lambda: gw.check_ids([0], 2**32), ValueError, "n: 4294967296"),
        (lambda: gw.shift_indices([0], 2**31), ValueError, "shift: 2147483648"),
        (lambda: gw.simplify(COORDS, TETRAHEDRA, -1), ValueError, "first_node: -1"),
        (lambda: gw.copy_mesh(COORDS, TETRAHEDRA, shift=[1, 0, 0], n=-1), ValueError, "n: -1"),
        (lambda: gw.zoom(COORDS, [0, 0, 0], [2]), TypeError, "factor: list"),
        (lambda: gw.clip_whole(COORDS, TETRAHEDRA, [0, 0, 0], [1, 0, 0], mode="1"), TypeError, "mode: str"),
        (lambda: gw.bound_metrics([1.0], hmax="x"), TypeError, "hmax: str"),
        (lambda: gw.NodeDetector(COORDS).find_closest(COORDS, workers=1.5), TypeError, "workers: float"),
    ],
)
def test_wrong_numbers_are_named(call, error, message):
    with pytest.raises(error, match=message):
        call()


@pytest.mark.parametrize(
    "out, error",
    [
        (np.zeros((5, 3), np.float32), TypeError),
        (read_only(COORDS), TypeError),
        (np.asfortranarray(COORDS), TypeError),
        ([[0.0] * 3] * 5, TypeError),
        (np.zeros((4, 3)), ValueError),
    ],
)
def test_out_that_does_not_fit(out, error):
    with pytest.raises(error, match="out"):
        gw.translate(COORDS, [1, 1, 1], out=out)


def test_loud_copies():
    big = np.zeros((100_000, 3), np.float32)
    with pytest.warns(gw.CopyWarning, match="coords: 1 MiB copied because of the type float32") as caught:
        gw.merge(big)
    assert caught[0].filename == __file__
    with pytest.warns(gw.CopyWarning, match="layout"):
        gw.bounding_box(np.asfortranarray(big.astype(float)))
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        gw.bounding_box(big.astype(float)[:, :2])
        gw.merge(COORDS.astype(np.float32))


def test_a_detector_keeps_its_array_and_results_keep_their_blocks():
    class Array(np.ndarray):
        pass

    coords = Array((5, 3))
    coords[:] = COORDS
    alive = weakref.ref(coords)
    detector = gw.NodeDetector(coords)
    del coords
    gc.collect()
    assert alive() is not None and detector.find_closest([1, 1, 1]) == (4, 0)
    del detector
    gc.collect()
    assert alive() is None

    result = gw.merge(COORDS + 1)[1]
    part = result[1:3, :2]
    del result
    gc.collect()
    np.testing.assert_array_equal(part, [[2, 1], [1, 2]])


def test_arguments_are_let_go():
    class Array(np.ndarray):
        pass

    coords, elements = COORDS.view(Array), TETRAHEDRA.view(Array)
    watched = [weakref.ref(coords), weakref.ref(elements)]
    kept = [gw.clean(coords, elements), gw.get_neighbors(elements, "TETRA4"), gw.translate(coords, [1, 0, 0])]
    del coords, elements
    gc.collect()
    assert [w() for w in watched] == [None, None] and kept
