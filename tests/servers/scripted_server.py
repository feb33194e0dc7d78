#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
# A companion server that does exactly what a test's script says, and writes down everything it sees.
"""The scripted server: stands in for `vantor-srv` in end-to-end tests.

It is copied into the bundle's Contents/Resources under the server's name, so it is one file that needs nothing but
Python's own library. It reads `scripted_server.json` in its working directory (absent: all defaults) and appends what
it sees to `scripted_server.record.jsonl` there, or to the file that the environment variable VANTOREL_TEST_RECORD
names. VANTOREL_TEST_SCRIPT names another script.

With no script it listens on the port of WEBSOCKET_PORT, on 127.0.0.1 and ::1, answers / with a page that keeps its
socket in window.ws, takes WebSockets at /ws, prints one line, and ends with 0 on SIGTERM, SIGINT and SIGHUP.

The script, all members optional
================================
{
  "port": 8080,                  in place of WEBSOCKET_PORT
  "listen": {
    "addresses": ["127.0.0.1", "::1"],   "::1" may fail when the machine has no IPv6 and 127.0.0.1 works
    "delay": 0.0,                seconds from start to listening
    "never": false,              true: only a "listen" step of the timeline makes it listen
    "on_failure": 1              exit code when it can't listen; null: stay alive without listening
  },
  "banner": "scripted server ready\n",   printed on stdout before listening; null or "" for none
  "signals": {                   per signal name without SIG (TERM, INT, HUP, QUIT, USR1, USR2)
    "TERM": {"ignore": true}     recorded, nothing else
          | {"exit": 0, "delay": 0.0, "print": "text"}    after the delay; print goes to stdout first
          | {"die": true}        die by the signal itself, after "delay"
  },
  "timeline": [STEP, …],         done one after the other
  "timelines": [[STEP, …], …],   more of them, side by side
  "root": RESPONSES,             for / whoever asks
  "probe": RESPONSES,            for / when it is no page request; wins over "root"
  "page": RESPONSES,             for / when it is a page request (its Accept names text/html); wins over "root"
  "routes": {"/frame.html": RESPONSES},  other paths, without query; everything else is 404
  "websocket": {
    "accept": true,              false: 403
    "greeting": ["text", …],     frames sent when a socket opens
    "echo": false                send every text frame back
  }
}

RESPONSES is one RESPONSE or a list: the first request gets the first, the next the second, and so on; the last one
repeats. Requests are counted per list.

RESPONSE, all members optional
  "status": 200, "reason": "OK", "headers": {"Name": "value"} or [["Name", "value"], …],
  "body": "text" | "body_base64": "…" | "body_file": "path",       default for /: the built-in page
  "content_type": "text/html; charset=utf-8",
  "redirect": "/elsewhere",      302 (or "status") with Location
  "delay": 0.0,                  seconds before the first byte
  "body_delay": 0.0,             seconds between the headers and the body
  "content_length": 123 | null,  a lie, or none at all (the body then ends with the connection)
  "never_ending": {"chunk": "text", "interval": 0.1},  no length, body first, then a chunk for ever
  "reset_after": 10,             TCP reset after that many bytes of the whole answer
  "close_after": 10,             ordinary close after that many bytes
  "hang": true,                  never answers; noted when the other side gives up
  "raw": "…" | "raw_base64": "…" these bytes and nothing else, then close
  "close": true                  Connection: close (default: keep-alive)

STEP: {"at": seconds since start} or {"wait": seconds after the previous step} (both optional, default at once), also
{"wait_for_file": "path"} which waits until the file exists, or {"wait_for_event": "ws_open"} which waits until the
record holds such an event; and one of
  "print": "text" | "print_base64": "…" | "print_file": "path",    with "stream": "stdout" (default) or "stderr"
  "flood_mb": 200,               that many MiB of lines on the stream, as fast as they are taken; with "begin" and "end":
                                 texts printed on a line of their own before and after (default none)
  "repeat": {"text": "x", "interval": 0.1, "count": 50}            prints again and again; count 0: for ever
  "close_output": true           both streams are closed, the process lives on; "stdout"/"stderr": just that one
  "exit": 3 | "signal": "KILL"   ends the process so; SEGV, ABRT and all others likewise
  "spawn": {"argv": ["/bin/sleep", "30"], "count": 1, "new_session": false, "new_group": false}
                                 grandchildren that inherit stdout and stderr
  "listen": true | "stop_listening": true | "drop_connections": true
  "set": {…}                     members that replace the script's own from now on
  "ws_send": "text" | "ws_send_base64": "…" (binary) | "ws_raw_base64": "…" | "ws_close": 1000 | "ws_drop": true
                                 on every open socket

The record, one JSON object a line, each written by a single write
==================================================================
Every line has "event" and "t" (CLOCK_MONOTONIC seconds). Events:
  start        pid, ppid, pgid, sid, argv, cwd, environ ("NAME=value" in the kernel's order), env (the same as a map),
               fds (number to target), umask, sig_blocked and sig_ignored (masks in hexadecimal, as the kernel shows
               them; Python itself ignores SIGPIPE and SIGXFSZ)
  script       the script as read; script_error  why it could not be read (the server then ends with 64)
  listening    address, port; listen_failed  address, port, error; stopped_listening
  connection   conn, peer, local; connection_closed  conn, by ("peer" or "server")
  request      request (number), conn, kind ("probe" or "page" for /, else "other"), method, target, version, headers
               (list of pairs as sent), body_bytes
  response     request, status, bytes, outcome ("sent", "reset", "closed", "hung", "endless", "peer_closed"), answer
               (place in its list)
  ws_open      ws, conn, headers; ws_refused  conn
  ws_frame     ws, opcode, final, text or base64, bytes; ws_closed  ws, code
  signal       name, number, sender (pid)
  step         index, timeline, what; output_error  error
  exit         code or signal
Bytes that are no UTF-8 appear in texts as lone surrogates (Python's surrogateescape).
"""

import base64
import errno
import hashlib
import json
import os
import signal
import socket
import struct
import sys
import threading
import time

START = time.monotonic()
WATCHED_SIGNALS = ("TERM", "INT", "HUP", "QUIT", "USR1", "USR2")
BLOCK = 65536
MAX_HEAD = 65536
MAX_BODY = 1 << 20

DEFAULT_PAGE = """<!doctype html>
<html lang="en"><head><meta charset="utf-8"><title>scripted server</title></head>
<body><h1 id="title">scripted server</h1>
<script>
(function connect() {
    window.ws = new WebSocket('ws://' + location.host + '/ws');
    window.ws.onclose = function() { setTimeout(connect, 200); };
})();
</script></body></html>
"""


class Record:
    """The record file. Appends are atomic: one write per line on a descriptor in append mode."""

    def __init__(self, path):
        self.fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_APPEND | os.O_CLOEXEC, 0o644)
        self.seen = set()
        self.changed = threading.Condition()

    def write(self, event, **fields):
        line = json.dumps({"event": event, "t": time.monotonic(), **fields})
        os.write(self.fd, line.encode("ascii") + b"\n")
        with self.changed:
            self.seen.add(event)
            self.changed.notify_all()

    def wait_for(self, event):
        with self.changed:
            self.changed.wait_for(lambda: event in self.seen)


def read_text(path):
    with open(path, "rb") as file:
        return file.read()


def process_facts():
    environ = [entry.decode("utf-8", "surrogateescape")
               for entry in read_text("/proc/self/environ").split(b"\0") if entry]
    status = dict(line.split(":\t", 1) for line in
                  read_text("/proc/self/status").decode("utf-8", "replace").splitlines() if ":\t" in line)
    fds = {}
    for name in os.listdir("/proc/self/fd"):
        try:
            fds[name] = os.readlink("/proc/self/fd/" + name)
        except OSError:
            pass  # the listing's own descriptor
    return {
        "pid": os.getpid(), "ppid": os.getppid(), "pgid": os.getpgid(0), "sid": os.getsid(0), "argv": sys.argv,
        "cwd": os.getcwd(), "environ": environ, "env": dict(entry.partition("=")[::2] for entry in environ),
        "fds": fds, "umask": status.get("Umask"), "sig_blocked": status.get("SigBlk"),
        "sig_ignored": status.get("SigIgn"),
    }


def write_all(fd, data):
    view = memoryview(data)
    while view:
        view = view[os.write(fd, view):]


def payload(mapping, name):
    """The bytes that NAME, NAME_base64 or NAME_file of a mapping stand for, or None."""
    if mapping.get(name) is not None:
        return mapping[name].encode("utf-8", "surrogateescape")
    if mapping.get(name + "_base64") is not None:
        return base64.b64decode(mapping[name + "_base64"])
    if mapping.get(name + "_file") is not None:
        return read_text(mapping[name + "_file"])
    return None


def as_list(value):
    return value if isinstance(value, list) else [value]


class WebSocket:
    """The server's side of one open WebSocket. Frames may be sent from any thread."""

    def __init__(self, server, number, connection, leftover):
        self.server = server
        self.number = number
        self.connection = connection
        self.buffer = leftover
        self.lock = threading.Lock()
        self.close_sent = False

    def send(self, opcode, data):
        length = len(data)
        head = bytes([0x80 | opcode])
        if length < 126:
            head += bytes([length])
        elif length < 65536:
            head += struct.pack("!BH", 126, length)
        else:
            head += struct.pack("!BQ", 127, length)
        self.send_raw(head + data)

    def send_raw(self, data):
        try:
            with self.lock:
                self.connection.sendall(data)
        except OSError:
            pass  # the reading side notes the end

    def close(self, code):
        self.close_sent = True
        self.send(8, struct.pack("!H", code))

    def drop(self):
        try:
            self.connection.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass

    def take(self, count):
        while len(self.buffer) < count:
            chunk = self.connection.recv(BLOCK)
            if not chunk:
                raise EOFError
            self.buffer += chunk
        data, self.buffer = self.buffer[:count], self.buffer[count:]
        return data

    def read_frame(self):
        first, second = self.take(2)
        length = second & 0x7F
        if length == 126:
            length = struct.unpack("!H", self.take(2))[0]
        elif length == 127:
            length = struct.unpack("!Q", self.take(8))[0]
        mask = self.take(4) if second & 0x80 else b"\0\0\0\0"
        data = self.take(length)
        if length and mask != b"\0\0\0\0":
            key = int.from_bytes((mask * (length // 4 + 1))[:length], "little")
            data = (int.from_bytes(data, "little") ^ key).to_bytes(length, "little")
        return first & 0x0F, bool(first & 0x80), data

    def serve(self):
        """Reads until the end; gives the closing code, or None when there was none."""
        for text in self.server.script.get("websocket", {}).get("greeting", []):
            self.send(1, text.encode())
        code = None
        try:
            while True:
                opcode, final, data = self.read_frame()
                note = {"ws": self.number, "opcode": opcode, "final": final, "bytes": len(data)}
                try:
                    self.server.record.write("ws_frame", text=data.decode("utf-8") if opcode in (0, 1) else None,
                                             base64=None if opcode in (0, 1) else base64.b64encode(data).decode(),
                                             **note)
                except UnicodeDecodeError:
                    self.server.record.write("ws_frame", base64=base64.b64encode(data).decode(), **note)
                if opcode == 8:
                    code = struct.unpack("!H", data[:2])[0] if len(data) >= 2 else 1005
                    if not self.close_sent:
                        self.close(1000 if code == 1005 else code)
                    return code
                if opcode == 9:
                    self.send(10, data)
                elif opcode == 1 and self.server.script.get("websocket", {}).get("echo"):
                    self.send(1, data)
        except (EOFError, OSError):
            return code


class Connection:
    """One accepted connection: requests one after the other, each answered as scripted."""

    def __init__(self, server, number, sock):
        self.server = server
        self.number = number
        self.sock = sock
        self.buffer = b""

    def receive(self):
        chunk = self.sock.recv(BLOCK)
        if not chunk:
            raise EOFError
        self.buffer += chunk

    def serve(self):
        closer = "server"
        try:
            while self.serve_request():
                pass
        except EOFError:
            closer = "peer"
        except OSError:
            closer = "peer"
        finally:
            try:
                self.sock.close()
            except OSError:
                pass
            self.server.forget(self)
            self.server.record.write("connection_closed", conn=self.number, by=closer)

    def read_request(self):
        while b"\r\n\r\n" not in self.buffer:
            if len(self.buffer) > MAX_HEAD:
                raise EOFError
            self.receive()
        head, self.buffer = self.buffer.split(b"\r\n\r\n", 1)
        lines = head.decode("latin-1").split("\r\n")
        method, target, version = (lines[0].split(" ", 2) + ["", ""])[:3]
        headers = [[name.strip(), value.strip()] for name, _, value in (line.partition(":") for line in lines[1:])]
        lower = {name.lower(): value for name, value in headers}
        body_bytes = min(int(lower.get("content-length") or 0), MAX_BODY)
        while len(self.buffer) < body_bytes:
            self.receive()
        self.buffer = self.buffer[body_bytes:]
        return method, target, version, headers, lower, body_bytes

    def serve_request(self):
        """Serves one request; true when another may follow on this connection."""
        method, target, version, headers, lower, body_bytes = self.read_request()
        path = target.split("?", 1)[0]
        kind = "other"
        if path == "/":
            kind = "page" if "text/html" in lower.get("accept", "") else "probe"
        number = self.server.next_number("request")
        self.server.record.write("request", request=number, conn=self.number, kind=kind, method=method, target=target,
                                 version=version, headers=headers, body_bytes=body_bytes)
        if path == "/ws" and lower.get("upgrade", "").lower() == "websocket":
            return self.upgrade(headers, lower)
        response, place = self.server.choose(kind, path)
        return self.answer(number, response, place, method, version, lower)

    def upgrade(self, headers, lower):
        if not self.server.script.get("websocket", {}).get("accept", True):
            self.server.record.write("ws_refused", conn=self.number)
            self.sock.sendall(b"HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\nConnection: close\r\n\r\n")
            return False
        key = lower.get("sec-websocket-key", "") + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11"
        accept = base64.b64encode(hashlib.sha1(key.encode("latin-1")).digest()).decode()
        self.sock.sendall(("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                           f"Sec-WebSocket-Accept: {accept}\r\n\r\n").encode())
        websocket = WebSocket(self.server, self.server.next_number("ws"), self.sock, self.buffer)
        self.server.websockets[websocket.number] = websocket
        self.server.record.write("ws_open", ws=websocket.number, conn=self.number, headers=headers)
        code = websocket.serve()
        self.server.websockets.pop(websocket.number, None)
        self.server.record.write("ws_closed", ws=websocket.number, code=code)
        return False

    def wait_for_peer(self):
        try:
            while self.sock.recv(BLOCK):
                pass
        except OSError:
            pass

    def reset(self):
        self.sock.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))

    def answer(self, number, response, place, method, version, lower):
        status = response.get("status", 302 if response.get("redirect") else 200)
        sent = 0

        def done(outcome):
            self.server.record.write("response", request=number, status=status, bytes=sent, outcome=outcome,
                                     answer=place)
            return False

        if response.get("hang"):
            done("hung")
            self.wait_for_peer()
            raise EOFError
        if response.get("delay"):
            time.sleep(response["delay"])

        raw = payload(response, "raw")
        body = payload(response, "body")
        if body is None:
            body = b""
        keep = version == "HTTP/1.1" and not response.get("close") and lower.get("connection", "").lower() != "close"
        endless = response.get("never_ending")
        if raw is not None:
            head, body, keep = b"", raw, False
        else:
            given = response.get("headers", {})
            pairs = [list(pair) for pair in (given.items() if isinstance(given, dict) else given)]
            names = {name.lower() for name, _ in pairs}
            if "content-type" not in names and (body or endless):
                pairs.append(["Content-Type", response.get("content_type", "text/html; charset=utf-8")])
            if response.get("redirect"):
                pairs.append(["Location", response["redirect"]])
            length = response.get("content_length", None if endless else len(body))
            bodiless = status in (204, 304)
            if length is None and not bodiless:
                keep = False
            elif "content-length" not in names and not bodiless:
                pairs.append(["Content-Length", str(length)])
            if length != len(body) and not bodiless:
                keep = False
            if not keep:
                pairs.append(["Connection", "close"])
            reason = response.get("reason", "OK" if status == 200 else "Scripted")
            lines = [f"HTTP/1.1 {status} {reason}"] + [f"{name}: {value}" for name, value in pairs]
            head = ("\r\n".join(lines) + "\r\n\r\n").encode("utf-8", "surrogateescape")
            if bodiless or method == "HEAD":
                body = b""

        try:
            for limit in ("reset_after", "close_after"):
                if limit in response:
                    data = (head + body)[:response[limit]]
                    self.sock.sendall(data)
                    sent = len(data)
                    if limit == "reset_after":
                        self.reset()
                        return done("reset")
                    return done("closed")
            if response.get("body_delay"):
                self.sock.sendall(head)
                sent += len(head)
                time.sleep(response["body_delay"])
                head = b""
            self.sock.sendall(head + body)
            sent += len(head) + len(body)
            if endless:
                self.server.record.write("response", request=number, status=status, bytes=sent, outcome="endless",
                                         answer=place)
                chunk = endless.get("chunk", "x").encode()
                while True:
                    self.sock.sendall(chunk)
                    sent += len(chunk)
                    time.sleep(endless.get("interval", 0.1))
        except OSError:
            done("peer_closed")
            raise EOFError from None
        done("sent")
        return keep


class Server:
    """The whole scripted server: its script, record, listeners, sockets and timelines."""

    def __init__(self):
        self.record = Record(os.environ.get("VANTOREL_TEST_RECORD") or "scripted_server.record.jsonl")
        self.script = {}
        self.lock = threading.Lock()
        self.numbers = {}
        self.listeners = []
        self.connections = set()
        self.websockets = {}
        self.answered = {}

    def next_number(self, name):
        with self.lock:
            self.numbers[name] = self.numbers.get(name, 0) + 1
            return self.numbers[name]

    def leave(self, code):
        self.record.write("exit", code=code)
        os._exit(code)

    def die(self, name):
        number = getattr(signal, "SIG" + name)
        self.record.write("exit", signal=name)
        if number not in (signal.SIGKILL, signal.SIGSTOP):
            signal.pthread_sigmask(signal.SIG_UNBLOCK, [number])
        # To this thread: sent to the process, it would go to the one that waits for signals.
        signal.pthread_kill(threading.get_ident(), number)

    def forget(self, connection):
        with self.lock:
            self.connections.discard(connection)

    # --- Script ---

    def read_script(self):
        path = os.environ.get("VANTOREL_TEST_SCRIPT") or "scripted_server.json"
        try:
            with open(path, "rb") as file:
                self.script = json.load(file)
        except FileNotFoundError:
            self.script = {}
        except (OSError, ValueError) as error:
            self.record.write("script_error", path=path, error=str(error))
            sys.stderr.write(f"scripted server: {path}: {error}\n")
            self.leave(64)
        self.record.write("script", script=self.script)

    def choose(self, kind, path):
        """The response for a request, and its place in its list."""
        with self.lock:
            if path == "/":
                name = kind if kind in self.script else "root"
                answers = as_list(self.script.get(name, {}))
            else:
                name = path
                answers = as_list(self.script.get("routes", {}).get(path, {"status": 404, "body": "not here\n"}))
            place = min(self.answered.get(name, 0), len(answers) - 1)
            self.answered[name] = self.answered.get(name, 0) + 1
        response = answers[place]
        has_body = any(response.get(key) is not None for key in
                       ("body", "body_base64", "body_file", "raw", "raw_base64", "redirect", "never_ending"))
        if path == "/" and not has_body and response.get("status", 200) == 200:
            response = {**response, "body": DEFAULT_PAGE}
        return response, place

    # --- Listening ---

    def port(self):
        value = self.script.get("port", os.environ.get("WEBSOCKET_PORT", "8080"))
        return int(value)

    def listen(self):
        settings = self.script.get("listen", {})
        addresses = settings.get("addresses", ["127.0.0.1", "::1"])
        for address in addresses:
            try:
                port = self.port()
                family = socket.AF_INET6 if ":" in address else socket.AF_INET
                listener = socket.socket(family, socket.SOCK_STREAM)
                listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
                if family == socket.AF_INET6:
                    listener.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 1)
                listener.bind((address, port))
                listener.listen(128)
            except (OSError, OverflowError, ValueError) as error:
                self.record.write("listen_failed", address=address, port=self.script.get(
                    "port", os.environ.get("WEBSOCKET_PORT")), error=str(error))
                no_ipv6 = isinstance(error, OSError) and error.errno in (errno.EADDRNOTAVAIL, errno.EAFNOSUPPORT)
                if address == "::1" and no_ipv6 and self.listeners:
                    continue
                self.say(2, f"scripted server: can't listen on {address}: {error}\n".encode())
                code = settings.get("on_failure", 1)
                if code is not None:
                    self.leave(code)
                continue
            self.listeners.append(listener)
            self.record.write("listening", address=address, port=port)
            start_thread(self.accept, listener)

    def accept(self, listener):
        while True:
            try:
                sock, peer = listener.accept()
            except OSError:
                return
            sock.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            connection = Connection(self, self.next_number("connection"), sock)
            with self.lock:
                self.connections.add(connection)
            self.record.write("connection", conn=connection.number, peer=list(peer[:2]),
                              local=list(sock.getsockname()[:2]))
            start_thread(connection.serve)

    def stop_listening(self):
        for listener in self.listeners:
            # Closing alone would leave the accepting thread where it is, and the port open with it.
            try:
                listener.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass
            listener.close()
        self.listeners.clear()
        self.record.write("stopped_listening")

    def drop_connections(self):
        with self.lock:
            connections = list(self.connections)
        for connection in connections:
            try:
                connection.reset()
                connection.sock.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass

    # --- Output ---

    def say(self, fd, data):
        try:
            write_all(fd, data)
        except OSError as error:
            self.record.write("output_error", error=str(error))

    def flood(self, fd, megabytes, begin, end):
        line = b"0123456789 the quick brown fox jumps over the lazy dog and runs\n"
        block = line * (BLOCK // len(line))
        if begin:
            self.say(fd, begin.encode() + b"\n")
        try:
            for _ in range(int(megabytes * 1048576) // len(block)):
                write_all(fd, block)
        except OSError as error:
            self.record.write("output_error", error=str(error))
        if end:
            self.say(fd, end.encode() + b"\n")

    # --- Timeline ---

    def run_timeline(self, name, steps):
        for index, step in enumerate(steps):
            if "wait_for_file" in step:
                while not os.path.exists(step["wait_for_file"]):
                    time.sleep(0.005)
            if "wait_for_event" in step:
                self.record.wait_for(step["wait_for_event"])
            if "at" in step:
                time.sleep(max(0.0, START + step["at"] - time.monotonic()))
            if "wait" in step:
                time.sleep(step["wait"])
            what = sorted(set(step) - {"at", "wait", "wait_for_file", "wait_for_event", "stream", "begin", "end"})
            self.record.write("step", timeline=name, index=index, what=what)
            self.run_step(step)

    def run_step(self, step):
        fd = 2 if step.get("stream") == "stderr" else 1
        text = payload(step, "print")
        if text is not None:
            self.say(fd, text)
        if "flood_mb" in step:
            self.flood(fd, step["flood_mb"], step.get("begin"), step.get("end"))
        if "repeat" in step:
            repeat = step["repeat"]
            done = 0
            while repeat.get("count", 0) in (0,) or done < repeat["count"]:
                self.say(fd, repeat.get("text", "x").encode("utf-8", "surrogateescape"))
                done += 1
                time.sleep(repeat.get("interval", 0.1))
        if step.get("close_output"):
            # Something harmless takes the number's place, so that no later file becomes the output.
            null = os.open(os.devnull, os.O_RDWR)
            for number in {"stdout": [1], "stderr": [2]}.get(step["close_output"], [1, 2]):
                os.dup2(null, number)
            os.close(null)
        if "spawn" in step:
            self.spawn(step["spawn"])
        if step.get("listen"):
            self.listen()
        if step.get("stop_listening"):
            self.stop_listening()
        if step.get("drop_connections"):
            self.drop_connections()
        if "set" in step:
            with self.lock:
                self.script = {**self.script, **step["set"]}
                for name in step["set"]:
                    self.answered.pop(name, None)
                if "routes" in step["set"]:
                    for path in step["set"]["routes"]:
                        self.answered.pop(path, None)
        for websocket in list(self.websockets.values()):
            if "ws_send" in step:
                websocket.send(1, step["ws_send"].encode("utf-8", "surrogateescape"))
            if "ws_send_base64" in step:
                websocket.send(2, base64.b64decode(step["ws_send_base64"]))
            if "ws_raw_base64" in step:
                websocket.send_raw(base64.b64decode(step["ws_raw_base64"]))
            if "ws_close" in step:
                websocket.close(step["ws_close"])
            if step.get("ws_drop"):
                websocket.drop()
        if "signal" in step:
            self.die(step["signal"])
        if "exit" in step:
            self.leave(step["exit"])

    def spawn(self, settings):
        argv = settings.get("argv", ["/bin/sleep", "30"])
        options = {"setsigmask": [], "setsigdef": [signal.SIGPIPE]}
        if settings.get("new_session"):
            options["setsid"] = True
        elif settings.get("new_group"):
            options["setpgroup"] = 0
        for _ in range(settings.get("count", 1)):
            pid = os.posix_spawn(argv[0], argv, os.environ, **options)
            self.record.write("spawned", pid=pid, argv=argv)

    # --- Signals ---

    def handle_signal(self, info):
        name = signal.Signals(info.si_signo).name[3:]
        self.record.write("signal", name=name, number=info.si_signo, sender=info.si_pid)
        rule = self.script.get("signals", {}).get(name, {})
        if rule.get("ignore") or (not rule and name in ("USR1", "USR2")):
            return
        start_thread(self.obey, name, rule)

    def obey(self, name, rule):
        if rule.get("print"):
            self.say(1, rule["print"].encode("utf-8", "surrogateescape"))
        time.sleep(rule.get("delay", 0))
        if rule.get("die"):
            self.die(name)
        self.leave(rule.get("exit", 0))

    # --- Run ---

    def run(self):
        facts = process_facts()
        watched = {getattr(signal, "SIG" + name) for name in WATCHED_SIGNALS}
        for number in watched:
            signal.signal(number, signal.SIG_DFL)  # an inherited "ignore" would make a blocked signal vanish
        signal.pthread_sigmask(signal.SIG_BLOCK, watched)
        self.record.write("start", **facts)
        self.read_script()
        start_thread(self.begin)
        while True:
            self.handle_signal(signal.sigwaitinfo(watched))

    def begin(self):
        timelines = [("timeline", self.script.get("timeline", []))]
        timelines += [(f"timelines[{index}]", steps) for index, steps in enumerate(self.script.get("timelines", []))]
        for name, steps in timelines:
            if steps:
                start_thread(self.run_timeline, name, steps)
        banner = self.script.get("banner", "scripted server ready\n")
        if banner:
            self.say(1, banner.encode("utf-8", "surrogateescape"))
        settings = self.script.get("listen", {})
        time.sleep(settings.get("delay", 0))
        if not settings.get("never"):
            self.listen()


def start_thread(function, *arguments):
    threading.Thread(target=function, args=arguments, daemon=True).start()


if __name__ == "__main__":
    Server().run()
