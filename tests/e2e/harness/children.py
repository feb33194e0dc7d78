# Vantorel. MIT licence, see LICENSE.
# Every process of a case: started in a session of its own, looked up in /proc, and killed at the end whatever happens.

import ctypes
import os
import signal
import subprocess
import time

_PR_SET_CHILD_SUBREAPER = 36


def adopt_orphans():
    """Makes this process the parent of all its orphaned descendants, so that none can get away unseen."""
    if ctypes.CDLL(None, use_errno=True).prctl(_PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "prctl")


def stat(pid):
    """(name, state, parent, process group, session) of a process, or None when there is none."""
    try:
        with open(f"/proc/{pid}/stat", "rb") as file:
            text = file.read().decode("utf-8", "replace")
    except OSError:
        return None
    name = text[text.index("(") + 1:text.rindex(")")]
    rest = text[text.rindex(")") + 2:].split()
    return name, rest[0], int(rest[1]), int(rest[2]), int(rest[3])


def alive(pid):
    """Whether the process exists and is more than a zombie."""
    found = stat(pid)
    return found is not None and found[1] not in "ZX"


def descendants(root):
    """The living descendants of `root`, children before grandchildren, as a list of process numbers."""
    parents = {}
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            found = stat(entry)
            if found and found[1] not in "ZX":
                parents.setdefault(found[2], []).append(int(entry))
    result, front = [], [root]
    while front:
        front = [child for parent in front for child in parents.get(parent, [])]
        result += front
    return result


def command(pid):
    """The command line of a process as a list of texts; empty when it is gone."""
    try:
        with open(f"/proc/{pid}/cmdline", "rb") as file:
            return [part.decode("utf-8", "replace") for part in file.read().split(b"\0")[:-1]]
    except OSError:
        return []


def cpu_seconds(pid):
    """Processor time that the process has used so far."""
    with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
        rest = file.read().rpartition(")")[2].split()
    return (int(rest[11]) + int(rest[12])) / os.sysconf("SC_CLK_TCK")


def waited(pid, threads=True):
    """Seconds for which the process's threads (or just its first one) were ready to run but had no processor."""
    total = 0
    for thread in os.listdir(f"/proc/{pid}/task") if threads else [pid]:
        try:
            with open(f"/proc/{pid}/task/{thread}/schedstat", encoding="ascii") as file:
                total += int(file.read().split()[1])
        except OSError:
            pass  # the thread has ended, or the kernel keeps no such account
    return total / 1e9


def memory(pid, part="Pss"):
    """Private and proportionally shared memory of the process (PSS), in bytes; with the part "Pss_Anon" what is not
    from files, which other programs that come and go do not change."""
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
        return sum(int(line.split()[1]) for line in file if line.startswith(f"{part}:")) * 1024


class Children:
    """The processes that a case starts directly. Their output goes to files in `folder` unless asked otherwise."""

    def __init__(self, folder):
        self._folder = folder
        self._started = []

    def start(self, argv, name=None, **options):
        """Starts a program in a session of its own and returns the Popen."""
        name = name or os.path.basename(argv[0])
        if "stderr" not in options:
            options["stderr"] = open(os.path.join(self._folder, f"{name}.err"), "ab")
        if "stdout" not in options:
            options["stdout"] = open(os.path.join(self._folder, f"{name}.out"), "ab")
        options.setdefault("stdin", subprocess.DEVNULL)
        options.setdefault("start_new_session", True)
        process = subprocess.Popen(argv, **options)
        self._started.append(process)
        return process

    def stop(self, process, timeout=3.0):
        """Ends one program: politely, then by force; waits for it."""
        if process.poll() is None:
            process.terminate()
            try:
                process.wait(timeout)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()

    def stop_all(self):
        """Kills everything below this process and waits until nothing is left."""
        deadline = time.monotonic() + 10
        while time.monotonic() < deadline:
            left = descendants(os.getpid())
            if not left:
                break
            for pid in left:
                try:
                    os.kill(pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass
            self._reap()
            time.sleep(0.01)
        self._reap()
        assert not descendants(os.getpid()), "processes survive the end of the case"

    def _reap(self):
        for process in self._started:
            process.poll()
        try:
            while os.waitpid(-1, os.WNOHANG)[0]:
                pass
        except ChildProcessError:
            pass
