# Vantorel. MIT licence, see LICENSE.
# The world of one case: desktop, home, bundle, server and the shells started in it; ended and checked at the end.

import colorsys
import contextlib
import os
import random
import re
import signal
import socket
import subprocess
import threading
import time

from harness import ax, children, desktop, place, wait
from harness.ax import GLib
from harness.hands import Hands
from harness.server import ScriptedServer
from harness.shell import TITLE, Shell
from harness.x import Screen

STRIP_GREY = (242, 242, 242)
STATUS_STARTS = ("🔄", "✅", "❌", "⚠️")
GREEN_STATUS = "✅ Connected to server on port {}"
ORANGE_STATUS = "⚠️ Server running but not responding..."


DENY_RECORD = """
#define _GNU_SOURCE
#include <dlfcn.h>
#include <string.h>
int XQueryExtension(void *display, const char *name, int *opcode, int *event, int *error) {
    int (*real)(void *, const char *, int *, int *, int *) = dlsym(RTLD_NEXT, "XQueryExtension");
    return strcmp(name, "RECORD") == 0 ? 0 : real(display, name, opcode, event, error);
}
int XRecordQueryVersion(void *display, int *major, int *minor) { return 0; }
"""


class Skipped(Exception):
    """The case can't be staged on this machine."""


class World:
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
        self.allowed_complaints = ["Disabled hardware acceleration because GTK failed to initialize GL"]
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
        environment["DISPLAY"] = self.screen.name
        environment["XDG_SESSION_TYPE"] = "x11"
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
        shell = Shell(self.children, program or self.bundle.program, values, self.root, f"shell{len(self.shells)}", **options)
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

    def dialog(self, shell, timeout=5):
        """The shell's topmost dialog window, once it is on the screen."""
        def found():
            return [window for window in self.screen.windows_of(shell.pid)
                    if self.screen.property(window, "WM_TRANSIENT_FOR")
                    or "_NET_WM_STATE_MODAL" in self.screen.states(window)]
        return wait.until(found, timeout, "a dialog shows")[-1]

    def dialogs(self, shell):
        """The shell's dialog windows that are on the screen."""
        return [window for window in self.screen.windows_of(shell.pid)
                if self.screen.property(window, "WM_TRANSIENT_FOR")
                or "_NET_WM_STATE_MODAL" in self.screen.states(window)]

    # The menu bar and the buttons, by mouse

    def _menu_bar(self, shell):
        return self.ax.wait_for(shell.pid, role="menu bar")

    def menu_titles(self, shell):
        """Titles of the menu bar's menus."""
        return [node.name() for node in self._menu_bar(shell).children() if node.role() == "menu item"]

    def open_menu(self, shell, title):
        """Opens a menu of the menu bar with the mouse; returns (its pop-up window, the menu, its items)."""
        window = self.window(shell)
        x, y, _, _ = self.screen.geometry(window)
        entry = [node for node in self._menu_bar(shell).children() if node.name() == title][0]
        left, top, width, height = entry.extents()
        before = {each.id for each in self.screen.windows_of(shell.pid)}
        self.hands.click(x + left + width / 2, y + top + height / 2)
        popup = wait.until(lambda: [each for each in self.screen.windows_of(shell.pid) if each.id not in before], 5,
                           f"the menu {title} opens")[0]
        items = wait.until(lambda: [node for node in entry.walk() if node.path != entry.path and node.name()
                                    and "menu item" in node.role()], 5,
                           f"the menu {title} has items")
        return popup, [node for node in entry.walk() if node.role() == "menu"][0], items

    def _close_menu(self, shell, popup):
        for _ in range(3):
            if self.screen.viewable(popup):
                self.hands.press("escape")
                with contextlib.suppress(AssertionError):
                    wait.until(lambda: not self.screen.viewable(popup), 1, "the menu closes")
        assert not self.screen.viewable(popup), "the menu closes"

    def menu_items(self, shell, title):
        """Titles of a menu's items, in order."""
        popup, _, items = self.open_menu(shell, title)
        names = [node.name() for node in items]
        self._close_menu(shell, popup)
        return names

    def menu_checks(self, shell):
        """The check marks of the first menu's mode items."""
        popup, _, items = self.open_menu(shell, "Vantor")
        checks = {node.name(): node.checked() for node in items
                  if node.name() in ("Always on Top", "Hide in Screenshots")}
        self._close_menu(shell, popup)
        return checks

    def choose(self, shell, title, item):
        """Clicks an item of a menu."""
        popup, menu, items = self.open_menu(shell, title)
        wait.settled(lambda: self.screen.geometry(popup), 0.15)
        node = [each for each in items if each.name() == item][0]
        # The toolkit counts both from somewhere in the main window: only the difference is the place in the pop-up.
        left, top, width, height = node.extents()
        menu_left, menu_top, _, _ = menu.extents()
        x, y, _, _ = self.screen.geometry(popup)
        self.hands.click(x + left - menu_left + width / 2, y + top - menu_top + height / 2)
        wait.until(lambda: not self.screen.viewable(popup), 5, "the menu closes")

    def press_button(self, shell, title):
        """Clicks a button of the topmost dialog."""
        dialog = self.dialog(shell)

        def found():
            return [button for button in self.dialog_nodes(shell, "button") if button.name() == title]
        button = wait.until(found, 5, f"a button {title}")[-1]
        wait.settled(lambda: self.screen.geometry(dialog), 0.15)
        left, top, width, height = button.extents()
        x, y, _, _ = self.screen.geometry(dialog)
        self.hands.click(x + left + width / 2, y + top + height / 2)

    def dialog_nodes(self, shell, role):
        """Accessible objects of a role in the shell's dialogs; what vanishes meanwhile is left out."""
        found = []
        with contextlib.suppress(GLib.Error):
            application = self.ax.application(shell.pid)
            for window in application.children() if application else []:
                if window.role() in ("dialog", "alert", "alert dialog"):
                    found += [node for node in window.walk() if node.role() == role]
        return found

    def dialog_labels(self, shell):
        """Texts of a dialog outside its buttons, in order."""
        inside, names = set(), []
        with contextlib.suppress(GLib.Error):
            for button in self.dialog_nodes(shell, "button"):
                inside |= {child.path for child in button.walk()}
            names = [node.name() for node in self.dialog_nodes(shell, "label") if node.path not in inside]
        return [name for name in names if name]

    def dialog_buttons(self, shell):
        """Titles of a dialog's buttons from left to right; the first button is the rightmost, as panels have it."""
        with contextlib.suppress(GLib.Error):
            return [button.name() for button in self.dialog_nodes(shell, "button")]
        return []

    def wait_focus(self, shell, role, name):
        """Presses Tab until an object of the dialog has the keyboard focus."""
        for _ in range(6):
            with contextlib.suppress(AssertionError):
                wait.until(lambda: any(node.name() == name and node.focused()
                                       for node in self.dialog_nodes(shell, role)), 0.4, "the focus")
                return
            self.hands.press("tab")
        raise AssertionError(f"Tab does not lead to {role} {name!r}:\n{self.ax.dump(shell.pid)}")

    # The status strip

    def status(self, shell):
        """The text of the status line, as a screen reader gets it; None while there is none."""
        return status_of(self.ax, shell.pid)

    def wait_status(self, shell, wanted, timeout=10):
        """Waits until the status line equals a text or matches a compiled pattern; returns it."""
        seen = []

        def fits():
            text = self.status(shell)
            if not seen or seen[-1] != text:
                seen.append(text)
            return text is not None and (text == wanted if isinstance(wanted, str) else bool(wanted.search(text)))

        wait.until(fits, timeout, lambda: f"status {wanted!r}; seen: {seen}", 0.05)
        return seen[-1]

    def watch_statuses(self, shell):
        """Starts to collect the status texts as they change; the result gives those seen so far."""
        seen, lock = [], threading.Lock()
        reader = ax.Reader(self.bus_address)

        def watch():
            while shell.running():
                try:
                    text = status_of(reader, shell.pid)
                except Exception:  # pylint: disable=broad-except  # the shell is on its way out, or not there yet
                    text = None
                with lock:
                    if text and (not seen or seen[-1] != text):
                        seen.append(text)
                time.sleep(0.02)

        threading.Thread(target=watch, daemon=True).start()

        def so_far():
            with lock:
                return list(seen)
        return so_far

    def strip_rows(self, window):
        """(first row, number of rows) of the status strip in the client window, by its colour."""
        picture = self.screen.picture(window)
        column = [picture.getpixel((4, y)) for y in range(picture.height)]
        best, run = (0, 0), 0
        for y, color in enumerate(column):
            run = run + 1 if is_strip_grey(color) else 0
            if run > best[1]:
                best = (y - run + 1, run)
        return best

    def strip_top(self, window, timeout=5):
        """The row of the client window where the strip, and with it the content, begins; waits until it is drawn."""
        return wait.until(lambda: (self.strip_rows(window) if self.strip_rows(window)[1] >= 29 else None), timeout,
                          lambda: f"the strip is drawn, it has {self.strip_rows(window)}")[0]

    def page_color(self, window):
        """The colour in the middle of the page."""
        picture = self.screen.picture(window)
        return picture.getpixel((picture.width // 2, picture.height // 2))

    def wait_page_color(self, window, color, timeout=8):
        """Waits until the middle of the page shows a colour."""
        wait.until(lambda: self.page_color(window) == color, timeout,
                   lambda: f"the page shows {color}, it is {self.page_color(window)}", 0.05)

    def status_color(self, window):
        """The name of the status text's colour: "orange", "red", "green", "dark", or None when no text is seen."""
        top, rows = self.strip_rows(window)
        if rows < 20:
            return None
        picture = self.screen.picture(window)
        # The first emoji has colours of its own: look to its right.
        part = picture.crop((32, top, picture.width - 4, top + rows))
        pixels = part.getdata()
        far = max(pixels, key=lambda color: sum(abs(a - b) for a, b in zip(color, STRIP_GREY)))
        red, green, blue = far
        if sum(abs(a - b) for a, b in zip(far, STRIP_GREY)) < 60:
            return None
        hue, saturation, _ = colorsys.rgb_to_hsv(red / 255, green / 255, blue / 255)
        if saturation < 0.5:
            return "dark" if max(far) < 110 else f"rgb{far}"
        names = {"red": (345, 372), "orange": (20, 42), "green": (90, 165)}
        found = [name for name, (low, high) in names.items() if low <= hue * 360 + (360 if hue < 0.034 else 0) <= high]
        return found[0] if found else f"rgb{far}"

    def wait_color(self, window, wanted, timeout=5):
        """Waits for a colour of the status text."""
        wait.until(lambda: self.status_color(window) == wanted, timeout,
                   lambda: f"status colour {wanted}, it is {self.status_color(window)}", 0.1)

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

    def empty_folder(self, name):
        """A new folder of the case."""
        folder = os.path.join(self.root, name)
        os.makedirs(folder, mode=0o700)
        return folder

    @contextlib.contextmanager
    def mounted(self, folder, options, read_only=False, fill=False, files=()):
        """A small disk of its own in place of a folder, with files of (name, content, mode); taken away again at the
        end, shells with it."""
        try:
            subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", folder], check=True, capture_output=True)
        except (OSError, subprocess.CalledProcessError) as problem:
            raise Skipped(f"no file system can be mounted here: {problem}") from None
        try:
            for name, content, mode in files:
                with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                    file.write(content)
                os.chmod(os.path.join(folder, name), mode)
            if fill:
                with open(os.path.join(folder, "filler"), "wb", buffering=0) as filler:
                    with contextlib.suppress(OSError):
                        while filler.write(b"x" * 512):
                            pass
            if read_only:
                subprocess.run(["mount", "-o", "remount,ro", folder], check=True)
            yield
        finally:
            for shell in self.shells:
                if shell.running():
                    shell.kill()
            subprocess.run(["umount", "-l", folder], check=True)

    def without_record(self):
        """An environment in which a program finds no RECORD extension: a library put before the others denies it. The
        virtual display itself can only leave out RECORD and the extension that presses the keys together."""
        source, library = os.path.join(self.root, "deny.c"), os.path.join(self.root, "deny.so")
        with open(source, "w", encoding="ascii") as file:
            file.write(DENY_RECORD)
        try:
            subprocess.run(["cc", "-shared", "-fPIC", "-o", library, source, "-ldl"], check=True, capture_output=True)
        except (OSError, subprocess.CalledProcessError) as problem:
            raise Skipped(f"no C compiler here: {problem}") from None
        return {"LD_PRELOAD": library,
                "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"}

    def program_pid(self):
        """The number of the process that runs the bundle's program, or None."""
        for pid in children.descendants(os.getpid()):
            with contextlib.suppress(OSError):
                if os.readlink(f"/proc/{pid}/exe") == self.bundle.program:
                    return pid
        return None

    def stored_files(self):
        """Files that the engine keeps for the shell under its data folder."""
        return [os.path.join(folder, name) for folder, _, names in os.walk(os.path.join(self.home.data, "Vantorel"))
                for name in names]

    def take_port(self):
        """Another program listens on the port and answers each request with an empty page."""
        other = ScriptedServer(place.Elsewhere(self.root, "other"))
        return other.start(self.children, self.port, self.home.environment())

    def kill_helper(self, shell, name, number=signal.SIGKILL):
        """Kills the engine's helper processes of that name."""
        pids = wait.until(lambda: shell.helpers(name), 5, f"{name} runs")
        for pid in pids:
            os.kill(pid, number)
        return pids

    def expect_no_server(self, timeout=13.0):
        """Fails unless no server process lives any more."""
        wait.until(lambda: not self.server_processes(), timeout, lambda: "the server is gone, but there are "
                   + str([(pid, children.command(pid)) for pid in self.server_processes()]))

    def expect_no_helpers(self):
        """Fails unless all of the engine's processes are gone."""
        def left():
            return [pid for pid in children.descendants(os.getpid())
                    if os.path.basename((children.command(pid) or [""])[0]).startswith("WebKit")]
        wait.until(lambda: not left(), self.engine_patience, lambda: f"the engine's processes are gone, but there are {left()}")

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
            except Exception as problem:  # pylint: disable=broad-except  # the display may be gone: that is the case's subject
                print(f"--- no picture: {problem!r}")


def is_strip_grey(color):
    """Whether a colour is the strip's grey of 0.95; toolkits round the half step to 255ths one way or the other."""
    return all(abs(a - b) <= 1 for a, b in zip(color, STRIP_GREY))


def status_of(reader, pid):
    """The text of the status line of a process, or None."""
    for node in reader.all(pid, role="status"):
        text = node.name() or node.text()
        if text and text.startswith(STATUS_STARTS):
            return text
    return None


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
