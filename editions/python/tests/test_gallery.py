"""The scripts of examples/python run, and copy nothing large without need."""

import os
import pathlib
import shutil
import subprocess
import sys

import pytest

pytest.importorskip("matplotlib")
SCRIPTS = sorted(pathlib.Path(__file__).parents[3].joinpath("examples", "python").glob("*.py"))
MODULES = {"partition": "networkx", "quality_of_tetrahedra": "vtkmodules"}


@pytest.mark.parametrize("script", SCRIPTS, ids=lambda script: script.stem)
def test_scripts(script, tmp_path):
    pytest.importorskip(MODULES.get(script.stem, "numpy"))
    command = [sys.executable, "-W", "error::ResourceWarning", str(script)]
    if script.stem == "quality_of_tetrahedra" and "DISPLAY" not in os.environ:
        if shutil.which("xvfb-run") is None:
            pytest.skip("VTK needs a display, or xvfb-run")
        command = ["xvfb-run", "-a", *command]
    result = subprocess.run(command, cwd=tmp_path, capture_output=True, text=True)
    assert result.returncode == 0, result.stdout + result.stderr
    assert tmp_path.joinpath(script.stem + ".png").stat().st_size > 20_000
    if script.stem == "repair_stl":
        assert "3 holes" in result.stdout and "0 open edges are left" in result.stdout
