# Vantorel. MIT licence, see LICENSE.
# The status strip: its height and colour, its text and the text's colour, and how it follows the window.

import os
import re

from harness import wait
from harness.page import colored
from harness.status import GREEN_STATUS, ORANGE_STATUS, is_strip_grey

IDLE_SERVER = "#!/bin/sh\nexec sleep 1000\n"


def test_thirty_high_and_light_grey(world):
    shell, window = world.launch_loaded(colored("#224466"))
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    world.wait_page_color(window, (0x22, 0x44, 0x66))
    top, rows = world.strip_rows(window)
    wait.same(rows, 30, "height of the strip")
    picture = world.screen.picture(window)
    for x in (0, 5, picture.width // 2, picture.width - 1):
        assert is_strip_grey(picture.getpixel((x, top + 1))), f"colour {picture.getpixel((x, top + 1))} at x={x}"
    wait.same(picture.getpixel((picture.width // 2, top + 30)), (0x22, 0x44, 0x66), "the page begins right below")


def test_starts_orange(world):
    world.bundle.use_server(IDLE_SERVER)
    shell = world.launch()
    window = world.window(shell)
    wait.same(world.wait_status(shell, "🔄 Server starting... Waiting for connection..."),
              "🔄 Server starting... Waiting for connection...", "status")
    world.wait_color(window, "orange", 1.5)
    world.wait_status(shell, ORANGE_STATUS)
    world.wait_color(window, "orange")


def test_green_when_connected(world):
    shell, window = world.launch_loaded(colored("#224466"))
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    world.wait_color(window, "green")
    assert shell.running()


def test_red_when_the_server_fails(world):
    world.bundle.use_server("#!/bin/sh\nwhile [ ! -e end ]; do sleep 0.02; done\nexit 7\n")
    shell = world.launch()
    window = world.window(shell)
    # After the page's failure, which is red too, and right after a probe: the text stays until the next one.
    shell.wait_line(re.compile("^❌ Provisional navigation failed: "))
    world.wait_status(shell, ORANGE_STATUS)
    with open(os.path.join(world.bundle.resources, "end"), "w", encoding="utf-8"):
        pass
    world.wait_status(shell, "❌ Server exited with code 7")
    world.wait_color(window, "red", 1.5)
    world.wait_status(shell, ORANGE_STATUS)
    world.wait_color(window, "orange")


def test_follows_the_window(world):
    shell, window = world.launch_loaded(colored("#224466"))
    world.focused(shell)
    for width, height in ((600, 500), (1200, 900), (450, 420)):
        world.screen.resize(window, width, height)
        world.wait_page_color(window, (0x22, 0x44, 0x66))
        wait.until(lambda: world.strip_rows(window)[1] == 30, 5, lambda: f"30 rows, {world.strip_rows(window)}")
        top = world.strip_rows(window)[0]
        picture = world.screen.picture(window)
        wait.same((picture.width, picture.height), (width, height), "size of the window")
        wait.until(lambda: is_strip_grey(world.screen.picture(window).getpixel((width - 1, top + 1))), 3,
                   "the strip reaches the right edge")
        wait.until(lambda: world.screen.picture(window).getpixel((width - 1, height - 1)) == (0x22, 0x44, 0x66), 3,
                   "the page reaches the lower right corner")


def test_label_keeps_ten_points_of_margin(world):
    shell, window = world.launch_loaded(colored("#224466"))
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    top, _ = world.strip_rows(window)
    picture = world.screen.picture(window)
    columns = [x for x in range(picture.width) for y in range(top + 2, top + 28)
               if not is_strip_grey(picture.getpixel((x, y)))]
    assert 10 <= min(columns) <= 14, f"the text begins at {min(columns)}"
    rows = [y - top for x in range(200) for y in range(top, top + 30)
            if not is_strip_grey(picture.getpixel((x, y)))]
    assert 5 <= min(rows) and max(rows) <= 25, f"the text takes rows {min(rows)} to {max(rows)}"


def test_long_text_does_not_widen_the_window(world):
    long = "/".join(["x" * 100] * 12)
    world.bundle.use_server("#!/bin/sh\nexit 3\n")
    shell = world.launch(program=world.move_program(long + ".app/Contents/Linux"))
    window = world.window(shell)
    wait.same(world.screen.geometry(window)[2], 900, "width of the window")
    shell.wait_launched()
    world.screen.resize(window, 420, 420)
    wait.same(world.screen.geometry(window)[2], 420, "width of the smaller window")
