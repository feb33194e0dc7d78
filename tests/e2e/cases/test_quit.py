# Vantorel. MIT licence, see LICENSE.
# The ways to quit: each runs the shutdown sequence once, with one termination request, and stores the frame.

import os
import re
import signal
import time

from harness import children, wait
from harness.page import html

STOPPING = "🛑 Stopping Go server..."


def running(world):
    """A shell with its page and socket, and a server whose record tells of each signal."""
    return world.launch_loaded(html(socket=True))


def expect_clean_end(world, shell, timeout=5):
    """Exit status 0, the line, exactly one request at the server, no more processes, the frame stored."""
    wait.same(shell.wait_exit(timeout), 0, "exit status")
    wait.same(shell.count(STOPPING), 1, f"lines {STOPPING!r}")
    world.expect_no_server(3)
    wait.same(world.server.signals(), ["TERM"], "signals at the server")
    assert world.home.saved_size() is not None, "the frame is stored"
    rest = shell.texts(shell.find(STOPPING).index + 1)
    assert set(rest) <= {"✅ Go server stopped", "🛑 Server process terminated with exit code: 0"}, f"last lines {rest}"
    assert shell.count("✅ Go server stopped") <= 1


def test_title_bar(world):
    shell, window = running(world)
    world.screen.close_window(window)
    expect_clean_end(world, shell)


def test_delete_message_without_a_window_manager(world):
    world.desktop(manager=None)
    shell, window = running(world)
    world.screen.delete_window(window)
    expect_clean_end(world, shell)


def by_signal(world, number):
    """Quits by a signal to the shell's process."""
    shell, _ = running(world)
    shell.signal(number)
    expect_clean_end(world, shell)


def test_sigint(world):
    by_signal(world, signal.SIGINT)


def test_sigterm(world):
    by_signal(world, signal.SIGTERM)


def test_sighup(world):
    by_signal(world, signal.SIGHUP)


def test_ctrl_q(world):
    shell, _ = running(world)
    world.focused(shell)
    world.hands.press("q", "ctrl")
    expect_clean_end(world, shell)


def test_ctrl_c_in_a_terminal(world):
    shell, _ = running(world)
    os.killpg(shell.pid, signal.SIGINT)
    expect_clean_end(world, shell)


def test_several_requests_at_once(world):
    shell, window = running(world)
    world.screen.close_window(window)
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGTERM):
        try:
            shell.signal(number)
        except ProcessLookupError:
            pass
    expect_clean_end(world, shell)


def test_child_that_ignores_the_request(world):
    world.server.set(signals={"TERM": {"ignore": True}})
    shell, _ = running(world)
    begun = time.monotonic()
    shell.signal(signal.SIGTERM)
    wait.same(shell.wait_exit(4), 0, "exit status")
    assert shell.find(STOPPING) and not shell.find("✅ Go server stopped")
    wait.until(lambda: not world.server_processes(), 14, "the server is cleaned up")
    took = time.monotonic() - begun
    assert took >= 9, f"the server had only {took:.1f} s to end by itself"
    wait.same(world.server.signals(), ["TERM"], "signals at the server")


def test_child_that_takes_two_seconds(world):
    world.server.set(signals={"TERM": {"exit": 0, "delay": 2}})
    shell, _ = running(world)
    shell.signal(signal.SIGTERM)
    wait.same(shell.wait_exit(4), 0, "exit status")
    world.expect_no_server(4)
    wait.same(world.server.signals(), ["TERM"], "signals at the server")
    wait.same(world.server.events("exit")[-1].get("code"), 0, "the server ended by itself, with")


def test_after_the_server_has_exited(world):
    world.bundle.use_server("#!/bin/sh\nexit 0\n")
    shell = world.launch()
    shell.wait_line("🛑 Server process terminated with exit code: 0")
    shell.wait_launched()
    mark = shell.mark()
    shell.quit()
    wait.same(shell.texts(mark), [], "log lines of the quit")
    assert world.home.saved_size() is not None, "the frame is stored"


def test_ends_the_engine(world):
    shell, _ = running(world)
    helpers = shell.helpers("WebKitWebProcess") + shell.helpers("WebKitNetworkProcess")
    assert len(helpers) >= 2
    shell.quit()
    wait.until(lambda: not any(children.alive(pid) for pid in helpers), 3, "the engine's processes end")


def test_is_quick(world):
    shell, _ = running(world)
    begun = time.monotonic()
    shell.quit()
    assert time.monotonic() - begun < 2


def test_page_keeps_nothing_running(world):
    shell, window = world.launch_loaded(html("addEventListener('beforeunload', e => { e.preventDefault();"
                                             "e.returnValue = 'stay'; });", "<button>b</button>"))
    world.focused(shell)
    x, y, width, height = world.screen.geometry(window)
    world.hands.click(x + width / 2, y + height / 2)
    world.screen.close_window(window)
    wait.same(shell.wait_exit(5), 0, "exit status")


def test_minimised(world):
    shell, window = running(world)
    world.focused(shell)
    world.hands.press("m", "ctrl")
    wait.until(lambda: world.screen.iconified(window), 5, "the window is minimised")
    shell.signal(signal.SIGTERM)
    expect_clean_end(world, shell)
    wait.same(world.home.saved_size()[0], 900, "stored width")


def test_stored_text(world):
    shell, _ = running(world)
    shell.quit()
    text = world.home.read_defaults()["windowFrame"]
    assert re.fullmatch(r"\{\{-?\d+, -?\d+\}, \{900, \d+\}\}", text), text
