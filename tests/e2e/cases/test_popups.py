# Vantorel. MIT licence, see LICENSE.
# Requests for new windows: handed to the default browser, here a private one that writes down what it is given.

import json
import os
import re

from harness import wait
from harness.page import html

OPENING = "🌐 Opening URL in browser: "


def with_browser(world, script, body="", schemes=("http", "https")):
    """A page in a session whose default browser writes its arguments to a file; returns shell, window, file reader."""
    folder = os.path.join(world.home.data, "applications")
    os.makedirs(folder, exist_ok=True)
    program, seen = os.path.join(world.root, "browser"), os.path.join(world.root, "browser.seen")
    with open(program, "w", encoding="ascii") as file:
        file.write(f'#!/bin/sh\nfor each in "$@"; do printf "%s\\n" "$each" >> {seen}; done\n')
    os.chmod(program, 0o755)
    types = ";".join(f"x-scheme-handler/{scheme}" for scheme in schemes)
    with open(os.path.join(folder, "private-browser.desktop"), "w", encoding="ascii") as file:
        file.write(f"[Desktop Entry]\nType=Application\nName=Browser\nExec={program} %u\nMimeType={types};\n")
    with open(os.path.join(world.home.config, "mimeapps.list"), "w", encoding="ascii") as file:
        file.write("[Default Applications]\n")
        file.writelines(f"x-scheme-handler/{scheme}=private-browser.desktop\n" for scheme in schemes)
    shell, window = world.launch_loaded(html(script, body))

    def opened():
        try:
            with open(seen, encoding="utf-8") as file:
                return file.read().splitlines()
        except FileNotFoundError:
            return []
    return shell, window, opened


def expect_opened(world, shell, opened, address):
    """The browser got the address once, one line says so, and the page stays."""
    shell.wait_line(OPENING + address)
    wait.until(opened, 5, "the browser is started")
    wait.stays(lambda: opened() == [address], 1, lambda: f"opened once: {opened()}")
    wait.same(shell.count(re.compile(OPENING)), 1, "log lines")
    wait.same(len(world.server.requests("page")), 1, "page requests")
    wait.same(shell.count("✅ Page loaded successfully"), 1, "loads")


def test_window_open_without_a_gesture(world):
    shell, _, opened = with_browser(world, "report('got', String(window.open('http://example.org/a?b=c&d=ä#e')))")
    expect_opened(world, shell, opened, "http://example.org/a?b=c&d=%C3%A4#e")
    wait.same(world.server.wait_report("got"), "null", "what the page got")


def test_window_open_relative(world):
    shell, _, opened = with_browser(world, "window.open('/pop')")
    expect_opened(world, shell, opened, f"http://localhost:{world.port}/pop")


def test_link_with_a_new_window_target(world):
    shell, window, opened = with_browser(
        world, "", "<a href='https://example.org/link' target=_blank style='display:block;height:300px'>x</a>")
    world.screen.activate(window)
    x, y, width, _ = world.screen.geometry(window)
    world.hands.click(x + width / 2, y + 200)
    expect_opened(world, shell, opened, "https://example.org/link")


def test_link_with_a_name_and_no_opener(world):
    shell, window, opened = with_browser(
        world, "", "<a href='https://example.org/n' target=other rel=noopener style='display:block;height:300px'>x</a>")
    world.screen.activate(window)
    x, y, width, _ = world.screen.geometry(window)
    world.hands.click(x + width / 2, y + 200)
    expect_opened(world, shell, opened, "https://example.org/n")


def test_link_by_the_middle_button_or_with_control(world):
    shell, window, opened = with_browser(
        world, "", f"<a href='http://localhost:{world.port}/m' style='display:block;height:300px'>x</a>")
    world.screen.activate(window)
    x, y, width, _ = world.screen.geometry(window)
    world.hands.click(x + width / 2, y + 200, button=2)
    wait.stays(lambda: shell.running() and len(opened()) <= 1, 1, "the shell goes on")


def test_from_a_sub_frame(world):
    world.server.route("/sub.html", html("window.open('http://example.org/frame')"))
    shell, _, opened = with_browser(world, "", "<iframe src='/sub.html'></iframe>")
    expect_opened(world, shell, opened, "http://example.org/frame")


def test_form_with_a_new_window_target(world):
    shell, _, opened = with_browser(
        world, "document.forms[0].submit()", "<form action='http://example.org/form' target=_blank></form>")
    shell.wait_line(re.compile(OPENING + "http://example.org/form"))
    wait.until(opened, 5, "the browser is started")
    wait.stays(lambda: len(opened()) == 1, 0.7, "once")


def test_no_address(world):
    shell, window, opened = with_browser(world, "report('got', String(window.open()))")
    world.server.wait_report("got")
    wait.stays(lambda: opened() == [] and shell.running(), 1, lambda: f"nothing is opened: {opened()}")
    assert world.screen.ping(window) < 1


def harmless(world, address):
    """An odd address: handed on at most once, and neither shell nor window suffers."""
    text = json.dumps(address).replace("</", "<\\/")
    shell, window, opened = with_browser(world, f"try {{ window.open({text}) }} catch (e) {{}} report('done', 1)")
    world.server.wait_report("done")
    wait.stays(lambda: shell.running() and len(opened()) <= 1 and shell.count(re.compile(OPENING)) <= 1, 1,
               lambda: f"at most once: {opened()}")
    assert world.screen.ping(window) < 1
    assert not world.dialogs(shell)
    return opened()


def test_javascript(world):
    wait.same(harmless(world, "javascript:report('ran',1)"), [], "what the browser got")
    wait.same(world.server.reports("ran"), [], "what ran")


def test_file(world):
    harmless(world, "file:///etc/passwd")


def test_unknown_scheme(world):
    harmless(world, "no-such-scheme:whatever?x=y z")


def test_data_and_blob(world):
    harmless(world, "data:text/html,<script>alert(1)</script>")


def test_very_long_address(world):
    harmless(world, "http://example.org/" + "x" * 200000)


def test_text_that_a_command_line_could_misread(world):
    address = "http://example.org/--help;touch$IFS/tmp/x`id`$(id)'\"%20%u%f"
    opened = harmless(world, address)
    assert len(opened) == 1 and opened[0].startswith("http://example.org/--help;touch"), opened


def test_other_scheme_with_a_handler(world):
    shell, _, opened = with_browser(world, "window.open('mailto:ada@example.org')", schemes=("http", "mailto"))
    expect_opened(world, shell, opened, "mailto:ada@example.org")


def test_no_browser_at_all(world):
    shell, window = world.launch_loaded(html("window.open('http://example.org/')"))
    shell.wait_line(OPENING + "http://example.org/")
    wait.stays(shell.running, 0.7, "the shell goes on")
    assert world.screen.ping(window) < 1
    assert not world.dialogs(shell)


def test_twenty_four_at_once(world):
    shell, window, opened = with_browser(
        world, "for (let n = 0; n < 24; n++) window.open('http://example.org/' + n)")
    wait.until(lambda: len(opened()) == 24, 10, lambda: f"24 addresses, {len(opened())}")
    wait.stays(lambda: len(opened()) == 24, 0.5, "no more than that")
    wait.same(sorted(opened()), sorted(f"http://example.org/{number}" for number in range(24)), "addresses")
    assert world.screen.ping(window) < 1


def test_browser_outlives_the_shell(world):
    shell, _, _ = with_browser(world, "window.open('http://example.org/')")
    shell.wait_line(OPENING + "http://example.org/")
    shell.quit()
