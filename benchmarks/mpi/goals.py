#!/usr/bin/env python3
"""The figures that are goals on a quiet machine of two cores or more, and whether they are reached.

usage: goals.py < output of scripts/benchmark_mpi.sh for 1 and 2 ranks
"""
import re
import sys

MOST_CPU_OF_SERIAL = 1.3
LEAST_SPEEDUP = 1.7


def measured(lines):
    """(wall, CPU) in seconds by number of ranks and function; of the serial reader CPU alone."""
    ranks, found = 0, {}
    for line in lines:
        if match := re.match(r"== (\d+) ranks", line):
            ranks = int(match[1])
        elif match := re.match(r"(serial \w+|\w+) +(?:([\d.]+) s +)?([\d.]+) s", line):
            found[ranks, match[1]] = (float(match[2] or "nan"), float(match[3]))
    return found


def main():
    results = measured(sys.stdin)
    cpu = results[1, "STL_input"][1] / results[1, "serial STL_input"][1]
    rows = [("STL_input, CPU on 1 rank / serial", cpu, f"at most {MOST_CPU_OF_SERIAL}", cpu <= MOST_CPU_OF_SERIAL)]
    for name in ("STL_input", "merge", "get_neighbors"):
        speedup = results[1, name][0] / results[2, name][0]
        goal = f"at least {LEAST_SPEEDUP}"
        rows.append((f"{name}, wall time on 1 rank / on 2", speedup, goal, speedup >= LEAST_SPEEDUP))
    for words, figure, goal, reached in rows:
        print(f"{words:44} {figure:5.2f}  {goal:14} {'' if reached else 'missed'}")


if __name__ == "__main__":
    main()
