# Vantorel. MIT licence, see LICENSE.
# The machine's clock is set forward and back while the shell runs: nothing that waits may notice.
# label: fault

import glob
import os
import subprocess
import time

from harness import wait
from harness.other import OtherWindow
from harness.page import html
from harness.server import SOURCE
from harness.status import GREEN_STATUS

DAY = 86400


class Clock:
    """A clock that the shell reads in place of the machine's; clocks that only run on stay true. The server keeps the
    machine's: its record is the measure, and Python can't sleep over that library."""

    def __init__(self, world):
        world.bundle.use_program(SOURCE, "/usr/bin/env -S -u LD_PRELOAD /usr/bin/python3 -I")
        self._file = os.path.join(world.root, "clock")
        self.environment = {
            "LD_PRELOAD": glob.glob("/usr/lib/*/faketime/libfaketimeMT.so.1")[0],
            "FAKETIME_TIMESTAMP_FILE": self._file, "FAKETIME_NO_CACHE": "1",
            "FAKETIME_DONT_FAKE_MONOTONIC": "1", "DONT_FAKE_MONOTONIC": "1",
        }
        self.set(0)

    def set(self, days):
        """Sets the clock so many days off; fails when programs do not see it."""
        with open(self._file + ".new", "w", encoding="ascii") as file:
            file.write(f"{days:+}d")
        os.rename(self._file + ".new", self._file)
        seen = subprocess.run(["date", "+%s"], env=os.environ | self.environment, capture_output=True, check=True)
        off = int(seen.stdout) - time.time()
        assert abs(off - days * DAY) < 60, f"the clock is {off} s off in place of {days} days"


def test_set_during_the_launch(world):
    clock = Clock(world)
    world.server.page(html(socket=True))
    shell = world.launch(environment=clock.environment)
    launched = shell.wait_launched().time
    clock.set(-40)
    loading = shell.wait_line(f"🌐 Loading: http://localhost:{world.port}/", 8).time
    assert 2.8 <= loading - launched <= 3.5, f"the page was asked for after {loading - launched:.2f} s"
    shell.wait_loaded()


def test_set_forward_and_back(world):
    clock = Clock(world)
    shell, window = world.launch_loaded(html(socket=True), environment=clock.environment)
    with open(f"/proc/{shell.pid}/maps", encoding="utf-8") as maps:
        assert "libfaketime" in maps.read(), "the shell reads the machine's own clock"
    world.server.wait_socket()
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    OtherWindow(world.screen)
    for days in (40, -40, 4000, 0):
        clock.set(days)
        probes = len(world.server.requests("probe"))
        times = [request["t"] for request in world.server.wait_requests("probe", probes + 3, 9)[probes:]]
        gaps = [after - before for before, after in zip(times, times[1:])]
        assert all(1.8 <= gap <= 2.3 for gap in gaps), f"gaps between probes with the clock {days} days off: {gaps}"
        assert world.screen.ping(window) < 1
        world.hands.hotkey("s")
        wait.until(lambda: len(world.server.hotkeys()) > 0, 5, "the hotkey arrives")
        world.wait_status(shell, GREEN_STATUS.format(world.port))
    world.server.wait_hotkeys(["screenshot_active"] * 4)
    wait.same(shell.count("✅ Page loaded successfully"), 1, "loads")
