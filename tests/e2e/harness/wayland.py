# Vantorel. MIT licence, see LICENSE.
# A private Wayland session: a compositor without a screen, or one in a window of the virtual display, where it gets keys.

import os
import re
import shutil
import subprocess

from Xlib import X

from harness import wait
from harness.staging import Skipped

SIZE = (1400, 1000)
SOCKET = "wayland-case"
CONFIGURATION = """[core]
idle-time=0
[shell]
locking=false
animation=none
startup-animation=none
panel-position=none
[keyboard]
repeat-rate=0
"""
LOCAL = re.compile("^🏠 Local event")


class WaylandSession:
    """One compositor. With `keys` it shows itself in a window of the case's X display and hands on what is pressed
    there; without, it has neither screen nor keyboard. With `xwayland` it also serves X programs. Keys don't repeat: on
    a busy machine the compositor may see a short press as a long one."""

    def __init__(self, world, keys=False, xwayland=False):
        if not shutil.which("weston") or xwayland and not shutil.which("Xwayland"):
            raise Skipped("no Wayland compositor here")
        self._world = world
        world.desktop(manager=None, size=SIZE)
        self.x_display = None
        self.process = self._start(keys, xwayland)

    def _start(self, keys, xwayland):
        world = self._world
        configuration = os.path.join(world.root, "weston.ini")
        with open(configuration, "w", encoding="ascii") as file:
            file.write(CONFIGURATION)
        backend = ["--backend=x11-backend.so", "--use-pixman"] if keys else ["--backend=headless-backend.so"]
        environment = world.environment()
        if not keys:
            del environment["DISPLAY"]
        log = os.path.join(world.root, "weston.log")
        process = world.children.start(
            ["weston", *backend, f"--config={configuration}", f"--socket={SOCKET}", f"--log={log}",
             f"--width={SIZE[0]}", f"--height={SIZE[1]}", *(["--xwayland"] if xwayland else [])], env=environment)

        def said(pattern):
            with open(log, encoding="utf-8", errors="replace") as file:
                return re.search(pattern, file.read())

        wait.until(lambda: os.path.exists(os.path.join(world.home.runtime, SOCKET)), 10, "the compositor listens")
        wait.until(lambda: said("launching .*desktop-shell"), 10, "the compositor's shell starts")
        if xwayland:
            self.x_display = wait.until(lambda: said(r"xserver listening on display (:\d+)"), 10, "XWayland").group(1)
            self._ask_x("xset", "r", "off")
        if keys:
            self._focus_compositor()
        return process

    def _focus_compositor(self):
        screen = self._world.screen
        screen.display.change_keyboard_control(auto_repeat_mode=X.AutoRepeatModeOff)

        def window():
            return [each for each in screen.root.query_tree().children if screen.viewable(each)]

        shown = wait.until(window, 10, "the compositor's window shows")[0]
        shown.set_input_focus(X.RevertToParent, X.CurrentTime)
        screen.display.sync()

    def _ask_x(self, *command):
        """What a program says that is run on the X side of the session."""
        done = subprocess.run(command, env=self._world.environment() | {"DISPLAY": self.x_display}, check=False,
                              capture_output=True, text=True, timeout=20)
        return done.stdout

    def x_window(self, shell):
        """(title, class, width) of the shell's window among those of the X programs, or None. Asked of another program,
        because the X library of this one gets confused by a second server."""
        found = self._ask_x("xdotool", "search", "--onlyvisible", "--pid", str(shell.pid)).split()
        for window in found:
            title = self._ask_x("xdotool", "getwindowname", window).strip()
            width = re.search(r"Geometry: (\d+)x", self._ask_x("xdotool", "getwindowgeometry", window))
            kind = re.search(r'WM_CLASS\(STRING\) = "(.*?)"', self._ask_x("xprop", "-id", window, "WM_CLASS"))
            if title and width and kind:
                return title, kind.group(1), int(width.group(1))
        return None

    def launch(self, environment=None, unset=(), **options):
        """Starts the shell in this session. DISPLAY is set only when XWayland serves it."""
        values = {"WAYLAND_DISPLAY": SOCKET, "XDG_SESSION_TYPE": "wayland"} | (environment or {})
        if self.x_display:
            values.setdefault("DISPLAY", self.x_display)
        if "DISPLAY" not in values:
            unset = [*unset, "DISPLAY"]
        return self._world.launch(environment=values, unset=unset, **options)

    def give_keys(self, shell):
        """Clicks into the only window, and waits until a key arrives there. Returns the log's mark after that."""
        world = self._world
        mark = shell.mark()

        def arrived():
            if shell.count(LOCAL, mark):
                return True
            world.hands.click(SIZE[0] / 2, SIZE[1] / 2)
            world.hands.press("grave")
            return False

        wait.until(arrived, 10, "the shell's window gets keys", 0.3)
        return wait.settled(shell.mark, 0.3)
