# Vantorel. MIT licence, see LICENSE.
# Hands on the X display: real key presses and mouse movements through the XTEST extension, by key position.

import time

from Xlib import XK, X
from Xlib.ext import xtest

# X key codes of positions on a US keyboard (evdev code + 8).
KEYS = {
    "escape": 9, "1": 10, "2": 11, "3": 12, "4": 13, "5": 14, "6": 15, "7": 16, "8": 17, "9": 18, "0": 19,
    "minus": 20, "equal": 21, "backspace": 22, "tab": 23, "q": 24, "w": 25, "e": 26, "r": 27, "t": 28, "y": 29,
    "u": 30, "i": 31, "o": 32, "p": 33, "return": 36, "ctrl": 37, "a": 38, "s": 39, "d": 40, "f": 41, "g": 42,
    "h": 43, "j": 44, "k": 45, "l": 46, "grave": 49, "shift": 50, "z": 52, "x": 53, "c": 54, "v": 55, "b": 56,
    "n": 57, "m": 58, "comma": 59, "period": 60, "right_shift": 62, "alt": 64, "space": 65, "caps": 66, "f1": 67,
    "f10": 76, "num": 77, "kp_subtract": 82, "kp_add": 86, "kp_0": 90, "right_ctrl": 105, "home": 110, "up": 111,
    "left": 113, "right": 114, "end": 115, "down": 116, "delete": 119, "super": 133, "right_super": 134,
}

CHORD = ("shift", "ctrl", "alt", "super")


class Hands:
    """Key presses and mouse on one display."""

    def __init__(self, screen):
        self._screen = screen
        self._display = screen.display

    def down(self, key):
        """Presses a key (by name or X key code) and leaves it down."""
        xtest.fake_input(self._display, X.KeyPress, KEYS.get(key, key))
        self._display.sync()

    def up(self, key):
        """Lets a key go."""
        xtest.fake_input(self._display, X.KeyRelease, KEYS.get(key, key))
        self._display.sync()

    def press(self, key, *modifiers):
        """One press and release of a key while the modifiers are down; returns the moment of the press."""
        for modifier in modifiers:
            self.down(modifier)
        begun = time.monotonic()
        self.down(key)
        self.up(key)
        for modifier in reversed(modifiers):
            self.up(modifier)
        return begun

    def hotkey(self, key):
        """The key together with Shift, Control, Alt and Super."""
        return self.press(key, *CHORD)

    def type(self, text):
        """Types a text on the current layout."""
        for character in text:
            symbol = XK.string_to_keysym({" ": "space", "-": "minus", ".": "period"}.get(character, character))
            found = self._display.keysym_to_keycodes(symbol)
            code, level = min(found, key=lambda pair: pair[1])
            self.press(code, *(["shift"] if level & 1 else []))

    def move(self, x, y):
        """Moves the pointer to a place on the screen."""
        xtest.fake_input(self._display, X.MotionNotify, x=int(x), y=int(y))
        self._display.sync()

    def click(self, x, y, button=1):
        """Clicks at a place on the screen. The pointer comes in from beside, so that the toolkit sees it move."""
        self.move(x - 3, y - 3)
        self.move(x, y)
        xtest.fake_input(self._display, X.ButtonPress, button)
        self._display.sync()
        time.sleep(0.02)  # a press and a release in the same millisecond are no click for some toolkits
        xtest.fake_input(self._display, X.ButtonRelease, button)
        self._display.sync()

    def layout(self, children, environment, *arguments):
        """Switches the keyboard layout as a user would with setxkbmap."""
        process = children.start(["setxkbmap", *arguments], env=environment)
        assert process.wait(5) == 0, "setxkbmap fails"
        self._display.sync()
        self._display._update_keymap(self._display.display.info.min_keycode,
                                     self._display.display.info.max_keycode + 1
                                     - self._display.display.info.min_keycode)
