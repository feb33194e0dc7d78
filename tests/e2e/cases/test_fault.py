# Vantorel. MIT licence, see LICENSE.
# Staged faults under the real application: killed shells, stopped servers, dying buses and displays.
# label: fault

import os
import random
import re
import resource
import signal
import time

from harness import children, latency, wait
from harness.other import OtherWindow
from harness.page import colored, html
from harness.status import GREEN_STATUS, ORANGE_STATUS

MOMENTS = (0.03, 0.15, 0.3, 0.5, 0.8, 1.3, 2.1, 3.1, 3.5, 4.2)


def killed(world, number):
    """The shell is killed at ten moments from launch to run: no server is ever left."""
    world.server.page(html(socket=True))
    for moment in MOMENTS:
        shell = world.launch()
        begun = time.monotonic()
        while time.monotonic() < begun + moment + random.uniform(0, 0.05):
            time.sleep(0.005)
        shell.signal(number)
        wait.same(shell.wait_exit(5), -number, "exit status")
        world.expect_no_server(6)
        world.expect_no_helpers()
    sent = len(world.server.signals())
    starts = len(world.server.events("start"))
    assert sent <= starts, f"{sent} termination requests for {starts} servers"


def test_killed_by_sigkill(world):
    killed(world, signal.SIGKILL)


def test_killed_by_sigsegv(world):
    killed(world, signal.SIGSEGV)


def test_killed_by_sigabrt(world):
    killed(world, signal.SIGABRT)


def test_killed_with_a_server_that_ignores_the_request(world):
    world.server.set(signals={"TERM": {"ignore": True}})
    shell, _ = world.launch_loaded(html())
    shell.signal(signal.SIGKILL)
    shell.wait_exit()
    begun = time.monotonic()
    wait.until(lambda: world.server.signals() == ["TERM"], 3, "the server is asked to end")
    world.expect_no_server(14)
    assert time.monotonic() - begun >= 9, "the server had its time"


def test_killed_while_an_alert_is_up(world):
    shell, _ = world.launch_loaded(html("setTimeout(() => alert('x'), 300)"))
    world.dialog(shell)
    shell.kill()
    world.expect_no_server(6)


def test_killed_under_a_flood(world):
    world.server.set(timeline=[{"at": 1, "flood_mb": 2000}])
    count = [0]
    shell = world.launch(sink=lambda chunk: count.__setitem__(0, count[0] + len(chunk)))
    wait.until(lambda: count[0] > 30_000_000, 20, "the flood runs")
    shell.kill()
    world.expect_no_server(6)


def test_server_prints_without_line_ends(world):
    """Half a megabyte a second for 25 s with not one line end in it: every byte is relayed, memory stays, the window
    answers, and page, hotkeys and probes go on."""
    block, count = 500, 25000
    world.server.set(timeline=[{"at": 1, "repeat": {"text": "x" * block, "interval": 0.001, "count": count}},
                               {"print": "the end"}])
    shell, window = world.launch_loaded(html(socket=True))
    world.server.wait_socket()
    OtherWindow(world.screen)
    begun, before = time.monotonic(), children.memory(shell.pid, "Pss_Anon")
    most = [before]
    pings = latency.Watch(world, shell)

    def ended():
        most.append(children.memory(shell.pid, "Pss_Anon"))
        return shell.find(re.compile("the end$"))

    for number in range(1, 6):
        pings.during(2)
        ended()
        world.hands.hotkey("s")
        world.server.wait_hotkeys(["screenshot_active"] * number)
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    pings.until(ended, 90, 0.2)
    assert time.monotonic() - begun >= 20, "the flood was over too soon"
    relayed = "".join(line for line in shell.texts() if line.startswith("🤖 Server: ")).replace("🤖 Server: ", "")
    wait.same(len(relayed), block * count + len("the end"), "relayed characters")
    assert set(relayed[:-len("the end")]) == {"x"}
    pings.expect_below(0.1)
    growth = (max(most) - before) / 2**20
    assert growth < 6, f"memory grew by {growth:.1f} MB while {block * count / 2**20:.0f} MB came"
    assert world.screen.ping(window) < 1


def test_guard_touches_nobody_else(world):
    """A normal quit and a kill: processes of the same session that are not the server live on."""
    bystander = world.children.start(["sleep", "1000"])
    shell, _ = world.launch_loaded(html())
    shell.quit()
    shell, _ = world.launch_loaded()
    shell.kill()
    world.expect_no_server(6)
    wait.stays(lambda: children.alive(bystander.pid), 1, "the bystander lives")


def test_shell_without_its_guard(world):
    guard = os.path.join(os.path.dirname(world.bundle.program), "vantorel-guard")
    if os.path.exists(guard):
        os.unlink(guard)
    shell, _ = world.launch_loaded(html())
    shell.quit()
    wait.same(world.server.signals(), ["TERM"], "signals at the server")


def test_server_stopped(world):
    shell, window = world.launch_loaded(html())
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    server = shell.server_pid()
    os.kill(server, signal.SIGSTOP)
    world.wait_status(shell, ORANGE_STATUS, 5)
    assert world.screen.ping(window) < 0.5
    os.kill(server, signal.SIGCONT)
    world.wait_status(shell, GREEN_STATUS.format(world.port), 5)
    os.kill(server, signal.SIGSTOP)
    begun = time.monotonic()
    shell.quit(5)
    assert time.monotonic() - begun < 3, "a stopped server doesn't hold the quit up"
    world.expect_no_server(14)


def test_server_killed(world):
    shell, _ = world.launch_loaded(html())
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    statuses = world.watch_statuses(shell)
    os.kill(shell.server_pid(), signal.SIGKILL)
    shell.wait_line("🛑 Server process terminated with exit code: 9")
    world.wait_status(shell, ORANGE_STATUS, 5)
    assert "❌ Server exited with code 9" in statuses()
    mark = shell.mark()
    shell.quit()
    wait.same(shell.texts(mark), [], "log lines of the quit")


def test_grandchildren_end_with_the_server(world):
    world.server.set(timeline=[{"spawn": {"argv": ["/bin/sleep", "1000"], "count": 3}}])
    shell, _ = world.launch_loaded(html())
    world.server.wait_event("spawned", 3)
    pids = [event["pid"] for event in world.server.events("spawned")]
    shell.quit()
    wait.until(lambda: not any(children.alive(pid) for pid in pids), 14, "the grandchildren are gone")


def test_grandchildren_end_after_a_kill(world):
    world.server.set(timeline=[{"spawn": {"argv": ["/bin/sleep", "1000"], "count": 3}}])
    shell, _ = world.launch_loaded(html())
    world.server.wait_event("spawned", 3)
    pids = [event["pid"] for event in world.server.events("spawned")]
    shell.kill()
    wait.until(lambda: not any(children.alive(pid) for pid in pids), 14, "the grandchildren are gone")


def test_server_ends_but_grandchildren_hold_the_pipe(world):
    world.server.set(timeline=[{"spawn": {"argv": ["/bin/sleep", "1000"]}}, {"wait": 1, "exit": 5}])
    shell = world.launch()
    shell.wait_line("🛑 Server process terminated with exit code: 5")
    world.wait_status(shell, ORANGE_STATUS, 6)
    wait.settled(lambda: children.cpu_seconds(shell.pid), 0.6, 10)
    before = children.cpu_seconds(shell.pid)
    wait.stays(shell.running, 2, "the shell runs", 0.5)
    used = children.cpu_seconds(shell.pid) - before
    assert used <= 0.5, f"a busy loop: {used:.2f} s of processor time in 2 s"
    shell.quit()
    pids = [event["pid"] for event in world.server.events("spawned")]
    wait.until(lambda: not any(children.alive(pid) for pid in pids), 14, "the grandchild is gone")


def test_display_dies(world):
    shell, _ = world.launch_loaded(html())
    world.display_server.kill()
    world.display_server.wait()
    shell.wait_exit(8)
    world.expect_no_server(6)
    world.expect_no_helpers()
    world.forget_display()
    world.allowed_complaints += [".*"]


def test_session_bus_dies(world):
    shell, window = world.launch_loaded(html(socket=True))
    world.server.wait_socket()
    world.bus.kill()
    world.bus.wait()
    probes = len(world.server.requests("probe"))
    wait.stays(shell.running, 2, "the shell goes on without the bus")
    world.server.wait_requests("probe", probes + 1, 4)
    assert world.screen.ping(window) < 1
    OtherWindow(world.screen)
    world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"])
    shell.quit()
    wait.same(world.server.signals(), ["TERM"], "signals at the server")
    world.allowed_complaints += ["bus", "dbus", "D-Bus", "connection is closed"]


def test_window_manager_dies_and_another_comes(world):
    shell, window = world.launch_loaded(html())
    world.focused(shell)
    world.hands.press("t", "ctrl")
    wait.until(lambda: world.home.read_defaults().get("alwaysOnTop") == "true", 5, "the mode is stored")
    world.children.stop(world.manager)
    wait.stays(shell.running, 1, "the shell goes on")
    world.start_manager("openbox")
    assert world.screen.ping(window) < 1
    world.screen.activate(window)
    world.hands.press("t", "ctrl")
    wait.until(lambda: world.home.read_defaults().get("alwaysOnTop") == "false", 5, "the mode is stored")
    wait.until(lambda: "_NET_WM_STATE_ABOVE" not in world.screen.states(window), 5, "the mode is applied")


def test_thousand_quick_toggles(world):
    shell, window = world.launch_loaded(html())
    world.focused(shell)
    world.hands.down("ctrl")
    for _ in range(501):
        world.hands.press("t")
        world.hands.press("h")
    world.hands.up("ctrl")
    wait.until(lambda: world.home.read_defaults().get("alwaysOnTop") == "true"
               and world.home.read_defaults().get("hideInScreenshots") == "false", 20,
               lambda: f"an odd number of toggles; the store is {world.home.read_defaults()}")
    states = wait.settled(lambda: world.screen.states(window), 1.5, 20)  # the window manager has its own pace
    assert "_NET_WM_STATE_ABOVE" in states, f"the window is above in the end: {states}"
    assert world.screen.ping(window) < 1


def test_thousand_quick_zooms(world):
    shell, window = world.launch_loaded(html(
        "let last = 0; setInterval(() => { const w = visualViewport.width; if (w !== last) {"
        "last = w; report('width', w); } }, 50);"))
    world.focused(shell)
    world.hands.down("ctrl")
    for _ in range(500):
        world.hands.press("equal")
        world.hands.press("minus")
    world.hands.press("0")
    world.hands.up("ctrl")
    wait.until(lambda: abs(world.server.reports("width")[-1] - 900) < 1, 15, "actual size in the end")
    wait.until(lambda: world.screen.ping(window) < 0.5, 10, "the window answers")
    assert shell.running()


def test_thousand_quick_reloads(world):
    shell, window = world.launch_loaded(colored("#224466"))
    world.focused(shell)
    world.hands.down("ctrl")
    for _ in range(1000):
        world.hands.press("r")
    world.hands.up("ctrl")
    wait.settled(lambda: len(world.server.requests("page")), 2, 90)
    loads = shell.count("✅ Page loaded successfully")
    world.hands.press("r", "ctrl")
    wait.until(lambda: shell.count("✅ Page loaded successfully") > loads, 8, "one more load")
    world.wait_page_color(window, (0x22, 0x44, 0x66))
    assert world.screen.ping(window) < 1


def test_quit_in_the_first_moments(world):
    for moment in (0.05, 0.12, 0.25, 0.4, 0.6, 0.9):
        shell = world.launch()
        time.sleep(moment)
        shell.signal(signal.SIGTERM)
        status = shell.wait_exit(6)
        # Before the program has set itself up, the signal ends it the system's own way.
        assert status == 0 or status == -signal.SIGTERM and not shell.find("🚀 Calling run() on process..."), status
        world.expect_no_server(6)
    assert len(world.server.signals()) <= len(world.server.events("start"))


def test_window_closed_as_soon_as_it_shows(world):
    shell = world.launch()
    window = world.window(shell)
    world.screen.close_window(window)
    wait.same(shell.wait_exit(6), 0, "exit status")
    world.expect_no_server(3)


def test_closed_during_the_delay(world):
    shell = world.launch()
    world.server.wait_event("listening", 2)
    world.screen.close_window(world.window(shell))
    wait.same(shell.wait_exit(4), 0, "exit status")
    assert not shell.find(re.compile("^🌐 Loading"))
    wait.same(world.server.signals(), ["TERM"], "signals at the server")


def test_closed_during_a_page_load(world):
    world.server.page({"hang": True})
    shell = world.launch()
    world.server.wait_requests("page")
    world.screen.close_window(world.window(shell))
    wait.same(shell.wait_exit(4), 0, "exit status")
    assert not shell.find(re.compile("failed|loaded successfully"))


def test_closed_while_a_probe_hangs(world):
    world.server.probes({"hang": True})
    shell = world.launch()
    world.server.wait_requests("probe")
    world.screen.close_window(world.window(shell))
    wait.same(shell.wait_exit(4), 0, "exit status")


def test_descriptors_exhausted(world):
    shell, window = world.launch_loaded(html(socket=True))
    world.server.wait_socket()
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    before = resource.prlimit(shell.pid, resource.RLIMIT_NOFILE)
    resource.prlimit(shell.pid, resource.RLIMIT_NOFILE, (max(shell.descriptors()) + 1, before[1]))
    wait.stays(lambda: shell.running() and world.screen.ping(window) < 1, 5, "the shell goes on")
    OtherWindow(world.screen)
    world.hands.hotkey("s")
    world.server.wait_hotkeys(["screenshot_active"])
    resource.prlimit(shell.pid, resource.RLIMIT_NOFILE, before)
    world.wait_status(shell, GREEN_STATUS.format(world.port), 6)
    world.allowed_complaints += ["Too many open files"]


def test_descriptors_do_not_pile_up(world):
    shell, _ = world.launch_loaded(html())
    world.focused(shell)
    world.server.wait_requests("probe", 2)

    def reload(times):
        for _ in range(times):
            loads = shell.count("✅ Page loaded successfully")
            world.hands.press("r", "ctrl")
            wait.until(lambda: shell.count("✅ Page loaded successfully") > loads, 5, "a load")

    def count_now():
        # The engine's memory watch reads the system's files on a thread of its own, again and again.
        return len([name for name in shell.descriptors().values() if not name.startswith(("/proc/", "/sys/"))])

    reload(8)  # the engine opens some of its descriptors late
    count = count_now()
    threads = shell.threads()
    reload(30)
    world.server.wait_requests("probe", len(world.server.requests("probe")) + 2)
    wait.until(lambda: count_now() <= count + 4, 5,
               lambda: f"{count} descriptors, now {shell.descriptors()}")
    assert shell.threads() <= threads + 4, f"{threads} threads, now {shell.threads()}"


def test_bundle_is_deleted_while_running(world):
    shell, _ = world.launch_loaded(html())
    os.unlink(world.bundle.server)
    os.unlink(world.bundle.program)
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    shell.quit()
    world.expect_no_server(3)


def test_hundred_windows_of_another_program(world):
    shell, window = world.launch_loaded(html())
    for _ in range(100):
        OtherWindow(world.screen).close()
    assert world.screen.ping(window) < 1
    assert shell.running()
