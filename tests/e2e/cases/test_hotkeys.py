# Vantorel. MIT licence, see LICENSE.
# The thirteen hotkeys, pressed for real, in other programs and in the shell's own page, counted at the server's socket.

import json
import re
import time

from harness import wait
from harness.hands import CHORD
from harness.other import OtherWindow
from harness.page import html

HOTKEYS = [("space", 49, "voice"), ("s", 1, "screenshot_active"), ("b", 11, "screenshot_browser"), ("q", 12, "sql"),
           ("m", 46, "algo"), ("d", 2, "design"), ("f", 3, "voice_design"), ("r", 15, "review"), ("u", 32, "quiz"),
           ("z", 6, "stop"), ("w", 13, "clear"), ("h", 4, "help"), ("i", 34, "status")]
NAMES = [name for _, _, name in HOTKEYS]
AVAILABLE = "   Available keyCodes: [1, 2, 3, 4, 6, 11, 12, 13, 15, 32, 34, 46, 49]"
OUTSIDE = "🌍 Global event (outside app): keyCode={}"
INSIDE = "🏠 Local event (inside app): keyCode={}"
EVENT = re.compile(r"^🔔 Key event detected: keyCode=(\d+), modifiers=(\d+), characters=(.*)$")


def connected(world, page=None, **options):
    """A shell whose page has its socket open."""
    shell, window = world.launch_loaded(page or html(socket=True), **options)
    world.server.wait_socket()
    return shell, window


def from_outside(world, page=None):
    """The same, with another program's window in front."""
    shell, window = connected(world, page)
    return shell, window, OtherWindow(world.screen)


def events(shell, code, since=0):
    """The key handler's event lines for that key code."""
    found = [EVENT.match(line) for line in shell.texts(since)]
    return [match for match in found if match and match.group(1) == str(code)]


def test_all_from_another_program(world):
    shell, _, other = from_outside(world)
    for key, code, name in HOTKEYS:
        mark = shell.mark()
        world.hands.hotkey(key)
        shell.wait_lines([OUTSIDE.format(code), re.compile(f"^🔔 Key event detected: keyCode={code}, "),
                          "   Modifiers: Shift=true, Ctrl=true, Option=true, Cmd=true",
                          "   ✅ All modifiers present!", f"🔥 Hotkey detected: {name} (keyCode: {code})",
                          f"📤 Triggering hotkey via WebSocket: {name}"], 2, mark)
        shell.wait_line(f"✅ Hotkey {name} sent successfully", 2, mark)
        shell.wait_line(f"🔵 JS Log: ✅ Hotkey sent: {name}", 2, mark)
    world.server.wait_hotkeys(NAMES)
    wait.stays(lambda: len(world.server.hotkeys()) == 13, 0.5, "no more than thirteen")
    wait.same([code for code in other.presses() if code not in (37, 50, 64, 133)],
              [65, 39, 56, 24, 58, 40, 41, 27, 30, 52, 25, 43, 31], "the other program still got its keys")


def test_all_from_the_own_page(world):
    shell, window = connected(world, html("addEventListener('keydown', e => report('key', e.code))", socket=True))
    world.screen.activate(window)
    for key, code, name in HOTKEYS:
        mark = shell.mark()
        world.hands.hotkey(key)
        shell.wait_line(f"✅ Hotkey {name} sent successfully", 2, mark)
        wait.same(shell.count(INSIDE.format(code), mark), 1, f"local lines of {name}")
        wait.same(shell.count(re.compile("^🌍"), mark), 0, f"global lines of {name}")
    world.server.wait_hotkeys(NAMES)
    wait.stays(lambda: len(world.server.hotkeys()) == 13, 0.7, "no more than thirteen")
    assert shell.running(), "the chord with Q is no Quit"
    wait.until(lambda: "KeyS" in world.server.reports("key"), 3, "the page gets the key too")


MISSING = {"shift": "Shift", "ctrl": "Ctrl", "alt": "Option", "super": "Cmd"}


def missing_each(world, shell, wrapper):
    """The chord without one modifier, for each of the four."""
    for absent, name in MISSING.items():
        mark = shell.mark()
        world.hands.press("s", *[modifier for modifier in CHORD if modifier != absent])
        has = {key: "false" if key == absent else "true" for key in MISSING}
        shell.wait_lines([wrapper.format(1),
                          f"   Modifiers: Shift={has['shift']}, Ctrl={has['ctrl']}, Option={has['alt']}, "
                          f"Cmd={has['super']}", f"   ⚠️ Missing: {name}",
                          "   ❌ Not all modifiers pressed - ignoring"], 2, mark)
        wait.same(shell.count(re.compile("Missing"), shell.find(wrapper.format(1), mark).index), 1, "missing lines")
    wait.stays(lambda: world.server.hotkeys() == [], 0.4, "nothing is sent")


def test_each_modifier_missing_outside(world):
    shell, _, _ = from_outside(world)
    missing_each(world, shell, OUTSIDE)


def test_each_modifier_missing_inside(world):
    shell, window = connected(world)
    world.screen.activate(window)
    missing_each(world, shell, INSIDE)


def test_plain_key(world):
    shell, _, _ = from_outside(world)
    mark = shell.mark()
    world.hands.press("s")
    shell.wait_line("   ❌ Not all modifiers pressed - ignoring", 2, mark)
    wait.same(shell.texts(mark), [OUTSIDE.format(1), "🔔 Key event detected: keyCode=1, modifiers=0, characters=s",
                                  "   Modifiers: Shift=false, Ctrl=false, Option=false, Cmd=false",
                                  "   ⚠️ Missing: Shift", "   ⚠️ Missing: Ctrl", "   ⚠️ Missing: Option",
                                  "   ⚠️ Missing: Cmd", "   ❌ Not all modifiers pressed - ignoring"],
              "lines of one plain key")


def test_plain_key_in_the_page_counts_once(world):
    shell, window = connected(world, html("const f = document.querySelector('input'); f.focus();"
                                          "f.oninput = () => report('typed', f.value)", "<input>", socket=True))
    world.screen.activate(window)
    x, y, _, _ = world.screen.geometry(window)
    world.hands.click(x + 60, y + world.strip_top(window) + 42)
    mark = shell.mark()
    for key in ("s", "left", "s", "escape", "f1"):
        world.hands.press(key)
    wait.until(lambda: shell.count(re.compile("^🏠"), mark) >= 5, 3, "five local events")
    wait.stays(lambda: shell.count(re.compile("^(🏠|🌍)"), mark) == 5, 0.7,
               lambda: f"one event for each press: {shell.texts(mark)}")
    wait.same(world.server.reports("typed")[-1], "ss", "what the field got")


def test_modifiers_alone_and_releases_log_nothing(world):
    shell, _, _ = from_outside(world)
    mark = shell.mark()
    for modifier in CHORD:
        world.hands.down(modifier)
    for modifier in CHORD:
        world.hands.up(modifier)
    world.hands.press("caps")
    world.hands.press("caps")
    wait.stays(lambda: shell.mark() == mark, 0.5, lambda: f"nothing is logged: {shell.texts(mark)}")


def test_modifier_word(world):
    shell, _, _ = from_outside(world)
    bits = {"shift": 0x20000, "ctrl": 0x40000, "alt": 0x80000, "super": 0x100000}
    for modifiers in ((), ("shift",), ("ctrl",), ("alt",), ("super",), CHORD):
        mark = shell.mark()
        world.hands.press("s", *modifiers)
        shell.wait_line(OUTSIDE.format(1), 2, mark)
        wait.until(lambda: events(shell, 1, mark), 2, "the event line")
        word = int(events(shell, 1, mark)[0].group(2))
        wait.same(word & 0x1e0000, sum(bits[each] for each in modifiers), f"modifier bits of {modifiers}")
    mark = shell.mark()
    world.hands.press("up")
    wait.until(lambda: events(shell, 126, mark), 2, "the event line of an arrow key")
    word = int(events(shell, 126, mark)[0].group(2))
    assert word & 0x800000 and word & 0x200000, f"an arrow key has function and number-pad bits: {word:#x}"


def test_caps_lock_and_num_lock(world):
    shell, _, _ = from_outside(world)
    world.hands.press("caps")
    world.hands.press("num")
    world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"])
    event = wait.until(lambda: events(shell, 1), 2, "the event line")[0]
    assert int(event.group(2)) & 0x10000, "the Caps Lock bit"
    world.hands.press("num")
    world.hands.press("caps")
    world.hands.hotkey("d")
    world.server.wait_hotkeys(["screenshot_active", "design"])


def test_right_hand_modifiers(world):
    from_outside(world)
    world.hands.press("s", "right_shift", "right_ctrl", "alt", "right_super")
    world.server.wait_hotkeys(["screenshot_active"])


def held(world, seconds, presses):
    """Holds the chord; gives the number of presses that X counted."""
    for modifier in CHORD:
        world.hands.down(modifier)
    world.hands.down("s")
    time.sleep(seconds)
    world.hands.up("s")
    for modifier in CHORD:
        world.hands.up(modifier)
    time.sleep(0.1)
    return presses()


def test_held_key_repeats(world):
    shell, _, other = from_outside(world)
    count = held(world, 1.3, lambda: other.presses().count(39))
    assert count > 5, f"the server repeats the key: {count}"
    wait.until(lambda: len(world.server.hotkeys()) >= count, 3, lambda: f"{count} hotkeys, {world.server.hotkeys()}")
    wait.stays(lambda: len(world.server.hotkeys()) == count, 0.5, lambda: f"{count}, {len(world.server.hotkeys())}")
    wait.same(shell.count("🔥 Hotkey detected: screenshot_active (keyCode: 1)"), count, "matches on the log")


def test_held_key_repeats_in_the_page(world):
    shell, window = connected(world, html(
        "addEventListener('keydown', e => { if (e.code === 'KeyS') report('s', 1); })", socket=True))
    world.screen.activate(window)
    held(world, 1.3, lambda: None)
    wait.settled(lambda: len(world.server.hotkeys()), 0.7)
    count = len(world.server.hotkeys())
    seen = len(world.server.reports("s"))
    assert count > 5 and count == seen, f"{count} hotkeys, the page saw {seen} presses"


def test_azerty(world):
    shell, _, other = from_outside(world)
    world.hands.layout(world.children, world.environment(), "fr")
    world.hands.hotkey("z")  # labelled W there
    world.server.wait_hotkeys(["stop"])
    world.hands.hotkey("q")  # labelled A there
    world.server.wait_hotkeys(["stop", "sql"])
    shell.wait_line("✅ Hotkey sql sent successfully")  # the log may come in a little later than the frame
    mark = shell.mark()
    world.hands.press("q")
    wait.until(lambda: events(shell, 12, mark), 2, "the event line")
    wait.same(events(shell, 12, mark)[0].group(3), "a", "characters of that key")
    world.hands.layout(world.children, world.environment(), "us")
    mark = shell.mark()
    world.hands.press("q")
    wait.until(lambda: events(shell, 12, mark), 2, "the event line")
    wait.same(events(shell, 12, mark)[0].group(3), "q", "characters of that key")
    assert 52 in other.presses()


def test_characters(world):
    shell, _, _ = from_outside(world)
    for key, modifiers, code, wanted in (("a", (), 0, "a"), ("a", ("shift",), 0, "A"), ("1", (), 18, "1"),
                                         ("1", ("shift",), 18, "!"), ("space", (), 49, " ")):
        mark = shell.mark()
        world.hands.press(key, *modifiers)
        wait.until(lambda: events(shell, code, mark), 2, "the event line")
        wait.same(events(shell, code, mark)[0].group(3), wanted, f"characters of {modifiers} {key}")


def test_page_that_prevents_everything(world):
    shell, window = connected(world, html(
        "for (const kind of ['keydown', 'keypress', 'keyup']) addEventListener(kind, e => {"
        "e.preventDefault(); e.stopImmediatePropagation(); }, true)", socket=True))
    world.screen.activate(window)
    for _ in range(3):
        world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"] * 3)
    wait.stays(lambda: len(world.server.hotkeys()) == 3, 0.7, "each press counts once")
    wait.same(shell.count(INSIDE.format(1)), 3, "local lines")


def test_unknown_key(world):
    shell, _, _ = from_outside(world)
    mark = shell.mark()
    world.hands.hotkey("a")
    shell.wait_lines([OUTSIDE.format(0), "   ✅ All modifiers present!", "⚠️ Unknown keyCode: 0 with all modifiers",
                      AVAILABLE], 2, mark)
    wait.stays(lambda: world.server.hotkeys() == [], 0.3, "nothing is sent")


def test_key_without_a_position(world):
    shell, window, _ = from_outside(world)
    mark = shell.mark()
    world.hands.hotkey(245)
    world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"])
    assert world.screen.ping(window) < 1
    unknown = shell.count(re.compile(r"^⚠️ Unknown keyCode: \d+ with all modifiers$"), mark)
    assert unknown <= 1


def test_grabbed_keyboard(world):
    shell, _, other = from_outside(world)
    other.grab_keyboard()
    world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"])
    other.ungrab_keyboard()
    world.hands.hotkey("d")
    world.server.wait_hotkeys(["screenshot_active", "design"])
    shell.wait_line("✅ Hotkey design sent successfully", 2)
    wait.same(shell.count(OUTSIDE.format(1)), 1, "global lines")


def test_keyboard_grabbed_while_the_own_window_is_active(world):
    shell, window = connected(world)
    other = OtherWindow(world.screen)
    world.screen.activate(window)
    other.grab_keyboard()
    mark = shell.mark()
    world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"])
    other.ungrab_keyboard()
    shell.wait_line("✅ Hotkey screenshot_active sent successfully", 2, mark)
    wait.same(shell.count(re.compile("^(🏠|🌍)"), mark), 1, "wrapper lines")


def burst(world, shell, window):
    """Two hundred presses in a second: each arrives once, in order, and the window answers."""
    for modifier in CHORD:
        world.hands.down(modifier)
    begun = time.monotonic()
    for number in range(200):
        world.hands.down("s" if number % 2 else "d")
        world.hands.up("s" if number % 2 else "d")
        time.sleep(max(0, begun + (number + 1) * 0.005 - time.monotonic()))
    for modifier in CHORD:
        world.hands.up(modifier)
    world.server.wait_hotkeys(["design", "screenshot_active"] * 100, 10)
    wait.stays(lambda: len(world.server.hotkeys()) == 200, 0.5, "no more than two hundred")
    assert world.screen.ping(window) < 0.5
    assert shell.running()


def test_burst_from_outside(world):
    shell, window, _ = from_outside(world)
    burst(world, shell, window)


def test_burst_in_the_page(world):
    shell, window = connected(world)
    world.screen.activate(window)
    burst(world, shell, window)


def test_while_an_alert_is_up(world):
    shell, window = connected(world, html(
        "setTimeout(() => { alert('wait'); report('closed', 1); }, 500)", socket=True))
    dialog = world.dialog(shell)
    world.screen.activate(dialog)
    mark = shell.mark()
    world.hands.hotkey("s")
    world.hands.hotkey("d")
    shell.wait_line("📤 Triggering hotkey via WebSocket: design", 3, mark)
    wait.same(shell.count(re.compile("^🏠"), mark), 2, "local lines: the alert is a window of the shell")
    world.press_button(shell, "OK")
    world.server.wait_report("closed")
    world.server.wait_hotkeys(["screenshot_active", "design"])
    wait.stays(lambda: len(world.server.hotkeys()) == 2, 0.5, "each once")
    assert world.screen.ping(window) < 1


def test_while_a_menu_is_open(world):
    shell, window = connected(world)
    world.screen.activate(window)
    popup, _, _ = world.open_menu(shell, "View")
    world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"])
    wait.stays(lambda: len(world.server.hotkeys()) == 1, 0.5, "once")
    if world.screen.viewable(popup):
        world.hands.press("escape")


def test_own_window_minimised(world):
    shell, window = connected(world)
    world.screen.activate(window)
    world.hands.press("m", "ctrl")
    wait.until(lambda: world.screen.iconified(window), 5, "minimised")
    mark = shell.mark()
    world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"])
    shell.wait_line(OUTSIDE.format(1), 2, mark)


def test_no_socket(world):
    shell, _ = world.launch_loaded(html())
    OtherWindow(world.screen)
    world.hands.hotkey("space")
    shell.wait_line("🔴 JS Error: ❌ WebSocket not connected")
    shell.wait_line("✅ Hotkey voice sent successfully")


def test_socket_that_has_closed(world):
    shell, _ = world.launch_loaded(html("ws.onopen = () => { ws.close(); }; ws.onclose = () => report('over', 1)",
                                        socket=True))
    world.server.wait_report("over")
    OtherWindow(world.screen)
    world.hands.hotkey("space")
    shell.wait_line("🔴 JS Error: ❌ WebSocket not connected")
    shell.wait_line("✅ Hotkey voice sent successfully")
    wait.same(world.server.hotkeys(), [], "hotkeys at the server")


def test_socket_replaced_by_garbage(world):
    shell, _ = world.launch_loaded(html("window.ws = 5; report('ready', 1)"))
    world.server.wait_report("ready")
    OtherWindow(world.screen)
    world.hands.hotkey("space")
    shell.wait_line("🔴 JS Error: ❌ WebSocket not connected")


def test_socket_whose_send_throws(world):
    shell, window = world.launch_loaded(html("window.ws = {readyState: 1, send() { throw new Error('no way'); }}"))
    OtherWindow(world.screen)
    world.hands.hotkey("space")
    line = shell.wait_line(re.compile("^❌ Error triggering hotkey: "))
    assert len(line.text) > len("❌ Error triggering hotkey: "), "the error is described"
    assert not shell.find("✅ Hotkey voice sent successfully")
    assert world.screen.ping(window) < 1


def test_no_page_yet(world):
    shell = world.launch()
    shell.wait_launched()
    world.window(shell)
    OtherWindow(world.screen)
    world.hands.hotkey("space")
    shell.wait_line("📤 Triggering hotkey via WebSocket: voice")
    shell.wait_line(re.compile("^(✅ Hotkey voice sent successfully|❌ Error triggering hotkey: .+)$"))
    shell.wait_loaded()


def test_frames_are_compact_json(world):
    from_outside(world)
    world.hands.hotkey("w")
    wait.until(world.server.frames, 3, "a frame")
    text = world.server.frames()[0]
    wait.same(text, '{"type":"trigger_hotkey","hotkey":"clear"}', "frame")
    wait.same(json.loads(text), {"type": "trigger_hotkey", "hotkey": "clear"}, "frame as an object")


def test_display_without_the_record_extension(world):
    world.desktop()
    shell, window = connected(world, environment=world.without_record())
    shell.wait_lines(["🔑 Accessibility access requested (system prompt shown)", "⌨️ Setting up global hotkeys...",
                      "⚠️ WARNING: Accessibility permissions NOT granted!",
                      "⚠️ Global hotkeys will NOT work until you grant permissions",
                      "⚠️ Go to: System Settings → Privacy & Security → Accessibility",
                      "⚠️ Add Vantorel.app and enable it",
                      "🔧 Registering global event monitor...", "❌ Failed to register global event monitor!",
                      "🔧 Registering local event monitor...", "✅ Local event monitor registered successfully",
                      "✅ Global and local hotkeys registered (Shift + Ctrl + Option + Cmd + key)"], 3)
    world.screen.activate(window)
    for _ in range(3):
        world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"] * 3)
    wait.stays(lambda: len(world.server.hotkeys()) == 3, 0.7, "each press counts once")
    wait.same(shell.count(INSIDE.format(1)), 3, "local lines")
    OtherWindow(world.screen)
    world.hands.hotkey("d")
    wait.stays(lambda: len(world.server.hotkeys()) == 3, 0.7, "keys of other programs are not seen")


def test_prevented_and_typed_keys_without_the_record_extension(world):
    world.desktop()
    shell, window = connected(world, html(
        "addEventListener('keydown', e => { if (e.code === 'KeyD') e.preventDefault(); }, true)", socket=True),
        environment=world.without_record())
    world.screen.activate(window)
    mark = shell.mark()
    for key in ("s", "d", "left", "s"):
        world.hands.press(key)
    wait.until(lambda: shell.count(re.compile("^🏠"), mark) >= 4, 3, "four local events")
    wait.stays(lambda: shell.count(re.compile("^🏠"), mark) == 4, 0.7, "one event for each press")
