# Vantorel. MIT licence, see LICENSE.
# What the shell's process holds, looked at again and again from outside.

import os
import time
from collections import namedtuple

from Xlib import display, error

Figure = namedtuple("Figure", "name unit limit")

MEMORY_LIMIT = 1.0  # MB an hour
COUNT_LIMIT = 10.0  # pieces an hour: one lost in each thousand operations would be far more

FIGURES = {
    "rss": Figure("resident memory (RSS)", "MB", MEMORY_LIMIT),
    "anonymous": Figure("of that not from files", "MB", MEMORY_LIMIT),
    "descriptors": Figure("descriptors", "", COUNT_LIMIT),
    "threads": Figure("threads", "", COUNT_LIMIT),
    "x_resources": Figure("X resources", "", COUNT_LIMIT),
    "x_pixmaps": Figure("X pixmap memory", "MB", MEMORY_LIMIT),
}

# No share of what is shared: that changes when other programs come and go.
_MEMORY = {"Rss": "rss", "Pss_Anon": "anonymous"}
_BY_PROCESS = 2  # XRes: clients by the number of their process


def of_process(pid):
    """Memory in MB, descriptors and threads of a process."""
    found = {}
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
        for line in file:
            name, _, rest = line.partition(":")
            if name in _MEMORY:
                found[_MEMORY[name]] = int(rest.split()[0]) / 1024
    found["descriptors"] = len(os.listdir(f"/proc/{pid}/fd"))
    found["threads"] = len(os.listdir(f"/proc/{pid}/task"))
    return found


class XResources:
    """What the X server keeps for a process, over the X-Resource extension."""

    def __init__(self, name, pid):
        self._display = display.Display(name)
        self._display.set_error_handler(lambda *_: None)
        self._pid = pid
        self.available = self._display.has_extension("X-Resource")
        if self.available:
            version = self._display.res_query_version()
            self.available = (version.server_major, version.server_minor) >= (1, 2)

    def look(self):
        """Resources of all its connections and the memory of their pixmaps; nothing when a connection just ended."""
        clients = [each.spec.client for each in
                   self._display.res_query_client_ids([{"client": 0, "mask": _BY_PROCESS}]).ids
                   if list(each.value) == [self._pid]]
        try:
            return {
                "x_resources": sum(kind.count for client in clients
                                   for kind in self._display.res_query_client_resources(client).types),
                "x_pixmaps": sum(self._bytes(client) for client in clients) / 1048576,
            }
        except error.XError:
            return {}

    def _bytes(self, client):
        answer = self._display.res_query_client_pixmap_bytes(client)
        return answer.bytes + (answer.bytes_overflow << 32)


class Sampler:
    """Collects samples. Each is to be taken at the same point of the work: a panel that is up or a page that loads costs
    megabytes for a moment."""

    def __init__(self, pid, display_name):
        self._pid = pid
        self._x = XResources(display_name, pid)
        self.begun = time.monotonic()
        self.samples = []  # of (seconds since begun, figures)
        self.notes = [] if self._x.available else ["X resources: the display lacks the X-Resource extension, skipped"]

    def take(self):
        """One sample; the shell has to run."""
        figures = of_process(self._pid)
        if self._x.available:
            figures |= self._x.look()
        self.samples.append((time.monotonic() - self.begun, figures))

    def series(self, figure, since):
        """(times, values) of a figure from a moment on, the samples without it left out."""
        found = [(moment, figures[figure]) for moment, figures in self.samples if moment >= since and figure in figures]
        return [moment for moment, _ in found], [value for _, value in found]
