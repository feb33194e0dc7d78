# Vantorel. MIT licence, see LICENSE.
# When the page is drawn: by the processor alone, as on this machine, and as with a graphics processor.

import glob

from harness import wait
from harness.page import colored, html
from harness.staging import Skipped

BLUE = (0x22, 0x44, 0x66)


def test_window_keeps_its_colour_until_the_page_has_drawn(world):
    """Asked for a picture before there is one, the engine would keep the window waiting; so it is not asked, before the
    first page and after its process died. It would show white."""
    if glob.glob("/dev/dri/renderD*"):
        raise Skipped("there is a graphics processor")
    world.server.page({"body": html(style="body{background:#224466}"), "delay": 1.5})
    shell = world.launch()
    window = world.window(shell)
    own = wait.settled(lambda: world.page_color(window))
    assert own not in (BLUE, (255, 255, 255)), own
    for loads in (1, 2):
        world.server.wait_requests("page", loads)
        wait.stays(lambda: world.page_color(window) == own, 1, lambda: f"{own}, it is {world.page_color(window)}")
        world.wait_page_color(window, BLUE)
        if loads == 1:
            world.kill_helper(shell, "WebKitWebProcess")


def test_with_a_graphics_processor(world):
    """The engine draws the next frame only when the one before was shown."""
    frames = "let n = 0; requestAnimationFrame(function next() {" \
             "if (++n == 10) report('frames', n); else requestAnimationFrame(next); })"
    world.server.page(colored("#224466", frames))
    shell = world.launch(**world.with_graphics_processor())
    window = world.window(shell)
    for loads in (1, 2):
        wait.same(world.server.wait_report("frames", loads), 10, "frames")
        world.wait_page_color(window, BLUE)
        if loads == 1:
            world.kill_helper(shell, "WebKitWebProcess")
