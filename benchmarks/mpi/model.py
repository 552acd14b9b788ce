#!/usr/bin/env python3
"""What reading 10^9 triangles on 1000 ranks should take, from bytes that were measured on few ranks.

usage: model.py < output of scripts/benchmark_mpi.sh

Bytes of a rank grow with the border of its piece: with the square root of its triangles for compact pieces, with the
length of a row for files in scan order. The constant comes from the largest number of ranks that was measured. A message
takes 2 us, and a rank sends 0.4 GB/s, as 64 ranks do that share a link of 25 GB/s; a dense exchange sends one to each rank.
"""
import math
import re
import sys

LATENCY = 2e-6
BYTES_PER_SECOND = 0.4e9
MEASURED_TRIANGLES = 1e6
TRIANGLES = 1e9
RANKS = 1000
SWEEPS = {"STL_input": 14, "share_nodes": 6, "get_neighbors": 4}


def measured(lines):
    """Bytes a triangle by function, for the largest number of ranks."""
    ranks, found = 1, {}
    for line in lines:
        if match := re.match(r"== (\d+) ranks", line):
            ranks = int(match[1])
        elif (match := re.match(r"(\w+) .* s +([\d.]+)", line)) and match[1] in SWEEPS and ranks > 1:
            found[match[1]] = (ranks, float(match[2]))
    return found


def main():
    results = measured(sys.stdin)
    if not results:
        sys.exit("no figures of two and more ranks on the standard input")
    print(f"{'':16} {'order':10} {'MB a rank':>10} {'seconds':>10} {'latency':>10}")
    for name, (ranks, each) in results.items():
        of_rank = each * MEASURED_TRIANGLES / ranks
        row = math.sqrt(MEASURED_TRIANGLES / 2)
        borders = {
            "compact": math.sqrt(TRIANGLES / RANKS) / math.sqrt(MEASURED_TRIANGLES / ranks),
            "scan lines": math.sqrt(TRIANGLES / 2) / row,
        }
        for order, factor in borders.items():
            sent = of_rank * factor
            latency = SWEEPS[name] * RANKS * LATENCY
            print(f"{name:16} {order:10} {sent / 1e6:10.2f} {sent / BYTES_PER_SECOND:10.4f} {latency:10.3f}")


if __name__ == "__main__":
    main()
