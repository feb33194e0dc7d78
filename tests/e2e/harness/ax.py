# Vantorel. MIT licence, see LICENSE.
# The shell's widgets as a screen reader meets them: texts and roles, read over the accessibility bus without a cache.

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from harness import wait  # noqa: E402

_ACCESSIBLE = "org.a11y.atspi.Accessible"
_STATE_CHECKED, _STATE_FOCUSED, _STATE_SENSITIVE, _STATE_SHOWING, _STATE_VISIBLE = 4, 12, 24, 25, 30


class Node:
    """One accessible object."""

    def __init__(self, reader, bus_name, path):
        self._reader = reader
        self.bus_name = bus_name
        self.path = path

    def __repr__(self):
        return f"{self.role()} {self.name()!r} {self.text()!r}"

    def _call(self, interface, method, arguments=None):
        return self._reader.call(self.bus_name, self.path, interface, method, arguments)

    def _get(self, interface, name):
        answer = self._call("org.freedesktop.DBus.Properties", "Get", GLib.Variant("(ss)", (interface, name)))
        return answer.unpack()[0]

    def name(self):
        """The accessible name."""
        return self._get(_ACCESSIBLE, "Name")

    def role(self):
        """The role's name, for example "label" or "push button"."""
        return self._call(_ACCESSIBLE, "GetRoleName").unpack()[0]

    def states(self):
        """The state bits as a set of numbers."""
        low, high = self._call(_ACCESSIBLE, "GetState").unpack()[0]
        bits = low | high << 32
        return {number for number in range(64) if bits >> number & 1}

    def checked(self):
        """Whether a check mark shows."""
        return _STATE_CHECKED in self.states()

    def focused(self):
        """Whether the keyboard focus is here."""
        return _STATE_FOCUSED in self.states()

    def showing(self):
        """Whether it is on the screen."""
        return _STATE_SHOWING in self.states()

    def children(self):
        """The children that belong to the same program."""
        found = self._call(_ACCESSIBLE, "GetChildren").unpack()[0]
        return [Node(self._reader, name, path) for name, path in found if name == self.bus_name]

    def text(self):
        """The text of a label or field; None for objects without one."""
        try:
            count = self._get("org.a11y.atspi.Text", "CharacterCount")
            return self._call("org.a11y.atspi.Text", "GetText", GLib.Variant("(ii)", (0, count))).unpack()[0]
        except GLib.Error:
            return None

    def extents(self):
        """(x, y, width, height) as the toolkit tells them, relative to the window."""
        return self._call("org.a11y.atspi.Component", "GetExtents", GLib.Variant("(u)", (1,))).unpack()[0]

    def walk(self):
        """This object and all below it."""
        yield self
        for child in self.children():
            try:
                yield from child.walk()
            except GLib.Error:
                pass  # went away meanwhile


class Reader:
    """Access to the accessibility bus of one session."""

    def __init__(self, session_address):
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        session = Gio.DBusConnection.new_for_address_sync(session_address, flags, None, None)
        session.set_exit_on_close(False)
        answer = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                                   Gio.DBusCallFlags.NONE, 10000, None)
        self.address = answer.unpack()[0]
        self._session = session
        self._bus = Gio.DBusConnection.new_for_address_sync(self.address, flags, None, None)
        self._bus.set_exit_on_close(False)
        self._applications = {}

    def call(self, name, path, interface, method, arguments=None, timeout=3000):
        """One call on the accessibility bus."""
        return self._bus.call_sync(name, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, timeout,
                                   None)

    def application(self, pid):
        """The root object of a process, or None while it has not registered."""
        if pid not in self._applications:
            root = Node(self, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
            for name, path in root._call(_ACCESSIBLE, "GetChildren").unpack()[0]:
                try:
                    found = self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                      "GetConnectionUnixProcessID", GLib.Variant("(s)", (name,))).unpack()[0]
                except GLib.Error:
                    continue
                if found == pid:
                    self._applications[pid] = Node(self, name, path)
        return self._applications.get(pid)

    def all(self, pid, role=None, name=None, text=None):
        """All objects of a process that fit."""
        application = self.application(pid)
        if application is None:
            return []
        found = []
        for node in application.walk():
            try:
                if ((role is None or node.role() == role) and (name is None or node.name() == name)
                        and (text is None or node.text() == text)):
                    found.append(node)
            except GLib.Error:
                pass
        return found

    def dump(self, pid):
        """The tree as an indented text, for failure reports."""
        result = []

        def visit(node, depth):
            result.append("  " * depth + repr(node) + f" {sorted(node.states())}")
            for child in node.children():
                visit(child, depth + 1)

        try:
            application = self.application(pid)
            if application:
                visit(application, 0)
        except GLib.Error as problem:
            result.append(str(problem))
        return "\n".join(result)

    def wait_for(self, pid, timeout=5, **wanted):
        """Waits for an object that fits `all`'s conditions and returns the first."""
        return wait.until(lambda: self.all(pid, **wanted), timeout,
                          lambda: f"an object with {wanted}; there is:\n{self.dump(pid)}", 0.05)[0]
