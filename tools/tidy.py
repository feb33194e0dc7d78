#!/usr/bin/env python3
# Vantorel. MIT licence, see LICENSE.
# Runs clang-tidy once over each source file of the compile database, in parallel, and remembers what was clean.
"""tools/tidy.py --build FOLDER [--jobs N] [FILE...]"""

import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def commands(build: pathlib.Path) -> dict[pathlib.Path, str]:
    """The first compile command of each of our source files; a file that two programs share is checked once."""
    found: dict[pathlib.Path, str] = {}
    for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8")):
        path = (pathlib.Path(entry["directory"]) / entry["file"]).resolve()
        if path.is_relative_to(ROOT) and not path.is_relative_to(build):
            found.setdefault(path, entry["command"])
    return found


def digest(path: pathlib.Path, command: str, settings: str) -> str | None:
    """Of everything that the outcome depends on: the preprocessed text, its comments (NOLINT) included, and settings."""
    words = shlex.split(command)
    if "ccache" in pathlib.Path(words[0]).name:
        words = words[1:]
    for option in ("-o", "-MF", "-MT"):
        while option in words:
            at = words.index(option)
            del words[at : at + 2]
    words = [word for word in words if word not in ("-c", "-MD")]
    run = subprocess.run([*words, "-E", "-CC", "-P"], capture_output=True, check=False)
    if run.returncode != 0:
        return None
    # Free of the folder that the project lies in, so that what one clone found clean serves the next.
    flags = " ".join(words).replace(ROOT.as_posix(), "")
    return hashlib.sha256("\n".join([settings, flags, ""]).encode() + run.stdout).hexdigest()


def check(path: pathlib.Path, command: str, build: pathlib.Path, settings: str, clean: pathlib.Path) -> str:
    """What clang-tidy has to say about the file; empty when it is clean."""
    key = digest(path, command, settings)
    if key and (clean / key).exists():
        return ""
    run = subprocess.run(
        ["clang-tidy", "-p", str(build), "--quiet", "--warnings-as-errors=*", str(path)],
        capture_output=True, text=True, check=False)
    if run.returncode == 0:
        if key:
            (clean / key).touch()
        return ""
    return run.stdout + (run.stderr if not run.stdout.strip() else "")


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("files", nargs="*", type=pathlib.Path)
    options = parser.parse_args()
    build = options.build.resolve()
    clean = pathlib.Path(os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache") / "vantorel-tidy"
    clean.mkdir(parents=True, exist_ok=True)
    version = subprocess.run(["clang-tidy", "--version"], capture_output=True, text=True, check=True).stdout
    settings = version + "".join(
        path.read_text(encoding="utf-8") for path in sorted(ROOT.glob("**/.clang-tidy")) if "build" not in path.parts)

    work = commands(build)
    if options.files:
        wanted = {path.resolve() for path in options.files}
        work = {path: command for path, command in work.items() if path in wanted}
    if not work:
        print("clang-tidy: the compile database holds none of our files")
        return 1
    status = 0
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        jobs = [pool.submit(check, path, command, build, settings, clean) for path, command in sorted(work.items())]
        for job in jobs:
            if job.result():
                status = 1
                print(job.result())
    return status


if __name__ == "__main__":
    sys.exit(main())
