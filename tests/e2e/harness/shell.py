# Vantorel. MIT licence, see LICENSE.
# The shell under test: started with a chosen environment, its log read line by line, its end observed.

import os
import re
import signal
import subprocess
import threading
import time
from collections import namedtuple

from harness import children as processes
from harness import wait

Line = namedtuple("Line", "time index text")

TITLE = "🤖 Vantor"
READY = "   49 -> voice"  # the last line of a launch
LOADED = "✅ Page loaded successfully"


class Shell:
    """One run of the application. `sink`, where given, takes the raw log instead of the list of lines."""

    def __init__(self, children, program, environment, folder, name, stdout="pipe", sink=None, arguments=(), cwd=None):
        self._changed = threading.Condition()
        self._lines = []
        self._sink = sink
        self._ended = False
        self.error_file = os.path.join(folder, f"{name}.stderr")
        self.started = time.monotonic()
        self.environment = environment
        with open(self.error_file, "ab") as errors:
            self.process = children.start([program, *arguments], env=environment, stderr=errors, cwd=cwd or folder,
                                          stdout=subprocess.PIPE if stdout == "pipe" else stdout)
        self.pid = self.process.pid
        self._reader = None
        if stdout == "pipe":
            self._pipe = self.process.stdout.fileno()
            self._reader = threading.Thread(target=self._read, daemon=True)
            self._reader.start()

    def _read(self):
        rest = b""
        while True:
            chunk = os.read(self._pipe, 1 << 18)
            if not chunk:
                break
            if self._sink:
                self._sink(chunk)
                continue
            now = time.monotonic()
            *whole, rest = (rest + chunk).split(b"\n")
            with self._changed:
                for line in whole:
                    self._lines.append(Line(now, len(self._lines), line.decode("utf-8", "backslashreplace")))
                self._changed.notify_all()
        with self._changed:
            if rest:
                self._lines.append(Line(time.monotonic(), len(self._lines), rest.decode("utf-8", "backslashreplace")))
            self._ended = True
            self._changed.notify_all()

    def lines(self, since=0):
        """The log so far, from the line of index `since` on."""
        with self._changed:
            return list(self._lines[since:])

    def texts(self, since=0):
        """The log so far as plain texts."""
        return [line.text for line in self.lines(since)]

    def mark(self):
        """The index that the next line will have."""
        with self._changed:
            return len(self._lines)

    def find(self, wanted, since=0):
        """The first line that equals a text, or in which a compiled pattern is found; None when there is none."""
        for line in self.lines(since):
            if (line.text == wanted) if isinstance(wanted, str) else wanted.search(line.text):
                return line
        return None

    def count(self, wanted, since=0):
        """How many lines equal a text or contain a pattern."""
        return sum((line.text == wanted) if isinstance(wanted, str) else bool(wanted.search(line.text))
                   for line in self.lines(since))

    def wait_line(self, wanted, timeout=10, since=0):
        """Waits for a line (see `find`) and returns it."""
        deadline = time.monotonic() + timeout
        with self._changed:
            looked = since
            while True:
                for line in self._lines[looked:]:
                    if (line.text == wanted) if isinstance(wanted, str) else wanted.search(line.text):
                        return line
                looked = len(self._lines)
                left = deadline - time.monotonic()
                if left <= 0 or (self._ended and self.process.poll() is not None):
                    raise AssertionError(f"no log line {wanted!r} within {timeout} s"
                                         + (" (the log has ended)" if self._ended else ""))
                self._changed.wait(min(left, 0.2))

    def wait_lines(self, wanted, timeout=10, since=0):
        """Waits for several lines in that order, others between them allowed; returns the last one."""
        line = None
        for each in wanted:
            line = self.wait_line(each, timeout, since)
            since = line.index + 1
        return line

    def wait_launched(self, timeout=20):
        """Waits for the last line of the launch."""
        return self.wait_line(READY, timeout)

    def wait_loaded(self, timeout=20):
        """Waits for the page."""
        return self.wait_line(LOADED, timeout)

    def running(self):
        """Whether the shell still runs."""
        return self.process.poll() is None

    def server_pid(self, timeout=20):
        """The server's process number, from the log."""
        return int(self.wait_line(re.compile(r"^✅ Process ID: \d+$"), timeout).text.rpartition(" ")[2])

    def signal(self, number):
        """Sends the shell process a signal."""
        os.kill(self.pid, number)

    def wait_exit(self, timeout=10):
        """Waits for the end of the process and of its log; returns the exit status."""
        try:
            status = self.process.wait(timeout)
        except subprocess.TimeoutExpired:
            raise AssertionError(f"the shell still runs after {timeout} s") from None
        if self._reader:
            self._reader.join(2)  # a process that still holds the log must not hold up the case
        return status

    def quit(self, timeout=10):
        """A normal quit by request of the system; returns the exit status, which must be 0."""
        self.signal(signal.SIGTERM)
        status = self.wait_exit(timeout)
        wait.same(status, 0, "exit status after a normal quit")
        return status

    def kill(self):
        """Ends the shell by force."""
        if self.running():
            self.process.kill()
        self.process.wait()

    def close_log(self):
        """Goes away as a reader: the shell's next log line finds nobody."""
        null = os.open(os.devnull, os.O_RDONLY)
        os.dup2(null, self._pipe)
        os.close(null)

    def threads(self):
        """Number of threads."""
        return len(os.listdir(f"/proc/{self.pid}/task"))

    def descriptors(self):
        """Open descriptors as a dictionary of number and target."""
        found = {}
        for name in os.listdir(f"/proc/{self.pid}/fd"):
            try:
                found[int(name)] = os.readlink(f"/proc/{self.pid}/fd/{name}")
            except OSError:
                pass
        return found

    def helpers(self, name):
        """Process numbers of the engine's helpers of that name below the shell."""
        return [pid for pid in processes.descendants(self.pid)
                if os.path.basename((processes.command(pid) or [""])[0]) == name]

    def complaints(self):
        """Toolkit warnings and sanitizer reports that the shell process itself wrote to standard error."""
        with open(self.error_file, encoding="utf-8", errors="replace") as file:
            text = file.read()
        ours = re.compile(rf":{self.pid}\): .*-(WARNING|CRITICAL|ERROR) \*\*"
                          rf"|\*\* \(.*:{self.pid}\): (WARNING|CRITICAL|ERROR)")
        reports = re.compile(r"Sanitizer|runtime error:|terminate called|Assertion .* failed")
        return [line for line in text.splitlines() if ours.search(line) or reports.search(line)]
