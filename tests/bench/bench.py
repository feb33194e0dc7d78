#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
# The benchmarks: the shell against programs that do the same and nothing else, as ratios with limits.
"""Holds a release build of the shell against bare programs and prints one table.

    tests/bench/bench.py --build BUILD-FOLDER [--only ROW,…] [--without ROW,…] [--quick] [--json FILE]

Rows: relay, start, load, memory, idle, keys, env, press. Exit code 1 when a figure is over its limit or can't be had.
"""

import argparse
import json
import pathlib
import re
import signal
import statistics
import subprocess
import sys
import time

import bench_runs as runs
from bench_desktop import BenchError, Desktop

ROWS = ("relay", "start", "load", "memory", "idle", "keys", "env", "press")
IDLE_SECONDS = 20
FLOOD_MB = 128
PRESSES = 200
PRESS_INTERVAL_MS = 40


class Table:
    """The figures as they come, each judged by its limit."""

    def __init__(self):
        self.rows = []

    def add(self, name, shell, other, figure, limit, unit="", at_least=False):
        """A row without a limit is only shown."""
        verdict = "shown"
        if limit is not None:
            verdict = "ok" if (figure >= limit if at_least else figure <= limit) else "OVER"
        self.rows.append({"name": name, "shell": shell, "other": other, "figure": figure, "unit": unit,
                          "limit": limit, "at_least": at_least, "verdict": verdict})
        self.show(self.rows[-1])

    def fail(self, name, reason):
        self.rows.append({"name": name, "verdict": "FAILED", "reason": str(reason)})
        self.show(self.rows[-1])

    @staticmethod
    def head():
        print(f"{'':<34} {'shell':>14} {'compared with':>20} {'figure':>10} {'limit':>9}  verdict", flush=True)

    @staticmethod
    def show(row):
        if row["verdict"] == "FAILED":
            print(f"{row['name']:<34} FAILED: {row['reason']}", flush=True)
            return
        limit = ""
        if row["limit"] is not None:
            limit = f"{'≥' if row['at_least'] else '≤'}{row['limit']:g}{row['unit']}"
        print(f"{row['name']:<34} {row['shell']:>14} {row['other']:>20} {row['figure']:>8.4g}{row['unit']:<2}"
              f" {limit:>9}  {row['verdict']}", flush=True)

    def good(self):
        return bool(self.rows) and all(row["verdict"] in ("ok", "shown") for row in self.rows)


def percentile(values, share):
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, round(share * (len(ordered) - 1)))]


def alternate(count, *measures):
    """Runs each measure `count` times, in turn, after one run of each that doesn't count."""
    for measure in measures:
        measure()
    results = [[] for _ in measures]
    for _ in range(count):
        for result, measure in zip(results, measures):
            result.append(measure())
    return results


class Bench:
    """All rows on one desktop."""

    def __init__(self, desktop, options):
        self.desktop = desktop
        self.options = options
        self.table = Table()
        programs = options.programs or options.build / "tests" / "bench"
        self.programs = pathlib.Path(programs).resolve()
        build = options.build.resolve()
        self.shell = runs.Subject(desktop, build, self.programs)
        self.bare_window = runs.Subject(desktop, build, self.programs, "bare_window")
        self.bare_keys = runs.Subject(desktop, build, self.programs, "bare_keys")

    def rounds(self, ordinary):
        return max(1, ordinary // 3) if self.options.quick else ordinary

    def relay(self):
        shell, cat = alternate(self.rounds(5), lambda: runs.relay_run(self.shell, FLOOD_MB),
                               lambda: runs.cat_run(self.desktop, FLOOD_MB))
        for _, arrived in shell:
            if arrived != cat[0][1]:
                raise BenchError(f"of {cat[0][1]} bytes the relay passed on {arrived}")
        speed = [FLOOD_MB / statistics.median(seconds for seconds, _ in group) for group in (shell, cat)]
        self.table.add("relay of the server's output", f"{speed[0]:.0f} MiB/s", f"cat {speed[1]:.0f} MiB/s",
                       speed[0] / speed[1], 0.7, at_least=True)

    def launch(self, wanted):
        shell, bare = alternate(self.rounds(7), lambda: runs.launch_run(self.shell),
                                lambda: runs.launch_run(self.bare_window))
        titles = {"start": ("start to window shown", "ms", 1000), "load": ("page requested to loaded", "ms", 1000),
                  "memory": ("memory of the own process", "MiB", 1)}
        for place, row in enumerate(("start", "load", "memory")):
            if row not in wanted:
                continue
            title, unit, factor = titles[row]
            own, other = (statistics.median(run[place] for run in group) for group in (shell, bare))
            self.table.add(title, f"{own * factor:.1f} {unit}", f"bare {other * factor:.1f} {unit}", own / other, 1.10)

    def idle(self):
        share = statistics.median(runs.idle_run(self.shell, IDLE_SECONDS) for _ in range(self.rounds(3)))
        self.table.add(f"processor, {IDLE_SECONDS} s idle", f"{share * IDLE_SECONDS * 1000:.0f} ms", "one core",
                       share * 100, 0.5, "%")

    def keys(self):
        shell, bare = alternate(self.rounds(5), lambda: runs.keys_run(self.shell, PRESSES, PRESS_INTERVAL_MS),
                                lambda: runs.keys_run(self.bare_keys, PRESSES, PRESS_INTERVAL_MS))
        for name, share, limit in (("p50", 0.5, 1.15), ("p95", 0.95, 1.3)):
            own, other = (statistics.median(percentile(run, share) for run in group) for group in (shell, bare))
            self.table.add(f"key press to frame, {name}", f"{own * 1000:.2f} ms", f"bare {other * 1000:.2f} ms",
                           own / other, limit)

    def google_benchmark(self, program):
        """Name to milliseconds, medians of several repetitions."""
        results = self.desktop.folder / f"{program}.json"
        answer = subprocess.run([self.programs / program, f"--benchmark_out={results}", "--benchmark_out_format=json",
                                 "--benchmark_repetitions=5", "--benchmark_report_aggregates_only=true"],
                                capture_output=True, check=False)
        if answer.returncode != 0:
            raise BenchError(f"{program}: {answer.stderr.decode('utf-8', 'replace')[-500:]}")
        scale = {"ns": 1e-6, "us": 1e-3, "ms": 1, "s": 1e3}
        return {entry["run_name"]: entry["real_time"] * scale[entry["time_unit"]]
                for entry in json.loads(results.read_text(encoding="utf-8"))["benchmarks"]
                if entry.get("aggregate_name") == "median"}

    def instructions(self, presses):
        """Instructions that callgrind counts for so many ordinary key presses, start-up included."""
        answer = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
                                 self.programs / "key_bench", "--presses", str(presses)],
                                capture_output=True, text=True, check=False)
        found = re.search(r"Collected : (\d+)", answer.stderr)
        if answer.returncode != 0 or not found:
            raise BenchError(f"callgrind: {answer.stderr[-500:]}")
        return int(found.group(1))

    def env(self):
        for name, milliseconds in self.google_benchmark("env_bench").items():
            self.table.add(f"1 MiB of .env, {name}", f"{milliseconds:.2f} ms", "", milliseconds, 10, "ms")

    def press(self):
        for name, milliseconds in self.google_benchmark("key_bench").items():
            self.table.add(f"cost of one press, {name}", f"{milliseconds * 1000:.2f} µs", "", milliseconds * 1000,
                           None, "µs")
        few, many = 100, 1100
        each = (self.instructions(many) - self.instructions(few)) / (many - few)
        self.table.add("cost of one press, ordinaryKey", f"{each:.0f} instr.", "", each, None)

    def run(self, wanted):
        groups = [("relay", {"relay"}, self.relay),
                  ("launch", {"start", "load", "memory"}, lambda: self.launch(wanted)),
                  ("idle", {"idle"}, self.idle), ("keys", {"keys"}, self.keys), ("env", {"env"}, self.env),
                  ("press", {"press"}, self.press)]
        for name, rows, measure in groups:
            if not rows & wanted:
                continue
            try:
                measure()
            except (BenchError, OSError, subprocess.TimeoutExpired) as error:
                self.table.fail(name, error)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="folder that holds Vantorel.app")
    parser.add_argument("--programs", help="folder of the bare programs (default: BUILD/tests/bench)")
    parser.add_argument("--only", default=",".join(ROWS), help="rows to measure")
    parser.add_argument("--without", default="", help="rows to leave out")
    parser.add_argument("--quick", action="store_true", help="a third of the runs: for trying things out")
    parser.add_argument("--json", type=pathlib.Path, help="write the figures to this file too")
    options = parser.parse_args()
    wanted = set(options.only.split(",")) - set(filter(None, options.without.split(",")))
    if unknown := wanted - set(ROWS):
        parser.error(f"no such rows: {', '.join(sorted(unknown))}")

    # A request to end still takes the desktop and its programs along.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    begin = time.monotonic()
    with Desktop() as desktop:
        bench = Bench(desktop, options)
        bench.table.head()
        bench.run(wanted)
    print(f"measured in {time.monotonic() - begin:.0f} s")
    if options.json:
        options.json.write_text(json.dumps(bench.table.rows, indent=2) + "\n", encoding="utf-8")
    return 0 if bench.table.good() else 1


if __name__ == "__main__":
    sys.exit(main())
