#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
# Long use in short time: soak.py [MINUTES]; memory, descriptors, threads and X resources of the shell have to stay flat.
"""Drives the real application on a private display, samples its process from outside after every third round of work,
and fits a line through the floor of each figure after a warm-up. Exit status 0 only when every figure stays within its limit for
sure; a figure whose error is too large for a verdict is "not decided": the run was too short for it.

Keys are pressed in another program's window and in panels, not in the page: of each key that its view gets, WebKitGTK
2.50 keeps some two hundred bytes as long as the page is shown, in a program of twelve lines as well."""

import argparse
import os
import shutil
import signal
import sys
import tempfile
import time
import traceback

sys.dont_write_bytecode = True
FOLDER = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(FOLDER))
sys.path[:0] = [FOLDER, os.path.join(ROOT, "tests", "e2e")]

from harness import children  # noqa: E402
from harness.world import World  # noqa: E402

from samples import FIGURES, Sampler  # noqa: E402
from trend import fit, floor, verdict  # noqa: E402
from usage import User  # noqa: E402


def parse():
    """The command line."""
    parser = argparse.ArgumentParser(description="Long use in short time.")
    parser.add_argument("minutes", nargs="?", type=float, default=30, help="time of use, warm-up included (30)")
    parser.add_argument("--warm-up", type=float, metavar="MINUTES", help="left out of the lines (half of the time)")
    parser.add_argument("--app", default=os.path.join(ROOT, "build", "Vantorel.app"), help="the bundle")
    parser.add_argument("--samples", metavar="FILE", help="write all samples there, as tab-separated values")
    options = parser.parse_args()
    if options.warm_up is None:
        options.warm_up = options.minutes / 2
    if not 0 <= options.warm_up < options.minutes:
        parser.error("the warm-up must be shorter than the run")
    if not os.path.exists(os.path.join(options.app, "Contents", "Linux", "Vantorel")):
        parser.error(f"no application at {options.app}")
    return options


def table(sampler, warm_up):
    """Prints the figures; returns whether all of them surely stay within their limits."""
    print(f"\n{'':28}{'first':>9}{'last':>9}{'per hour':>12}{'± error':>10}{'limit':>8}  verdict")
    grows = undecided = False
    for key, figure in FIGURES.items():
        times, values = sampler.series(key, warm_up)
        if not values:
            print(f"{figure.name:28}{'-':>9}{'-':>9}{'-':>12}{'-':>10}{figure.limit:>8.0f}  not measured")
            continue
        trend = fit(*floor(times, values))
        said = verdict(trend, figure.limit)
        grows, undecided = grows or said == "GROWS", undecided or said == "not decided"
        digits = 1 if figure.unit else 0
        slope, error = (f"{trend.slope:+.2f}", f"{trend.error:.2f}") if trend else ("-", "-")
        title = f"{figure.name}{', ' + figure.unit if figure.unit else ''}"
        print(f"{title:28}{values[0]:>9.{digits}f}{values[-1]:>9.{digits}f}{slope:>12}{error:>10}"
              f"{figure.limit:>8.0f}  {said}")
    if undecided:
        print("\nnot decided: the error is too large for a verdict; a longer run makes it smaller.")
    return not grows and not undecided


def write_samples(sampler, path):
    """All samples as a table."""
    with open(path, "w", encoding="ascii") as file:
        print("seconds", *FIGURES, sep="\t", file=file)
        for moment, figures in sampler.samples:
            print(f"{moment:.1f}", *(figures.get(key, "") for key in FIGURES), sep="\t", file=file)


def soak(world, options):
    """One run; returns the exit status."""
    user = User(world)
    sampler = Sampler(user.shell.pid, world.screen.name)
    end = sampler.begun + options.minutes * 60
    shown = [time.monotonic()]

    def over():
        now = time.monotonic()
        if now - shown[0] >= 30:
            shown[0] = now
            figures = sampler.samples[-1][1] if sampler.samples else {}
            print(f"{(now - sampler.begun) / 60:5.1f} min  " + "  ".join(
                f"{key} {value:.1f}" if isinstance(value, float) else f"{key} {value}"
                for key, value in figures.items()), flush=True)
        return now >= end

    user.work_until(over, sampler.take)
    if options.samples:
        write_samples(sampler, options.samples)
    lines = user.shell.mark()
    world.finish()
    used = (time.monotonic() - sampler.begun) / 60
    print(f"\n{used:.1f} minutes of use: " + ", ".join(f"{count} {what}" for what, count in user.done.items())
          + f"; {lines} lines of log")
    print(f"{len(sampler.samples)} samples, the first {options.warm_up:.1f} minutes left out as warm-up")
    flat = table(sampler, options.warm_up * 60)
    for note in sampler.notes:
        print(note)
    return 0 if flat else 1


def main():
    """Sets the stage, runs, and clears up whatever happens."""
    options = parse()
    children.adopt_orphans()
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        signal.signal(number, lambda *_: sys.exit(1))
    root = os.path.realpath(tempfile.mkdtemp(prefix="vt-"))
    world, status = None, 1
    try:
        world = World(root, os.path.abspath(options.app))
        status = soak(world, options)
    except Exception:  # pylint: disable=broad-except  # whatever goes wrong fails the run, and is told below
        print(traceback.format_exc(), end="")
        if world:
            world.tell(os.path.join(os.path.dirname(os.path.abspath(options.app)), "soak.png"))
    finally:
        if world:
            world.clear()
        shutil.rmtree(root, ignore_errors=True)
    return status


if __name__ == "__main__":
    sys.exit(main())
