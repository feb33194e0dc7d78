# Vantorel. MIT licence, see LICENSE.
# Loading the page: from the network each time, and the two kinds of failure told apart.

import re

from harness import wait
from harness.page import colored, html

LOADED = "✅ Page loaded successfully"
PROVISIONAL = re.compile(r"^❌ Provisional navigation failed: .+")
OTHER = re.compile(r"^❌ Page load failed: .+")


def fails(world, pattern, other_pattern, status_start, timeout=12):
    """Launches and expects one failure line of the one kind and the status that goes with it. The server leaves probes
    without an answer: their status follows a second later, and not at once."""
    world.server.probes({"hang": True})
    shell = world.launch()
    statuses = world.watch_statuses(shell)
    line = shell.wait_line(pattern, timeout)
    description = line.text.partition(": ")[2]
    wait.until(lambda: status_start + description in statuses(), 3,
               lambda: f"status {status_start + description!r}; seen {statuses()}")
    assert shell.find(LOADED) is None and shell.find(other_pattern) is None
    wait.stays(lambda: shell.count(pattern) == 1 and shell.find(LOADED) is None, 1.5,
               lambda: f"one failure line, the log is {shell.texts()[-5:]}")
    return shell


def test_refused(world):
    world.server.set(listen={"never": True})
    shell = fails(world, PROVISIONAL, OTHER, "❌ Failed to connect: ")
    assert world.screen.ping(world.window(shell)) < 1


def test_failure_is_red(world):
    world.server.set(listen={"never": True})
    shell = world.launch()
    window = world.window(shell)
    shell.wait_line(PROVISIONAL)
    world.wait_color(window, "red", 0.9)


def test_closed_without_an_answer(world):
    world.server.page({"close_after": 0})
    fails(world, PROVISIONAL, OTHER, "❌ Failed to connect: ")


def test_reset_before_an_answer(world):
    world.server.page({"reset_after": 0})
    fails(world, PROVISIONAL, OTHER, "❌ Failed to connect: ")


def test_broken_body(world):
    world.server.page({"body": html(body="<p>begin</p>" * 3000), "content_length": 900000, "close_after": 20000})
    fails(world, OTHER, PROVISIONAL, "❌ Failed to load page: ")


def test_broken_chunks(world):
    world.server.page({"raw": "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nTransfer-Encoding: chunked\r\n\r\n"
                              "1000\r\n" + "<p>x</p>" * 512 + "\r\n9000\r\n<p>half"})
    fails(world, OTHER, PROVISIONAL, "❌ Failed to load page: ")


def test_reset_in_the_body(world):
    world.server.page({"body": html(body="<p>begin</p>" * 3000), "body_delay": 0.5, "content_length": 900000,
                       "reset_after": 20000})
    fails(world, OTHER, PROVISIONAL, "❌ Failed to load page: ")


def test_never_answered(world):
    world.server.page({"hang": True})
    shell = world.launch()
    loading = shell.wait_line(re.compile("^🌐 Loading: "))
    failed = shell.wait_line(PROVISIONAL, 40)
    assert 29 <= failed.time - loading.time <= 32, f"given up after {failed.time - loading.time:.1f} s"
    assert shell.find(LOADED) is None and shell.find(OTHER) is None


def test_error_statuses_are_loads(world):
    world.server.page({"status": 500, "body": colored("#aa3355")})
    shell, window = world.launch_loaded()
    world.wait_page_color(window, (0xaa, 0x33, 0x55))
    assert shell.find(PROVISIONAL) is None and shell.find(OTHER) is None


def test_no_content_is_a_failure(world):
    world.server.page({"status": 204})
    shell = world.launch()
    shell.wait_line(re.compile(r"^❌ (Provisional navigation|Page load) failed: .+"))
    assert shell.find(LOADED) is None


def test_never_from_the_cache(world):
    headers = {"Cache-Control": "public, max-age=36000", "ETag": '"a"',
               "Last-Modified": "Tue, 01 Jan 2019 00:00:00 GMT"}
    world.server.page({"body": colored("#224466"), "headers": headers})
    shell, window = world.launch_loaded()
    world.wait_page_color(window, (0x22, 0x44, 0x66))
    shell.quit()
    world.server.page({"body": colored("#664422"), "headers": headers})
    before = len(world.server.requests("page"))
    shell, window = world.launch_loaded()
    world.wait_page_color(window, (0x66, 0x44, 0x22))
    requests = world.server.requests("page")
    wait.same(len(requests), before + 1, "page requests")
    names = {name.lower(): value.lower() for name, value in requests[-1]["headers"]}
    assert "if-none-match" not in names and "if-modified-since" not in names, "no cached copy is offered"
    assert "no-cache" in names.get("cache-control", "") + names.get("pragma", ""), "no copy on the way is wanted"


def test_caches_are_emptied_but_storage_is_kept(world):
    cached = {"body": "window.stamp = 'first';", "content_type": "text/javascript",
              "headers": {"Cache-Control": "public, max-age=36000"}}
    world.server.route("/part.js", [cached, {**cached, "body": "window.stamp = 'second';"}])
    page = html("report('stamp', window.stamp); report('stored', localStorage.getItem('k'));"
                "report('cookie', document.cookie); localStorage.setItem('k', 'kept');"
                "document.cookie = 'c=kept; max-age=99999'", "<script src='/part.js'></script>")
    shell, _ = world.launch_loaded(page)
    wait.same(world.server.wait_report("stamp"), "first", "script of the first run")
    wait.same(world.server.wait_report("stored"), None, "storage of the first run")
    world.server.wait_report("cookie")
    wait.until(lambda: world.stored_files(), 10, "web data are on the disk")
    shell.quit()
    world.server.route("/part.js", {**cached, "body": "window.stamp = 'second';"})
    world.launch_loaded()
    wait.same(world.server.wait_report("stamp", 2), "second", "script of the second run")
    wait.same(world.server.wait_report("stored", 2), "kept", "storage of the second run")
    wait.same(world.server.wait_report("cookie", 2), "c=kept", "cookie of the second run")


def test_web_data_are_where_they_belong(world):
    shell, _ = world.launch_loaded(html("localStorage.setItem('k', 'v'); report('done', 1)"))
    world.server.wait_report("done")
    wait.until(lambda: world.stored_files(), 10, "files under the data folder")
    shell.quit()


def no_success(world, port, settle=3.0):
    """A port that can't work: the page is asked for, nothing claims success, the shell lives and quits."""
    shell = world.launch(environment={"WEBSOCKET_PORT": str(port)})
    shell.wait_line(f"🌐 Loading: http://localhost:{port}/")
    wait.stays(lambda: shell.running() and shell.find(LOADED) is None, settle, "no success is claimed")
    wait.same(shell.count(PROVISIONAL), 1, f"provisional failures with port {port}")
    world.wait_status(shell, re.compile("^(⚠️ Server running but not responding...|❌ Failed to connect: .+)$"))
    assert world.screen.ping(world.window(shell)) < 1
    shell.quit()
    return shell


def test_port_that_the_engine_refuses(world):
    world.bundle.use_server("#!/bin/sh\nexec sleep 1000\n")
    no_success(world, 6000)


def test_negative_port(world):
    world.bundle.use_server("#!/bin/sh\nexec sleep 1000\n")
    no_success(world, -1)


def test_port_beyond_the_range(world):
    world.bundle.use_server("#!/bin/sh\nexec sleep 1000\n")
    no_success(world, 70000)


def test_port_zero_and_largest_number(world):
    world.bundle.use_server("#!/bin/sh\nexec sleep 1000\n")
    no_success(world, 0)
    no_success(world, 9223372036854775807)


def test_page_redirect_is_followed(world):
    world.server.page({"redirect": "/real"})
    world.server.route("/real", html("report('real', location.pathname)"))
    world.launch_loaded()
    wait.same(world.server.wait_report("real"), "/real", "path of the page")


def test_page_process_that_dies_is_reloaded_once(world):
    shell, window = world.launch_loaded(colored("#224466"))
    world.wait_page_color(window, (0x22, 0x44, 0x66))
    world.kill_helper(shell, "WebKitWebProcess")
    wait.until(lambda: shell.count(LOADED) == 2, 10, "the page is loaded again")
    world.wait_page_color(window, (0x22, 0x44, 0x66))
