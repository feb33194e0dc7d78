# Vantorel. MIT licence, see LICENSE.
# The connection monitor: when it asks, what it asks, and what each kind of answer shows.

from harness import children, wait
from harness.page import html
from harness.status import GREEN_STATUS, ORANGE_STATUS


def test_first_after_two_seconds_then_every_two(world):
    shell = world.launch()
    launched = shell.wait_launched().time
    times = [request["t"] for request in world.server.wait_requests("probe", 4, 12)[:4]]
    assert 1.8 <= times[0] - launched <= 2.25, f"first probe {times[0] - launched:.3f} s after the launch"
    gaps = [after - before for before, after in zip(times, times[1:])]
    assert all(1.85 <= gap <= 2.15 for gap in gaps), f"gaps between probes: {gaps}"


def test_request(world):
    shell = world.launch()
    request = world.server.wait_requests("probe")[0]
    wait.same((request["method"], request["target"], request["version"]), ("GET", "/", "HTTP/1.1"), "request line")
    headers = {name.lower(): value for name, value in request["headers"]}
    wait.same(headers["host"], f"localhost:{world.port}", "Host")
    for name in ("cookie", "authorization", "content-length", "transfer-encoding", "referer", "origin"):
        assert name not in headers, f"the probe carries {name}"
    wait.same(request["body_bytes"], 0, "size of the body")
    world.wait_status(shell, GREEN_STATUS.format(world.port))


def statuses(world, answers):
    """Answers other than 200 between answers of 200: each shows orange, each 200 green again."""
    # A fresh connection each time: on one kept from before, a client may rightly ask again after a reset.
    good = {"status": 200, "body": "ok", "close": True}
    sequence = [good]
    for answer in answers:
        sequence += [answer if isinstance(answer, dict) else {"status": answer, "close": True}, good]
    world.server.probes(*sequence)
    shell = world.launch()
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    for _ in answers:
        world.wait_status(shell, ORANGE_STATUS, 4)
        world.wait_status(shell, GREEN_STATUS.format(world.port), 6)
    return shell


def test_201_and_204_do_not_count(world):
    statuses(world, [{"status": 201, "body": "made"}, 204])


def test_redirects_do_not_count_and_are_not_followed(world):
    statuses(world, [{"redirect": "/elsewhere"}, {"status": 301, "redirect": "/elsewhere"},
                     {"status": 307, "redirect": "/elsewhere"}])
    wait.same(world.server.requests("/elsewhere"), [], "requests where the redirect leads")


def test_404_and_500_do_not_count(world):
    statuses(world, [{"status": 404, "body": "no"}, {"status": 500, "body": "no"}, 401])


def over_after_a_second(world, answer, limit=1.2):
    """An answer that takes too long: orange after a second, by when the probe has given its connection up. Where bytes
    keep coming a busy machine notices late; the limit is then the next probe's start, two seconds after this one's."""
    world.server.probes(answer, answer, {"status": 200, "body": "ok"})
    shell = world.launch()
    first = world.server.wait_requests("probe")[0]
    pids = [shell.pid, shell.server_pid()]
    queued = sum(children.waited(pid) for pid in pids)
    world.wait_status(shell, ORANGE_STATUS, 3)

    def closed():
        return [entry for entry in world.server.events("connection_closed") if entry["conn"] == first["conn"]]
    wait.until(closed, 3, "the connection is given up")
    took = closed()[0]["t"] - first["t"]
    assert took >= 0.95, f"the probe took {took:.2f} s"
    # Less the time for which shell or server had no processor.
    took -= sum(children.waited(pid) for pid in pids) - queued
    assert took <= limit, f"the probe took {took:.2f} s"
    return shell


def test_answer_after_a_second_and_a_half(world):
    shell = over_after_a_second(world, {"status": 200, "body": "ok", "delay": 1.5}, limit=1.9)
    world.wait_status(shell, GREEN_STATUS.format(world.port), 6)


def test_server_that_never_answers(world):
    shell = over_after_a_second(world, {"hang": True})
    world.wait_status(shell, GREEN_STATUS.format(world.port), 6)


def test_body_that_never_ends(world):
    shell = over_after_a_second(
        world, {"status": 200, "body": "begin", "never_ending": {"chunk": "x" * 100, "interval": 0.05}}, limit=1.9)
    world.wait_status(shell, GREEN_STATUS.format(world.port), 6)


def test_headers_that_never_end(world):
    shell = over_after_a_second(
        world, {"raw": "HTTP/1.1 200 OK\r\nX: y\r\n", "never_ending": {"chunk": "X: y\r\n", "interval": 0.05}}, limit=1.9)
    world.wait_status(shell, GREEN_STATUS.format(world.port), 6)


def test_large_body(world):
    world.server.probes({"status": 200, "body": "x" * 5_000_000})
    shell = world.launch()
    world.wait_status(shell, GREEN_STATUS.format(world.port))


def test_reset_and_garbage(world):
    statuses(world, [{"reset_after": 0}, {"raw": "this is no HTTP\r\n\r\n"}, {"close_after": 0}])


def test_cut_body_does_not_count(world):
    statuses(world, [{"body": "short", "content_length": 500}])


def test_refused_then_listening(world):
    world.server.set(listen={"delay": 4.5})
    shell = world.launch()
    world.wait_status(shell, "🔄 Server starting... Waiting for connection...")
    world.wait_status(shell, ORANGE_STATUS, 4)
    world.wait_status(shell, GREEN_STATUS.format(world.port), 8)


def one_address(world, address):
    """A server that listens on one of the two loopback addresses is found for probe and page."""
    world.server.set(listen={"addresses": [address]})
    world.server.page(html("report('loaded', 1)"))
    shell = world.launch()
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    world.server.wait_report("loaded")


def test_server_on_127_0_0_1_only(world):
    one_address(world, "127.0.0.1")


def test_server_on_ipv6_loopback_only(world):
    one_address(world, "::1")


def test_stops_and_answers_again_without_a_new_page(world):
    world.server.page(html())
    world.server.later("down", {"stop_listening": True, "drop_connections": True})
    world.server.later("up", {"listen": True})
    shell, _ = world.launch_loaded()
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    world.server.trigger("down")
    world.wait_status(shell, ORANGE_STATUS, 4)
    world.server.trigger("up")
    world.wait_status(shell, GREEN_STATUS.format(world.port), 6)
    wait.same(len(world.server.requests("page")), 1, "page requests")


def test_probes_log_nothing(world):
    world.server.probes(200, 500, 200)
    shell, _ = world.launch_loaded()
    mark = shell.mark()
    world.server.wait_requests("probe", 4, 12)
    wait.same(shell.texts(mark), [], "log lines while probing")


def test_port_taken_by_another_program(world):
    world.take_port()
    world.server.set(listen={"on_failure": 1})
    shell = world.launch()
    shell.wait_line("🛑 Server process terminated with exit code: 1")
    world.wait_status(shell, GREEN_STATUS.format(world.port))
    shell.wait_line("✅ Page loaded successfully")
