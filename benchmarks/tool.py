#!/usr/bin/env python3
"""The tool beside other programs: CPU seconds and peak memory on a binary STL file, the best of several runs in turn.

usage: benchmarks/tool.py GRIDWORK [ROUNDS [TRIANGLES]]

Programs that are not installed are left out (Debian: admesh, python3-meshio)."""
import math
import os
import shutil
import struct
import subprocess
import sys
import tempfile


# Debian's package has no program of that name.
MESHIO = "import sys; from meshio._cli import main; sys.exit(main(sys.argv[1:]))"


def is_there(command):
    if command[1] == "-c":
        return subprocess.run([command[0], "-c", "import meshio._cli"], capture_output=True, check=False).returncode == 0
    return shutil.which(command[0]) is not None


def write_torus(path, triangles):
    """A closed surface of that many triangles, or a few less."""
    around = math.isqrt(triangles // 2)
    angle = 2 * math.pi / around
    ring = [(math.cos(k * angle), math.sin(k * angle)) for k in range(around)]

    def node(i, j):
        (c, s), (d, e) = ring[i % around], ring[j % around]
        return (3 + d) * c, (3 + d) * s, e

    with open(path, "wb") as file:
        file.write(bytes(80) + struct.pack("<I", 2 * around * around))
        for i in range(around):
            rows = [[node(k, j) for j in range(around + 1)] for k in (i, i + 1)]
            for j in range(around):
                a, b, c, d = rows[0][j], rows[1][j], rows[1][j + 1], rows[0][j + 1]
                file.write(struct.pack("<12fH12fH", 0, 0, 0, *a, *b, *c, 0, 0, 0, 0, *a, *c, *d, 0))


def run(command):
    """CPU seconds and the peak of the memory in MiB."""
    child = os.fork()
    if child == 0:
        null = os.open(os.devnull, os.O_RDWR)
        for stream in range(3):
            os.dup2(null, stream)
        os.execvp(command[0], command)
    _, status, usage = os.wait4(child, 0)
    if os.waitstatus_to_exitcode(status) not in (0, 1):
        sys.exit(f"{command[0]} failed")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def main(program, rounds=3, triangles=1000000):
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "torus.stl")
        write_torus(path, int(triangles))
        commands = {"gridwork info": [program, "info", path], "gridwork check": [program, "check", path],
                    "admesh": ["admesh", path], "meshio info": ["/usr/bin/python3", "-c", MESHIO, "info", path]}
        commands = {name: command for name, command in commands.items() if is_there(command)}
        runs = {name: [] for name in commands}
        for _ in range(int(rounds)):
            for name, command in commands.items():
                runs[name].append(run(command))
        least = min(seconds for seconds, _ in runs["gridwork info"])
        print(f"{'':16} {'CPU s':>8} {'MiB':>8} {'info / it':>10}")
        for name, found in runs.items():
            seconds = min(found)[0]
            print(f"{name:16} {seconds:8.2f} {max(memory for _, memory in found):8.0f} {least / seconds:10.2f}")


if __name__ == "__main__":
    main(*sys.argv[1:])
