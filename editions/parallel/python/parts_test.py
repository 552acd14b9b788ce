"""gridwork.mpi against gridwork, on the ranks of an mpiexec.

usage: mpiexec -n RANKS python3 parts_test.py REPOSITORY
"""

import os
import pathlib
import sys
import tempfile

import numpy as np

import gridwork as gw

SKIPPED = 77
try:
    from mpi4py import MPI
except ImportError as reason:
    print("skipped:", reason)
    sys.exit(SKIPPED)
try:
    import gridwork.mpi as gwm
except ImportError as reason:
    if "different MPI libraries" not in str(reason):
        raise
    print("skipped:", reason)
    sys.exit(SKIPPED)

comm = MPI.COMM_WORLD
BRACKET = pathlib.Path(sys.argv[1], "examples/data/bracket.stl")
KIND = "TRIA3"


def raises(kind, code, call, *arguments, **keywords):
    try:
        call(*arguments, **keywords)
    except kind as error:
        assert code is None or error.code == code, error
        return str(error)
    raise AssertionError(f"{call.__name__}: no {kind.__name__}")


def whole(part):
    """Coordinates by node ID and connectivity by element ID, of all ranks."""
    nodes = np.concatenate(comm.allgather(part.node_ids))
    coords = np.concatenate(comm.allgather(part.coords))
    elements = np.concatenate(comm.allgather(part.element_ids))
    cells = np.concatenate(comm.allgather(part.node_ids[part.connectivity]))
    return coords[np.unique(nodes, return_index=True)[1]], cells[np.argsort(elements)]


def spread(part, seed):
    """The part after each element went to a rank at random."""
    targets = np.random.default_rng(seed + comm.rank).integers(comm.size, size=len(part.element_ids))
    return gwm.migrate(comm, part, targets)


def as_serial(links):
    """32-bit indices of the serial package, as IDs."""
    return np.where(links == gw.NONE, np.uint64(gwm.NO_ID), links.astype(np.uint64))


def test_topology():
    coords, triangles = gw.stl_input(BRACKET)
    part = spread(gwm.stl_input(comm, BRACKET), 1)
    for got, expected in zip(whole(part), (coords, triangles)):
        np.testing.assert_array_equal(got, expected)
    own = part.element_ids
    sharing = gwm.share_nodes(comm, part)
    neighbors = gwm.get_neighbors(comm, part, KIND, sharing)
    np.testing.assert_array_equal(neighbors, as_serial(gw.get_neighbors(triangles, KIND))[own])
    boundaries, slots = gwm.get_mesh_boundaries(part, KIND, neighbors)
    free = gw.get_mesh_boundaries(triangles, KIND)
    assert len(slots) == len(boundaries) and comm.allreduce(len(slots)) == len(free)
    parts, colors = gwm.get_subdomains(comm, part, KIND, sharing, neighbors)
    expected_parts, expected_colors = gw.get_subdomains(triangles, KIND)
    assert parts == expected_parts
    np.testing.assert_array_equal(colors, expected_colors[own])
    total, edges, numbers = gwm.number_edges(comm, part, KIND)
    expected_edges = gw.copy_edges(triangles, KIND)
    assert total == len(expected_edges)
    np.testing.assert_array_equal(part.node_ids[edges], expected_edges[numbers])
    offsets, elements = gwm.get_connected_elements(comm, part, sharing)
    first, members = gw.get_connected_elements(triangles)
    for i, node in enumerate(part.node_ids.tolist()):
        assert elements[offsets[i] : offsets[i + 1]].tolist() == members[first[node] : first[node + 1]].tolist()
    ghosts, owners = gwm.get_ghosts(comm, part, sharing)
    touches = np.isin(triangles, part.node_ids).any(axis=1)
    touches[own] = False
    np.testing.assert_array_equal(ghosts.element_ids, np.flatnonzero(touches))
    assert owners.dtype == np.int32 and np.all(owners != comm.rank)


def test_quality_and_extent():
    coords, triangles = gw.stl_input(BRACKET)
    part = spread(gwm.stl_input(comm, BRACKET), 2)
    qualities = gw.shape_qualities(coords, triangles, KIND)
    assert gwm.min_quality(comm, part, KIND) == gw.min_quality(coords, triangles, KIND)
    bins, mean = gwm.quality_histogram(comm, part, KIND, 10)
    assert bins.sum() == len(triangles) and abs(mean - qualities.mean()) < 1e-12
    np.testing.assert_array_equal(gwm.bounding_box(comm, part), gw.bounding_box(coords))


def test_cleaning():
    coords, triangles = gw.stl_input(BRACKET)
    soup = coords[triangles].reshape(-1, 3)
    piece = np.array_split(soup.reshape(-1, 9), comm.size)[comm.rank].reshape(-1, 3)
    part = gwm.make_part(comm, piece, np.arange(len(piece)).reshape(-1, 3))
    before = part.coords.copy()
    merged, joined = gwm.merge(comm, part, 1e-6)
    assert merged == len(soup) - len(coords)
    np.testing.assert_array_equal(part.coords, before)
    removed, joined = gwm.remove_degenerated(comm, joined)
    nodes, joined = gwm.simplify(comm, joined)
    assert removed == 0 and nodes == len(coords)
    for got, expected in zip(whole(joined), (coords, triangles)):
        np.testing.assert_array_equal(got, expected)
    assert comm.size == 1 or len(np.unique(np.concatenate(comm.allgather(gwm.partition_by_curve(comm, joined))))) > 1


def test_files():
    folder = comm.bcast(tempfile.mkdtemp() if comm.rank == 0 else None)
    path = pathlib.Path(folder, "written.stl")
    part = gwm.stl_input(comm, str(BRACKET))
    gwm.stl_output(comm, path, spread(part, 3))
    comm.Barrier()
    np.testing.assert_array_equal(gw.stl_input(path)[1], gw.stl_input(BRACKET)[1])
    comm.Barrier()
    if comm.rank == 0:
        os.remove(path)
        os.rmdir(folder)
    raises(FileNotFoundError, None, gwm.stl_input, comm, "/nowhere/at/all")
    raises(OSError, None, gwm.stl_output, comm, "/nowhere/at/all", part)
    raises(gw.FormatError, None, gwm.stl_input, comm, __file__)


def test_communicators_and_errors():
    part = gwm.stl_input(MPI.COMM_SELF, BRACKET)
    assert len(part.element_ids) == len(gw.stl_input(BRACKET)[1])
    halves = comm.Split(comm.rank % 2)
    assert halves.allreduce(len(gwm.stl_input(halves, BRACKET).element_ids)) == len(part.element_ids)
    halves.Free()
    raises(ValueError, None, gwm.share_nodes, MPI.COMM_NULL, part)
    raises(TypeError, None, gwm.share_nodes, "world", part)
    raises(TypeError, None, gwm.migrate, MPI.COMM_SELF, part, ["here"] * len(part.element_ids))
    words = raises(gw.ArgumentError, -3, gwm.merge, MPI.COMM_SELF, part, -1.0)
    assert words == "merge: the tolerance is negative or NaN, or differs between ranks"
    raises(gw.ArgumentError, -1, gwm.share_nodes, MPI.COMM_SELF, part._replace(node_ids=part.node_ids[::-1]))
    raises(gw.ArgumentError, -3, gwm.migrate, MPI.COMM_SELF, part, part.element_ids * 0 + 1)


for name, test in list(globals().items()):
    if name.startswith("test_"):
        try:
            test()
        except BaseException as failure:  # the other ranks must not wait
            print(f"rank {comm.rank}, {name}: {type(failure).__name__}: {failure}", flush=True)
            comm.Abort(1)
