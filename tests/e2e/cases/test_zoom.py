# Vantorel. MIT licence, see LICENSE.
# Page zoom and reload, read back from the page: how many of its own pixels the width of the view holds.

from harness import wait
from harness.page import html

PAGE = html("let last = 0; setInterval(() => { const w = visualViewport.width; if (w !== last) {"
            "last = w; report('width', w); } }, 20);")


def zoomed(world, factor, count=None):
    """Waits until the page is as wide as that factor makes it."""
    def fits():
        widths = world.server.reports("width")
        return widths and abs(900 / widths[-1] - factor) < 0.002 and (count is None or len(widths) == count)
    wait.until(fits, 5, lambda: f"zoom {factor}; factors {[900 / w for w in world.server.reports('width')]}")


def start(world):
    """A loaded page in an active window."""
    shell, window = world.launch_loaded(PAGE)
    world.screen.activate(window)
    zoomed(world, 1.0)
    return shell, window


def test_in_and_out_by_shortcut(world):
    start(world)
    for factor in (1.1, 1.2, 1.3):
        world.hands.press("equal", "shift", "ctrl")
        zoomed(world, factor)
    for factor in (1.2, 1.1, 1.0, 0.9, 0.8):
        world.hands.press("minus", "ctrl")
        zoomed(world, factor)
    world.hands.press("0", "ctrl")
    zoomed(world, 1.0)


def test_unshifted_plus(world):
    start(world)
    world.hands.press("equal", "ctrl")
    zoomed(world, 1.1)


def test_number_pad(world):
    start(world)
    world.hands.press("num")
    world.hands.press("kp_add", "ctrl")
    zoomed(world, 1.1)
    world.hands.press("kp_add", "ctrl")
    zoomed(world, 1.2)
    world.hands.press("kp_subtract", "ctrl")
    zoomed(world, 1.1)
    world.hands.press("kp_0", "ctrl")
    zoomed(world, 1.0)


def test_number_pad_without_num_lock(world):
    start(world)
    world.hands.press("kp_add", "ctrl")
    zoomed(world, 1.1)
    world.hands.press("kp_subtract", "ctrl")
    zoomed(world, 1.0)


def test_lower_bound(world):
    start(world)
    for factor in (0.9, 0.8, 0.7, 0.6, 0.5):
        world.hands.press("minus", "ctrl")
        zoomed(world, factor)
    for _ in range(3):
        world.hands.press("minus", "ctrl")
    wait.stays(lambda: abs(900 / world.server.reports("width")[-1] - 0.5) < 0.002, 0.7, "stays at one half")
    world.hands.press("equal", "shift", "ctrl")
    zoomed(world, 0.6)


def test_no_upper_bound(world):
    start(world)
    for _ in range(60):
        world.hands.press("equal", "shift", "ctrl")
    wait.until(lambda: abs(900 / world.server.reports("width")[-1] - 7.0) < 0.05, 8,
               lambda: f"zoom 7, it is {900 / world.server.reports('width')[-1]}")
    world.hands.press("0", "ctrl")
    zoomed(world, 1.0)


def test_by_mouse(world):
    shell, _ = start(world)
    world.choose(shell, "View", "Zoom In")
    zoomed(world, 1.1)
    world.choose(shell, "View", "Zoom Out")
    zoomed(world, 1.0)
    world.choose(shell, "View", "Zoom Out")
    zoomed(world, 0.9)
    world.choose(shell, "View", "Actual Size")
    zoomed(world, 1.0)


def test_reload_keeps_it_and_a_restart_does_not(world):
    shell, _ = start(world)
    world.hands.press("equal", "shift", "ctrl")
    world.hands.press("equal", "shift", "ctrl")
    zoomed(world, 1.2)
    world.hands.press("r", "ctrl")
    wait.until(lambda: shell.count("✅ Page loaded successfully") == 2, 5, "the second load")
    zoomed(world, 1.2)
    before = len(world.server.reports("width"))
    shell.quit()
    world.launch_loaded()
    wait.until(lambda: len(world.server.reports("width")) > before, 5, "the page of the next run tells its width")
    zoomed(world, 1.0)


def test_other_keyboard_layout(world):
    start(world)
    world.hands.layout(world.children, world.environment(), "de")
    world.hands.press(35, "ctrl")  # the key right of the "ü": "+" without Shift
    zoomed(world, 1.1)
    world.hands.press(61, "ctrl")  # the key left of the right Shift: "-"
    zoomed(world, 1.0)


def test_layout_without_latin_letters(world):
    shell, window = start(world)
    world.hands.layout(world.children, world.environment(), "-layout", "us,ru", "-option", "grp:caps_toggle")
    world.hands.press("caps")
    world.hands.press("r", "ctrl")
    wait.until(lambda: shell.count("✅ Page loaded successfully") == 2, 5, "Ctrl and the key of R reload")
    world.hands.press("t", "ctrl")
    wait.until(lambda: "_NET_WM_STATE_ABOVE" in world.screen.states(window), 5, "Ctrl and the key of T")
