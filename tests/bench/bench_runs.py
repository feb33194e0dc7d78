# Vantorel. MIT licence, see LICENSE.
# The measurements: each function is one run of the shell or of what it is held against, and gives plain numbers.
"""Single benchmark runs. Times are in seconds, memory in MiB."""

import json
import os
import pathlib
import random
import shutil
import socket
import time

from bench_desktop import BenchError, install_server, wait_until

SETTLE_SECONDS = 1.5
WINDOW_WIDTH = 300  # narrower windows are nobody's main window
FLOOD_BEGIN = b"FLOOD-BEGIN"
FLOOD_END = b"FLOOD-END"
PREFIX = "🤖 Server: ".encode()
WARM_UP_PRESSES = 10


def free_port():
    """A loopback port that nobody uses, below the range that the kernel gives to clients."""
    while True:
        port = random.randint(20000, 32000)
        with socket.socket() as probe:
            try:
                probe.bind(("127.0.0.1", port))
                return port
            except OSError:
                continue


class Subject:
    """What is measured: the shell in a bundle of its own, or a bare program beside a server that runs by itself."""

    def __init__(self, desktop, build, programs, bare=None):
        self.desktop = desktop
        self.programs = programs
        self.bare = bare
        if bare is None:
            self.bundle = desktop.folder / "Vantorel.app"
            if not self.bundle.exists():
                shutil.copytree(build / "Vantorel.app", self.bundle, symlinks=True)
            self.server_folder = self.bundle / "Contents" / "Resources"
            forget_first_launch(pathlib.Path(desktop.environment["HOME"]))

    def start(self, script, **options):
        """Starts it with a server that follows `script`; returns the program."""
        port = free_port()
        environment = {"WEBSOCKET_PORT": str(port)}
        if self.bare is None:
            install_server(self.server_folder, script)
            self.server = None
            return self.desktop.start([self.bundle / "Contents" / "Linux" / "Vantorel"], environment=environment,
                                      **options)
        self.server_folder = self.desktop.make_server_folder(script)
        self.server = self.desktop.start([self.server_folder / "vantor-srv"], self.server_folder,
                                         environment=environment)
        self.wait_for_event("listening", 1)
        return self.desktop.start([self.programs / self.bare, f"http://localhost:{port}/"], environment=environment,
                                  **options)

    def stop(self, program):
        self.desktop.stop(program)
        if self.server is not None:
            self.desktop.stop(self.server)

    def events(self, name):
        """What the server has recorded under that name."""
        path = self.server_folder / "scripted_server.record.jsonl"
        if not path.exists():
            return []
        lines = path.read_bytes().split(b"\n")[:-1]
        return [event for event in map(json.loads, lines) if event["event"] == name]

    def wait_for_event(self, name, count):
        return wait_until(lambda: (found := self.events(name))[count - 1:] and found, f"{count} times \"{name}\"")

    def wait_for_load(self, program):
        """Seconds from the page's request to its end."""
        marks = ("🌐 Loading: ", "✅ Page loaded successfully")
        if self.bare is not None:
            marks = ("load-requested", "page-loaded")
        begin, _ = program.wait_for(marks[0])
        end, _ = program.wait_for(marks[1])
        return end - begin


def forget_first_launch(home):
    """Permissions are asked for at the first launch only; the figures are about all the others."""
    folder = home / ".config" / "Vantorel"
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "defaults.ini").write_text("[defaults]\nhasRequestedPermissions=true\n", encoding="utf-8")


def own_memory(pid):
    """The process's proportional set size in MiB."""
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("Pss:")) / 1024


def own_processor_time(pid):
    """Seconds that the process, without its children, has spent on a processor."""
    with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
        fields = file.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def launch_run(subject):
    """One start: seconds to the mapped window, seconds of page load, MiB of the settled process."""
    watch = subject.desktop.start([subject.programs / "map_watch"])
    watch.wait_for("watching")
    program = subject.start({"banner": None})
    try:
        load = subject.wait_for_load(program)
        # A settled process: what the load set free has been given back.
        time.sleep(SETTLE_SECONDS)
        memory = own_memory(program.process.pid)
        mapped = [int(line.split()[1]) / 1e9 for _, line in watch.lines
                  if line.startswith("mapped") and int(line.split()[2]) >= WINDOW_WIDTH]
        if not mapped:
            raise BenchError(f"{program.name} never showed a window")
        return mapped[0] - program.started, load, memory
    finally:
        subject.stop(program)
        subject.desktop.stop(watch)


def idle_run(subject, seconds):
    """Share of one processor that the process takes while nothing happens but the probe."""
    program = subject.start({"banner": None})
    try:
        subject.wait_for_load(program)
        time.sleep(SETTLE_SECONDS)
        probes = len(subject.events("request"))
        begin, before = time.monotonic(), own_processor_time(program.process.pid)
        time.sleep(seconds)
        share = (own_processor_time(program.process.pid) - before) / (time.monotonic() - begin)
        seen = len(subject.events("request")) - probes
        if seen < seconds / 2 - 2:
            raise BenchError(f"only {seen} probes in {seconds} s")
        return share
    finally:
        subject.stop(program)


def read_flood(descriptor):
    """Reads up to the end mark; gives the seconds between the marks and the bytes from the first to the second."""
    chunks, tail, begin = [], b"", None
    while True:
        data = os.read(descriptor, 1 << 20)
        if not data:
            raise BenchError("the output ended before the flood did")
        moment = time.monotonic()
        window = tail + data
        if begin is None and FLOOD_BEGIN in window:
            begin = moment
        if begin is not None:
            chunks.append(data)
        if FLOOD_END in window:
            return moment - begin, b"".join(chunks)
        tail = window[-len(FLOOD_END):]


def relayed_bytes(data):
    """What of the flood arrived, blanks and line ends left out: the relay trims those at the ends of chunks."""
    if FLOOD_BEGIN in data:
        data = data.partition(FLOOD_BEGIN)[2]
    data = data.partition(FLOOD_END)[0]
    return len(data.replace(PREFIX, b"").translate(None, b" \n"))


def flood_script(megabytes):
    return {"banner": None, "timeline": [{"wait_for_file": "flood", "flood_mb": megabytes,
                                          "begin": FLOOD_BEGIN.decode(), "end": FLOOD_END.decode()}]}


def relay_run(subject, megabytes):
    """Seconds that the shell takes to relay that much output of its server, and how many bytes of it arrived."""
    program = subject.start(flood_script(megabytes), keep_lines=False)
    try:
        descriptor = program.process.stdout.fileno()
        seen = b""
        while "✅ Page loaded successfully".encode() not in seen:
            data = os.read(descriptor, 1 << 16)
            if not data:
                raise BenchError("the shell ended before its page had loaded")
            seen += data
        (subject.server_folder / "flood").touch()
        seconds, data = read_flood(descriptor)
        return seconds, relayed_bytes(data)
    finally:
        (subject.server_folder / "flood").unlink(missing_ok=True)
        # Somebody must take what is still said, or the shell would wait for room while it ends.
        program.process.stdout.close()
        subject.stop(program)


def cat_run(desktop, megabytes):
    """The same flood of the same server through `cat`."""
    folder = desktop.make_server_folder(flood_script(megabytes))
    read_end, write_end = os.pipe()
    server = desktop.start([folder / "vantor-srv"], folder, stdout=write_end,
                           environment={"WEBSOCKET_PORT": str(free_port())})
    os.close(write_end)
    result_end, result_write = os.pipe()
    cat = desktop.start(["sh", "-c", f"exec cat <&{read_end}"], stdout=result_write, pass_fds=(read_end,))
    os.close(result_write)
    os.close(read_end)
    try:
        (folder / "flood").touch()
        seconds, data = read_flood(result_end)
        return seconds, relayed_bytes(data)
    finally:
        os.close(result_end)
        desktop.stop(server)
        desktop.stop(cat)


def keys_run(subject, presses, interval_ms):
    """Seconds from each key press to its frame at the server's socket, warm-up presses left out."""
    program = subject.start({"banner": None}, to_file=True)
    try:
        subject.wait_for_load(program)
        subject.wait_for_event("ws_open", 1)
        time.sleep(SETTLE_SECONDS)
        total = presses + WARM_UP_PRESSES
        hands = subject.desktop.start([subject.programs / "press_keys", str(total), str(interval_ms)])
        if hands.process.wait(total * interval_ms / 1000 + 30) != 0:
            raise BenchError(f"press_keys failed: {hands.complaints()}")
        frames = []
        try:
            frames = subject.wait_for_event("ws_frame", total)
        except BenchError:
            frames = subject.events("ws_frame")
        pressed = [int(line.split()[1]) / 1e9 for _, line in hands.lines if line.startswith("pressed")]
        subject.desktop.stop(hands)
        if len(frames) != total or len(pressed) != total:
            raise BenchError(f"{len(pressed)} presses gave {len(frames)} frames")
        return [frame["t"] - press for press, frame in zip(pressed, frames)][WARM_UP_PRESSES:]
    finally:
        subject.stop(program)
