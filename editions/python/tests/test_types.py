"""The types that are promised: mypy in its strict mode, the stub of the core against the core."""

import pathlib
import subprocess
import sys

import gridwork as gw
import pytest

PACKAGE = pathlib.Path(__file__).parent.parent / "gridwork"


def run(*command):
    result = subprocess.run([sys.executable, "-m", *command], capture_output=True, text=True)
    assert result.returncode == 0, result.stdout + result.stderr


def test_mypy_is_content(tmp_path):
    pytest.importorskip("mypy")
    settings = str(PACKAGE.parents[2] / "pyproject.toml")
    run("mypy", "--config-file", settings, "--no-error-summary", "--cache-dir", str(tmp_path), str(PACKAGE))


def test_the_stub_is_that_of_the_core(tmp_path, monkeypatch):
    pytest.importorskip("mypy")
    monkeypatch.setenv("MYPYPATH", str(PACKAGE.parent))
    monkeypatch.chdir(tmp_path)
    allowed = tmp_path / "allowed"
    allowed.write_text("gridwork._core.Detector\n")  # its metaclass is pybind11's
    run("mypy.stubtest", "gridwork._core", "--allowlist", str(allowed))


def test_every_name_is_in_the_manual():
    manual = PACKAGE.parents[2].joinpath("docs", "python.md").read_text()
    missing = [name for name in gw.__all__ if f"{name}" not in manual]
    assert missing == [] and set(gw.__all__) >= {"NodeDetector", "merge", "read"}
