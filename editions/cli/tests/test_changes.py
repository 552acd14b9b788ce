"""Commands that make other meshes: boundary, transform, clip, split, metric."""
import itertools

import pytest

TWO_CUBES_VTK = """# vtk DataFile Version 3.0

ASCII
DATASET UNSTRUCTURED_GRID
POINTS 12 double
0 0 0 1 0 0 2 0 0 0 1 0 1 1 0 2 1 0 0 0 1 1 0 1 2 0 1 0 1 1 1 1 1 2 1 1
CELLS 3 23
8 0 1 4 3 6 7 10 9
8 1 2 5 4 7 8 11 10
4 1 4 10 7
CELL_TYPES 3
12 12 9
"""

# The ends of the edges whose middles follow the vertices, in the order of VTK.
MIDDLES = {
    22: (3, "01 12 20"), 23: (4, "01 12 23 30"), 24: (4, "01 12 20 03 13 23"), 25: (8, "01 12 23 30 45 56 67 74 04 15 26 37"),
    27: (5, "01 12 23 30 04 14 24 34"), 26: (6, "01 12 20 34 45 53 03 14 25"), 28: (4, "01 12 23 30 0123"),
    29: (8, "01 12 23 30 45 56 67 74 04 15 26 37 0473 1265 0154 3762 0321 4567 01234567"),
    32: (6, "01 12 20 34 45 53 03 14 25 0143 1254 2035")}
CORNERS = {3: [(0, 0, 0), (2, 0, 0), (0, 3, 0)], 4: [(0, 0, 0), (2, 0, 0), (2, 3, 0), (0, 3, 0)],
           5: [(0, 0, 0), (2, 0, 0), (2, 3, 0), (0, 3, 0), (1, 1, 4)],
           6: [(0, 0, 0), (2, 0, 0), (0, 3, 0), (0, 0, 4), (2, 0, 4), (0, 3, 4)],
           8: [(0, 0, 0), (2, 0, 0), (2, 3, 0), (0, 3, 0), (0, 0, 4), (2, 0, 4), (2, 3, 4), (0, 3, 4)]}


@pytest.fixture
def cubes(tool):
    (tool.folder / "cubes.vtk").write_text(TWO_CUBES_VTK)
    return tool


def boxes(tool, *files):
    return [found["box"] for found in tool.objects("info", *files)]


def test_boundary_of_solids_is_closed_and_looks_outwards(cubes):
    (made,) = cubes.objects("boundary", "cubes.vtk", "skin.stl")
    assert (made["boundary"], made["elements"], made["nodes"]) == (10, 10, 12)
    (info,) = cubes.objects("info", "skin.stl")
    assert (info["elements"], info["topology"]["open"], info["box"][1]) == ({"TRIA3": 20}, 0, [2, 1, 1])
    cubes.run("convert", "skin.stl", "skin.obj")
    lines = [line.split() for line in (cubes.folder / "skin.obj").read_text().splitlines()]
    nodes = [tuple(map(float, line[1:])) for line in lines if line[0] == "v"]
    faces = [[int(corner.split("/")[0]) - 1 for corner in line[1:]] for line in lines if line[0] == "f"]
    volume = sum(a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) + a[2] * (b[0] * c[1] - b[1] * c[0])
                 for a, b, c in ((nodes[k] for k in face) for face in faces)) / 6
    assert volume == pytest.approx(2)


def test_a_closed_surface_has_no_boundary(tool):
    (made,) = tool.objects("boundary", "solid.obj", "edges.vtk", "--closed")
    assert made["boundary"] == 0 and "edges.vtk" not in tool.files()
    text = (tool.folder / "solid.obj").read_text()
    (tool.folder / "open.obj").write_text(text[: text.rindex("f ")])
    (made,) = tool.objects("boundary", "open.obj", "edges.vtk", "--closed", status=1)
    assert made["boundary"] == 3
    assert tool.objects("info", "edges.vtk")[0]["elements"] == {"EDGE2": 3}
    assert b"does not hold EDGE2" in tool.run("boundary", "open.obj", "edges.stl").stderr


def test_steps_of_a_transformation_follow_the_command_line(tool):
    tool.run("transform", "solid.obj", "a.obj", "--translate", "1,0,0", "--rotate", "0,0,1,90", "--scale", "2",
             "--translate=0,0,-1")
    tool.run("transform", "solid.obj", "b.obj", "--scale", "2", "--rotate", "0,0,1,90", "--translate", "1,0,-1")
    tool.run("transform", "solid.obj", "c.obj", "--center", "1,0,0", "--scale", "3", "--center", "0,0,0", "--scale", ".5")
    first, second, third = boxes(tool, "a.obj", "b.obj", "c.obj")
    assert first == [pytest.approx([-2, 2, -1]), pytest.approx([0, 4, 1])]
    assert second == [pytest.approx([-1, 0, -1]), pytest.approx([1, 2, 1])]
    assert third == [pytest.approx([-1, 0, 0]), pytest.approx([0.5, 1.5, 1.5])]
    for wrong in (["--rotate", "0,0,0,90"], ["--mirror", "0,0,0"], ["--translate", "1,2"], ["--scale", "x"]):
        assert tool.run("transform", "solid.obj", "d.obj", *wrong).returncode == 2


def test_a_mesh_in_the_plane_remains_there(tool):
    (tool.folder / "flat.mesh").write_text("MeshVersionFormatted 1\nDimension 2\nVertices\n3\n0 0 0\n1 0 0\n0 1 0\n"
                                           "Triangles\n1\n1 2 3 0\nEnd\n")
    for option, dim in ((["--rotate", "0,0,1,30"], 2), (["--translate", "0,0,1"], 3)):
        tool.run("transform", "flat.mesh", "out.mesh", "-f", *option)
        assert tool.objects("info", "out.mesh")[0]["dim"] == dim


@pytest.mark.parametrize("kind", MIDDLES)
def test_mirrored_elements_are_sound(tool, kind):
    count, middles = MIDDLES[kind]
    corners = [(0, 0, 0), (2, 0, 0), (0, 3, 0), (0, 0, 4)] if kind == 24 else CORNERS[count]
    nodes = corners + [tuple(sum(corners[int(k)][axis] for k in ends) / len(ends) for axis in range(3))
                       for ends in middles.split()]
    (tool.folder / "in.vtk").write_text(
        f"# vtk DataFile Version 3.0\n\nASCII\nDATASET UNSTRUCTURED_GRID\nPOINTS {len(nodes)} double\n"
        + "\n".join(" ".join(map(str, node)) for node in nodes)
        + f"\nCELLS 1 {len(nodes) + 1}\n{len(nodes)} {' '.join(map(str, range(len(nodes))))}\nCELL_TYPES 1\n{kind}\n")
    out = "out.nas" if kind not in (28, 29, 32) else "out.vtk"
    for option, name in ((["--mirror", "1,0,0"], "once"), (["--mirror", "1,0,0", "--mirror", "1,0,0"], "twice"), ([], "none")):
        assert tool.run("transform", "in.vtk", name + out, *option).returncode == 0
    assert (tool.folder / f"twice{out}").read_bytes() == (tool.folder / f"none{out}").read_bytes()
    once, none = (tool.objects("quality", name + out)[0]["shapes"][0] for name in ("once", "none"))
    assert once["reversed"] == none["reversed"]
    assert once["mean"] == pytest.approx(none["mean"])


def test_clip_cuts_and_shares_new_nodes(cubes):
    assert b"HEXA8 cannot be cut" in cubes.run("clip", "cubes.vtk", "c.vtk", "--point", "1.5,0,0", "--normal", "1,0,0").stderr
    counts = {}
    for which in ("inside", "touching", "crossed"):
        cubes.run("clip", "cubes.vtk", which + ".vtk", "--point", "0.5,0,0", "--normal", "1,0,0", "--elements", which)
        counts[which] = cubes.objects("info", which + ".vtk")[0]["elements"]
    assert counts == {"inside": {"QUAD4": 1, "HEXA8": 1}, "touching": {"QUAD4": 1, "HEXA8": 2}, "crossed": {"HEXA8": 1}}
    (made,) = cubes.objects("clip", "solid.obj", "half.obj", "--point", "0.25,0,0", "--normal=-1,0,0")
    (info,) = cubes.objects("info", "half.obj")
    assert (info["box"], info["topology"]["pieces"], info["topology"]["open"]) == ([[0, 0, 0], [0.25, 1, 1]], 1, 3)
    assert made["nodes"] == info["nodes"]
    assert b"nothing lies" in cubes.run("clip", "solid.obj", "n.obj", "--point", "5,0,0", "--normal", "1,0,0").stderr


def test_split_writes_a_file_for_each_part(cubes):
    (cubes.folder / "two.obj").write_text("".join(f"v {x} {y} {z}\n" for z, y, x in itertools.product((0, 1), repeat=3))
                                          + "f 1 2 3\nf 5 6 7\nf 2 4 3\n")
    (made,) = cubes.objects("split", "two.obj", "part.stl")
    assert (made["parts"], made["files"]) == (2, ["part-1.stl", "part-2.stl"])
    assert [found["elements"]["TRIA3"] for found in cubes.objects("info", *made["files"])] == [2, 1]
    (cubes.folder / "new-2.stl").write_text("here")
    assert b"new-2.stl exists" in cubes.run("split", "two.obj", "new.stl").stderr
    assert "new-1.stl" not in cubes.files()
    assert cubes.run("split", "two.obj", "-", "--to", "stl").returncode == 2


def test_split_takes_edges_of_both_kinds(tool):
    (tool.folder / "edges.vtk").write_text("# vtk DataFile Version 3.0\n\nASCII\nDATASET UNSTRUCTURED_GRID\nPOINTS 6 double\n"
                                           "0 0 0 1 0 0 3 0 0 2 0 0 5 0 0 6 0 0\nCELLS 3 10\n2 0 1\n3 1 2 3\n2 4 5\n"
                                           "CELL_TYPES 3\n3 21 3\n")
    (made,) = tool.objects("split", "edges.vtk", "part.vtk")
    assert made["parts"] == 2
    assert [found["elements"] for found in tool.objects("info", *made["files"])] == [{"EDGE2": 1, "EDGE3": 1}, {"EDGE2": 1}]


def test_split_colours_parts_between_walls(cubes):
    assert b"no references" in cubes.run("split", "cubes.vtk", "colors.vtk", "--colors").stderr
    (whole,) = cubes.objects("split", "cubes.vtk", "whole.mesh", "--colors")
    (parted,) = cubes.objects("split", "cubes.vtk", "parted.mesh", "--colors", "--walls")
    assert (whole["parts"], parted["parts"]) == (1, 2)
    cells = (cubes.folder / "parted.mesh").read_text().split("Hexahedra\n2\n")[1].splitlines()
    assert [line.split()[-1] for line in cells[:2]] == ["1", "2"]


def test_metric_writes_sizes_that_quality_takes(cubes):
    (made,) = cubes.objects("metric", "cubes.vtk", "sizes.sol", "--rule", "longest", "--factor", "2", "--max", "1.5")
    assert (made["nodes"], made["min"], made["max"], made["shock"]) == (12, 1.5, 1.5, 1)
    (found,) = cubes.objects("quality", "cubes.vtk", "--sizes", "sizes.sol")
    assert found["lengths"]["edges"] == sum(found["lengths"]["histogram"]) == 20
    assert found["lengths"]["mean"] == pytest.approx(2 / 3)
    (found,) = cubes.objects("quality", "cubes.vtk", "--size", "0.4")
    assert (found["lengths"]["mean"], found["lengths"]["above"]) == (pytest.approx(2.5), 20)
    assert b"none.sol: No such" in cubes.run("quality", "solid.obj", "--sizes", "none.sol").stderr
    assert b"not one size" in cubes.run("quality", "solid.obj", "--sizes", "sizes.sol").stderr
    vertices = "v 0 0 0\nv 10 0 0\nv 0 10 0\nv .1 0 0\nf 1 4 3\nf 4 2 3\n"
    (cubes.folder / "graded.obj").write_text(vertices)
    (graded,) = cubes.objects("metric", "graded.obj", "graded.sol", "--rule", "shortest", "--gradation", "1.2")
    assert graded["shock"] <= 1.2 + 1e-12 < graded["shock_before"] and graded["graded"] > 0
    assert cubes.run("metric", "graded.obj", "graded.sol").returncode == 2
    assert cubes.run("metric", "graded.obj", "-").stdout.startswith(b"3 1 4 2")
