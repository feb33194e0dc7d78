# Vantorel. MIT licence, see LICENSE.
# What a benchmark runs on: a display, window manager, bus and home folder of its own, and programs whose lines are stamped.
"""The benchmark's private desktop and its processes."""

import json
import os
import pathlib
import random
import shutil
import signal
import subprocess
import tempfile
import threading
import time

SERVERS = pathlib.Path(__file__).resolve().parent.parent / "servers"
PATIENCE = 60.0


class BenchError(Exception):
    """Something a figure needs did not happen."""


def wait_until(condition, what, patience=PATIENCE):
    """The first true value of `condition`, asked again and again."""
    deadline = time.monotonic() + patience
    while time.monotonic() < deadline:
        value = condition()
        if value:
            return value
        time.sleep(0.002)
    raise BenchError(f"waited in vain for {what}")


class Program:
    """A started program. Each line of its standard output is kept with the moment it came in, in seconds. With
    `to_file` its output goes to a file instead, which nobody reads but `wait_for`: no reader is woken for each line."""

    def __init__(self, argv, environment, folder, stdout=subprocess.PIPE, keep_lines=True, to_file=False,
                 pass_fds=()):
        self.log = tempfile.TemporaryFile()
        self.file = tempfile.NamedTemporaryFile() if to_file else None
        stdout = self.file or stdout
        self.started = time.monotonic()
        self.process = subprocess.Popen([str(part) for part in argv], env=environment, cwd=folder, stdout=stdout,
                                        stdin=subprocess.DEVNULL, stderr=self.log,
                                        pass_fds=pass_fds)
        self.name = os.path.basename(str(argv[0]))
        self.lines = []
        self.changed = threading.Condition()
        if keep_lines and stdout == subprocess.PIPE:
            threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stdout:
            moment = time.monotonic()
            with self.changed:
                self.lines.append((moment, line.decode("utf-8", "replace").rstrip("\n")))
                self.changed.notify_all()

    def find(self, start):
        return next((entry for entry in self.lines if entry[1].startswith(start)), None)

    def find_in_file(self, start):
        lines = pathlib.Path(self.file.name).read_text(encoding="utf-8", errors="replace").splitlines()
        return next((line for line in lines if line.startswith(start)), None)

    def wait_for(self, start, patience=PATIENCE):
        """The moment and text of the first line that begins with `start`."""
        if self.file:
            return time.monotonic(), wait_until(lambda: self.find_in_file(start), f"\"{start}\"", patience)
        with self.changed:
            found = self.changed.wait_for(lambda: self.find(start), patience)
        if not found:
            raise BenchError(f"{self.name} never said \"{start}\"; it said {[line for _, line in self.lines[-8:]]} "
                             f"and complained {self.complaints()!r}")
        return found

    def complaints(self):
        self.log.seek(0)
        return self.log.read()[-2000:].decode("utf-8", "replace")

    def stop(self):
        """Asks it to end, waits, and only then insists."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            try:
                self.process.wait(15)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        self.log.close()
        if self.file:
            self.file.close()


class Desktop:
    """Xvfb, xfwm4, a session bus and an empty home folder; gone again at the end of the `with` block."""

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="vantorel-bench-"))
        self.programs = []
        self.environment = dict(os.environ)
        for name in ("WAYLAND_DISPLAY", "XAUTHORITY", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME",
                     "XDG_STATE_HOME", "DBUS_SESSION_BUS_ADDRESS"):
            self.environment.pop(name, None)
        home, run = self.folder / "home", self.folder / "run"
        home.mkdir()
        run.mkdir(mode=0o700)
        self.environment |= {"HOME": str(home), "XDG_RUNTIME_DIR": str(run), "GTK_A11Y": "none", "NO_AT_BRIDGE": "1",
                             "GSETTINGS_BACKEND": "memory", "GDK_BACKEND": "x11"}
        try:
            self.start_display()
            bus = self.start(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"])
            self.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.wait_for("unix:")[1]
            self.start(["xfwm4", "--compositor=off"])
            wait_until(self.has_manager, "the window manager")
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for program in reversed(self.programs):
            program.stop()
        shutil.rmtree(self.folder, ignore_errors=True)

    def start(self, argv, folder=None, **options):
        """Starts a program that ends with the desktop at the latest."""
        program = Program(argv, self.environment | options.pop("environment", {}), folder or self.folder, **options)
        self.programs.append(program)
        return program

    def stop(self, program):
        program.stop()
        self.programs.remove(program)

    def start_display(self):
        for _ in range(10):
            number = random.randint(200, 30000)
            display = self.start(["Xvfb", f":{number}", "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset",
                                  "-displayfd", "1"])
            try:
                display.wait_for(str(number), 10)
            except BenchError:
                self.stop(display)
                continue
            self.environment["DISPLAY"] = f":{number}"
            return
        raise BenchError("no virtual display starts")

    def has_manager(self):
        answer = subprocess.run(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], env=self.environment,
                                capture_output=True, text=True, check=False)
        return "window id" in answer.stdout

    def make_server_folder(self, script):
        """A folder with the scripted server as `vantor-srv`; returns it."""
        folder = pathlib.Path(tempfile.mkdtemp(prefix="server-", dir=self.folder))
        install_server(folder, script)
        return folder


def install_server(folder, script):
    """Puts the scripted server and its script where the companion server belongs."""
    target = folder / "vantor-srv"
    target.unlink(missing_ok=True)
    shutil.copy(SERVERS / "scripted_server.py", target)
    target.chmod(0o755)
    (folder / "scripted_server.json").write_text(json.dumps(script), encoding="utf-8")
    (folder / "scripted_server.record.jsonl").unlink(missing_ok=True)
