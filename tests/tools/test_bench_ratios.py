#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""tools/bench_ratios.py compares medians, finds the goal of a work and says what was left out."""

import json
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
import bench_ratios  # noqa: E402


def result(name, time, unit="ns", run_type="iteration"):
    return {"name": name, "run_name": name, "run_type": run_type, "cpu_time": time, "time_unit": unit}


class RatiosTest(unittest.TestCase):
    def measured(self, *results):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "results.json")
            path.write_text(json.dumps({"benchmarks": results}))
            return bench_ratios.medians([path])

    def test_medians_of_repetitions_are_taken_and_units_are_made_one(self):
        measured = self.measured(
            result("Sum/ours", 1), result("Sum/ours", 90), result("Sum/ours", 2), result("Sum/ours", 5, run_type="aggregate"),
            result("Sum/peer_icu", 1, "us"))
        self.assertEqual(measured, {"Sum": {"ours": 2, "peer_icu": 1000}})

    def test_arguments_belong_to_the_work_and_decorations_to_nobody(self):
        self.assertEqual(bench_ratios.split("Text/ours/3/repeats:9"), ("Text [3]", "ours"))
        self.assertEqual(bench_ratios.split("Text/limit"), ("Text", "limit"))
        self.assertIsNone(bench_ratios.split("Text/other"))

    def test_each_ratio_is_held_against_its_goal(self):
        measured = {"Sum": {"ours": 1, "peer_a": 2, "peer_b": 1, "limit": 1}, "Text [1]": {"ours": 3, "peer_a": 1}}
        goals = {("Sum", "peer_a"): 0.5, ("Sum", "peer_b"): 0.5, ("Text", "peer_a"): 4, ("Gone", "limit"): 1}
        verdicts = {(row[0], row[2]): row[-1] for row in bench_ratios.rows(measured, goals, True)}
        self.assertEqual(verdicts, {
            ("Sum", "a"): "met", ("Sum", "b"): "NOT MET", ("Sum", "limit"): "", ("Text [1]", "a"): "met",
            ("Gone", "limit"): "not measured"})
        some = bench_ratios.rows(measured, goals, False)
        self.assertNotIn("Gone", [row[0] for row in some])


if __name__ == "__main__":
    unittest.main()
