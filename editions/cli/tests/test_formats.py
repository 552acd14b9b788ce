"""Files of all formats, sound and damaged, as they go through the tool."""
import itertools
import json
import struct

import pytest

READ = {"stl": "stl", "obj": "obj", "vtk": "vtk", "medit": "mesh", "nastran": "nas", "femap": "neu"}
CORNERS = list(itertools.product((0, 1), repeat=3))
HEXA, WEDGE, PYRAMID, TETRA = [0, 4, 6, 2, 1, 5, 7, 3], [0, 4, 2, 1, 5, 3], [0, 4, 6, 2, 1], [0, 2, 4, 1]
QUAD, TRIANGLE, EDGE = [0, 4, 6, 2], [0, 4, 2], [0, 1]
VTK_TYPES = {"HEXA8": (12, HEXA), "WEDGE6": (13, WEDGE), "PYRAMID5": (14, PYRAMID), "TETRA4": (10, TETRA),
             "QUAD4": (9, QUAD), "TRIA3": (5, TRIANGLE), "EDGE2": (3, EDGE)}


def vtk_file(cells, binary=False):
    """One unit cube's corners, with cells of the types named."""
    rows = [[len(VTK_TYPES[name][1]), *VTK_TYPES[name][1]] for name in cells]
    kinds = [VTK_TYPES[name][0] for name in cells]
    size = sum(map(len, rows))
    head = "# vtk DataFile Version 3.0\n\n{}\nDATASET UNSTRUCTURED_GRID\n"
    if not binary:
        points = "\n".join(" ".join(map(str, corner)) for corner in CORNERS)
        text = "\n".join(" ".join(map(str, row)) for row in rows)
        return (head.format("ASCII") + f"POINTS 8 double\n{points}\nCELLS {len(rows)} {size}\n{text}\n"
                f"CELL_TYPES {len(rows)}\n" + "\n".join(map(str, kinds)) + "\n").encode()
    flat = [x for corner in CORNERS for x in corner]
    indices = [index for row in rows for index in row]
    return b"".join([head.format("BINARY").encode(), b"POINTS 8 double\n", struct.pack(">24d", *flat),
                     f"\nCELLS {len(rows)} {size}\n".encode(), struct.pack(f">{size}i", *indices),
                     f"\nCELL_TYPES {len(rows)}\n".encode(), struct.pack(f">{len(kinds)}i", *kinds), b"\n"])


@pytest.mark.parametrize("binary", [False, True])
@pytest.mark.parametrize("through", ["medit", "nastran", "femap", "vtk"])
def test_elements_of_all_types_come_back(tool, through, binary):
    (tool.folder / "all.vtk").write_bytes(vtk_file(VTK_TYPES, binary))
    (before,) = tool.objects("info", "all.vtk")
    assert before["elements"] == {name: 1 for name in VTK_TYPES}
    assert before["encoding"] == ("binary" if binary else "text")
    tool.run("convert", "all.vtk", "through." + READ[through])
    tool.run("convert", "through." + READ[through], "back.vtk")
    (after,) = tool.objects("info", "back.vtk")
    for same in ("nodes", "elements", "box", "topology"):
        assert after[same] == before[same], same


@pytest.mark.parametrize("first, second", itertools.permutations(READ, 2))
def test_a_surface_goes_from_every_format_to_every_other(tool, first, second):
    assert tool.run("convert", "solid.obj", "a." + READ[first]).returncode == 0
    assert tool.run("convert", "a." + READ[first], "b." + READ[second]).returncode == 0
    one, two = tool.objects("info", "a." + READ[first], "b." + READ[second])
    assert two["format"].lower() == second
    for same in ("nodes", "elements", "box", "topology"):
        assert one[same] == two[same], same


@pytest.mark.parametrize("option", READ)
def test_every_format_comes_through_a_pipe(tool, option):
    written = tool.run("convert", "solid.obj", "-", "--to", option)
    assert written.returncode == 0 and written.stderr == b""
    (info,) = tool.objects("info", "-", "--from", option, input=written.stdout)
    assert (info["file"], info["nodes"], info["elements"], info["bytes"]) == ("-", 4, {"TRIA3": 4}, len(written.stdout))
    again = tool.run("convert", "-", "-", "--from", option, "--to", option, input=written.stdout)
    assert again.stdout == written.stdout


@pytest.mark.parametrize("option", READ)
def test_what_is_cut_anywhere_ends_in_words_or_a_smaller_mesh(tool, option):
    whole = tool.run("convert", "solid.obj", "-", "--to", option).stdout
    for size in range(0, len(whole), max(1, len(whole) // 25)):
        result = tool.run("--json", "info", "-", "--from", option, input=whole[:size])
        (found,) = [json.loads(line) for line in result.stdout.splitlines()]
        assert (result.returncode == 2) == ("error" in found)
        if "error" in found:
            assert result.stderr.startswith(b"gridwork: -: ") and found["error"]["message"]
        else:
            assert found["nodes"] <= 4


@pytest.mark.parametrize("option", READ)
def test_files_of_another_format_are_refused(tool, option):
    for other in READ:
        if other == option:
            continue
        data = tool.run("convert", "solid.obj", "-", "--to", other).stdout
        result = tool.run("info", "-", "--from", option, input=data)
        assert result.returncode == 2 or b"TRIA3" not in result.stdout


def test_text_and_binary_stl(tool):
    for options, encoding in (([], "binary"), (["--ascii"], "text")):
        tool.run("convert", "solid.obj", f"{encoding}.stl", *options)
        (info,) = tool.objects("info", f"{encoding}.stl")
        assert (info["encoding"], info["nodes"], info["elements"]) == (encoding, 4, {"TRIA3": 4})


def test_degenerate_triangles_that_a_reader_removes_are_told(tool):
    corners = [(0, 0, 0), (1, 0, 0), (0, 1, 0), (0, 0, 0), (0, 0, 0), (1, 0, 0)]
    data = bytes(80) + struct.pack("<I", 2)
    for k in (0, 3):
        data += struct.pack("<12fH", 0, 0, 1, *corners[k], *corners[k + 1], *corners[k + 2], 0)
    (tool.folder / "soup.stl").write_bytes(data)
    assert tool.objects("info", "soup.stl")[0]["elements_removed"] == 1
    (found,) = tool.objects("check", "soup.stl", status=1)
    assert [(f["name"], f["count"]) for f in found["findings"]] == [("removed", 1)]


def test_the_reader_decides_what_a_facet_is(tool):
    facet = "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex {} 0\nendloop\nendfacet endfacet\n"
    solid = f"solid endfacet\n{facet.format('0 1')}{facet.format('1 0')}endsolid endfacet\n"
    (tool.folder / "soup.stl").write_text(solid)
    (info,) = tool.objects("info", "soup.stl")
    assert (info["elements"], info["elements_removed"]) == ({"TRIA3": 1}, 1)


def test_quadrangles_are_halved_for_stl_at_the_shorter_diagonal(tool):
    (tool.folder / "kite.obj").write_text("v 0 0 0\nv 3 1 0\nv 4 4 0\nv 1 3 0\nf 1 2 3 4\n")
    tool.run("convert", "kite.obj", "kite.stl", "--ascii")
    lines = (tool.folder / "kite.stl").read_text().split("vertex ")[1:4]
    assert len({tuple(float(x) for x in line.split()[:3]) for line in lines} & {(3, 1, 0), (1, 3, 0)}) == 2


def test_sizes_of_another_kind_are_refused(tool):
    (tool.folder / "vectors.sol").write_text("3 3 4 2\n" + "1 2 3\n" * 4)
    assert b"not one size" in tool.run("quality", "solid.obj", "--sizes", "vectors.sol").stderr
    (tool.folder / "cut.sol").write_text("3 1 4 2\n1 2")
    result = tool.run("quality", "solid.obj", "--sizes", "cut.sol")
    assert result.returncode == 2 and b"cut.sol: " in result.stderr
