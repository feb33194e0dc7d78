# Vantorel. MIT licence, see LICENSE.
# How fast a window answers while something goes on: ping after ping, each held against the machine's own delay.

import time

from harness import wait


class Watch:
    """Pings a window again and again. What the harness itself waits for the processor and the display is measured
    beside each ping and taken off, so that a busy machine isn't blamed on the window."""

    def __init__(self, screen, window):
        self._screen = screen
        self._window = window
        self.delays = []

    def ping(self):
        """One more ping."""
        begun = time.monotonic()
        self._screen.display.sync()
        own = time.monotonic() - begun
        self.delays.append(max(self._screen.ping(self._window, 30) - own, 0))

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
