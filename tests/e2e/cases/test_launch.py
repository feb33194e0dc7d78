# Vantorel. MIT licence, see LICENSE.
# Launch: the log to its last line, the window as it comes up, the port from the environment, the first page load.

import re

from harness import wait
from harness.page import html

IDLE_SERVER = "#!/bin/sh\nexec sleep 1000\n"
MAPPINGS = [(1, "screenshot_active"), (2, "design"), (3, "voice_design"), (4, "help"), (6, "stop"),
            (11, "screenshot_browser"), (12, "sql"), (13, "clear"), (15, "review"), (32, "quiz"), (34, "status"),
            (46, "algo"), (49, "voice")]
RULE = "=" * 40


def launch_log(world, pid, first_launch=True):
    """The whole log of a launch that succeeds, without what the server prints."""
    permissions = ["🔐 First launch - requesting system permissions...", "✅ Screen recording already authorized",
                   "✅ Microphone status: authorized", "✅ Accessibility already authorized"]
    resources = world.bundle.resources
    return [
        "🖼️ Screenshot hiding: enabled (.none)",
        *(permissions if first_launch else ["✅ Permissions already requested in previous launch"]),
        "", RULE, "🔴 ENTERING startGoServer() method", RULE, "",
        f"📁 App bundle: {world.bundle.folder}", f"📁 Resources path: {resources}",
        f"📁 Server path: {resources}/vantor-srv", f"📁 .env path: {resources}/.env",
        f"⚠️ Warning: .env file not found at: {resources}/.env",
        "⚙️ Creating Process object...", "⚙️ Process object created: true",
        f"⚙️ Executable URL set: {resources}/vantor-srv", f"⚙️ Working directory set: {resources}",
        f"🚀 Launching server from directory: {resources}",
        f"🌍 Environment: WEBSOCKET_ENABLED=true, WEBSOCKET_PORT={world.port}, DISABLE_NATIVE_HOTKEYS=true",
        "🚀 About to call serverProcess?.run()...", "🚀 Calling run() on process...",
        "✅ run() returned successfully", "✅ Process is running: true", f"✅ Process ID: {pid}",
        "✅ Server process started successfully",
        "⌨️ Setting up global hotkeys...", "✅ Accessibility permissions granted",
        "🔧 Registering global event monitor...", "✅ Global event monitor registered successfully",
        "🔧 Registering local event monitor...", "✅ Local event monitor registered successfully",
        "✅ Global and local hotkeys registered (Shift + Ctrl + Option + Cmd + key)",
        "📋 Registered keyCodes: [1, 2, 3, 4, 6, 11, 12, 13, 15, 32, 34, 46, 49]",
        "📋 Hotkey mappings:", *(f"   {code} -> {name}" for code, name in MAPPINGS),
    ]


def test_log(world):
    world.bundle.use_server(IDLE_SERVER)
    shell = world.launch()
    shell.wait_launched()
    wait.same(shell.texts(), launch_log(world, shell.server_pid()), "launch log")


def test_log_with_the_page(world):
    world.server.page(html())
    shell = world.launch()
    shell.wait_loaded()
    seen = [line for line in shell.texts() if not line.startswith("🤖 Server: ")]
    wait.same(seen, launch_log(world, shell.server_pid())
              + [f"🌐 Loading: http://localhost:{world.port}/", "✅ Page loaded successfully"], "log up to the page")
    assert shell.find("✅ Server process started successfully").index < shell.find("   49 -> voice").index


def test_page_is_requested_after_three_seconds(world):
    world.server.page(html())
    shell = world.launch()
    loading = shell.wait_line(f"🌐 Loading: http://localhost:{world.port}/")
    delay = loading.time - shell.find("✅ Server process started successfully").time
    assert 2.95 <= delay <= 3.3, f"the page is requested after {delay:.3f} s"
    shell.wait_loaded()
    wait.stays(lambda: len(world.server.requests("page")) == 1, 3, "one page request only")


def test_window(world):
    world.bundle.use_server(IDLE_SERVER)
    shell = world.launch()
    window = world.window(shell)
    screen = world.screen
    x, y, width, height = screen.geometry(window)
    strip = world.strip_top(window)
    wait.same((width, height - strip), (900, 750), "content size of a first launch")
    left, right, top, bottom = screen.frame_extents(window)
    assert top > 10, "the window has a title bar"
    wait.until(lambda: abs(screen.geometry(window)[0] + width / 2 - screen.width / 2) <= 6, 3,
               lambda: f"centred from side to side, at {screen.geometry(window)}")
    x, y, width, height = screen.geometry(window)
    above, below = y - top, screen.height - (y + height + bottom)
    assert abs(above - below) <= 12, f"centred: {above} above, {below} below"
    wait.until(lambda: screen.active() == window.id, 3, "the window is the active one")
    wait.same(screen.states(window) - {"_NET_WM_STATE_FOCUSED"}, set(), "window states")
    assert shell.wait_launched()


def test_window_class(world):
    world.bundle.use_server(IDLE_SERVER)
    shell = world.launch()
    window = world.window(shell)
    assert world.screen.wm_class(window)[1] in ("app.vantorel.Vantorel", "Vantorel"), world.screen.wm_class(window)
    wait.same(world.screen.text(window, "_GTK_APPLICATION_ID"), "app.vantorel.Vantorel", "application id")
    shell.wait_launched()


def test_minimum_size_bounds_the_outer_frame(world):
    world.bundle.use_server(IDLE_SERVER)
    shell = world.launch()
    shell.wait_launched()
    window = world.focused(shell)
    world.strip_top(window)
    world.screen.ask_size(window, 50, 50)
    wait.until(lambda: world.screen.geometry(window)[2] < 500, 3, "the window shrinks")
    wait.settled(lambda: world.screen.geometry(window))
    _, _, width, height = world.screen.geometry(window)
    top = world.screen.frame_extents(window)[2]
    strip = world.strip_top(window)
    wait.same((width, height - strip + top), (400, 350), "smallest width, and height with the title bar")


def test_ports_that_do_not_convert(world):
    world.bundle.use_server(IDLE_SERVER)
    world.desktop()
    for text, port in ((None, 8080), ("", 8080), ("80a", 8080), (" 9000", 8080), ("9000 ", 8080), ("+", 8080),
                       ("9223372036854775808", 8080), ("9223372036854775807", 9223372036854775807),
                       ("+9000", 9000), ("-1", -1), ("0", 0), ("70000", 70000)):
        changes = {"environment": {"WEBSOCKET_PORT": text}} if text is not None else {"unset": ["WEBSOCKET_PORT"]}
        shell = world.launch(**changes)
        shell.wait_launched()
        line = shell.find(re.compile("^🌍 Environment: ")).text
        wait.same(line, f"🌍 Environment: WEBSOCKET_ENABLED=true, WEBSOCKET_PORT={port}, DISABLE_NATIVE_HOTKEYS=true",
                  f"environment line for the port text {text!r}")
        shell.quit()


def test_bundle_is_the_folder_outside_an_application_folder(world):
    plain = world.move_program("plain")
    shell = world.launch(program=plain)
    shell.wait_line(f"📁 App bundle: {world.root}/plain")
    shell.wait_line(f"📁 Server path: {world.root}/plain/Contents/Resources/vantor-srv")
    shell.wait_launched()
