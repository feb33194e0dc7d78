# Vantorel. MIT licence, see LICENSE.
# The status strip: its text as a screen reader gets it, its place and colours as the screen shows them.

import colorsys
import threading
import time

from harness import ax, wait

STRIP_GREY = (242, 242, 242)
STATUS_STARTS = ("🔄", "✅", "❌", "⚠️")
GREEN_STATUS = "✅ Connected to server on port {}"
ORANGE_STATUS = "⚠️ Server running but not responding..."


class Status:
    """The part of a world that looks at the status strip and at the page below it."""

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
        left, top, _, bottom = self.screen.visible_part(window)
        best, run = (0, 0), 0
        for y, color in enumerate(self.screen.part(left + 4, top, left + 5, bottom).getdata()):
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
        left, top, right, bottom = self.screen.visible_part(window)
        x, y = (left + right) // 2, (top + bottom) // 2
        return self.screen.part(x, y, x + 1, y + 1).getpixel((0, 0))

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
        colors = [color for _, color in part.getcolors(part.width * part.height)]
        far = max(colors, key=lambda color: sum(abs(a - b) for a, b in zip(color, STRIP_GREY)))
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
