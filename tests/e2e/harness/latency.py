# Vantorel. MIT licence, see LICENSE.
# How fast a window answers while something goes on: ping after ping, less the time for which there was no processor.

import os
import time

from harness import children, wait


def reaction(world, shell, press, line, timeout=2):
    """Seconds from a key press (the function `press` gives its moment) to a log line of the shell, less the time for
    which the main threads on the way stood in the processor's queue: what counts is an otherwise idle machine."""
    pids = [shell.pid, world.display_server.pid, os.getpid()]
    mark = shell.mark()
    queued = sum(children.waited(pid, threads=False) for pid in pids)
    begun = press()
    seen = shell.wait_line(line, timeout, mark)
    return max(seen.time - begun - (sum(children.waited(pid, threads=False) for pid in pids) - queued), 0)


class Watch:
    """Pings a shell's window again and again. The time for which the shell's main thread, the display or the harness
    stood in the processor's queue is taken off, so that a busy machine isn't blamed on the window."""

    def __init__(self, world, shell):
        self._screen = world.screen
        self._window = world.window(shell)
        self._pids = [shell.pid, world.display_server.pid, os.getpid()]
        self.delays = []

    def _queued(self):
        return sum(children.waited(pid, threads=False) for pid in self._pids)

    def ping(self):
        """One more ping."""
        before = self._queued()
        delay = self._screen.ping(self._window, 30)
        self.delays.append(max(delay - (self._queued() - before), 0))

    def until(self, condition, timeout, pause=0.01):
        """Pings until the condition holds."""
        wait.until(lambda: self.ping() or condition(), timeout, "the end of the watch", pause)

    def during(self, seconds):
        """Pings for that time."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            self.ping()
            time.sleep(0.01)

    def expect_below(self, limit):
        """Fails when an answer took longer than `limit` seconds."""
        worst = sorted(self.delays)[-5:]
        assert len(self.delays) >= 5, "too few pings"
        assert worst[-1] <= limit, f"the window took {worst} s to answer, of {len(self.delays)} pings"
