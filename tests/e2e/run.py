#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
# Runs one end-to-end case in a world of its own: run.py FILE::FUNCTION --app PATH/Vantorel.app

import argparse
import importlib.util
import os
import re
import shutil
import signal
import sys
import tempfile
import time
import traceback

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import children  # noqa: E402
from harness.staging import Skipped  # noqa: E402
from harness.world import World  # noqa: E402


def load(file):
    """The case file as a module."""
    name = os.path.splitext(os.path.basename(file))[0]
    description = importlib.util.spec_from_file_location(name, file)
    module = importlib.util.module_from_spec(description)
    description.loader.exec_module(module)
    return module


def time_limit(file):
    """Seconds that the file allows each of its cases."""
    with open(file, encoding="utf-8") as text:
        found = re.search(r"^# timeout: (\d+)$", text.read(), re.MULTILINE)
    return int(found.group(1)) if found else 180


def overdue(*_):
    """Ends a case that hangs while there is still time to report and to clean up."""
    raise AssertionError("the case takes too long")


def find_file(name):
    """The case file, also when only its topic is given."""
    folder = os.path.join(os.path.dirname(os.path.abspath(__file__)), "cases")
    for candidate in (name, os.path.join(folder, name), os.path.join(folder, f"test_{name}.py")):
        if os.path.isfile(candidate):
            return os.path.abspath(candidate)
    sys.exit(f"no such file of cases: {name}")


def main():
    """Parses the command line, runs the case, and returns the exit status."""
    root_folder = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    parser = argparse.ArgumentParser(description="Runs one end-to-end case.")
    parser.add_argument("case", help="FILE::FUNCTION; TOPIC::NAME for cases/test_TOPIC.py and test_NAME")
    parser.add_argument("--app", default=os.path.join(root_folder, "build", "Vantorel.app"), help="the bundle")
    parser.add_argument("--keep", action="store_true", help="leave the case's folder behind")
    options = parser.parse_args()
    file, _, name = options.case.partition("::")
    file = find_file(file)
    module = load(file)
    case = getattr(module, name, None) or getattr(module, f"test_{name}")
    title = f"{os.path.basename(file)[5:-3]}.{case.__name__[5:]}"
    application = os.path.abspath(options.app)
    if not os.path.exists(os.path.join(application, "Contents", "Linux", "Vantorel")):
        sys.exit(f"no application at {application}")

    children.adopt_orphans()
    signal.signal(signal.SIGALRM, overdue)
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        signal.signal(number, lambda *_: sys.exit(1))
    root = os.path.realpath(tempfile.mkdtemp(prefix="vt-"))
    world = None
    begun = time.monotonic()
    passed = False
    try:
        world = World(root, application)
        signal.alarm(max(time_limit(file) - 20, 10))
        case(world)
        world.finish()
        passed = True
    except Skipped as reason:
        print(f"SKIPPED: {reason}")
        passed = True
    except Exception:  # pylint: disable=broad-except  # whatever goes wrong is a failure of the case, told below
        signal.alarm(0)
        print(traceback.format_exc(), end="")
        if world:
            world.tell(os.path.join(os.path.dirname(application), "e2e", f"{title}.png"))
    finally:
        signal.alarm(0)
        if world:
            world.clear()
        if not options.keep:
            shutil.rmtree(root, ignore_errors=True)
    print(f"{'PASS' if passed else 'FAIL'} {title} ({time.monotonic() - begun:.1f} s)")
    return 0 if passed else 1


if __name__ == "__main__":
    sys.exit(main())
