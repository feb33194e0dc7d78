# Vantorel. MIT licence, see LICENSE.
# The shell's menus and dialogs as a user meets them: opened and clicked with the mouse, read over accessibility.

import contextlib

from harness import wait
from harness.ax import GLib


class Menus:
    """The part of a world that deals with menus and dialogs."""

    # Dialogs

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

    # The menu bar and the buttons, by mouse

    def menu_bar(self, shell):
        """The menu bar as a screen reader gets it."""
        return self.ax.wait_for(shell.pid, role="menu bar")

    def menu_titles(self, shell):
        """Titles of the menu bar's menus."""
        return [node.name() for node in self.menu_bar(shell).children() if node.role() == "menu item"]

    def open_menu(self, shell, title):
        """Opens a menu of the menu bar with the mouse; returns (its pop-up window, the menu, its items)."""
        window = self.window(shell)
        x, y, _, _ = self.screen.geometry(window)
        entry = [node for node in self.menu_bar(shell).children() if node.name() == title][0]
        left, top, width, height = entry.extents()
        before = {each.id for each in self.screen.windows_of(shell.pid)}
        self.hands.click(x + (left + width / 2) * self.scale, y + (top + height / 2) * self.scale)
        popup = wait.until(lambda: [each for each in self.screen.windows_of(shell.pid) if each.id not in before], 5,
                           f"the menu {title} opens")[0]
        items = wait.until(lambda: [node for node in entry.walk() if node.path != entry.path and node.name()
                                    and "menu item" in node.role()], 5,
                           f"the menu {title} has items")
        return popup, [node for node in entry.walk() if node.role() == "menu"][0], items

    def close_menu(self, popup):
        """Closes an open menu by the keyboard."""
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
        self.close_menu(popup)
        return names

    def menu_checks(self, shell):
        """The check marks of the first menu's mode items."""
        popup, _, items = self.open_menu(shell, "Vantor")
        checks = {node.name(): node.checked() for node in items
                  if node.name() in ("Always on Top", "Hide in Screenshots")}
        self.close_menu(popup)
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
        self.hands.click(x + (left - menu_left + width / 2) * self.scale,
                         y + (top - menu_top + height / 2) * self.scale)
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
        self.hands.click(x + (left + width / 2) * self.scale, y + (top + height / 2) * self.scale)
