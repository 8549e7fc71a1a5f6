#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints, for each work that was measured, our time against each peer's as a ratio, and whether the goal is met.

    tools/bench_ratios.py --goals bench/goals.json [--all] RESULT.json...

Results are Google Benchmark's JSON. A benchmark is named WORK/ours, WORK/peer_NAME or WORK/limit; an argument of
the benchmark may follow and belongs to the work. Medians of the processor time of all repetitions are compared,
which were measured in one run: a ratio carries from machine to machine, a time does not.
"""

import argparse
import collections
import json
import pathlib
import statistics
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
# What Google Benchmark itself adds to a name.
DECORATIONS = ("repeats:", "min_time:", "iterations:", "threads:", "real_time", "process_time", "manual_time")


def is_role(part):
    return part in ("ours", "limit") or part.startswith(("ours_", "peer_"))


def split(name):
    """("Work [argument]", "ours") of "Work/ours/argument", or None when no role is named."""
    parts = [part for part in name.split("/") if not part.startswith(DECORATIONS)]
    at = next((i for i, part in enumerate(parts) if is_role(part)), None)
    if at is None:
        return None
    work, arguments = "/".join(parts[:at]), "/".join(parts[at + 1:])
    return (f"{work} [{arguments}]" if arguments else work), parts[at]


def medians(paths):
    """{work: {role: nanoseconds}} in the order of measuring."""
    times = collections.defaultdict(lambda: collections.defaultdict(list))
    for path in paths:
        for run in json.loads(path.read_text())["benchmarks"]:
            if run.get("run_type") != "iteration" or run.get("error_occurred"):
                continue
            name = split(run.get("run_name", run["name"]))
            if name is None:
                print(f"{path.name}: {run['name']} names neither ours nor a peer", file=sys.stderr)
                continue
            work, role = name
            times[work][role].append(run["cpu_time"] * NANOSECONDS[run["time_unit"]])
    return {work: {role: statistics.median(each) for role, each in roles.items()} for work, roles in times.items()}


def human(nanoseconds):
    for unit in ("ns", "us", "ms"):
        if nanoseconds < 1000:
            return f"{nanoseconds:.3g} {unit}"
        nanoseconds /= 1000
    return f"{nanoseconds:.3g} s"


def goal_of(goals, work, peer):
    """A goal for "Work" holds for each of its arguments, unless one is named."""
    for name in (work, work.split(" [")[0]):
        if (name, peer) in goals:
            return (name, peer)
    return None


def rows(measured, goals, all_measured):
    used = set()
    for work, roles in sorted(measured.items()):
        for peer, time in sorted(roles.items()):
            if peer == "ours" or "ours" not in roles:
                continue
            ratio = roles["ours"] / time
            key = goal_of(goals, work, peer)
            used.add(key)
            verdict = "" if key is None else "met" if ratio <= goals[key] else "NOT MET"
            goal = "-" if key is None else f"<= {goals[key]:g}"
            yield [work, human(roles["ours"]), peer.removeprefix("peer_"), human(time), f"{ratio:.3g}", goal, verdict]
    for work, peer in sorted(set(goals) - used) if all_measured else ():
        yield [work, "-", peer.removeprefix("peer_"), "-", "-", f"<= {goals[work, peer]:g}", "not measured"]


def print_table(table):
    widths = [max(len(row[column]) for row in table) for column in range(len(table[0]))]
    right = {1, 3, 4, 5}
    for row in table:
        cells = [cell.rjust(width) if column in right else cell.ljust(width)
                 for column, (cell, width) in enumerate(zip(row, widths))]
        print("  ".join(cells).rstrip())


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--goals", type=pathlib.Path, required=True)
    parser.add_argument("--all", action="store_true", help="the results are all there are: name the goals they miss")
    parser.add_argument("results", nargs="+", type=pathlib.Path)
    options = parser.parse_args()
    goals = {(each["work"], each["against"]): each["atMost"] for each in json.loads(options.goals.read_text())["goals"]}
    heading = ["work", "ours", "against", "theirs", "ratio", "goal", ""]
    table = [heading, *rows(medians(options.results), goals, options.all)]
    print_table(table)
    met, missed = (sum(row[-1] == verdict for row in table) for verdict in ("met", "NOT MET"))
    print(f"\n{met} goals met, {missed} not met. A ratio is our time divided by theirs.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
