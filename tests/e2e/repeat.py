#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
# Runs end-to-end cases again and again, several at a time, and lists what failed: repeat.py N [PATTERN…] [-j J]

import argparse
import concurrent.futures
import glob
import os
import re
import subprocess
import sys

FOLDER = os.path.dirname(os.path.abspath(__file__))


def cases():
    """All cases as (TOPIC.NAME, argument for run.py, whether it must run alone), in the order of the files."""
    for file in sorted(glob.glob(os.path.join(FOLDER, "cases", "test_*.py"))):
        with open(file, encoding="utf-8") as source:
            text = source.read()
        alone = re.search(r"^# serial$", text, re.MULTILINE) is not None
        for name in re.findall(r"^def test_(\w+)\(", text, re.MULTILINE):
            yield f"{os.path.basename(file)[5:-3]}.{name}", f"{file}::test_{name}", alone


def run(argument, application):
    """One run: (passed, output)."""
    done = subprocess.run([os.path.join(FOLDER, "run.py"), argument, "--app", application], capture_output=True,
                          text=True, errors="replace", check=False)
    return done.returncode == 0, done.stdout + done.stderr


def main():
    """Runs what the command line asks for."""
    parser = argparse.ArgumentParser(description="Repeats end-to-end cases.")
    parser.add_argument("count", type=int)
    parser.add_argument("patterns", nargs="*", help="regular expressions; a case that contains one of them is run")
    parser.add_argument("-j", type=int, default=3)
    parser.add_argument("--app", default=os.path.join(FOLDER, "..", "..", "build", "Vantorel.app"))
    parser.add_argument("--logs", help="folder for the outputs of failed runs")
    options = parser.parse_intermixed_args()
    chosen = [case for case in cases() if not options.patterns or any(re.search(p, case[0]) for p in options.patterns)]
    failures = {}

    def results(alone):
        with concurrent.futures.ThreadPoolExecutor(1 if alone else options.j) as pool:
            jobs = {pool.submit(run, argument, options.app): name
                    for _ in range(options.count) for name, argument, serial in chosen if serial == alone}
            for job in concurrent.futures.as_completed(jobs):
                yield jobs[job], *job.result()

    for alone in (False, True):
        for name, passed, output in results(alone):
            last = output.rstrip().rpartition("\n")[2]
            print(last if last.startswith(("PASS", "FAIL")) else f"FAIL {name}: {last}", flush=True)
            if not passed:
                failures.setdefault(name, []).append(output)
                if options.logs:
                    os.makedirs(options.logs, exist_ok=True)
                    with open(os.path.join(options.logs, f"{name}.{len(failures[name])}.log"), "w",
                              encoding="utf-8") as log:
                        log.write(output)
    total = len(chosen) * options.count
    print(f"{len(chosen)} cases, {total} runs, {sum(map(len, failures.values()))} failed")
    for name, outputs in sorted(failures.items()):
        print(f"  {name}: {len(outputs)} of {options.count}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
