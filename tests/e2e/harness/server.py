# Vantorel. MIT licence, see LICENSE.
# The scripted server of a case: what it is told to answer, and what it has recorded.

import json
import os
import urllib.parse

from harness import wait

SOURCE = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "servers",
                      "scripted_server.py")


class ScriptedServer:
    """The bundle's server, unless a case puts another in its place. Changes must come before the shell starts;
    `later` prepares what `trigger` then sets off in the running server."""

    def __init__(self, bundle):
        self._bundle = bundle
        self._script_file = os.path.join(bundle.resources, "scripted_server.json")
        self._record_file = os.path.join(bundle.resources, "scripted_server.record.jsonl")
        self._offset = 0
        self._record = []
        self.script = {"banner": None, "routes": {"/report": {"status": 204}}}
        bundle.use_program(SOURCE, "/usr/bin/python3 -I")
        self._write()

    def _write(self):
        with open(self._script_file, "w", encoding="utf-8") as file:
            json.dump(self.script, file)

    def set(self, **members):
        """Sets members of the script (see the server's own description of them)."""
        self.script.update(members)
        self._write()

    def page(self, *pages):
        """What the page is: HTML texts or whole responses, one per request, the last one repeated."""
        self.set(page=[{"body": page} if isinstance(page, str) else page for page in pages])

    def probes(self, *replies):
        """Answers to the probes: responses or statuses, one per probe, the last one repeated."""
        self.set(probe=[reply if isinstance(reply, dict) else {"status": reply, "body": "ok"} for reply in replies])

    def route(self, path, answer):
        """What another path gives: HTML text or a whole response."""
        self.script["routes"][path] = {"body": answer} if isinstance(answer, str) else answer
        self._write()

    def timeline(self, *steps):
        """One more timeline of steps, side by side with the others."""
        self.script.setdefault("timelines", []).append(list(steps))
        self._write()

    def later(self, name, *steps):
        """Steps that `trigger(name)` will set off."""
        first, *rest = steps
        self.timeline({"wait_for_file": name, **first}, *rest)

    def trigger(self, name):
        """Sets off what `later` has prepared."""
        with open(os.path.join(self._bundle.resources, name), "wb"):
            pass

    def start(self, children, port, environment):
        """Starts the server by itself, away from any shell, and waits until it listens."""
        process = children.start([self._bundle.server], name="other", cwd=self._bundle.resources,
                                 env=environment | {"WEBSOCKET_PORT": str(port)})
        self.wait_event("listening", 2)
        return process

    # The record

    def record(self):
        """Everything recorded so far, as dictionaries with "event" and "t"."""
        try:
            with open(self._record_file, "rb") as file:
                file.seek(self._offset)
                text = file.read()
        except FileNotFoundError:
            return []
        whole = text[:text.rfind(b"\n") + 1]
        self._offset += len(whole)
        self._record += [json.loads(line) for line in whole.splitlines()]
        return self._record

    def events(self, name):
        """The recorded events of that name."""
        return [entry for entry in self.record() if entry["event"] == name]

    def wait_event(self, name, count=1, timeout=10):
        """Waits for that many events of that name and returns them."""
        wait.until(lambda: len(self.events(name)) >= count, timeout,
                   lambda: f"{count} {name} events, there are {len(self.events(name))}", 0.01)
        return self.events(name)

    def requests(self, kind):
        """The requests of a kind ("probe", "page", "other") or for a path."""
        return [entry for entry in self.events("request")
                if (entry["target"].partition("?")[0] == kind if kind.startswith("/") else entry["kind"] == kind)]

    def wait_requests(self, kind, count=1, timeout=10):
        """Waits for that many requests and returns them."""
        wait.until(lambda: len(self.requests(kind)) >= count, timeout,
                   lambda: f"{count} requests of {kind}, there are {len(self.requests(kind))}", 0.01)
        return self.requests(kind)

    def reports(self, name=None):
        """What pages have told with report(name, value): a list of values, or of (name, value)."""
        found = []
        for request in self.requests("/report"):
            query = urllib.parse.parse_qsl(request["target"].partition("?")[2], keep_blank_values=True)
            found += [(key, json.loads(value)) for key, value in query]
        return found if name is None else [value for key, value in found if key == name]

    def wait_report(self, name, count=1, timeout=10):
        """Waits for that many reports of the name and returns the last of them."""
        wait.until(lambda: len(self.reports(name)) >= count, timeout,
                   lambda: f"report {name!r} number {count}; there are {self.reports()[-20:]}", 0.01)
        return self.reports(name)[count - 1]

    def wait_socket(self, count=1, timeout=10):
        """Waits until a page has told that its socket is open: the server knows that a little earlier than the page."""
        wait.until(lambda: self.reports("socket").count("open") >= count, timeout,
                   lambda: f"{count} open sockets; reports {self.reports('socket')}", 0.01)

    def frames(self):
        """Texts of all frames that pages have sent over their sockets."""
        return [entry["text"] for entry in self.events("ws_frame") if entry["opcode"] == 1]

    def hotkeys(self):
        """Names of all hotkeys that came over the sockets; fails when a frame has another form."""
        names = []
        for text in self.frames():
            name = json.loads(text)["hotkey"]
            wait.same(text, '{"type":"trigger_hotkey","hotkey":"' + name + '"}', "frame")
            names.append(name)
        return names

    def wait_hotkeys(self, wanted, timeout=5):
        """Waits for as many hotkeys, and fails unless they are just these, in that order."""
        wait.until(lambda: len(self.hotkeys()) >= len(wanted), timeout,
                   lambda: f"{len(wanted)} hotkeys, there are {self.hotkeys()}", 0.01)
        wait.same(self.hotkeys(), list(wanted), "hotkeys at the server")

    def signals(self):
        """Names of all signals that the server was sent."""
        return [entry["name"] for entry in self.events("signal")]
