"""Files: written and read again, against meshio and VTK, sample meshes, and what cannot be opened or read."""

import gc
import os
import pathlib

import gridwork as gw
import numpy as np
import pytest
from gridwork import convert
from meshes import sphere_soup

meshio = pytest.importorskip("meshio")

COORDS = np.array([[0.0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0], [0, 0, 1], [1, 0, 1], [1, 1, 1], [0, 1, 1]])
LINEAR = {
    "EDGE2": [[0, 1]],
    "TRIA3": [[0, 1, 2], [0, 2, 3]],
    "QUAD4": [[0, 1, 2, 3]],
    "TETRA4": [[0, 3, 1, 4]],
    "PYRAMID5": [[0, 1, 2, 3, 4]],
    "WEDGE6": [[0, 1, 2, 4, 5, 6]],
    "HEXA8": [[0, 1, 2, 3, 4, 5, 6, 7]],
}


def quadratic(name, base, edges, faces=(), volume=False):
    """An element of a higher type on COORDS with its middle nodes appended."""
    corners = np.array(LINEAR[base][0])
    groups = [*edges, *faces, *([range(len(corners))] if volume else [])]
    middles = np.array([COORDS[corners[list(group)]].mean(axis=0) for group in groups])
    return np.vstack([COORDS, middles]), np.array([[*corners, *range(8, 8 + len(groups))]], np.uint32)


def equal_blocks(mesh, expected):
    assert [kind for kind, _ in mesh.blocks] == [kind for kind, _ in expected]
    for (_, got), (_, wanted) in zip(mesh.blocks, expected):
        np.testing.assert_array_equal(got, wanted)


@pytest.mark.parametrize("extension", [".vtk", ".mesh", ".bdf", ".nas", ".dat", ".neu", ".VTK"])
def test_what_is_written_is_read(tmp_path, extension):
    file = tmp_path / ("mesh" + extension)
    blocks = [(gw.ElementType[name], np.array(elements, np.uint32)) for name, elements in LINEAR.items()]
    gw.write(file, gw.Mesh(COORDS, blocks))
    mesh = gw.read(file)
    np.testing.assert_array_equal(mesh.coords, COORDS)
    equal_blocks(mesh, sorted(blocks))
    solids = gw.read(file, "SOLID_MIX")
    assert solids.blocks[0][1].shape == (4, 8) and len(gw.read(os.fsencode(file), "TRIA6").blocks) == 0
    gw.write(file, gw.read(str(file)))
    equal_blocks(gw.read(file), sorted(blocks))


def test_references_properties_and_fields(tmp_path):
    mesh, deck, field = tmp_path / "a.mesh", tmp_path / "a.bdf", tmp_path / "a.sol"
    gw.medit_output(mesh, COORDS, LINEAR["TRIA3"], "TRIA3", [7, 3])
    assert gw.medit_input(mesh).references.tolist() == [3, 7]
    gw.nastran_output(deck, COORDS, [np.array(LINEAR["TRIA3"]), np.array(LINEAR["HEXA8"])], ["TRIA3", "HEXA8"])
    assert gw.nastran_input(deck).property_ids.tolist() == [1, 1, 2]
    gw.femap_output(tmp_path / "a.neu", COORDS, LINEAR["TRIA3"], "TRIA3", [4, 5])
    read = gw.femap_input(tmp_path / "a.neu")
    assert read.property_ids.tolist() == [4, 5] and read.node_ids.tolist() == list(range(1, 9)) and read.skipped == 0
    for values, kind in ((COORDS[:, 0], 1), (COORDS, 2), (np.ones((8, 6)), 3)):
        gw.medit_solution(field, 3, values)
        dim, back, kinds = gw.medit_solution_input(field)
        np.testing.assert_array_equal(back, values.reshape(8, -1))
        assert (dim, kinds) == (3, [kind])


@pytest.mark.parametrize("ascii", [False, True])
def test_stl_against_meshio(tmp_path, ascii):
    soup, triangles = sphere_soup(8, 12)
    file = tmp_path / "sphere.stl"
    gw.stl_output(file, soup, triangles, ascii=ascii)
    theirs = meshio.read(file)
    np.testing.assert_allclose(theirs.points[theirs.cells_dict["triangle"]], soup[triangles], atol=1e-6)
    coords, connectivity = gw.stl_input(file)
    assert len(gw.get_mesh_boundaries(connectivity, "TRIA3")) == 0 and len(coords) == 7 * 12 + 2
    np.testing.assert_allclose(coords[connectivity], soup[triangles], atol=1e-6)


def test_obj(tmp_path):
    file = tmp_path / "a.obj"
    mixed = np.array([[0, 1, 2, gw.NONE], [0, 1, 2, 3], [4, 5, 6, gw.NONE]], np.uint32)
    gw.wavefront_obj_output(file, COORDS, mixed, "FACE_MIX", normals=COORDS, uvs=COORDS[:, :2])
    mesh = gw.wavefront_obj_input(file)
    np.testing.assert_array_equal(mesh.triangles, [[0, 1, 2], [4, 5, 6]])
    np.testing.assert_array_equal(mesh.quads, [[0, 1, 2, 3]])
    np.testing.assert_array_equal(mesh.normals, COORDS)
    assert mesh.uvs.shape == (8, 2)
    gw.write(file, COORDS, [mixed[:1, :3].copy(), mixed[2:, :3].copy()], ["TRIA3", "TRIA3"])
    assert len(gw.read(file, "TRIA3").blocks[0][1]) == 2 and gw.read(file, "QUAD4").blocks == []
    gw.write(file, COORDS, np.empty((0, 0), np.uint32), "FACE_MIX")
    assert gw.read(file).blocks == [] and len(gw.read(file).coords) == 8


@pytest.mark.parametrize("extension", [".obj", ".vtk", ".mesh", ".bdf", ".neu"])
def test_faces_of_both_kinds_in_one_array(tmp_path, extension):
    file = tmp_path / ("faces" + extension)
    mixed = np.array([[0, 1, 2, gw.NONE], [4, 5, 6, gw.NONE], [0, 1, 2, 3]], np.uint32)
    gw.write(file, COORDS, mixed, "FACE_MIX")
    equal_blocks(gw.read(file, "FACE_MIX"), [(gw.ElementType.FACE_MIX, mixed)])
    assert gw.read(file, "SOLID_MIX").blocks == []
    with pytest.raises(ValueError):
        gw.read(file, "NODE")


def test_properties_go_along_from_deck_to_deck(tmp_path):
    first, second = tmp_path / "a.bdf", tmp_path / "b.neu"
    gw.nastran_output(first, COORDS, [np.array(LINEAR["TRIA3"]), np.array(LINEAR["HEXA8"])], ["TRIA3", "HEXA8"], [7, 3, 9])
    gw.write(second, gw.nastran_input(first))
    assert gw.femap_input(second).property_ids.tolist() == [7, 3, 9]


@pytest.mark.parametrize("name", LINEAR)
def test_conversions_of_linear_elements(name):
    vtk = pytest.importorskip("vtkmodules.vtkFiltersVerdict")
    blocks = [(gw.ElementType[name], np.array(LINEAR[name], np.uint32))]
    grid = convert.to_vtk(COORDS, blocks)
    np.testing.assert_array_equal(convert.from_vtk(grid).coords, COORDS)
    equal_blocks(convert.from_vtk(grid), blocks)
    equal_blocks(convert.from_meshio(convert.to_meshio(COORDS, blocks)), blocks)
    if gw.ElementType[name].element_dim < 3:
        return
    from vtkmodules.util.numpy_support import vtk_to_numpy

    sizes = vtk.vtkCellSizeFilter()
    sizes.SetInputData(grid)
    sizes.Update()
    volumes = vtk_to_numpy(sizes.GetOutput().GetCellData().GetArray("Volume"))
    volumes = -volumes if name == "WEDGE6" else volumes  # which of a wedge's triangles is the base, VTK sees otherwise
    assert (volumes > 0).all() and (gw.shape_qualities(COORDS, *blocks[0][::-1]) > 0).all()


EDGES = {
    "TRIA6": ("TRIA3", [(1, 2), (2, 0), (0, 1)]),
    "QUAD8": ("QUAD4", [(0, 1), (1, 2), (2, 3), (3, 0)]),
    "HEXA20": ("HEXA8", [(k, (k + 1) % 4) for k in range(4)] + [(4 + k, 4 + (k + 1) % 4) for k in range(4)] + [(k, k + 4) for k in range(4)]),
}


@pytest.mark.parametrize("name", EDGES)
def test_middle_nodes_lie_between_their_vertices_in_vtk(name):
    pytest.importorskip("vtkmodules.vtkCommonDataModel")
    coords, elements = quadratic(name, *EDGES[name])
    grid = convert.to_vtk(coords, [(name, elements)])
    cell = grid.GetCell(0)
    for k in range(cell.GetNumberOfEdges()):
        edge = cell.GetEdge(k).GetPoints()
        a, b, middle = (np.array(edge.GetPoint(i)) for i in range(3))
        np.testing.assert_allclose(middle, (a + b) / 2)
    equal_blocks(convert.from_vtk(grid), [(gw.ElementType[name], elements)])


def test_vtk_looks_at_our_coordinates():
    pytest.importorskip("vtkmodules.vtkCommonDataModel")
    from vtkmodules.util.numpy_support import vtk_to_numpy

    coords, triangles = COORDS.copy(), np.array(LINEAR["TRIA3"], np.uint32)
    grid = convert.to_vtk(coords, [("TRIA3", triangles)])
    assert np.shares_memory(vtk_to_numpy(grid.GetPoints().GetData()), coords)
    del coords, triangles
    gc.collect()
    assert grid.GetCell(1).GetPointId(2) == 3 and grid.GetPoint(6) == (1, 1, 1)


def test_mixed_types_become_plain_ones():
    mixed = np.full((2, 8), gw.NONE, np.uint32)
    mixed[0, :4], mixed[1] = LINEAR["TETRA4"][0], LINEAR["HEXA8"][0]
    mesh = convert.from_meshio(convert.to_meshio(COORDS, [("SOLID_MIX", mixed)]))
    equal_blocks(mesh, [(gw.ElementType[name], LINEAR[name]) for name in ("TETRA4", "HEXA8")])


def test_sample_meshes_against_meshio(meshes):
    """What both read comes out the same: as a mesh of ours, node for node."""
    compared = 0
    for file in [*meshes.glob("vtk-*.vtk"), *meshes.glob("medit-*.mesh"), *meshes.glob("stl-*.stl")]:
        try:
            theirs = convert.from_meshio(meshio.read(file))
        except (Exception, SystemExit):
            continue
        if "-bad-" in file.name:  # which meshio reads all the same
            continue
        ours = gw.read(file)
        if file.suffix == ".stl":
            compared += np.allclose(gw.bounding_box(ours.coords), gw.bounding_box(theirs.coords))
            continue
        np.testing.assert_allclose(ours.coords[:, : theirs.coords.shape[1]], theirs.coords)
        for kind, elements in ours.blocks:
            same = [part for other, part in theirs.blocks if other == kind]
            turned = kind == gw.ElementType.WEDGE6  # by meshio, from VTK's files
            if same and sum(map(len, same)) == len(elements) and file.suffix == ".vtk" and not turned:
                np.testing.assert_array_equal(elements, np.concatenate(same))
                compared += 1
    assert compared > 20


def test_every_sample_is_read_or_refused_in_words(meshes):
    read = 0
    for file in meshes.iterdir():
        if file.suffix not in (".stl", ".obj", ".vtk", ".mesh", ".bdf", ".dat", ".neu"):
            continue
        try:
            mesh = gw.read(file)
        except gw.FormatError as error:
            assert len(str(error)) > 20
            continue
        read += 1
        assert mesh.coords.flags.c_contiguous and all(len(elements) for _, elements in mesh.blocks)
    assert read > 90


def test_files_that_cannot_be_opened(tmp_path):
    with pytest.raises(FileNotFoundError) as raised:
        gw.read(tmp_path / "nothing.stl")
    assert raised.value.filename == str(tmp_path / "nothing.stl")
    for extension in (".stl", ".obj", ".vtk", ".mesh", ".bdf", ".neu"):
        folder = tmp_path / ("folder" + extension)
        folder.mkdir()
        with pytest.raises(IsADirectoryError):
            gw.read(folder)
        with pytest.raises(IsADirectoryError):
            gw.write(folder, COORDS, LINEAR["TRIA3"], "TRIA3")
    with pytest.raises(ValueError, match="null byte"):
        gw.stl_input("a\0b")
    with pytest.raises(ValueError, match="not one of .*stl"):
        gw.read("mesh.docx")


@pytest.mark.skipif(not os.path.exists("/dev/full"), reason="no device that is full")
@pytest.mark.parametrize("extension", [".stl", ".obj", ".vtk", ".mesh", ".bdf", ".neu", ".geo"])
def test_a_full_disk_is_told(tmp_path, extension):
    file = tmp_path / ("full" + extension)
    file.symlink_to("/dev/full")
    with pytest.raises(OSError, match="No space left"):
        gw.write(file, COORDS, LINEAR["TRIA3"], "TRIA3")


def test_contents_that_cannot_be_read(tmp_path):
    for extension in (".stl", ".obj", ".vtk", ".mesh", ".bdf", ".neu"):
        file = tmp_path / ("broken" + extension)
        file.write_text({".obj": "v 1 2", ".bdf": "GRID,1,,x"}.get(extension, "nonsense"))
        with pytest.raises(gw.FormatError):
            gw.read(file)


def test_types_that_a_format_does_not_hold(tmp_path):
    for extension, name in ((".stl", "QUAD4"), (".obj", "EDGE2"), (".geo", "PYRAMID5")):
        with pytest.raises(ValueError, match=f"does not hold {name}"):
            gw.write(tmp_path / ("a" + extension), COORDS, LINEAR[name], name)
        assert not pathlib.Path(tmp_path / ("a" + extension)).exists()
    with pytest.raises(TypeError, match="its type"):
        gw.write(tmp_path / "a.vtk", COORDS)
