# Vantorel. MIT licence, see LICENSE.
# The two window modes: applied, stored, restored at the next launch.

from harness import wait
from harness.other import OtherWindow
from harness.page import html

ABOVE = "_NET_WM_STATE_ABOVE"
IDLE_SERVER = "#!/bin/sh\nexec sleep 1000\n"


def idle(world):
    """A launched shell with an idle server, its window active."""
    world.bundle.use_server(IDLE_SERVER)
    shell = world.launch()
    shell.wait_launched()
    return shell, world.focused(shell)


def above(world, window, wanted):
    """Waits until the window manager says so."""
    wait.until(lambda: (ABOVE in world.screen.states(window)) == wanted, 5,
               lambda: f"kept above: {wanted}; states {world.screen.states(window)}")


def stored(world, key, value):
    """Waits until the store holds the value."""
    wait.until(lambda: world.home.read_defaults().get(key) == value, 5,
               lambda: f"{key}={value}; the store is {world.home.read_defaults()}")


def test_always_on_top(world):
    shell, window = idle(world)
    above(world, window, False)
    assert "alwaysOnTop" not in world.home.read_defaults()
    mark = shell.mark()
    world.hands.press("t", "ctrl")
    above(world, window, True)
    stored(world, "alwaysOnTop", "true")
    world.hands.press("t", "ctrl")
    above(world, window, False)
    stored(world, "alwaysOnTop", "false")
    assert not [line for line in shell.texts(mark) if line.startswith(("✅", "🖼"))], "toggles print nothing"


def test_always_on_top_is_on_top(world):
    _, window = idle(world)
    world.hands.press("t", "ctrl")
    above(world, window, True)
    other = OtherWindow(world.screen)
    wait.until(lambda: world.screen.active() == other.window.id, 3, "the other window is active")
    order = [number for number in world.screen.stacking() if number in (window.id, other.window.id)]
    wait.same(order, [other.window.id, window.id], "stacking from below")


def on_top_over_a_relaunch(world, manager):
    """The mode comes back at the next launch."""
    world.desktop(manager)
    shell, window = idle(world)
    world.hands.press("t", "ctrl")
    above(world, window, True)
    shell.quit()
    shell, window = idle(world)
    above(world, window, True)
    wait.stays(lambda: ABOVE in world.screen.states(window), 1, "stays above")
    wait.same(world.home.read_defaults()["alwaysOnTop"], "true", "stored value")
    world.hands.press("t", "ctrl")
    above(world, window, False)
    shell.quit()
    _, window = idle(world)
    wait.stays(lambda: ABOVE not in world.screen.states(window), 1, "not above any more")


def test_on_top_over_a_relaunch(world):
    on_top_over_a_relaunch(world, "xfwm4")


def test_on_top_over_a_relaunch_under_openbox(world):
    on_top_over_a_relaunch(world, "openbox")


def test_on_top_survives_minimising(world):
    _, window = idle(world)
    world.hands.press("t", "ctrl")
    above(world, window, True)
    world.hands.press("m", "ctrl")
    wait.until(lambda: world.screen.iconified(window), 5, "minimised")
    world.screen.activate(window)
    above(world, window, True)


def test_hide_in_screenshots(world):
    shell, window = idle(world)
    assert shell.find("🖼️ Screenshot hiding: enabled (.none)")
    world.hands.press("h", "ctrl")
    stored(world, "hideInScreenshots", "false")
    assert world.screen.viewable(window) and not world.screen.iconified(window), "the window itself does not hide"
    shell.quit()
    shell, _ = idle(world)
    assert shell.find("🖼️ Screenshot hiding: disabled (.readOnly)")
    world.hands.press("h", "ctrl")
    stored(world, "hideInScreenshots", "true")
    shell.quit()
    shell, _ = idle(world)
    assert shell.find("🖼️ Screenshot hiding: enabled (.none)")


def test_stored_values_are_read_as_the_store_reads_them(world):
    world.bundle.use_server(IDLE_SERVER)
    for text, wanted in (("true", True), ("false", False), ("1", True), ("0", False), ("YES", True), ("NO", False)):
        world.home.write_defaults(alwaysOnTop=text, hideInScreenshots=text)
        shell, window = idle(world)
        above(world, window, wanted)
        assert shell.find("🖼️ Screenshot hiding: " + ("enabled (.none)" if wanted else "disabled (.readOnly)")), text
        shell.quit()


def test_toggles_keep_the_other_values(world):
    world.home.write_defaults(windowFrame="{{0, 0}, {700, 600}}", hasRequestedPermissions=True)
    shell, window = idle(world)
    world.hands.press("t", "ctrl")
    above(world, window, True)
    stored(world, "alwaysOnTop", "true")
    values = world.home.read_defaults()
    wait.same((values["windowFrame"], values["hasRequestedPermissions"]), ("{{0, 0}, {700, 600}}", "true"),
              "values beside it")
    assert shell.running()


def test_modes_reach_neither_page_nor_server(world):
    shell, _ = world.launch_loaded(html(socket=True))
    world.focused(shell)
    world.server.wait_socket()
    world.hands.press("t", "ctrl")
    world.hands.press("h", "ctrl")
    stored(world, "hideInScreenshots", "false")
    wait.same(world.server.frames(), [], "frames at the server")
