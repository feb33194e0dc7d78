#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
# The development server as its clients see it: page, socket, bad input, signals.
"""Run with: VANTOR_SRV=path/to/vantor-srv /usr/bin/python3 -m unittest tests/servers/test_vantor_srv.py"""

import base64
import http.client
import json
import os
import random
import signal
import socket
import struct
import subprocess
import threading
import time
import unittest

PROGRAM = os.path.abspath(os.environ.get("VANTOR_SRV", "vantor-srv"))
PATIENCE = 20.0


class Lines:
    """The lines of a stream, awaited."""

    def __init__(self, stream):
        self.stream = stream
        self.lines = []
        self.ended = False
        self.changed = threading.Condition()
        self.thread = threading.Thread(target=self.read, daemon=True)
        self.thread.start()

    def read(self):
        for line in self.stream:
            with self.changed:
                self.lines.append(line.decode("utf-8", "replace").rstrip("\n"))
                self.changed.notify_all()
        with self.changed:
            self.ended = True
            self.changed.notify_all()

    def wait_for(self, part):
        with self.changed:
            found = self.changed.wait_for(
                lambda: next((line for line in self.lines if part in line), None) or self.ended, PATIENCE)
            if not isinstance(found, str):
                raise AssertionError(f"no line with {part!r} in {self.lines}")
            return found


def frame(opcode, data=b"", final=True, masked=True, length=None):
    length = len(data) if length is None else length
    mask = os.urandom(4) if masked else b""
    body = bytes(byte ^ mask[place % 4] for place, byte in enumerate(data)) if masked else data
    bit = 0x80 if masked else 0
    if length < 126:
        size = bytes([bit | length])
    elif length < 65536:
        size = struct.pack("!BH", bit | 126, length)
    else:
        size = struct.pack("!BQ", bit | 127, length)
    return bytes([(0x80 if final else 0) | opcode]) + size + mask + body


def free_port():
    while True:
        port = random.randint(20000, 32000)  # below what the kernel hands out to clients
        with socket.socket() as probe:
            try:
                probe.bind(("127.0.0.1", port))
                return port
            except OSError:
                continue


class VantorSrvTest(unittest.TestCase):
    def setUp(self):
        self.port = random.randint(20000, 32000)  # below what the kernel hands out to clients

    def start(self, **environment):
        values = {"WEBSOCKET_ENABLED": "true", "WEBSOCKET_PORT": str(self.port), "DISABLE_NATIVE_HOTKEYS": "true"}
        self.process = subprocess.Popen([PROGRAM], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, env={**os.environ, **values, **environment})
        self.addCleanup(self.end, self.process)
        self.out = Lines(self.process.stdout)
        return self.process

    def serving(self, **environment):
        self.start(**environment)
        self.out.wait_for("serving")

    @staticmethod
    def end(process):
        if process.poll() is None:
            process.kill()
        process.wait()
        process.stderr.close()

    def request(self, path="/", method="GET", host="127.0.0.1", headers=None, body=None):
        connection = http.client.HTTPConnection(host, self.port, timeout=PATIENCE)
        self.addCleanup(connection.close)
        connection.request(method, path, body=body, headers=headers or {})
        response = connection.getresponse()
        return response, response.read()

    def upgrade(self, origin="http://localhost:8080", path="/ws", host="localhost"):
        client = socket.create_connection(("127.0.0.1", self.port), timeout=PATIENCE)
        self.addCleanup(client.close)
        key = base64.b64encode(os.urandom(16)).decode()
        head = (f"GET {path} HTTP/1.1\r\nHost: {host}\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                f"Sec-WebSocket-Key: {key}\r\nSec-WebSocket-Version: 13\r\n")
        if origin is not None:
            head += f"Origin: {origin}\r\n"
        client.sendall(head.encode() + b"\r\n")
        answer = b""
        while not answer.endswith(b"\r\n\r\n"):
            byte = client.recv(1)
            if not byte:
                break
            answer += byte
        return client, answer

    def websocket(self):
        client, answer = self.upgrade()
        self.assertIn(b" 101 ", answer)
        opcode, data = self.read_frame(client)
        self.assertEqual((opcode, json.loads(data)["type"]), (1, "hello"))
        return client

    @staticmethod
    def take(client, count):
        data = b""
        while len(data) < count:
            chunk = client.recv(count - len(data))
            if not chunk:
                raise EOFError
            data += chunk
        return data

    def read_frame(self, client):
        first, second = self.take(client, 2)
        length = second & 0x7F
        if length == 126:
            length = struct.unpack("!H", self.take(client, 2))[0]
        return first & 0x0F, self.take(client, length)

    def close_code(self, client):
        """Reads until the server closes; its closing code, or None without one."""
        try:
            while True:
                opcode, data = self.read_frame(client)
                if opcode == 8:
                    return struct.unpack("!H", data[:2])[0] if len(data) >= 2 else 1005
        except (EOFError, ConnectionResetError):
            return None

    def still_serves(self):
        self.assertIsNone(self.process.poll())
        self.assertEqual(self.request()[0].status, 200)

    # --- Page ---

    def test_page_and_its_files(self):
        self.serving()
        for path, kind in (("/", "text/html"), ("/playground.css", "text/css"), ("/playground.js", "text/javascript"),
                           ("/icon.svg", "image/svg+xml"), ("/popup.html", "text/html")):
            response, body = self.request(path)
            self.assertEqual(response.status, 200, path)
            self.assertTrue(response.getheader("Content-Type").startswith(kind), path)
            self.assertEqual(response.getheader("Cache-Control"), "no-store")
            self.assertGreater(len(body), 100)
        response, body = self.request("/config.json")
        self.assertEqual(json.loads(body), {"websocket": True, "port": self.port, "nativeHotkeysDisabled": True})
        self.assertEqual(self.request("/missing")[0].status, 404)
        self.assertEqual(self.request("/../../etc/passwd")[0].status, 404)

    def listening_addresses(self):
        """The local addresses of all sockets that listen on the server's port, as the kernel lists them."""
        known = {"0100007F": "127.0.0.1", "0" * 24 + "01000000": "::1"}
        found = set()
        for table in ("/proc/net/tcp", "/proc/net/tcp6"):
            if not os.path.exists(table):
                continue
            with open(table, encoding="ascii") as file:
                for fields in (line.split() for line in list(file)[1:]):
                    address, port = fields[1].split(":")
                    if fields[3] == "0A" and int(port, 16) == self.port:
                        found.add(known.get(address, address))
        return found

    def test_both_loopback_addresses_and_no_other(self):
        self.serving()
        addresses = self.listening_addresses()
        self.assertIn("127.0.0.1", addresses)
        self.assertLessEqual(addresses, {"127.0.0.1", "::1"})
        if "::1" in addresses:
            self.assertEqual(self.request(host="::1")[0].status, 200)

    def test_foreign_host_names_and_other_methods_are_refused(self):
        self.serving()
        self.assertEqual(self.request(headers={"Host": "evil.example"})[0].status, 403)
        self.assertEqual(self.request(method="POST", body=b"x" * 100000)[0].status, 405)
        self.assertEqual(self.request(method="HEAD")[0].status, 200)
        self.still_serves()

    # --- WebSocket ---

    def test_received_frames_are_printed_and_confirmed(self):
        self.serving()
        client = self.websocket()
        text = '{"type":"trigger_hotkey","hotkey":"voice"}'
        client.sendall(frame(1, text.encode()))
        self.assertEqual(json.loads(self.read_frame(client)[1]),
                         {"type": "received", "message": 1, "bytes": len(text)})
        self.assertEqual(self.out.wait_for("trigger_hotkey"), "ws 1: " + text)
        client.sendall(frame(1, "é\nforged line".encode()))
        self.assertEqual(self.out.wait_for("forged"), "ws 1: é\\nforged line")
        client.sendall(frame(2, b"\x00\x01"))
        self.out.wait_for("ws 1: binary, 2 bytes")
        client.sendall(frame(9, b"are you there"))
        while (answer := self.read_frame(client))[0] != 10:
            pass
        self.assertEqual(answer[1], b"are you there")
        client.sendall(frame(8, struct.pack("!H", 1000)))
        self.out.wait_for("ws 1: closed, code 1000")

    def test_origins(self):
        self.serving()
        for origin in ("http://127.0.0.1:1", "http://[::1]:5", "https://localhost"):
            self.assertIn(b" 101 ", self.upgrade(origin)[1], origin)
        for origin in (None, "null", "http://evil.example", "http://localhost.evil.example", "file://"):
            self.assertIn(b" 403 ", self.upgrade(origin)[1], origin)
        self.assertIn(b" 403 ", self.upgrade(host="evil.example")[1])
        self.assertIn(b" 404 ", self.upgrade(path="/ws/deeper")[1])
        self.assertEqual(self.request("/ws")[0].status, 426)

    def test_switched_off(self):
        self.serving(WEBSOCKET_ENABLED="false")
        self.assertIn(b" 404 ", self.upgrade()[1])
        self.assertEqual(json.loads(self.request("/config.json")[1])["websocket"], False)

    def test_malformed_frames_end_their_connection_only(self):
        self.serving()
        bad = {
            "reserved opcode": (frame(3, b"x"), (1002,)),
            "unmasked": (frame(1, b"x", masked=False), (1002,)),
            "bad UTF-8": (frame(1, b"\xff\xfe"), (1007,)),
            "long ping": (frame(9, b"x" * 126), (1002,)),
            "fragmented ping": (frame(9, b"x", final=False), (1002,)),
            "continuation of nothing": (frame(0, b"x"), (1002,)),
            "one byte close": (frame(8, b"x"), (1002, 1000, 1005)),
        }
        for name, (data, codes) in bad.items():
            with self.subTest(name):
                client = self.websocket()
                client.sendall(data)
                self.assertIn(self.close_code(client), codes)
                client.close()
        client = self.websocket()
        client.sendall(os.urandom(4096))
        client.close()
        self.still_serves()

    def test_a_message_of_1_mib_is_taken_and_a_bigger_one_refused(self):
        self.serving()
        client = self.websocket()
        client.sendall(frame(1, b"x" * (1 << 20)))
        self.assertEqual(json.loads(self.read_frame(client)[1])["bytes"], 1 << 20)
        for number, length in enumerate(((1 << 20) + 1, 1 << 40), start=2):
            client = self.websocket()
            client.sendall(frame(1, b"", length=length))
            # The toolkit ends the connection without a closing frame.
            self.assertIsNone(self.close_code(client))
            self.out.wait_for(f"ws {number}: error: Received WebSocket payload from the client larger than")
        self.still_serves()

    def test_many_clients(self):
        self.serving()
        clients = [self.websocket() for _ in range(64)]
        self.assertIn(b" 503 ", self.upgrade()[1])
        for number, client in enumerate(clients):
            client.sendall(frame(1, f"from {number}".encode()))
        for client in clients:
            self.assertEqual(json.loads(self.read_frame(client)[1])["message"], 1)
        clients.pop().close()
        self.out.wait_for("closed")
        self.websocket()

    # --- Start and end ---

    def test_signals_end_it_cleanly_with_clients_connected(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number):
                self.port = free_port()
                self.serving()
                client = self.websocket()
                self.process.send_signal(number)
                self.assertEqual(self.close_code(client), 1001)
                client.close()
                self.assertEqual(self.process.wait(PATIENCE), 0)
                self.assertEqual(self.process.stderr.read(), b"")

    def test_a_client_that_never_answers_does_not_hold_it_up(self):
        self.serving()
        self.websocket()
        begin = time.monotonic()
        self.process.terminate()
        self.assertEqual(self.process.wait(PATIENCE), 0)
        self.assertLess(time.monotonic() - begin, 3)

    def test_taken_port(self):
        for address, family in (("127.0.0.1", socket.AF_INET), ("::1", socket.AF_INET6)):
            with self.subTest(address), socket.socket(family) as blocker:
                try:
                    blocker.bind((address, self.port))
                except OSError:
                    self.skipTest(f"no {address} here")
                blocker.listen()
                process = self.start()
                self.assertEqual(process.wait(PATIENCE), 1)
                self.assertEqual(process.stderr.read().decode(),
                                 f"vantor-srv: port {self.port} on {address} is taken by another program\n")

    def test_invalid_port(self):
        process = self.start(WEBSOCKET_PORT="70000")
        self.assertEqual(process.wait(PATIENCE), 1)
        self.assertIn(b"WEBSOCKET_PORT must be a port from 1 to 65535", process.stderr.read())

    def test_reader_gone(self):
        reader, writer = os.pipe()
        process = subprocess.Popen([PROGRAM], stdin=subprocess.DEVNULL, stdout=writer, stderr=subprocess.PIPE,
                                   env={**os.environ, "WEBSOCKET_PORT": str(self.port)})
        self.addCleanup(self.end, process)
        self.process = process
        os.close(writer)
        while b"serving" not in os.read(reader, 4096):
            pass
        os.close(reader)
        client = self.websocket()
        client.sendall(frame(1, b"into the void"))
        self.assertEqual(json.loads(self.read_frame(client)[1])["message"], 1)
        self.still_serves()
        process.terminate()
        self.assertEqual(process.wait(PATIENCE), 0)


if __name__ == "__main__":
    unittest.main()
