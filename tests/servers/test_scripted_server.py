#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
# Does the scripted server do what its scripts say, and write down what it sees?
"""Run with: /usr/bin/python3 -m unittest tests/servers/test_scripted_server.py"""

import base64
import http.client
import json
import os
import pathlib
import random
import shutil
import signal
import socket
import struct
import subprocess
import tempfile
import time
import unittest

SERVER = pathlib.Path(__file__).resolve().parent / "scripted_server.py"
PATIENCE = 20.0


def free_port():
    while True:
        port = random.randint(20000, 32000)  # below what the kernel hands out to clients
        with socket.socket() as probe:
            try:
                probe.bind(("127.0.0.1", port))
                return port
            except OSError:
                continue


def wait_until(condition, what):
    deadline = time.monotonic() + PATIENCE
    while time.monotonic() < deadline:
        value = condition()
        if value:
            return value
        time.sleep(0.005)
    raise AssertionError(f"waited in vain for {what}")


class ScriptedServerTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="scripted-server-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.port = free_port()
        self.process = None

    def start(self, script=None, listening=True, **environment):
        if script is not None:
            (self.folder / "scripted_server.json").write_text(json.dumps(script))
        shutil.copy(SERVER, self.folder / "vantor-srv")
        self.process = subprocess.Popen(
            ["./vantor-srv"], cwd=self.folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.PIPE, env={**os.environ, "WEBSOCKET_PORT": str(self.port), **environment})
        self.addCleanup(self.end, self.process)
        if listening:
            self.event("listening")
        return self.process

    @staticmethod
    def end(process):
        if process.poll() is None:
            process.kill()
        process.wait()
        process.stdout.close()
        process.stderr.close()

    def events(self, name=None):
        path = self.folder / "scripted_server.record.jsonl"
        if not path.exists():
            return []
        lines = path.read_bytes().split(b"\n")[:-1]
        found = [json.loads(line) for line in lines]
        return [event for event in found if name in (None, event["event"])]

    def event(self, name, count=1):
        return wait_until(lambda: self.events(name)[count - 1:count], f"event {name} no. {count}")[0]

    def get(self, path="/", headers=None, host="127.0.0.1"):
        connection = http.client.HTTPConnection(host, self.port, timeout=PATIENCE)
        self.addCleanup(connection.close)
        connection.request("GET", path, headers=headers or {})
        response = connection.getresponse()
        return response, response.read()

    def raw(self, request=b"GET / HTTP/1.1\r\nHost: localhost\r\n\r\n"):
        client = socket.create_connection(("127.0.0.1", self.port), timeout=PATIENCE)
        self.addCleanup(client.close)
        client.sendall(request)
        return client

    def websocket(self):
        client = self.raw(b"GET /ws HTTP/1.1\r\nHost: localhost\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                          b"Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n")
        head = b""
        while not head.endswith(b"\r\n\r\n"):
            head += client.recv(1)
        self.assertIn(b"101 Switching", head)
        self.assertIn(b"Sec-WebSocket-Accept: s3pPLMBiTxaQ9kYGzzhZRbK+xOo=", head)
        return client

    @staticmethod
    def masked(opcode, data):
        mask = b"\x11\x22\x33\x44"
        body = bytes(byte ^ mask[place % 4] for place, byte in enumerate(data))
        length = bytes([0x80 | len(data)]) if len(data) < 126 else struct.pack("!BH", 0xFE, len(data))
        return bytes([0x80 | opcode]) + length + mask + body

    # --- Start, record, defaults ---

    def test_defaults_serve_a_page_on_both_addresses_and_record_the_start(self):
        self.start(SOME_VALUE="blank and ü")
        self.assertEqual(self.process.stdout.readline(), b"scripted server ready\n")
        response, body = self.get()
        self.assertEqual(response.status, 200)
        self.assertIn(b"window.ws", body)
        if self.events("listen_failed") == []:
            self.event("listening", 2)
            self.assertEqual(self.get(host="::1")[0].status, 200)
        start = self.event("start")
        self.assertEqual(start["cwd"], str(self.folder.resolve()))
        self.assertEqual(start["pid"], self.process.pid)
        self.assertEqual(start["pgid"], os.getpgid(self.process.pid))
        self.assertEqual(start["sid"], os.getsid(self.process.pid))
        self.assertEqual(start["env"]["WEBSOCKET_PORT"], str(self.port))
        self.assertIn("SOME_VALUE=blank and ü", start["environ"])
        self.assertTrue(start["fds"]["1"].startswith("pipe:"))

    def test_probe_and_page_are_told_apart_and_answered_apart(self):
        self.start({"probe": {"status": 500}, "page": [{"body": "first"}, {"body": "later"}]})
        page = {"Accept": "text/html,application/xhtml+xml"}
        self.assertEqual(self.get()[0].status, 500)
        self.assertEqual(self.get(headers=page)[1], b"first")
        self.assertEqual(self.get(headers=page)[1], b"later")
        self.assertEqual(self.get(headers=page)[1], b"later")
        self.assertEqual([event["kind"] for event in self.events("request")], ["probe", "page", "page", "page"])
        moments = [event["t"] for event in self.events("request")]
        self.assertEqual(moments, sorted(moments))
        self.assertIn(["Accept", "text/html,application/xhtml+xml"], self.events("request")[1]["headers"])

    def test_broken_script_is_refused(self):
        (self.folder / "scripted_server.json").write_text("{")
        process = self.start(listening=False)
        self.assertEqual(process.wait(PATIENCE), 64)
        self.event("script_error")

    # --- Answers ---

    def test_headers_redirect_routes_and_missing(self):
        self.start({"root": {"headers": [["Cache-Control", "max-age=999"], ["X-A", "1"], ["X-A", "2"]]},
                    "routes": {"/frame.html": {"body": "frame"}, "/r": {"redirect": "/frame.html"}}})
        response, _ = self.get()
        self.assertEqual(response.getheader("Cache-Control"), "max-age=999")
        self.assertEqual(response.headers.get_all("X-A"), ["1", "2"])
        self.assertEqual(self.get("/frame.html?q=1")[1], b"frame")
        response, _ = self.get("/r")
        self.assertEqual((response.status, response.getheader("Location")), (302, "/frame.html"))
        self.assertEqual(self.get("/nowhere")[0].status, 404)

    def test_204_has_no_body_and_no_length(self):
        self.start({"root": {"status": 204, "body": "never seen"}})
        response, body = self.get()
        self.assertEqual((response.status, body, response.getheader("Content-Length")), (204, b"", None))

    def test_delay(self):
        self.start({"root": {"delay": 0.3}})
        begin = time.monotonic()
        self.get()
        self.assertGreaterEqual(time.monotonic() - begin, 0.3)

    def test_reset_after_bytes(self):
        self.start({"root": {"body": "x" * 100, "reset_after": 20}})
        client = self.raw()
        with self.assertRaises(ConnectionResetError):
            while client.recv(100):
                pass
        self.assertEqual(self.event("response")["outcome"], "reset")

    def test_truncated_body(self):
        self.start({"root": {"body": "x" * 100, "content_length": 1000}})
        client = self.raw()
        data = b""
        while chunk := client.recv(1000):
            data += chunk
        self.assertIn(b"Content-Length: 1000", data)
        self.assertTrue(data.endswith(b"x" * 100))

    def test_hang_is_noted_until_the_client_gives_up(self):
        self.start({"root": {"hang": True}})
        client = self.raw()
        self.assertEqual(self.event("response")["outcome"], "hung")
        self.assertEqual(self.events("connection_closed"), [])
        client.close()
        self.assertEqual(self.event("connection_closed")["by"], "peer")

    def test_never_ending_body(self):
        self.start({"root": {"body": "begin", "never_ending": {"chunk": "more", "interval": 0.01}}})
        client = self.raw()
        data = b""
        while data.count(b"more") < 3:
            data += client.recv(1000)
        self.assertNotIn(b"Content-Length", data)
        client.close()
        self.event("connection_closed")
        self.assertEqual([event["outcome"] for event in self.events("response")], ["endless", "peer_closed"])

    def test_raw_bytes_and_kept_connections(self):
        self.start({"root": [{"body": "one"}, {"raw": "nonsense\n"}]})
        client = self.raw()
        while b"one" not in client.recv(1000):
            pass
        client.sendall(b"GET / HTTP/1.1\r\nHost: localhost\r\n\r\n")
        self.assertEqual(client.recv(1000), b"nonsense\n")
        self.assertEqual(client.recv(1000), b"")
        self.assertEqual(len(self.events("connection")), 1)

    # --- Listening ---

    def test_listens_where_and_when_told(self):
        self.start({"listen": {"addresses": ["127.0.0.1"], "delay": 0.2}})
        self.assertGreaterEqual(self.event("listening")["t"] - self.event("start")["t"], 0.2)
        self.assertEqual([event["address"] for event in self.events("listening")], ["127.0.0.1"])

    def test_never_listens_until_a_step_says_so_and_stops_again(self):
        self.start({"listen": {"never": True}, "timeline": [
            {"wait_for_file": "go", "listen": True}, {"wait_for_file": "stop", "stop_listening": True}]},
            listening=False)
        self.event("start")
        with self.assertRaises(ConnectionRefusedError):
            self.raw()
        (self.folder / "go").touch()
        self.event("listening")
        self.assertEqual(self.get()[0].status, 200)
        (self.folder / "stop").touch()
        self.event("stopped_listening")
        with self.assertRaises(ConnectionRefusedError):
            self.raw()

    def test_taken_port_and_impossible_port(self):
        blocker = socket.create_server(("127.0.0.1", self.port))
        self.addCleanup(blocker.close)
        process = self.start(listening=False)
        self.assertEqual(process.wait(PATIENCE), 1)
        self.event("listen_failed")
        self.start({"listen": {"on_failure": None, "addresses": ["127.0.0.1"]}}, listening=False, WEBSOCKET_PORT="-1")
        self.event("listen_failed", 2)
        self.assertIsNone(self.process.poll())

    # --- Output, exit, signals ---

    def test_bytes_on_both_streams_then_exit_code(self):
        self.start({"banner": None, "timeline": [
            {"print_base64": base64.b64encode(b"\xff\xfe\n").decode()},
            {"print": "über\n", "stream": "stderr"}, {"wait": 0.1, "exit": 7}]}, listening=False)
        output, errors = self.process.communicate(timeout=PATIENCE)
        self.assertEqual((output, errors, self.process.returncode), (b"\xff\xfe\n", "über\n".encode(), 7))
        self.assertEqual(self.event("exit")["code"], 7)

    def test_death_by_signal(self):
        for name in ("KILL", "TERM", "SEGV", "INT"):
            with self.subTest(name):
                self.start({"timeline": [{"signal": name}]}, listening=False)
                self.assertEqual(self.process.wait(PATIENCE), -getattr(signal, "SIG" + name))

    def test_flood(self):
        self.start({"banner": None, "timeline": [
            {"flood_mb": 4, "begin": "BEGIN", "end": "END"}, {"exit": 0}]}, listening=False)
        output, _ = self.process.communicate(timeout=PATIENCE)
        self.assertEqual(len(output), 4 * 1048576 + len("BEGIN\nEND\n"))

    def test_closed_output_lives_on(self):
        self.start({"banner": None, "timeline": [{"close_output": True}]})
        self.assertEqual(self.process.stdout.read(), b"")
        self.assertEqual(self.process.stderr.read(), b"")
        self.assertEqual(self.get()[0].status, 200)

    def test_reader_gone_is_noted(self):
        self.start({"timeline": [{"wait_for_file": "go", "print": "lost\n"}]})
        self.process.stdout.close()
        (self.folder / "go").touch()
        self.event("output_error")
        self.assertIsNone(self.process.poll())

    def test_signals_are_recorded_and_obeyed(self):
        self.start({"signals": {"TERM": {"ignore": True}, "HUP": {"exit": 5, "delay": 0.05, "print": "bye\n"}},
                    "banner": None})
        self.process.send_signal(signal.SIGTERM)
        seen = self.event("signal")
        self.assertEqual((seen["name"], seen["sender"]), ("TERM", os.getpid()))
        self.assertIsNone(self.process.poll())
        self.process.send_signal(signal.SIGHUP)
        self.assertEqual(self.process.wait(PATIENCE), 5)
        self.assertEqual(self.process.stdout.read(), b"bye\n")

    def test_term_ends_with_0_by_default(self):
        self.start()
        self.process.terminate()
        self.assertEqual(self.process.wait(PATIENCE), 0)

    def test_grandchild_keeps_the_pipe(self):
        self.start({"banner": None, "timeline": [
            {"spawn": {"argv": ["/bin/sh", "-c", "read line < go; echo from the grandchild"]}}, {"exit": 0}]},
            listening=False)
        os.mkfifo(self.folder / "go")
        self.assertEqual(self.process.wait(PATIENCE), 0)
        self.assertIsNot(self.event("spawned")["pid"], None)
        (self.folder / "go").write_text("now\n")
        self.assertEqual(self.process.stdout.read(), b"from the grandchild\n")

    def test_set_changes_answers_at_run_time(self):
        self.start({"root": {"status": 404}, "timeline": [{"wait_for_file": "go", "set": {"root": {"body": "new"}}}]})
        self.assertEqual(self.get()[0].status, 404)
        (self.folder / "go").touch()
        wait_until(lambda: self.get()[0].status == 200, "the new answer")

    # --- WebSocket ---

    def test_websocket_frames_both_ways(self):
        self.start({"websocket": {"greeting": ["hello"], "echo": True}, "timeline": [
            {"wait_for_event": "ws_frame", "ws_send": "pushed"}]})
        client = self.websocket()
        self.assertEqual(client.recv(7), b"\x81\x05hello")
        text = "{\"type\":\"trigger_hotkey\",\"hotkey\":\"voice\"}" + "é" * 60
        client.sendall(self.masked(1, text.encode()))
        frame = self.event("ws_frame")
        self.assertEqual((frame["text"], frame["final"], frame["opcode"]), (text, True, 1))
        answers = b""
        while b"pushed" not in answers or text.encode() not in answers:
            answers += client.recv(1000)
        client.sendall(self.masked(2, b"\x00\xff"))
        self.assertEqual(self.event("ws_frame", 2)["base64"], base64.b64encode(b"\x00\xff").decode())
        client.sendall(self.masked(8, struct.pack("!H", 1001)))
        self.assertEqual(self.event("ws_closed")["code"], 1001)

    def test_websocket_refused_closed_and_dropped(self):
        self.start({"websocket": {"accept": False}, "timeline": [
            {"wait_for_event": "ws_refused", "set": {"websocket": {}}},
            {"wait_for_event": "ws_open", "ws_close": 1012}]})
        client = self.raw(b"GET /ws HTTP/1.1\r\nHost: x\r\nUpgrade: websocket\r\n\r\n")
        self.assertIn(b"403", client.recv(1000))
        self.event("step")
        client = self.websocket()
        self.assertEqual(client.recv(4), b"\x88\x02" + struct.pack("!H", 1012))
        client.close()
        self.event("ws_closed")


if __name__ == "__main__":
    unittest.main()
