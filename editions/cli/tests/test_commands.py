"""What the commands find and write."""
import json

import pytest

CUT_STL = """solid cut
facet normal 0 0 1
outer loop
vertex 0 0 0
vertex 1 0 0
vertex 0 1 zero
endloop
endfacet
endsolid cut
"""


def test_info_counts_what_is_there(tool):
    (info,) = tool.objects("info", "solid.obj")
    assert (info["format"], info["nodes"], info["elements"]) == ("OBJ", 4, {"TRIA3": 4})
    assert info["box"] == [[0, 0, 0], [1, 1, 1]]
    assert info["topology"] == {"dim": 2, "sides": 6, "open": 0, "non_manifold": 0, "pieces": 1, "unused_nodes": 0}
    assert info["quality"][0]["max"] == pytest.approx(1)


def test_info_goes_on_behind_a_file_that_fails(tool):
    result = tool.run("info", "missing.stl", "solid.obj")
    assert result.returncode == 2
    assert result.stderr == b"gridwork: missing.stl: No such file or directory\n"
    assert result.stdout.startswith(b"solid.obj: text OBJ")


def test_standard_input_needs_a_format(tool):
    data = (tool.folder / "solid.obj").read_bytes()
    (info,) = tool.objects("info", "-", "--from", "obj", input=data)
    assert info["nodes"] == 4
    assert b"--from" in tool.run("info", "-", input=data).stderr


FAULTS = {
    "bad_indices": "f 1 2 9\n",
    "not_finite": "v nan 0 0\nf 5 1 2\n",
    "near_nodes": "v 0 0 0\nf 5 2 3\n",
    "unused_nodes": "v 5 5 5\n",
    "degenerate": "f 1 1 2\n",
    "duplicates": "f 2 1 3\n",
    "non_manifold": "v 1 1 1\nf 1 2 5\n",
    "turned": "v 1 1 1\nv 2 1 1\nv 2 2 1\nv 2 2 2\nf 5 6 7\nf 5 6 8\n",
}


@pytest.mark.parametrize("name", FAULTS)
def test_check_names_a_fault(tool, name):
    assert tool.run("check", "solid.obj", "--closed").returncode == 0
    with open(tool.folder / "solid.obj", "a", encoding="ascii") as file:
        file.write(FAULTS[name])
    (found,) = tool.objects("check", "solid.obj", status=1)
    assert {f["name"]: f["count"] for f in found["findings"]}[name] == 1
    assert tool.run("check", "solid.obj").returncode == 1


def test_open_boundaries_and_low_quality_are_faults_where_that_is_asked(tool):
    text = (tool.folder / "solid.obj").read_text()
    (tool.folder / "open.obj").write_text(text[: text.rindex("f ")])
    assert tool.run("check", "open.obj").returncode == 0
    (found,) = tool.objects("check", "open.obj", "--closed", "--min-quality", "0.9", status=1)
    assert {f["name"]: f["count"] for f in found["findings"]} == {"open": 3, "low_quality": 2}


@pytest.mark.parametrize("name, text, words", [
    ("cut.stl", CUT_STL, 'line 6 breaks the STL grammar: "vertex" with three numbers'),
    ("cut.stl", CUT_STL[:60], "cut short"),
    ("bad.obj", "v 0 0 0\nv 1 x 0\n", "line 2 breaks the OBJ grammar"),
    ("empty.obj", "", "the file is empty"),
    ("bad.mesh", "Dimension 3\n", "no MEDIT mesh"),
    ("what.xyz", "1 2 3\n", "--from"),
    ("bad.vtk", "x", "no VTK file"),
    ("bad.nas", "BEGIN BULK\nGRID,1,,0.,x,0.\n", 'line 2: "x" is no coordinate of a node'),
    ("bad.neu", "x\n", "FEMAP"),
    ("only.case", "x", "written, but not read")])
def test_damaged_files_are_told_with_their_line(tool, name, text, words):
    (tool.folder / name).write_text(text)
    result = tool.run("info", name)
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr.startswith(f"gridwork: {name}: ".encode())
    assert words in result.stderr.decode()
    (info,) = tool.objects("info", name, status=2)
    assert info["error"]["message"] in result.stderr.decode()


def test_formats_are_all_written_and_read_again_where_they_are_read(tool):
    (listed,) = tool.objects("formats")
    for kind in listed["formats"]:
        out = "out" + kind["extensions"][0]
        assert tool.run("convert", "solid.obj", out).returncode == 0
        assert tool.run("convert", "solid.obj", out).returncode == 2
        assert (tool.folder / out).stat().st_size > 0
        if kind["read"]:
            (info,) = tool.objects("info", out)
            assert (info["nodes"], info["elements"]) == (4, {"TRIA3": 4})


@pytest.mark.parametrize("out", ["out.obj", "out.nas", "out.neu", "out.geo", "out.vtk", "out.mesh", "out.stl"])
def test_elements_of_nodes_that_are_not_there_are_not_written(tool, out):
    (tool.folder / "relative.obj").write_text("v 0 0 0\nv 1 0 0\nv 0 1 0\nf -3 -2 -1\n")
    for command in (["convert"], ["transform", "--scale", "2"]):
        result = tool.run(*command, "relative.obj", out)
        assert result.returncode == 2 and b"gridwork: relative.obj: elements have nodes that are not there" in result.stderr
        assert out not in tool.files()


def test_merge_joins_a_soup(tool):
    vertices = [(0, 0, 0), (1, 0, 0), (0, 1, 0), (1, 0, 1e-3), (1, 1, 0), (0, 1, 0)]
    soup = "".join(f"v {x} {y} {z}\n" for x, y, z in vertices) + "f 1 2 3\nf 4 5 6\n"
    (tool.folder / "soup.obj").write_text(soup)
    (exact,) = tool.objects("merge", "soup.obj", "exact.obj")
    (near,) = tool.objects("merge", "soup.obj", "near.obj", "-t", "0.01")
    assert (exact["merged"], exact["nodes"], near["merged"], near["nodes"]) == (1, 5, 2, 4)
    (info,) = tool.objects("info", "near.obj")
    assert info["topology"]["open"] == 4


def test_merge_removes_duplicates_when_asked(tool):
    deck = "GRID,1\nGRID,2,,1.\nGRID,3,,0.,1.\nGRID,4,,1.,1.\n"
    (tool.folder / "in.nas").write_text(deck + "CTRIA3,1,7,1,2,3\nCTRIA3,2,9,2,3,1\nCTRIA3,3,8,2,4,3\nCTRIA3,4,9,1,2,3\n")
    assert tool.objects("merge", "in.nas", "all.mesh")[0]["elements"] == 4
    (made,) = tool.objects("merge", "in.nas", "out.mesh", "--duplicates")
    assert (made["elements"], made["removed_duplicates"]) == (2, 2)
    assert "1 2 3 7 \n2 4 3 8 \n" in (tool.folder / "out.mesh").read_text()
    assert tool.run("check", "out.mesh").returncode == 0


def test_quality_names_the_worst_and_can_fail(tool):
    (found,) = tool.objects("quality", "solid.obj", "--worst", "1")
    (shapes,) = found["shapes"]
    assert sum(shapes["histogram"]) == shapes["elements"] == 4
    assert [w["element"] for w in shapes["worst"]] == [0]
    assert tool.run("quality", "solid.obj", "--fail-below", "0.5").returncode == 0
    assert tool.run("quality", "solid.obj", "--fail-below", "0.99").returncode == 1


def test_solids_turned_over_are_found_whatever_the_orientation_of_the_others(tool):
    nodes = "0 0 0 0\n1 0 0 0\n0 1 0 0\n0 0 1 0\n1 1 1 0\n0 0 -1 0\n"
    cells = "1 2 3 4 0\n2 3 4 5 0\n1 2 3 6 0\n"  # the last against the others
    (tool.folder / "s.mesh").write_text(
        f"MeshVersionFormatted 1\nDimension 3\nVertices\n6\n{nodes}Tetrahedra\n3\n{cells}End\n")
    (found,) = tool.objects("check", "s.mesh", status=1)
    assert [(f["name"], f["count"], f["first"]) for f in found["findings"]] == [("inverted", 1, "TETRA4 2")]


def test_what_a_format_does_not_hold_is_dropped_only_when_asked(tool):
    (tool.folder / "s.mesh").write_text("MeshVersionFormatted 1\nDimension 3\nVertices\n4\n0 0 0 0\n1 0 0 0\n0 1 0 0\n"
                                        "0 0 1 0\nTriangles\n1\n1 2 3 0\nTetrahedra\n1\n1 2 3 4 0\nEnd\n")
    refused = tool.run("convert", "s.mesh", "s.stl")
    assert refused.returncode == 2 and b"TETRA4" in refused.stderr
    assert "s.stl" not in tool.files()
    assert tool.run("convert", "s.mesh", "s.stl", "--drop").returncode == 0
    assert tool.objects("info", "s.stl")[0]["elements"] == {"TRIA3": 1}


def test_ensight_has_a_case_file_beside_its_geometry(tool):
    (tool.folder / "part.geo").write_text("here")
    assert b"part.geo exists" in tool.run("convert", "solid.obj", "part.case").stderr
    assert tool.run("convert", "solid.obj", "part.case", "--force").returncode == 0
    assert "model: part.geo" in (tool.folder / "part.case").read_text()
    assert "tria3" in (tool.folder / "part.geo").read_text()


def test_references_are_kept_where_formats_have_them(tool):
    deck = "".join(f"GRID,{k},,{x}.,{y}.,0.\n" for k, (x, y) in enumerate([(0, 0), (1, 0), (0, 1), (0, 1)], 1))
    (tool.folder / "in.nas").write_text(f"BEGIN BULK\n{deck}CTRIA3,1,7,1,2,4\nCTRIA3,2,7,2,3,4\nCTRIA3,3,8,1,3,2\nENDDATA\n")
    for out, words in {"out.neu": ",8,", "out.mesh": " 8 \n", "out.bdf": "CTRIA3,2,8,"}.items():
        assert tool.run("merge", "in.nas", out).returncode == 0
        assert words in (tool.folder / out).read_text()
        assert tool.objects("info", out)[0]["elements"] == {"TRIA3": 2}


def test_properties_are_kept_beside_elements_without_one(tool):
    nodes = "0 0 0 0\n1 0 0 0\n0 1 0 0\n0 0 1 0\n"
    (tool.folder / "in.mesh").write_text(
        f"MeshVersionFormatted 2\nDimension 3\nVertices\n4\n{nodes}Triangles\n3\n1 2 3 5\n2 3 4 0\n1 2 4 7\n"
        "Tetrahedra\n1\n1 2 3 4 0\nEnd\n")
    assert tool.run("convert", "in.mesh", "out.nas").returncode == 0
    cards = [line.split(",")[:3] for line in (tool.folder / "out.nas").read_text().splitlines() if line.startswith("CT")]
    assert [(name, int(number)) for name, _, number in cards] == [
        ("CTRIA3", 5), ("CTRIA3", 8), ("CTRIA3", 7), ("CTETRA", 9)]


def test_references_of_elements_of_several_dimensions_are_kept(tool):
    nodes = "0 0 0 0\n.1 0 0 0\n0 1 0 0\n0 0 1 0\n1 1 1 0\n"
    (tool.folder / "in.mesh").write_text(
        f"MeshVersionFormatted 2\nDimension 3\nVertices\n5\n{nodes}Tetrahedra\n2\n1 2 3 4 7\n2 3 4 5 8\n"
        "Triangles\n2\n1 2 3 4294967295\n2 3 5 3\nPyramids\n1\n1 2 3 4 5 0\nEnd\n")
    tool.run("transform", "in.mesh", "out.mesh", "--translate", "0.2,0,0")
    text = (tool.folder / "out.mesh").read_text()
    for words in ("1 2 3 4 7\n2 3 4 5 8\n", "Triangles\n2\n1 2 3 4294967295\n2 3 5 3\n", "1 2 3 4 5 5 5 5 0\n",
                  "0.30000000000000004 0 0 0\n"):
        assert words in text
    assert tool.objects("info", "out.mesh")[0]["elements"] == {"TRIA3": 2, "TETRA4": 2, "PYRAMID5": 1}


def test_what_a_file_has_beside_its_mesh_is_counted(tool):
    (tool.folder / "a.bdf").write_text("BEGIN BULK\nINCLUDE 'b.bdf'\nGRID,1\nGRID,2,,1.\nCBAR,1,1,1,2\nENDDATA\n")
    (tool.folder / "p.vtk").write_text("# vtk DataFile Version 3.0\n\nASCII\nDATASET UNSTRUCTURED_GRID\nPOINTS 3 float\n"
                                       "0 0 0 1 0 0 0 1 0\nCELLS 2 6\n1 0\n3 0 1 2\nCELL_TYPES 2\n1 5\n")
    info, vtk = tool.objects("info", "a.bdf", "p.vtk")
    assert (info["includes_left_out"], vtk["elements_left_out"]) == (1, 1)
    for command in (["convert", "a.bdf", "a.vtk"], ["quality", "a.bdf"], ["metric", "a.bdf", "a.sol"]):
        result = tool.run(*command)
        assert result.returncode == 0 and b"a.bdf: 1 left out: INCLUDE statements" in result.stderr, command
    (found,) = tool.objects("check", "p.vtk", status=1)
    assert [f["name"] for f in found["findings"]] == ["left_out"]


def test_sample_files_agree_with_their_index(tool, samples):
    expected = json.loads((samples / "expected.json").read_text())
    wrong = {}
    for name, wanted in expected.items():
        if wanted["reader"] == "medit_solution_input" or not (samples / name).is_file():
            continue
        (info,) = tool.objects("info", samples / name, status=2 if wanted["result"] < 0 else 0)
        if wanted["result"] < 0:
            continue
        left_out = info.get("includes_left_out", info.get("elements_left_out"))
        if (info["nodes"], info["elements"], left_out) != (wanted["nodes"], wanted["elements"], wanted["result"]):
            wrong[name] = info
        if "box" in wanted:
            assert info["box"] == [pytest.approx(corner, abs=1e-6) for corner in wanted["box"]], name
    assert not wrong


MESHES = {".stl", ".obj", ".mesh", ".vtk", ".nas", ".bdf", ".dat", ".neu"}


def test_every_sample_file_ends_in_a_report_or_in_words(tool, samples):
    paths = [path for path in sorted(samples.iterdir()) if path.suffix in MESHES]
    assert len(paths) > 80
    for path in paths:
        for command in ("info", "check", "quality"):
            result = tool.run(command, path)
            assert result.returncode in (0, 1, 2), (path, result)
            assert bool(result.stdout) != bool(result.stderr) or b"left out" in result.stderr, (path, result)
            assert result.returncode != 2 or result.stderr.count(b"\n") == 1, (path, result)
