# Vantorel. MIT licence, see LICENSE.
# Another program's window: it takes the focus, and counts the keys that reach it.

from Xlib import X, Xutil, display

from harness import wait


class OtherWindow:
    """A plain window on a connection of its own, active once constructed."""

    def __init__(self, screen, title="Other program"):
        self._screen = screen
        self._display = display.Display(screen.name)
        self._display.set_error_handler(lambda *_: None)
        setup = self._display.screen()
        self.window = setup.root.create_window(20, 20, 300, 200, 0, setup.root_depth, background_pixel=0x336699,
                                               event_mask=X.KeyPressMask | X.KeyReleaseMask | X.StructureNotifyMask)
        self.window.set_wm_name(title)
        self.window.set_wm_class("other", "Other")
        self.window.set_wm_hints(flags=Xutil.InputHint | Xutil.StateHint, input=1, initial_state=Xutil.NormalState)
        self.window.map()
        self._display.sync()
        self._presses = []
        self.proxy = screen.display.create_resource_object("window", self.window.id)
        wait.until(lambda: screen.viewable(self.proxy), 5, "the other window is mapped")
        if screen.has_window_manager():
            screen.activate(self.proxy)
        else:
            self.window.set_input_focus(X.RevertToParent, X.CurrentTime)
        wait.until(self.focused, 5, "the other window has the focus")

    def focused(self):
        """Whether key presses go to this window."""
        focus = self._display.get_input_focus().focus
        return getattr(focus, "id", focus) == self.window.id

    def presses(self):
        """X key codes of all presses so far."""
        while self._display.pending_events():
            seen = self._display.next_event()
            if seen.type == X.KeyPress:
                self._presses.append(seen.detail)
        return list(self._presses)

    def grab_keyboard(self):
        """Takes all keys for itself."""
        assert self.window.grab_keyboard(False, X.GrabModeAsync, X.GrabModeAsync, X.CurrentTime) == X.GrabSuccess
        self._display.sync()

    def ungrab_keyboard(self):
        """Gives the keys back."""
        self._display.ungrab_keyboard(X.CurrentTime)
        self._display.sync()

    def close(self):
        """Destroys the window and ends the connection."""
        self.window.destroy()
        self._display.close()
