# Vantorel. MIT licence, see LICENSE.
# The main menu by mouse and by shortcut, its check marks, and the About panel.

from harness import wait
from harness.page import html

ABOUT = """Unified macOS Application with Go Server

Version 2.0

Features:
• Integrated Go backend server
• Always-on-Top mode (Cmd+T)
• Hide in Screenshots (Cmd+H)
• Zoom controls (Cmd+0, Cmd++, Cmd+-)
• Auto-save window position and size
• Real-time connection status

Server Port: """

TYPING = html("document.querySelector('input').focus(); report('ready', document.hasFocus());"
              "document.querySelector('input').oninput = e => report('typed', e.target.value);", "<input>")


def shown(world, loaded):
    """A loaded page in an active window: takes and gives (shell, window)."""
    world.screen.activate(loaded[1])
    return loaded


def test_titles_in_order(world):
    shell, _ = shown(world, world.launch_loaded(html()))
    wait.same(world.menu_titles(shell), ["Vantor", "View", "Window"], "menu bar")
    wait.same(world.menu_items(shell, "Vantor"), ["About Vantor", "Always on Top", "Hide in Screenshots", "Quit"],
              "first menu")
    wait.same(world.menu_items(shell, "View"), ["Reload", "Actual Size", "Zoom In", "Zoom Out"], "View")
    wait.same(world.menu_items(shell, "Window"), ["Minimize", "Zoom"], "Window")


def test_check_marks(world):
    shell, _ = shown(world, world.launch_loaded(html()))
    wait.same(world.menu_checks(shell), {"Always on Top": False, "Hide in Screenshots": True}, "first check marks")
    world.hands.press("t", "ctrl")
    world.hands.press("h", "ctrl")
    wait.until(lambda: world.home.read_defaults().get("hideInScreenshots") == "false", 5, "the mode is stored")
    wait.same(world.menu_checks(shell), {"Always on Top": True, "Hide in Screenshots": False}, "check marks")
    shell.quit()
    shell, _ = shown(world, world.launch_loaded())
    wait.same(world.menu_checks(shell), {"Always on Top": True, "Hide in Screenshots": False}, "after a relaunch")


def test_modes_by_mouse(world):
    shell, window = shown(world, world.launch_loaded(html()))
    world.choose(shell, "Vantor", "Always on Top")
    wait.until(lambda: "_NET_WM_STATE_ABOVE" in world.screen.states(window), 5, "the window is kept above")
    world.choose(shell, "Vantor", "Hide in Screenshots")
    wait.until(lambda: world.home.read_defaults().get("hideInScreenshots") == "false", 5, "the mode is stored")
    world.choose(shell, "Vantor", "Always on Top")
    wait.until(lambda: "_NET_WM_STATE_ABOVE" not in world.screen.states(window), 5, "the window is kept no longer")


def test_quit_by_mouse(world):
    shell, _ = shown(world, world.launch_loaded(html()))
    world.choose(shell, "Vantor", "Quit")
    wait.same(shell.wait_exit(5), 0, "exit status")
    wait.same(world.server.signals(), ["TERM"], "signals at the server")


def test_reload_by_mouse_and_shortcut(world):
    shell, _ = shown(world, world.launch_loaded(html()))
    world.choose(shell, "View", "Reload")
    wait.until(lambda: shell.count("✅ Page loaded successfully") == 2, 5, "the second load")
    world.hands.press("r", "ctrl")
    wait.until(lambda: shell.count("✅ Page loaded successfully") == 3, 5, "the third load")
    wait.same(len(world.server.requests("page")), 3, "page requests")


def test_minimize(world):
    shell, window = shown(world, world.launch_loaded(html()))
    world.hands.press("m", "ctrl")
    wait.until(lambda: world.screen.iconified(window), 5, "minimised by the shortcut")
    world.screen.activate(window)
    wait.until(lambda: world.screen.viewable(window), 5, "the window is back")
    world.choose(shell, "Window", "Minimize")
    wait.until(lambda: world.screen.iconified(window), 5, "minimised by the mouse")


def test_zoom_maximises_and_back(world):
    shell, window = shown(world, world.launch_loaded(html()))
    before = world.screen.geometry(window)[2:]
    world.choose(shell, "Window", "Zoom")
    wait.until(lambda: "_NET_WM_STATE_MAXIMIZED_VERT" in world.screen.states(window), 5, "maximised")
    wait.settled(lambda: world.screen.geometry(window))
    world.choose(shell, "Window", "Zoom")
    wait.until(lambda: "_NET_WM_STATE_MAXIMIZED_VERT" not in world.screen.states(window), 5, "back again")
    wait.until(lambda: world.screen.geometry(window)[2:] == before, 5, "the size from before")


def test_about(world):
    shell, _ = shown(world, world.launch_loaded(html()))
    mark = shell.mark()
    world.choose(shell, "Vantor", "About Vantor")
    world.dialog(shell)
    wait.until(lambda: len(world.dialog_labels(shell)) >= 2, 5, "the panel has its texts")
    wait.same(world.dialog_labels(shell)[:2], ["Vantor", ABOUT + str(world.port)], "texts of the panel")
    wait.same(world.dialog_buttons(shell), ["OK"], "buttons of the panel")
    world.press_button(shell, "OK")
    wait.until(lambda: not world.dialogs(shell), 5, "the panel closes")
    wait.same([line for line in shell.texts(mark) if line.startswith("✅")], [], "what the panel logs")


def test_about_by_keyboard(world):
    shell, window = shown(world, world.launch_loaded(html()))
    for key in ("return", "escape", "space"):
        world.choose(shell, "Vantor", "About Vantor")
        world.screen.activate(world.dialog(shell))
        world.hands.press(key)
        wait.until(lambda: not world.dialogs(shell), 5, f"the panel closes by {key}")
        world.screen.activate(window)


def test_about_holds_the_window_but_not_the_probe(world):
    world.server.later("down", {"set": {"probe": [{"status": 500}]}})
    shell, window = shown(world, world.launch_loaded(html()))
    world.wait_status(shell, f"✅ Connected to server on port {world.port}")
    world.choose(shell, "Vantor", "About Vantor")
    world.dialog(shell)
    world.server.trigger("down")
    world.wait_status(shell, "⚠️ Server running but not responding...", 5)
    world.screen.activate(world.dialog(shell))
    world.hands.press("r", "ctrl")
    wait.stays(lambda: len(world.server.requests("page")) == 1 and world.dialogs(shell), 1, "the window takes no input")
    world.press_button(shell, "OK")
    wait.until(lambda: not world.dialogs(shell), 5, "the panel closes")
    world.screen.activate(window)


def test_quit_while_about_is_up(world):
    shell, _ = shown(world, world.launch_loaded(html()))
    world.choose(shell, "Vantor", "About Vantor")
    world.dialog(shell)
    shell.quit(5)
    wait.same(world.server.signals(), ["TERM"], "signals at the server")


def test_shortcuts_while_a_field_is_typed_in(world):
    shell, window = shown(world, world.launch_loaded(TYPING))
    x, y, _, _ = world.screen.geometry(window)
    world.hands.click(x + 60, y + world.strip_top(window) + 30 + 12)
    world.hands.type("abc")
    wait.until(lambda: "abc" in world.server.reports("typed"), 5, lambda: f"typed: {world.server.reports('typed')}")
    world.hands.press("t", "ctrl")
    wait.until(lambda: "_NET_WM_STATE_ABOVE" in world.screen.states(window), 5, "Ctrl+T reaches the shell")
    world.hands.press("h", "ctrl")
    wait.until(lambda: world.home.read_defaults().get("hideInScreenshots") == "false", 5, "Ctrl+H reaches the shell")
    world.hands.press("r", "ctrl")
    wait.until(lambda: shell.count("✅ Page loaded successfully") == 2, 5, "Ctrl+R reaches the shell")
    wait.same(world.home.read_defaults().get("alwaysOnTop"), "true", "Ctrl+T counted once")


def test_keyboard_goes_back_to_the_page_after_a_choice_by_mouse(world):
    shell, window = shown(world, world.launch_loaded(TYPING))
    x, y, _, _ = world.screen.geometry(window)
    world.hands.click(x + 60, y + world.strip_top(window) + 30 + 12)
    world.hands.type("a")
    wait.until(lambda: "a" in world.server.reports("typed"), 5, lambda: f"typed: {world.server.reports('typed')}")
    world.choose(shell, "Vantor", "Hide in Screenshots")
    wait.until(lambda: world.home.read_defaults().get("hideInScreenshots") == "false", 5, "the item's action")

    def typed_after():
        world.hands.type("b")
        return any(text.startswith("ab") for text in world.server.reports("typed"))
    wait.until(typed_after, 5, lambda: f"typed: {world.server.reports('typed')}")


def test_editing_keys_stay_with_the_page(world):
    shell, window = shown(world, world.launch_loaded(TYPING))
    x, y, _, _ = world.screen.geometry(window)
    world.hands.click(x + 60, y + world.strip_top(window) + 30 + 12)
    world.hands.type("abc")
    for key in ("a", "c"):
        world.hands.press(key, "ctrl")
    world.hands.press("end")
    world.hands.press("v", "ctrl")
    wait.until(lambda: "abcabc" in world.server.reports("typed"), 5, lambda: f"typed: {world.server.reports('typed')}")
    world.hands.press("a", "ctrl")
    world.hands.press("x", "ctrl")
    wait.until(lambda: world.server.reports("typed")[-1] == "", 5, lambda: f"typed: {world.server.reports('typed')}")
    assert shell.running()


def test_other_keys_do_nothing(world):
    shell, window = shown(world, world.launch_loaded(html()))
    states = world.screen.states(window)
    for key, *modifiers in (("t", "alt"), ("q", "alt"), ("q", "super"), ("t", "shift", "ctrl"), ("q",), ("t",)):
        world.hands.press(key, *modifiers)
    wait.stays(lambda: shell.running() and world.screen.states(window) == states, 0.7, "nothing happens")
