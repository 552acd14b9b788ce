"""Prints, for each group of a Google Benchmark result, our median CPU time, each peer's, and ours over the peer's."""

import json
import sys


def medians(path):
    with open(path, encoding="utf-8") as result:
        runs = json.load(result)["benchmarks"]
    groups = {}
    for run in runs:
        if run.get("aggregate_name") == "median":
            name, is_timed, _ = run["run_name"].partition("/iterations:1/manual_time")
            group, _, who = name.rpartition("/")
            groups.setdefault(group, {})[who] = run["real_time" if is_timed else "cpu_time"]
    return groups


def main():
    print("| operation | ours, ms | peer | peer, ms | ratio |\n|---|---|---|---|---|")
    for group, times in medians(sys.argv[1]).items():
        ours = times.pop("ours")
        if not times:
            print(f"| {group} | {ours:.1f} | | | |")
        for peer, time in times.items():
            print(f"| {group} | {ours:.1f} | {peer} | {time:.1f} | {ours / time:.2f} |")


main()
