# Vantorel. MIT licence, see LICENSE.
# The world of one case: desktop, home, bundle, server and the shells started in it; ended and checked at the end.

import os
import random
import re
import socket
import subprocess

from harness import ax, children, desktop, place, wait
from harness.hands import Hands
from harness.menus import Menus
from harness.server import ScriptedServer
from harness.shell import TITLE, Shell
from harness.staging import Staging
from harness.status import Status
from harness.x import Screen


class World(Menus, Staging, Status):
    """Everything that a case works with. Nothing starts before it is asked for."""

    def __init__(self, root, application):
        self.root = root
        self.application = application
        self.children = children.Children(root)
        self.home = place.Home(root)
        self.bundle = place.Bundle(root, application)
        self.port = free_port()
        self.server = ScriptedServer(self.bundle)
        self.shells = []
        self.screen = None
        self.hands = None
        self.display_server = None
        self.bus = None
        self.bus_address = None
        self.manager = None
        self.allowed_complaints = []
        self.scale = 1  # pixels in a point, in which screen readers are told places
        self.engine_patience = 5.0  # seconds that the engine's processes have to end after their shell
        self._ax = None

    # The desktop

    def desktop(self, manager="xfwm4", bus=True, size=(1400, 1000)):
        """Starts display, bus and window manager; `launch` does it with the defaults when a case has not."""
        self.display_server, name = desktop.start_display(self.children, size)
        self.screen = Screen(name)
        self.hands = Hands(self.screen)
        if bus:
            self.bus, self.bus_address = desktop.start_bus(self.children, self.home)
        if manager:
            self.start_manager(manager)

    def start_manager(self, name):
        """Starts a window manager."""
        self.manager = desktop.start_window_manager(self.children, name, self.environment(), self.screen)

    def environment(self):
        """The environment of a program in this session."""
        environment = self.home.environment()
        environment["XDG_SESSION_TYPE"] = "x11"
        if self.screen:
            environment["DISPLAY"] = self.screen.name
        if self.bus_address:
            environment["DBUS_SESSION_BUS_ADDRESS"] = self.bus_address
        return environment

    @property
    def ax(self):
        """Access to the texts of the shell's widgets."""
        if self._ax is None:
            self._ax = ax.Reader(self.bus_address)
        return self._ax

    # The shell

    def launch(self, environment=None, unset=(), program=None, **options):
        """Starts the shell; `environment` adds variables, `unset` takes some away."""
        if self.screen is None:
            self.desktop()
        if self.bus_address:
            self.ax  # the accessibility bus must be there before the toolkit looks for it
        values = self.environment() | {"WEBSOCKET_PORT": str(self.port)} | (environment or {})
        for name in unset:
            values.pop(name, None)
        shell = Shell(self.children, program or self.bundle.program, values, self.root, f"shell{len(self.shells)}",
                      **options)
        self.shells.append(shell)
        return shell

    def move_program(self, folder):
        """Moves the program into another folder of the case, and returns its new path."""
        target = os.path.join(self.root, folder)
        os.makedirs(target)
        for name in os.listdir(os.path.dirname(self.bundle.program)):
            os.rename(os.path.join(os.path.dirname(self.bundle.program), name), os.path.join(target, name))
        return os.path.join(target, os.path.basename(self.bundle.program))

    def launch_loaded(self, page=None, **options):
        """Starts the shell on the scripted server (with that page) and waits for the page and its window."""
        if page is not None:
            self.server.page(page)
        shell = self.launch(**options)
        shell.wait_loaded()
        return shell, self.window(shell)

    def window(self, shell, timeout=15):
        """The main window, once it is on the screen."""
        return wait.until(lambda: self.screen.window_titled(TITLE, shell.pid), timeout, "the main window shows")

    def focused(self, shell):
        """The main window, made active if it is not."""
        window = self.window(shell)
        if self.screen.has_window_manager():
            self.screen.activate(window)
        return window

    # The end

    def server_processes(self):
        """Process numbers of living programs that run from the bundle's resources or were started there."""
        found = []
        for pid in children.descendants(os.getpid()):
            try:
                if os.readlink(f"/proc/{pid}/cwd") == self.bundle.resources:
                    found.append(pid)
                    continue
            except OSError:
                pass
            if any(part == self.bundle.server for part in children.command(pid)):
                found.append(pid)
        return found

    def expect_no_server(self, timeout=13.0):
        """Fails unless no server process lives any more."""
        wait.until(lambda: not self.server_processes(), timeout, lambda: "the server is gone, but there are "
                   + str([(pid, children.command(pid)) for pid in self.server_processes()]))

    def expect_no_helpers(self):
        """Fails unless all of the engine's processes are gone."""
        def left():
            return [pid for pid in children.descendants(os.getpid())
                    if os.path.basename((children.command(pid) or [""])[0]).startswith("WebKit")]
        wait.until(lambda: not left(), self.engine_patience,
                   lambda: f"the engine's processes are gone, but there are {left()}")

    def finish(self):
        """Quits what still runs, and proves that no shell complained and nothing of theirs survives."""
        for shell in self.shells:
            if shell.running():
                shell.quit(15)
        self.expect_no_server()
        self.expect_no_helpers()
        for shell in self.shells:
            wrong = [line for line in shell.complaints()
                     if not any(re.search(allowed, line) for allowed in self.allowed_complaints)]
            assert not wrong, "complaints on standard error:\n" + "\n".join(wrong[:20])

    def clear(self):
        """Kills whatever is left; never fails."""
        for shell in self.shells:
            try:
                shell.kill()
            except (OSError, subprocess.SubprocessError):
                pass
        self.children.stop_all()

    def forget_display(self):
        """The display is gone: nothing more is asked of it."""
        self.screen = None

    def tell(self, picture_path):
        """What a failed case leaves to read: logs, record, and a picture of the screen."""
        for number, shell in enumerate(self.shells):
            lines = shell.texts()
            print(f"--- log of shell {number} (last of {len(lines)} lines, "
                  f"{'running' if shell.running() else 'ended with ' + str(shell.process.returncode)})")
            print("\n".join(f"{line.time - shell.started:7.3f} {line.text[:300]}" for line in shell.lines()[-70:]))
            with open(shell.error_file, encoding="utf-8", errors="replace") as file:
                errors = file.read().splitlines()
            if errors:
                print(f"--- standard error of shell {number}")
                print("\n".join(line[:300] for line in errors[-25:]))
        record = self.server.record()
        if record:
            print("--- record of the server")
            print("\n".join(str(entry)[:300] for entry in record[-40:]))
        if self.screen is not None:
            try:
                os.makedirs(os.path.dirname(picture_path), exist_ok=True)
                self.screen.picture().save(picture_path)
                print(f"--- picture of the screen: {picture_path}")
            # The display may be gone: that is some cases' subject.
            except Exception as problem:  # pylint: disable=broad-except
                print(f"--- no picture: {problem!r}")


def free_port():
    """A port that nothing listens on, outside the range that the system gives away by itself."""
    for _ in range(100):
        port = random.randint(12000, 31000)
        try:
            for family, address in ((socket.AF_INET, "127.0.0.1"), (socket.AF_INET6, "::1")):
                with socket.socket(family, socket.SOCK_STREAM) as probe:
                    probe.bind((address, port))
        except OSError:
            continue
        return port
    raise AssertionError("no free port")
