# Vantorel. MIT licence, see LICENSE.
# How fast window and hotkeys answer while the page or the server does its worst. These take times: nothing runs beside.
# serial

import os
import time

from Xlib import X

from harness import children, latency, wait
from harness.other import OtherWindow
from harness.page import html

OUTSIDE = "🌍 Global event (outside app): keyCode=1"


def test_hundred_megabytes_in_one_text(world):
    seen = []
    page = html("addEventListener('load', () => setTimeout(() => { console.log('x'.repeat(100 << 20));"
                "console.log('end'); }, 500))")
    world.server.page(page)
    shell = world.launch(sink=lambda chunk: seen.append(chunk[-200:]))
    world.window(shell)
    world.server.wait_requests("page")
    pings = latency.Watch(world, shell)
    pings.until(lambda: any("🔵 JS Log: end".encode() in chunk for chunk in seen), 60)
    pings.expect_below(0.1)
    assert shell.running()


def test_page_busy_from_its_first_line(world):
    """It has drawn nothing, and does not for a second and a half: the window does not wait for it. Nor did it wait for
    the page's process to draw before that; to start this process alone takes up to 0.13 s."""
    world.server.page(html("const end = Date.now() + 1500; while (Date.now() < end); console.log('end');", "<p>text"))
    shell = world.launch()
    pings = latency.Watch(world, shell)
    pings.until(lambda: world.server.requests("page"), 20)
    pings.expect_below(0.25)
    pings.delays.clear()
    pings.until(lambda: shell.find("🔵 JS Log: end"), 60)
    pings.expect_below(0.1)


def test_huge_sparse_array(world):
    world.server.page(html("addEventListener('load', () => setTimeout(() => {"
                           "webkit.messageHandlers.consoleLog.postMessage(new Array(10000000));"
                           "console.log('end'); }, 500))"))
    shell = world.launch()
    pings = latency.Watch(world, shell)
    pings.until(lambda: shell.find("🔵 JS Log: end"), 100)
    pings.expect_below(0.1)


def test_hundred_thousand_messages(world):
    world.server.page(html("addEventListener('load', () => setTimeout(() => {"
                           "for (let i = 0; i < 100000; i++) console.log('line ' + i); console.log('end'); }, 300))"))
    shell = world.launch()
    world.window(shell)
    pings = latency.Watch(world, shell)
    pings.until(lambda: shell.find("🔵 JS Log: end"), 90, 0.2)
    seen = [line for line in shell.texts() if line.startswith("🔵 JS Log: line ")]
    wait.same(len(seen), 100000, "number of lines")
    wait.same(seen, [f"🔵 JS Log: line {number}" for number in range(100000)], "lines")
    pings.expect_below(0.1)


def test_server_floods_the_log(world):
    """200 MB in one go: the window answers, memory stays, and nothing of it is lost."""
    megabytes = 200
    world.bundle.use_server("#!/usr/bin/python3 -I\nimport os, time\ntime.sleep(3.5)\nblock = b'x' * 65536\n"
                            f"for _ in range({megabytes * 16}):\n    view = memoryview(block)\n"
                            "    while view:\n        view = view[os.write(1, view):]\n"
                            "open('done.seen', 'w').close()\ntime.sleep(1000)\n")
    count = {"x": 0}

    def sink(chunk):
        count["x"] += chunk.count(b"x")

    world.desktop()
    base = len([letter for letter in str(world.bundle.resources) if letter == "x"])
    shell = world.launch(sink=sink)
    world.window(shell)
    wait.until(lambda: count["x"] > 100, 15, "the flood begins", 0.005)
    before = children.memory(shell.pid)
    most = [before]
    pings = latency.Watch(world, shell)

    def done():
        most.append(children.memory(shell.pid))
        return os.path.exists(os.path.join(world.bundle.resources, "done.seen"))

    pings.until(done, 60)
    wait.until(lambda: count["x"] >= megabytes << 20, 10, lambda: f"all bytes, there are {count['x']}")
    wait.stays(lambda: count["x"] <= (megabytes << 20) + 200 + 20 * base, 0.5, "no more bytes than that")
    pings.expect_below(0.1)
    growth = (max(most) - before) >> 20
    assert growth < 64, f"memory grew by {growth} MB"


def test_hotkeys_within_fifty_milliseconds(world):
    shell, _ = world.launch_loaded(html(socket=True))
    world.server.wait_socket()
    OtherWindow(world.screen)
    delays = []
    for _ in range(20):
        delays.append(latency.reaction(world, shell, lambda: world.hands.hotkey("s"), OUTSIDE))
        time.sleep(0.05)
    assert max(delays) <= 0.05, f"delays {sorted(delays)[-5:]}"


def nobody_has_the_focus(world, focus):
    """No window selects keys: the record must come all the same, and at once."""
    world.desktop(manager=None)
    shell, _ = world.launch_loaded(html(socket=True))
    world.server.wait_socket()
    world.hands.move(world.screen.width - 2, world.screen.height - 2)  # where no window is
    world.screen.display.set_input_focus(focus, X.RevertToPointerRoot, X.CurrentTime)
    world.screen.display.sync()
    delays = []
    for number in range(1, 6):
        delays.append(latency.reaction(world, shell, lambda: world.hands.hotkey("s"), OUTSIDE))
        world.server.wait_hotkeys(["screenshot_active"] * number)
        time.sleep(0.1)
    assert max(delays) <= 0.05, f"delays {sorted(delays)}"


def test_nobody_has_the_focus(world):
    nobody_has_the_focus(world, X.NONE)


def test_the_root_has_the_focus(world):
    nobody_has_the_focus(world, X.PointerRoot)
