# Vantorel. MIT licence, see LICENSE.
# Wayland sessions: what works there, with XWayland and without, and what the shell honestly says does not.
# timeout: 90

import re

from harness import wait
from harness.page import html
from harness.shell import TITLE
from harness.status import GREEN_STATUS
from harness.wayland import LOCAL, WaylandSession

WARNINGS = ["⚠️ WARNING: Accessibility permissions NOT granted!",
            "⚠️ Global hotkeys will NOT work until you grant permissions",
            "⚠️ Go to: System Settings → Privacy & Security → Accessibility",
            "⚠️ Add Vantorel.app and enable it"]
ASKED = "🔑 Accessibility access requested (system prompt shown)"
GRANTED = ("✅ Accessibility already authorized", "✅ Accessibility permissions granted")
GLOBAL = re.compile("^🌍 Global event")
LOCAL_REGISTERED = ["🔧 Registering local event monitor...", "✅ Local event monitor registered successfully",
                    "✅ Global and local hotkeys registered (Shift + Ctrl + Option + Cmd + key)"]
HOTKEYS = {"s": "screenshot_active", "d": "design", "f": "voice_design", "h": "help", "z": "stop",
           "b": "screenshot_browser", "q": "sql", "w": "clear", "r": "review", "u": "quiz", "i": "status", "m": "algo",
           "space": "voice"}


def set_up_lines(shell):
    """The log lines from the accessibility query of the hotkeys to the list of key codes."""
    shell.wait_launched()
    texts = shell.texts()
    return texts[texts.index("⌨️ Setting up global hotkeys...") + 1:texts.index("📋 Hotkey mappings:") - 1]


def expect_no_trust(shell):
    """Accessibility is answered with no, at the first launch's query and at the hotkeys' own."""
    texts = shell.texts()
    wait.same(texts.count(ASKED), 1, "accessibility lines of the first launch")
    wait.same([text for text in texts if text in GRANTED], [], "lines that claim the grant")


def expect_stored_frame(world):
    """The quit has stored the window's frame, at least as large as the content it began with."""
    width, height = world.home.saved_size()
    assert width == 900 and 750 <= height < 850, f"stored size {width}×{height}"


def expect_x_window(session, shell):
    """The main window belongs to an X program."""
    found = wait.until(lambda: session.x_window(shell), 10, "the window is an X program's")
    wait.same(found, (TITLE, "app.vantorel.Vantorel", 900), "title, class and width of the window")


def test_without_xwayland(world):
    session = WaylandSession(world)
    world.server.page(html("report('inner', [innerWidth, innerHeight])", socket=True))
    shell = session.launch()
    wait.same(set_up_lines(shell), [*WARNINGS, "🔧 Registering global event monitor...",
                                    "❌ Failed to register global event monitor!", *LOCAL_REGISTERED], "set-up lines")
    expect_no_trust(shell)
    shell.wait_loaded()
    wait.same(world.server.wait_report("inner"), [900, 720], "size of the page")
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    shell.quit()
    wait.same(world.server.signals(), ["TERM"], "signals at the server")
    expect_stored_frame(world)


def test_second_launch_without_xwayland(world):
    session = WaylandSession(world)
    for launch in range(2):
        world.server.page(html())
        shell = session.launch()
        shell.wait_loaded()
        wait.same(shell.count(ASKED), 1 - launch, "accessibility lines of the first launch's requests")
        wait.same(set_up_lines(shell)[:4], WARNINGS, "warnings of each launch")
        shell.quit()
        expect_stored_frame(world)


def test_display_that_is_not_there(world):
    """DISPLAY left over from another session: the shell takes Wayland."""
    session = WaylandSession(world)
    world.server.page(html("report('inner', innerWidth)"))
    shell = session.launch({"DISPLAY": ":64321"})
    wait.same(set_up_lines(shell)[:4], WARNINGS, "warnings")
    shell.wait_loaded()
    wait.same(world.server.wait_report("inner"), 900, "width of the page")


def test_prefers_x11(world):
    session = WaylandSession(world, keys=True, xwayland=True)
    world.server.page(html("report('loaded', 1)", socket=True))
    shell = session.launch()
    wait.same(set_up_lines(shell), [*WARNINGS, "🔧 Registering global event monitor...",
                                    "✅ Global event monitor registered successfully", *LOCAL_REGISTERED], "set-up lines")
    expect_no_trust(shell)
    expect_x_window(session, shell)
    shell.wait_loaded()
    world.server.wait_report("loaded")
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    shell.quit()
    wait.same(world.server.signals(), ["TERM"], "signals at the server")
    expect_stored_frame(world)


def test_xwayland_known_by_its_devices(world):
    """The environment says nothing of Wayland: XWayland is not taken for an X server of its own."""
    session = WaylandSession(world, keys=True, xwayland=True)
    world.server.page(html())
    shell = session.launch({"XDG_SESSION_TYPE": "x11"}, unset=["WAYLAND_DISPLAY"])
    wait.same(set_up_lines(shell)[:4], WARNINGS, "warnings")
    expect_no_trust(shell)
    expect_x_window(session, shell)
    shell.wait_loaded()


def press_all_hotkeys(world, xwayland, script=""):
    """All thirteen in the shell's own window: each reaches the server once, and the page as well."""
    session = WaylandSession(world, keys=True, xwayland=xwayland)
    world.server.page(html(f"onkeydown = e => report('key', e.code); {script}", socket=True))
    shell = session.launch()
    shell.wait_loaded()
    world.server.wait_report("socket")
    mark = session.give_keys(shell)
    for number, key in enumerate(HOTKEYS):
        world.hands.hotkey(key)
        world.server.wait_hotkeys(list(HOTKEYS.values())[:number + 1])
    wait.until(lambda: "Space" in world.server.reports("key"), 5, "the page gets the keys too")
    wait.until(lambda: shell.count(LOCAL, mark) >= 13, 5, "the log has all key events")
    wait.settled(shell.mark)
    world.server.wait_hotkeys(HOTKEYS.values())
    wait.same((shell.count(LOCAL, mark), shell.count(GLOBAL, mark)), (13, 0), "key events inside and outside")


def test_hotkeys_inside(world):
    press_all_hotkeys(world, xwayland=False)


def test_hotkeys_inside_with_xwayland(world):
    press_all_hotkeys(world, xwayland=True)


def test_hotkeys_that_the_page_takes_for_itself(world):
    press_all_hotkeys(world, xwayland=False, script="addEventListener('keydown', e => e.preventDefault(), true)")


def test_modifier_missing(world):
    session = WaylandSession(world, keys=True)
    world.server.page(html(socket=True))
    shell = session.launch()
    shell.wait_loaded()
    world.server.wait_report("socket")
    session.give_keys(shell)
    names = {"shift": "Shift", "ctrl": "Ctrl", "alt": "Option", "super": "Cmd"}
    for missing, name in names.items():
        mark = shell.mark()
        world.hands.press("s", *(key for key in names if key != missing))
        shell.wait_line("   ❌ Not all modifiers pressed - ignoring", 5, mark)
        wait.same([text for text in shell.texts(mark) if "Missing" in text], [f"   ⚠️ Missing: {name}"], "missing")
    world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"])


def test_hotkey_while_an_alert_is_up(world):
    """An alert is one of the shell's windows; what waits for the page arrives when it has gone."""
    session = WaylandSession(world, keys=True)
    world.server.page(html("onkeydown = e => { if (e.code == 'KeyX') { alert('hello'); report('answered', 1); } }",
                           socket=True))
    shell = session.launch()
    shell.wait_loaded()
    world.server.wait_report("socket")
    session.give_keys(shell)
    world.hands.press("x")
    wait.until(lambda: "hello" in world.dialog_labels(shell), 10, "the alert shows")
    mark = shell.mark()
    world.hands.hotkey("s")
    shell.wait_line("🔥 Hotkey detected: screenshot_active (keyCode: 1)", 5, mark)

    def answered():
        if world.server.reports("answered"):
            return True
        world.hands.press("return")
        return False

    wait.until(answered, 10, "the alert is closed by a key", 1)
    world.server.wait_hotkeys(["screenshot_active"])
    wait.same(shell.count(re.compile("^🔥 Hotkey detected: "), mark), 1, "hotkeys in the log")


def press_shortcuts(world, xwayland):
    """The menu's shortcuts: zoom, reload, a mode, and quit."""
    session = WaylandSession(world, keys=True, xwayland=xwayland)
    world.server.page(html("report('inner', innerWidth); onresize = () => report('inner', innerWidth)"))
    shell = session.launch()
    shell.wait_loaded()
    world.server.wait_report("inner")
    session.give_keys(shell)
    for key, width in (("equal", 818), ("minus", 900), ("minus", 1000), ("0", 900)):
        count = len(world.server.reports("inner"))
        world.hands.press(key, "ctrl")
        wait.same(world.server.wait_report("inner", count + 1), width, f"width of the page after Ctrl and {key}")
    world.hands.press("r", "ctrl")
    wait.until(lambda: len(world.server.requests("page")) == 2, 5, "the page is loaded again")
    world.hands.press("t", "ctrl")
    wait.until(lambda: world.home.read_defaults().get("alwaysOnTop") == "true", 5, "the mode is stored")
    world.hands.press("q", "ctrl")
    wait.same(shell.wait_exit(5), 0, "exit status")
    wait.same(world.server.signals(), ["TERM"], "signals at the server")
    expect_stored_frame(world)


def test_shortcuts(world):
    press_shortcuts(world, xwayland=False)


def test_shortcuts_with_xwayland(world):
    press_shortcuts(world, xwayland=True)


def test_compositor_dies(world):
    """The shell can't live on, but it leaves nothing behind."""
    session = WaylandSession(world)
    world.server.page(html(socket=True))
    shell = session.launch()
    shell.wait_loaded()
    session.process.kill()
    shell.wait_exit(10)
    world.expect_no_server()
    world.expect_no_helpers()
