#!/usr/bin/env python3
"""bench/compare.py flags what became slower, and nothing else."""
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

COMPARE = pathlib.Path(__file__).resolve().parents[2] / "bench" / "compare.py"


def exact(**changes):
    return {"name": "asia/prior/effort", "update_ms": 10.0, "table_bytes": 5000000,
            "difference": 1e-15, **changes}


def timed(time, **changes):
    return {"name": "Load", "real_time": time, "time_unit": "us", **changes}


class CompareTest(unittest.TestCase):
    def run_compare(self, baseline, new):
        with tempfile.TemporaryDirectory() as folder:
            names = [str(pathlib.Path(folder) / name) for name in ("old.json", "new.json")]
            for name, entries in zip(names, (baseline, new)):
                pathlib.Path(name).write_text(json.dumps({"benchmarks": entries}))
            return subprocess.run([sys.executable, str(COMPARE), *names], capture_output=True,
                                  text=True)

    def test_cases(self):
        for name, baseline, new, said in (
                ("equal", [exact()], [exact()], None),
                ("within the tolerance", [exact()], [exact(update_ms=11.4)], None),
                ("slower", [exact()], [exact(update_ms=11.6)], "update_ms 10 -> 11.6"),
                ("twice a time below the floor", [exact(update_ms=0.02)],
                 [exact(update_ms=0.04)], None),
                ("larger", [exact()], [exact(table_bytes=9000000)], "table_bytes"),
                ("wrong", [exact()], [exact(difference=1e-3)], "wrong result"),
                ("not valid", [exact()], [exact(invalid=1)], "wrong result"),
                ("gone", [exact()], [], "gone"),
                ("faster", [exact()], [exact(update_ms=1.0)], None),
                ("microseconds", [timed(1000)], [timed(1300)], "time_ms 1 -> 1.3"),
                ("the least of repetitions", [timed(1000)], [timed(1300), timed(1001)], None),
                ("aggregates do not count", [timed(1000)],
                 [timed(1000), timed(9000, run_type="aggregate")], None)):
            with self.subTest(name):
                run = self.run_compare(baseline, new)
                self.assertEqual(run.returncode, 1 if said else 0, run.stdout + run.stderr)
                self.assertIn(said or "compared", run.stdout)


if __name__ == "__main__":
    unittest.main()
