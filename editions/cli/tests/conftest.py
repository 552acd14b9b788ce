"""Runs the tool as a user does. GRIDWORK names the program, QEL_TEST_MESHES a folder of sample files, which may lack."""
import json
import os
import pathlib
import subprocess

import pytest

try:
    import jsonschema
except ImportError:
    jsonschema = None

SCHEMA = json.loads((pathlib.Path(__file__).parents[3] / "docs" / "tool.schema.json").read_text())
TETRAHEDRON_OBJ = """v 0 0 0
v 1 0 0
v 0 1 0
v 0 0 1
f 1 3 2
f 1 2 4
f 2 3 4
f 1 4 3
"""


class Tool:
    """Calls in a folder of their own."""

    program = os.environ.get("GRIDWORK", "gridwork")

    def __init__(self, folder):
        self.folder = folder

    def run(self, *arguments, **options):
        return subprocess.run([self.program, *map(str, arguments)], cwd=self.folder, capture_output=True,
                              timeout=60, check=False, **options)

    def objects(self, *arguments, status=0, **options):
        """The objects that a call with --json prints, held against their schema where jsonschema is installed."""
        result = self.run("--json", *arguments, **options)
        assert result.returncode == status, result
        objects = [json.loads(line) for line in result.stdout.splitlines()]
        for found in objects if jsonschema else []:
            jsonschema.validate(found, SCHEMA)
        return objects

    def files(self):
        return sorted(path.name for path in self.folder.iterdir())


@pytest.fixture
def tool(tmp_path):
    (tmp_path / "solid.obj").write_text(TETRAHEDRON_OBJ)
    return Tool(tmp_path)


@pytest.fixture
def samples():
    folder = pathlib.Path(os.environ.get("QEL_TEST_MESHES", ""))
    if not (folder / "expected.json").is_file():
        pytest.skip("the sample files are not here")
    return folder
