# Vantorel. MIT licence, see LICENSE.
# The window frame over quit and relaunch: it grows by the title bar, keeps its width, and survives damaged texts.

import re

from harness import wait

IDLE_SERVER = "#!/bin/sh\nexec sleep 1000\n"


def start(world):
    """A shell with an idle server, launched, with its settled window."""
    shell = world.launch()
    window = world.window(shell)
    shell.wait_launched()
    wait.settled(lambda: world.screen.geometry(window))
    return shell, window


def content(world, window):
    """(width, height) of the content: everything below the menu bar."""
    _, _, width, height = world.screen.geometry(window)
    return width, height - world.strip_top(window)


def grows(world, manager):
    """Three runs in a row under a window manager."""
    world.desktop(manager)
    world.bundle.use_server(IDLE_SERVER)
    height = 750
    for _ in range(3):
        shell, window = start(world)
        wait.same(content(world, window), (900, height), "content size")
        title_bar = world.screen.frame_extents(window)[2]
        assert title_bar > 10
        shell.quit()
        text = world.home.read_defaults()["windowFrame"]
        assert re.fullmatch(r"\{\{-?\d+, -?\d+\}, \{\d+, \d+\}\}", text), f"form of the text: {text!r}"
        wait.same(world.home.saved_size(), (900, height + title_bar), "stored size")
        height += title_bar


def test_grows_by_its_title_bar(world):
    grows(world, "xfwm4")


def test_grows_by_its_title_bar_under_openbox(world):
    grows(world, "openbox")


def test_resized_and_moved(world):
    world.bundle.use_server(IDLE_SERVER)
    shell, window = start(world)
    world.focused(shell)
    world.screen.resize(window, 640, 520)
    world.screen.move(window, 300, 200)
    wait.settled(lambda: world.screen.geometry(window))
    x, y, width, height = world.screen.geometry(window)
    strip, title_bar = world.strip_top(window), world.screen.frame_extents(window)[2]
    shell.quit()
    numbers = [int(part) for part in re.findall(r"-?\d+", world.home.read_defaults()["windowFrame"])]
    wait.same(numbers[2:], [640, 520 - strip + title_bar], "stored size")
    # Origin at the bottom left of the screen; what the window manager draws at the sides may or may not count.
    assert abs(numbers[0] - x) <= 10 and abs(numbers[1] - (world.screen.height - y - height)) <= 10, \
        f"stored {numbers}, on the screen at {(x, y, width, height)}"
    shell, window = start(world)
    wait.same(content(world, window), (640, 520 - strip + title_bar), "content size of the next run")
    x, _, width, _ = world.screen.geometry(window)
    assert abs(x + width / 2 - world.screen.width / 2) <= 6, "the stored place does not survive"


def test_far_off_origin(world):
    world.home.write_defaults(windowFrame="{{-50000, 99999}, {500, 400}}")
    world.bundle.use_server(IDLE_SERVER)
    _, window = start(world)
    wait.same(content(world, window), (500, 400), "content size")
    x, y, width, height = world.screen.geometry(window)
    assert x >= 0 and y >= 0 and x + width <= world.screen.width and y + height <= world.screen.height


def usable(world, text):
    """Opens with that stored frame: a window that shows, answers and quits."""
    world.home.write_defaults(windowFrame=text)
    shell, window = start(world)
    _, _, width, height = world.screen.geometry(window)
    assert width >= 50 and height >= 50, f"window of {width}×{height} for {text!r}"
    assert world.screen.ping(window) < 1
    shell.quit()
    return width, height


def test_damaged_texts(world):
    world.bundle.use_server(IDLE_SERVER)
    for text in ("hello", "{{1, 2}, {900", "", "{}", "{{NaN, NaN}, {NaN, NaN}}", "{{0, 0}, {-5, -5}}"):
        usable(world, text)


def test_huge_texts(world):
    world.bundle.use_server(IDLE_SERVER)
    for text in ("{{0, 0}, {1e9, 1e9}}", "{{1e300, 1e300}, {1e300, 1e300}}", "{{inf, inf}, {inf, inf}}",
                 "9" * 5000, "{" * 20000):
        usable(world, text)


def test_missing_numbers_count_as_zero(world):
    world.bundle.use_server(IDLE_SERVER)
    width, _ = usable(world, "{{1, 2}, {900")
    wait.same(width, 900, "the width that the text still tells")


def test_frame_is_stored_without_a_window_manager(world):
    world.desktop(manager=None)
    world.bundle.use_server(IDLE_SERVER)
    shell, window = start(world)
    wait.same(content(world, window), (900, 750), "content size")
    shell.quit()
    wait.same(world.home.saved_size(), (900, 750), "stored size")


def test_abnormal_end_keeps_the_stored_frame(world):
    world.home.write_defaults(windowFrame="{{0, 0}, {700, 600}}")
    world.bundle.use_server(IDLE_SERVER)
    shell, window = start(world)
    world.screen.resize(window, 800, 700)
    shell.kill()
    wait.same(world.home.saved_size(), (700, 600), "stored size")


def test_maximised_frame_is_stored(world):
    world.bundle.use_server(IDLE_SERVER)
    shell, window = start(world)
    world.screen.set_state(window, True, "_NET_WM_STATE_MAXIMIZED_VERT", "_NET_WM_STATE_MAXIMIZED_HORZ")
    wait.until(lambda: world.screen.geometry(window)[2] > 1300, 5, "the window is maximised")
    wait.settled(lambda: world.screen.geometry(window))
    width, height = content(world, window)
    title_bar = world.screen.frame_extents(window)[2]
    shell.quit()
    wait.same(world.home.saved_size(), (width, height + title_bar), "stored size")
