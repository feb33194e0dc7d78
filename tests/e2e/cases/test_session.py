# Vantorel. MIT licence, see LICENSE.
# Odd sessions: a second start, no bus, no window manager, proxies, standard output and defaults that don't work.

import os
import re
import subprocess

from harness import latency, wait
from harness.other import OtherWindow
from harness.page import html
from harness.status import GREEN_STATUS

IDLE_SERVER = "#!/bin/sh\nexec sleep 1000\n"


def test_second_start_raises_the_first(world):
    shell, window = world.launch_loaded(html())
    OtherWindow(world.screen)
    assert world.screen.active() != window.id
    mark = shell.mark()
    second = world.launch()
    wait.same(second.wait_exit(5), 0, "exit status of the second start")
    wait.same(second.texts(), [], "log of the second start")
    wait.until(lambda: world.screen.active() == window.id, 5, "the first window is in front")
    wait.same(len(world.server.events("start")), 1, "servers started")
    wait.same([line for line in shell.texts(mark) if "event" not in line], [], "log of the first start")


def test_second_start_brings_a_minimised_window_back(world):
    shell, window = world.launch_loaded(html())
    world.focused(shell)
    world.hands.press("m", "ctrl")
    wait.until(lambda: world.screen.iconified(window), 5, "the window is minimised")
    wait.same(world.launch().wait_exit(5), 0, "exit status of the second start")
    wait.until(lambda: world.screen.viewable(window) and world.screen.active() == window.id, 5, "the window is back")


def test_start_after_a_quit(world):
    for _ in range(2):
        shell, _ = world.launch_loaded(html())
        shell.quit()
    wait.same(len(world.server.events("start")), 2, "servers started")


def works(world, shell):
    """The page is loaded and the status green, by what the server and the log tell."""
    shell.wait_loaded()
    world.server.wait_requests("probe", 2)
    assert world.screen.ping(world.window(shell)) < 1


def test_no_session_bus(world):
    world.server.page(html())
    shell = world.launch(unset=["DBUS_SESSION_BUS_ADDRESS"], environment={"XDG_RUNTIME_DIR": world.empty_folder("r")})
    world.allowed_complaints += ["accessibility bus", "session bus", "dbus", "D-Bus"]
    works(world, shell)
    world.wait_color(world.window(shell), "green")
    shell.quit()


def test_dead_session_bus(world):
    world.server.page(html())
    shell = world.launch(environment={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/no/such/bus"})
    world.allowed_complaints += ["accessibility bus", "session bus", "dbus", "D-Bus", "Failed to register"]
    works(world, shell)
    shell.quit()


def test_no_window_manager(world):
    world.desktop(manager=None)
    world.server.page(html())
    shell = world.launch()
    works(world, shell)
    world.wait_status(shell, GREEN_STATUS.format(world.port))


def test_proxy(world):
    world.server.page(html("report('loaded', 1)"))
    proxy = "http://127.0.0.1:9/"
    shell = world.launch(environment={"http_proxy": proxy, "HTTP_PROXY": proxy, "all_proxy": proxy, "no_proxy": ""})
    works(world, shell)
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    world.server.wait_report("loaded")


def through_sh(world, line, **options):
    """Starts the shell by a line of sh in which $0 is the program."""
    return world.launch(program="/bin/sh", arguments=["-c", line, world.bundle.program], **options)


def test_output_closed(world):
    world.server.page(html("console.log('hello'); report('loaded', 1)", socket=True))
    shell = through_sh(world, 'exec "$0" >&-')
    world.server.wait_report("loaded")
    wait.until(lambda: world.server.requests("probe"), 5, "a probe")
    assert world.screen.ping(world.window(shell)) < 1
    start = world.server.events("start")[0]
    assert start["fds"]["1"].startswith("pipe:"), "the server still has its pipe"
    assert shell.running()


def test_all_three_streams_closed(world):
    world.server.page(html("console.log('hello'); report('loaded', 1)", socket=True))
    shell = through_sh(world, 'exec "$0" <&- >&- 2>&-')
    world.server.wait_report("loaded")
    world.server.wait_socket()
    world.focused(shell)
    world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"])
    assert shell.running()


def test_reader_goes_away(world):
    world.server.set(timeline=[{"repeat": {"text": "line\n", "interval": 0.05, "count": 0}}])
    world.server.page(html("setInterval(() => console.log('tick'), 20); report('loaded', 1)", socket=True))
    shell = through_sh(world, '"$0" | head -1', stdout=subprocess.DEVNULL)
    world.server.wait_report("loaded")
    world.server.wait_requests("probe", 2)
    pid = world.program_pid()
    wait.stays(lambda: world.program_pid() == pid, 1.5, "the shell goes on")
    os.kill(pid, 15)
    wait.until(lambda: world.program_pid() is None, 8, "the shell quits")
    wait.same(world.server.signals(), ["TERM"], "signals at the server")
    shell.wait_exit(5)


def test_reader_goes_away_later(world):
    world.server.page(html("setInterval(() => console.log('tick'), 5)", socket=True))
    shell, window = world.launch_loaded()
    world.server.wait_socket()
    shell.close_log()
    pings = latency.Watch(world, shell)
    pings.during(1.5)
    pings.expect_below(0.1)
    world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"])
    assert shell.running()


def test_stalled_pipe(world):
    read_end, write_end = os.pipe()
    world.server.set(timeline=[{"at": 4, "flood_mb": 20}])
    world.server.page(html("for (let i = 0; i < 5000; i++) console.log('x'.repeat(200)); report('loaded', 1)",
                           socket=True))
    shell = world.launch(stdout=write_end)
    os.close(write_end)
    world.server.wait_report("loaded")
    world.window(shell)
    pings = latency.Watch(world, shell)
    pings.during(3)
    pings.expect_below(0.1)
    world.focused(shell)
    world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"])
    shell.quit(8)
    os.close(read_end)


def test_output_on_a_full_disk(world):
    world.server.page(html("console.log('hello'); report('loaded', 1)"))
    with open("/dev/full", "wb") as full:
        shell = world.launch(stdout=full)
    world.server.wait_report("loaded")
    wait.until(lambda: world.server.requests("probe"), 5, "a probe")
    assert world.screen.ping(world.window(shell)) < 1


def as_when_absent(world):
    """The shell starts as with an empty store, its modes can be switched, and it quits."""
    shell, window = world.launch_loaded(html())
    assert shell.find("🖼️ Screenshot hiding: enabled (.none)")
    assert shell.find("🔐 First launch - requesting system permissions...")
    wait.same(world.screen.geometry(window)[2], 900, "width")
    world.focused(shell)
    world.hands.press("t", "ctrl")
    wait.until(lambda: "_NET_WM_STATE_ABOVE" in world.screen.states(window), 5, "the mode is applied")
    shell.quit()


def test_defaults_damaged(world):
    for content in (b"\xff\xfe\x00garbage", b"[defaults\nalwaysOnTop=true", b"no group=1\n", b"\0" * 5000,
                    b"[defaults]\nalwaysOnTop=maybe\nhideInScreenshots=\nwindowFrame=\xff\n"):
        world.home.write_defaults_bytes(content)
        world.bundle.use_server(IDLE_SERVER)
        shell = world.launch()
        shell.wait_launched()
        window = world.window(shell)
        assert shell.find(re.compile("^🖼️ Screenshot hiding: "))
        assert world.screen.ping(window) < 1
        shell.quit()
        assert world.home.saved_size() is not None, f"the frame is stored over {content!r}"


def test_defaults_folder_is_a_file(world):
    with open(os.path.join(world.home.config, "Vantorel"), "wb"):
        pass
    as_when_absent(world)


def test_defaults_file_is_a_folder(world):
    os.makedirs(world.home.defaults)
    as_when_absent(world)


def test_defaults_read_only(world):
    world.home.write_defaults(alwaysOnTop=False)
    with world.mounted(os.path.dirname(world.home.defaults), "size=64k", read_only=True):
        as_when_absent(world)


def test_defaults_on_a_full_disk(world):
    folder = os.path.dirname(world.home.defaults)
    os.makedirs(folder, exist_ok=True)
    with world.mounted(folder, "size=4k", fill=True):
        as_when_absent(world)


def test_full_disk_keeps_the_old_store(world):
    folder = os.path.dirname(world.home.defaults)
    os.makedirs(folder, exist_ok=True)
    with world.mounted(folder, "size=8k"):
        world.home.write_defaults(hideInScreenshots=False, hasRequestedPermissions=True)
        with open(os.path.join(folder, "filler"), "wb", buffering=0) as filler:
            try:
                while filler.write(b"x" * 512):
                    pass
            except OSError:
                pass
        world.bundle.use_server(IDLE_SERVER)
        shell = world.launch()
        shell.wait_launched()
        assert shell.find("🖼️ Screenshot hiding: disabled (.readOnly)")
        shell.quit()
        wait.same(world.home.read_defaults().get("hideInScreenshots"), "false", "value on the disk")
        wait.same(world.home.read_defaults().get("hasRequestedPermissions"), "true", "value on the disk")


def test_no_home_folder(world):
    world.server.page(html("report('loaded', 1)"))
    shell = world.launch(environment={"HOME": "/proc/no/such/home"},
                         unset=["XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"])
    shell.wait_loaded()
    world.server.wait_report("loaded")
    shell.quit()


def test_home_that_is_unset(world):
    world.bundle.use_server(IDLE_SERVER)
    shell = world.launch(unset=["HOME", "USER", "LOGNAME"])
    shell.wait_launched()
    shell.quit()
    assert world.home.saved_size() is not None


def test_arguments_are_ignored(world):
    world.bundle.use_server(IDLE_SERVER)
    shell = world.launch(arguments=["--help", "-x", "http://example.org/", "--gapplication-service"])
    shell.wait_launched()
    world.window(shell)


def test_other_locale(world):
    world.bundle.use_server(IDLE_SERVER)
    shell = world.launch(environment={"LANG": "C", "LC_ALL": "C"})
    shell.wait_launched()
    shell.quit()
    assert world.home.saved_size() is not None
