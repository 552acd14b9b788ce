#!/usr/bin/env python3
"""Compares what the readers make of sample files with what independent readers found in them.

usage: sample_meshes.py DUMP_MESH FOLDER
Exit code: 0 when nothing differs, 1 otherwise, 77 when the folder is not there.
"""
import json
import pathlib
import subprocess
import sys
import tempfile

READERS = {"FEMAP_input", "NASTRAN_input", "medit_input", "medit_solution_input", "vtk_input"}  # that DUMP_MESH knows


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    if not (folder / "check_expected.py").exists():
        print(f"skipped: no sample meshes in {folder}")
        return 77
    expected = json.loads((folder / "expected.json").read_text())
    known = {name: entry for name, entry in expected.items() if entry["reader"] in READERS}
    with tempfile.TemporaryDirectory() as place:
        wanted, dump = pathlib.Path(place, "expected.json"), pathlib.Path(place, "dump.json")
        wanted.write_text(json.dumps(known))
        dump.write_bytes(subprocess.run([program, folder], check=True, stdout=subprocess.PIPE).stdout)
        return subprocess.run([sys.executable, folder / "check_expected.py", wanted, dump]).returncode


if __name__ == "__main__":
    sys.exit(main())
