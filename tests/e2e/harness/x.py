# Vantorel. MIT licence, see LICENSE.
# Eyes on the X display: windows and their properties, pictures, the window manager's protocol.

import time

from PIL import Image
from Xlib import X, display, error
from Xlib.protocol import event

from harness import wait


class Screen:
    """One connection to the display of a case. Not for use from several threads."""

    def __init__(self, name):
        self.name = name
        self.display = display.Display(name)
        self.display.set_error_handler(lambda *_: None)
        self.screen = self.display.screen()
        self.root = self.screen.root
        self.width, self.height = self.screen.width_in_pixels, self.screen.height_in_pixels

    def close(self):
        """Ends the connection."""
        self.display.close()

    def atom(self, name):
        """The number of an atom."""
        return self.display.intern_atom(name)

    def atom_names(self, numbers):
        """The names of several atoms, as a set."""
        return {self.display.get_atom_name(number) for number in numbers}

    def property(self, window, name):
        """The raw value of a window property, or None."""
        try:
            found = window.get_full_property(self.atom(name), X.AnyPropertyType)
        except (error.BadWindow, error.BadAtom):
            return None
        return None if found is None else found.value

    def text(self, window, name):
        """A property as text, or None."""
        value = self.property(window, name)
        if value is None:
            return None
        return value if isinstance(value, str) else bytes(value).decode("utf-8", "replace")

    def has_window_manager(self):
        """Whether a window manager has announced itself and its announcement is true."""
        value = self.property(self.root, "_NET_SUPPORTING_WM_CHECK")
        if not value:
            return False
        check = self.display.create_resource_object("window", value[0])
        again = self.property(check, "_NET_SUPPORTING_WM_CHECK")
        return bool(again) and again[0] == value[0]

    def windows(self):
        """All viewable windows that bear a process number, outermost first."""
        found = []

        def walk(window, depth):
            try:
                children = window.query_tree().children
            except error.BadWindow:
                return
            for child in children:
                if self.property(child, "_NET_WM_PID") and self.viewable(child):
                    found.append(child)
                elif depth < 3:
                    walk(child, depth + 1)

        walk(self.root, 0)
        return found

    def windows_of(self, pid):
        """The viewable windows of a process, its dialogs and pop-ups among them."""
        return [window for window in self.windows() if list(self.property(window, "_NET_WM_PID") or []) == [pid]]

    def window_titled(self, title, pid=None):
        """The first viewable window of that title (and process), or None."""
        for window in self.windows() if pid is None else self.windows_of(pid):
            if self.title(window) == title:
                return window
        return None

    def title(self, window):
        """The title as the window tells it."""
        return self.text(window, "_NET_WM_NAME")

    def viewable(self, window):
        """Whether the window is mapped, and all its ancestors."""
        try:
            return window.get_attributes().map_state == X.IsViewable
        except error.BadWindow:
            return False

    def geometry(self, window):
        """(x, y, width, height) of the client window on the screen."""
        shape = window.get_geometry()
        place = window.translate_coords(self.root, 0, 0)
        return -place.x, -place.y, shape.width, shape.height

    def frame_extents(self, window):
        """(left, right, top, bottom) of what the window manager draws around."""
        value = self.property(window, "_NET_FRAME_EXTENTS")
        return tuple(value) if value else (0, 0, 0, 0)

    def states(self, window):
        """Names in _NET_WM_STATE, as a set."""
        value = self.property(window, "_NET_WM_STATE")
        return self.atom_names(value) if value else set()

    def iconified(self, window):
        """Whether the window is minimised, by the window manager's word."""
        value = self.property(window, "WM_STATE")
        return bool(value) and value[0] == 3

    def wm_class(self, window):
        """(instance, class)."""
        return window.get_wm_class()

    def active(self):
        """The number of the active window by the window manager's word, or 0."""
        value = self.property(self.root, "_NET_ACTIVE_WINDOW")
        return value[0] if value else 0

    def stacking(self):
        """Window numbers from bottom to top."""
        return list(self.property(self.root, "_NET_CLIENT_LIST_STACKING") or [])

    def _tell_manager(self, window, message, data):
        data = (list(data) + [0] * 5)[:5]
        note = event.ClientMessage(window=window, client_type=self.atom(message), data=(32, data))
        self.root.send_event(note, event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self.display.flush()

    def activate(self, window, timeout=5):
        """Makes the window the active one and waits until it is."""
        def asked():
            if self.active() == window.id:
                return True
            self._tell_manager(window, "_NET_ACTIVE_WINDOW", [2, X.CurrentTime, 0])
            return False
        wait.until(asked, timeout, "the window becomes active", 0.1)

    def ask_size(self, window, width, height):
        """Asks the window manager for a size of the client window."""
        self._tell_manager(window, "_NET_MOVERESIZE_WINDOW", [(1 << 10) | (1 << 11) | (2 << 12), 0, 0, width, height])

    def resize(self, window, width, height, timeout=5):
        """Asks the window manager for a size of the client window and waits for it."""
        self.ask_size(window, width, height)
        wait.until(lambda: self.geometry(window)[2:] == (width, height), timeout,
                   lambda: f"the window is {width}×{height}, not {self.geometry(window)}")

    def move(self, window, x, y):
        """Asks the window manager for a place of the window's frame."""
        self._tell_manager(window, "_NET_MOVERESIZE_WINDOW", [1 | (1 << 8) | (1 << 9) | (2 << 12), x, y, 0, 0])

    def set_state(self, window, on, *names):
        """Asks the window manager to set or clear one or two states."""
        first, second = (*map(self.atom, names), 0)[:2]
        self._tell_manager(window, "_NET_WM_STATE", [int(on), first, second, 2])

    def close_window(self, window):
        """Closes the window the way its title bar does."""
        self._tell_manager(window, "_NET_CLOSE_WINDOW", [X.CurrentTime, 2])

    def delete_window(self, window):
        """Sends the window its WM_DELETE_WINDOW, as a window manager would."""
        note = event.ClientMessage(window=window, client_type=self.atom("WM_PROTOCOLS"),
                                   data=(32, [self.atom("WM_DELETE_WINDOW"), X.CurrentTime, 0, 0, 0]))
        window.send_event(note)
        self.display.flush()

    def ping(self, window, timeout=10.0):
        """Seconds until the window answers a _NET_WM_PING; fails after the time-out."""
        self.root.change_attributes(event_mask=X.SubstructureNotifyMask)
        self.display.sync()
        stamp = int(time.monotonic() * 1000) & 0x7fffffff
        note = event.ClientMessage(window=window, client_type=self.atom("WM_PROTOCOLS"),
                                   data=(32, [self.atom("_NET_WM_PING"), stamp, window.id, 0, 0]))
        begun = time.monotonic()
        window.send_event(note)
        self.display.flush()
        try:
            while time.monotonic() - begun < timeout:
                while self.display.pending_events():
                    seen = self.display.next_event()
                    if seen.type & 0x7f == X.ClientMessage and seen.data[1][1] == stamp:
                        return time.monotonic() - begun
                time.sleep(0.001)
        finally:
            self.root.change_attributes(event_mask=0)
        raise AssertionError(f"no answer to a ping within {timeout} s")

    def visible_part(self, window):
        """(left, top, right, bottom) of the part of the client window that is on the screen."""
        x, y, width, height = self.geometry(window)
        return max(x, 0), max(y, 0), min(x + width, self.width), min(y + height, self.height)

    def picture(self, window=None):
        """What the screen shows, or the part of it where the window is, as an RGB image."""
        return self.part(*(self.visible_part(window) if window else (0, 0, self.width, self.height)))

    def part(self, left, top, right, bottom):
        """What the screen shows in a rectangle of it, as an RGB image."""
        raw = self.root.get_image(left, top, right - left, bottom - top, X.ZPixmap, 0xffffffff)
        return Image.frombytes("RGB", (right - left, bottom - top), raw.data, "raw", "BGRX")
