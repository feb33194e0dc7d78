# Vantorel. MIT licence, see LICENSE.
# Wayland sessions, under a headless compositor: with XWayland the shell is an X11 program, without it runs all the same.

import re

from harness import wait
from harness.page import html
from harness.status import GREEN_STATUS

NOT_TRUSTED = ["🔑 Accessibility access requested (system prompt shown)", "⌨️ Setting up global hotkeys...",
               "⚠️ WARNING: Accessibility permissions NOT granted!",
               "⚠️ Global hotkeys will NOT work until you grant permissions",
               "⚠️ Go to: System Settings → Privacy & Security → Accessibility",
               "⚠️ Add Vantorel.app and enable it", "🔧 Registering global event monitor...",
               re.compile("^(✅ Global event monitor registered successfully|❌ Failed to register global event monitor!)$"),
               "🔧 Registering local event monitor...", "✅ Local event monitor registered successfully",
               "✅ Global and local hotkeys registered (Shift + Ctrl + Option + Cmd + key)", "   49 -> voice"]


def works(world, shell):
    """Page, status line, the lines of a session that hides other programs' keys, and a normal quit."""
    shell.wait_lines(NOT_TRUSTED, 10)
    shell.wait_loaded()
    world.server.wait_report("ready")
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    shell.quit()
    wait.same(world.server.signals(), ["TERM"], "signals at the server")
    wait.same(world.home.saved_size()[0], 900, "stored width")


def test_without_xwayland(world):
    world.wayland()
    world.server.page(html("report('ready', 1)"))
    works(world, world.launch())


def test_with_xwayland(world):
    world.wayland(xwayland=True)
    world.server.page(html("report('ready', 1)"))
    shell = world.launch()
    window = world.window(shell)
    wait.same(world.screen.wm_class(window)[1], "app.vantorel.Vantorel", "class of the X11 window")
    works(world, shell)


def test_sizes_over_a_relaunch(world):
    world.wayland()
    world.bundle.use_server("#!/bin/sh\nexec sleep 1000\n")
    sizes = []
    for _ in range(2):
        shell = world.launch()
        shell.wait_launched()
        shell.quit()
        sizes.append(world.home.saved_size())
    wait.same(sizes[1][0], sizes[0][0], "width")
    assert 750 <= sizes[0][1] <= sizes[1][1] <= sizes[0][1] + 80, f"stored sizes {sizes}"


def test_hotkeys_in_the_own_window(world):
    world.wayland(keyboard=True)
    world.server.page(html("addEventListener('keydown', e => { if (e.code === 'KeyD') e.preventDefault(); }, true)",
                           socket=True))
    shell = world.launch()
    shell.wait_loaded()
    world.server.wait_event("ws_open")
    world.hands.click(world.screen.width // 2, world.screen.height // 2)
    mark = shell.mark()
    for key in ("s", "d", "s"):
        world.hands.hotkey(key)
    world.server.wait_hotkeys(["screenshot_active", "design", "screenshot_active"])
    world.hands.press("s")
    shell.wait_line("   ❌ Not all modifiers pressed - ignoring", 3, mark)
    wait.stays(lambda: len(world.server.hotkeys()) == 3, 0.7, "each press counts once")
    wait.same(shell.count("🏠 Local event (inside app): keyCode=1", mark), 3, "local lines of S")
    wait.same(shell.count(re.compile("^🌍"), mark), 0, "global lines")
