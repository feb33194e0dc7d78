# Vantorel. MIT licence, see LICENSE.
# The server that the build bundles, under the shell: its page, its socket, its lines on the log, its end.

import os
import re

from harness import wait
from harness.other import OtherWindow
from harness.status import GREEN_STATUS


def test_hotkeys_reach_it(world):
    world.bundle.use_development_server()
    if not os.path.exists(world.bundle.server):
        raise AssertionError("the build has no development server")
    shell = world.launch()
    shell.wait_loaded()
    shell.wait_line(re.compile(rf"ws 1: open, from http://localhost:{world.port}$"))
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    OtherWindow(world.screen)

    def page_has_its_socket():
        """The server knows of the socket before the page does; until then the page says that it has none."""
        lines = shell.mark()
        world.hands.hotkey("h")
        wait.until(lambda: shell.count("✅ Hotkey help sent successfully", lines) == 1, 5, "the hotkey went to the page")
        return shell.count("🔴 JS Error: ❌ WebSocket not connected", lines) == 0

    wait.until(page_has_its_socket, 10, "the page has its socket", 0.2)
    for key, name in (("s", "screenshot_active"), ("space", "voice"), ("w", "clear")):
        world.hands.hotkey(key)
        shell.wait_line(f"✅ Hotkey {name} sent successfully")
        shell.wait_line(re.compile(rf'ws 1: {{"type":"trigger_hotkey","hotkey":"{name}"}}$'))
    world.focused(shell)
    world.hands.press("r", "ctrl")
    shell.wait_line(re.compile(rf"ws 2: open, from http://localhost:{world.port}$"))
    wait.until(lambda: shell.count("✅ Page loaded successfully") == 2, 5, "the page is loaded again")
    shell.quit(5)
    world.expect_no_server(3)
