"""Damaged files of text: what is wrong with them, and in which line."""
import re

import pytest

from test_formats import VTK_TYPES, vtk_file

MEDIT = """MeshVersionFormatted 2
Dimension 3
Vertices 4 # count
0 0 0 1
1 0 0 1
0 1 0 1
0 0 1 1
Tetrahedra
1
1 2 3 4 7
End
"""
VTK = """# vtk DataFile Version 5.1
METADATA POINTS x
ASCII
DATASET UNSTRUCTURED_GRID
FIELD f 2
a 2 1 int
1 2
NULL_ARRAY
POINTS 4 float
0 0 0 1 0 0
0 1 0 0 0 1
METADATA
INFORMATION 0

CELLS 2 4
OFFSETS vtktypeint64
0 4
CONNECTIVITY vtktypeint64
0 1 2 3
CELL_TYPES 1
10
"""
OLD_VTK = """# vtk DataFile Version 3.0

ASCII
DATASET POLYDATA
POINTS 3 float
0 0 0 1 0 0 0 1 0
POLYGONS 1 4
3 0 1 2
"""
NASTRAN = """GRID,x,,no model yet
BEGIN BULK
$ GRID,x
GRID,1,,0.,0.,0.
GRID    2               1.      0.      0.
GRID*   3                               0.              1.+0            *
*       0.D0
GRID,4,,0.,0.,1.
CTETRA,1,7,1,2,3,4,,
,
CTRIA3  1       7       1       2       3
PSHELL,x
ENDDATA
GRID,x
"""
FEMAP = """   -1
   100
<NULL>
8.1
   -1
   -1
   403
1,0,0,1,46,0,0,0,0,0,0,0.,0.,0.,0,
2,0,0,1,46,0,0,0,0,0,0,1.,0.,0.,0,
3,0,0,1,46,0,0,0,0,0,0,0.,1.,0.,0,
   -1
   -1
   404
1,124,7,17,2,1,0,0,0,0,0,0,0,
1,2,3,0,0,0,0,0,0,0,
0,0,0,0,0,0,0,0,0,0,
0.,0.,0.,
0.,0.,0.,
0.,0.,0.,
0,0,0,0,0,0,0,0,0,0,0,0,1,0,0,0,
5,5,
-1,-1,
   -1
"""
TEXTS = {"mesh": MEDIT, "vtk": VTK, "old.vtk": OLD_VTK, "nas": NASTRAN, "neu": FEMAP}

# The file, what becomes of its text, and the words.
FAULTS = [
    ("mesh", "1 0 0 1\n", "1 0 O 1\n", 'line 5: "O" stands where a number is expected'),
    ("mesh", "1 2 3 4 7", "1 2 3 4.5 7", 'line 10: "4.5" stands where a whole number is expected'),
    ("mesh", "Vertices 4", "Vertices 5", 'line 8: "Tetrahedra" stands where a number is expected'),
    ("mesh", "a\n1\n", "a\n-1\n", 'line 9: "-1" is no count'),
    ("mesh", "3 4 7\nEnd\n", "3", 'cut short: it ends in line 10, within "Tetrahedra" of line 8'),
    ("mesh", "1 2 3 4 7", "1 2 3 5 7", 'line 10: "5" is no node; the file has 4'),
    ("mesh", "1 2 3 4 7", "0 2 3 4 7", 'line 10: "0" is no node; the file has 4'),
    ("mesh", "Dimension 3", "Dimension 4", 'line 2: "4" is no dimension'),
    ("mesh", "Dimension 3\n", "", 'line 2: "Vertices" stands before "Dimension"'),
    ("vtk", "0 1 0 0 0 1\n", "0 1 0 0 0\n", 'line 12: "METADATA" stands where a number is expected'),
    ("vtk", "0 1 2 3\n", "0 1 2 4\n", 'line 19: "4" is no node; the file has 4'),
    ("vtk", "0 4\n", "0 four\n", 'line 17: "four" stands where a whole number is expected'),
    ("vtk", "CONNECTIVITY", "CONNECTED", 'line 18: "CONNECTED" stands where "CONNECTIVITY" is expected'),
    ("vtk", "CELL_TYPES 1", "CELL_TYPES 99999999999999999999",
     'cut short: it ends in line 21, within "CELL_TYPES" of line 20'),
    ("vtk", "CELL_TYPES 1\n10\n", "CELL_TYPES 2\n10\n", 'cut short: it ends in line 21, within "CELL_TYPES" of line 20'),
    ("vtk", "CELL_TYPES", "CELL_KINDS", 'line 20: "CELL_KINDS" is no keyword'),
    ("old.vtk", "1 4\n", "1 5\n", 'line 7: "POLYGONS" has 4 numbers, not 5'),
    ("nas", "1.+0   ", "1.+x   ", 'line 6: "1.+x" is no coordinate of a node'),
    ("nas", "0.D0", "0.F0", 'line 6: "0.F0" is no coordinate of a node'),
    ("nas", "GRID    2 ", "GRID    0 ", 'line 5: "0" is no ID of a node'),
    ("nas", "CTRIA3  1       7       1 ", "CTRIA3  1       7         ", 'line 11: "" is no ID of a node'),
    ("nas", "CTETRA,1,7", "CTETRA,1,p", 'line 9: "p" is no property'),
    ("nas", "1,2,3,4,,", "1,2,3,5,,", "line 9: node 5 is not there"),
    ("nas", "GRID,4,,0.,0.,1.", "GRID,1,,0.,0.,1.", "line 8: node 1 is defined again, at another place"),
    ("nas", "PSHELL,x", "=", "line 12: a replication"),
    ("neu", "46,0,0,0,0,0,0,0.,1.,", "46,0,0,0,0,0,0,0.,l.,", 'line 10: "l." is no coordinate of a node'),
    ("neu", "2,0,0,1,46", "2.,0,0,1,46", 'line 9: "2." is no ID of a node'),
    ("neu", "1,2,3,0", "1,2,three,0", 'line 14: "three" is no ID of a node'),
    ("neu", "1,2,3,0", "1,2,4,0", "line 14: node 4 is not there"),
    ("neu", "3,0,0,1,46", "1,0,0,1,46", "line 10: node 1 is defined again"),
    ("neu", "5,5,\n-1,-1,\n   -1\n", "5,5,\n", "line 14: the record that begins here is cut short")]


@pytest.mark.parametrize("name", TEXTS)
def test_files_are_sound_before_they_are_damaged(tool, name):
    (tool.folder / f"a.{name}").write_text(TEXTS[name])
    assert len(tool.objects("info", f"a.{name}")[0]["elements"]) == (2 if name == "nas" else 1)


@pytest.mark.parametrize("name, before, after, words", FAULTS)
def test_the_fault_is_told_with_its_line(tool, name, before, after, words):
    assert TEXTS[name].count(before) == 1
    (tool.folder / f"a.{name}").write_text(TEXTS[name].replace(before, after))
    result = tool.run("info", f"a.{name}")
    assert result.returncode == 2 and words in result.stderr.decode(), result.stderr


@pytest.mark.parametrize("name", ["mesh", "vtk", "nas", "neu"])
def test_a_number_that_is_none_is_found_wherever_it_stands(tool, name):
    (tool.folder / "all.vtk").write_bytes(vtk_file(VTK_TYPES))
    tool.run("convert", "all.vtk", f"all.{name}", "-f")
    lines = (tool.folder / f"all.{name}").read_text().splitlines()
    found = 0
    for number, line in enumerate(lines, 1):
        numbers = list(re.finditer(r"(?<![\w.])\d+(?![\w.])", line))
        if not numbers or re.fullmatch(" +-?[0-9]+", line):  # without its marks and number a block is passed over
            continue
        last = numbers[-1]
        damaged = lines[: number - 1] + [line[: last.start()] + "q" * len(last.group()) + line[last.end():]] + lines[number:]
        (tool.folder / f"a.{name}").write_text("\n".join(damaged) + "\n")
        words = tool.run("info", f"a.{name}").stderr.decode()
        place = re.search(r"line (\d+)", words)
        found += 1 if place else 0
        assert not words or (place and number - 7 < int(place.group(1)) <= number), (number, line, words)
        assert name in ("nas", "neu") or not words or int(place.group(1)) == number, (line, words)
    assert found >= 8
