# Vantorel. MIT licence, see LICENSE.
# A user in a hurry: everything that is done with the shell in weeks, done to it in minutes, each step seen to its end.

import itertools
import json
import os
import random
import re

from Xlib import X

from harness import place, wait
from harness.other import OtherWindow
from harness.page import html
from harness.server import ScriptedServer
from harness.shell import LOADED

PATIENCE = 60
HOTKEYS = {"s": "screenshot_active", "d": "design", "f": "voice_design", "h": "help", "z": "stop",
           "b": "screenshot_browser", "q": "sql", "w": "clear", "r": "review", "u": "quiz", "i": "status", "m": "algo",
           "space": "voice"}
LETTERS = "asdfghjklqwertyuiopzxcvbnm"

# The page does what it is told to by a file of its server: see User.
PAGE = html("""
const actions = {
    alert: () => alert('An alert with some text'),
    confirm: () => confirm('A question?'),
    prompt: () => prompt('A name?', 'Ada'),
    popup: () => window.open('http://example.org/page'),
    console: () => { for (let i = 0; i < 200; i++) console.log('line ' + i, {number: i}, [i]); },
};
(async function obey() {
    try {
        const [number, action] = (await (await fetch('/wish', {cache: 'no-store'})).text()).split(' ');
        if (number !== (sessionStorage.number || '0')) {
            sessionStorage.number = number;
            actions[action]();
        }
    } catch {
        // The server is away for a moment.
    }
    setTimeout(obey, 50);
})();
setInterval(() => console.warn('tick'), 250);
(function connect() {
    window.ws = new WebSocket('ws://' + location.host + '/ws');
    window.ws.onopen = () => report('socket', 'open');
    window.ws.onclose = () => setTimeout(connect, 100);
})();
""", "<h1>soak</h1><p>Text that is laid out anew when the window or the zoom changes.</p>" * 20)


class User:
    """Works with one shell. The server that the shell starts only prints; the page comes from another, which is ended
    and started again while the shell goes on. No key is pressed into the page, see soak.py: a file tells it what to do,
    and the menus are used with the mouse."""

    def __init__(self, world):
        self._world = world
        self._random = random.Random(20)
        self.done = dict.fromkeys(("hotkeys", "keys", "console lines asked for", "panels", "reloads", "zooms", "modes",
                                   "moves and sizes", "pop-ups", "server restarts"), 0)
        self._pages = ScriptedServer(place.Elsewhere(world.root, "pages"))
        self._pages.page(PAGE)
        self._wishes = -1
        self._wish_file = os.path.join(world.root, "wish")
        self._wish("nothing")  # number 0, which no page obeys
        self._pages.set(routes={"/report": {"status": 204}, "/wish": {"body_file": self._wish_file}})
        self._read = 0
        self._frames = 0
        self._sockets = 0
        self._starts = 0
        world.server.set(listen={"never": True},
                         timeline=[{"repeat": {"text": "a line from the server, of usual length\n", "interval": 0.02,
                                               "count": 0}}])
        self._opened = self._install_browser()
        world.desktop()
        # On a busy machine the display would take a short press for a long one.
        world.screen.display.change_keyboard_control(auto_repeat_mode=X.AutoRepeatModeOff)
        self._page_server = None
        self._start_page_server()
        self.shell = world.launch()
        self.shell.wait_loaded(PATIENCE)
        self._wait_socket(0)
        self._window = world.window(self.shell)
        self._activate()

    def _install_browser(self):
        """A default browser that only writes down that it was started."""
        home, seen = self._world.home, os.path.join(self._world.root, "browser.seen")
        program = os.path.join(self._world.root, "browser")
        with open(program, "w", encoding="ascii") as file:
            file.write(f"#!/bin/sh\necho >> {seen}\n")
        os.chmod(program, 0o755)
        folder = os.path.join(home.data, "applications")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "soak-browser.desktop"), "w", encoding="ascii") as file:
            file.write(f"[Desktop Entry]\nType=Application\nName=Browser\nExec={program} %u\n"
                       "MimeType=x-scheme-handler/http;\n")
        with open(os.path.join(home.config, "mimeapps.list"), "w", encoding="ascii") as file:
            file.write("[Default Applications]\nx-scheme-handler/http=soak-browser.desktop\n")
        return lambda: os.path.getsize(seen) if os.path.exists(seen) else 0

    # The other server, and what it has recorded

    def _start_page_server(self):
        before = self._count_starts()
        self._page_server = self._world.children.start(
            [self._pages._bundle.server], name="pages", cwd=self._pages._bundle.resources,
            env=self._world.home.environment() | {"WEBSOCKET_PORT": str(self._world.port)})
        wait.until(lambda: self._count_starts() > before, PATIENCE, "the page's server listens")

    def _update(self):
        record = self._pages.record()
        for entry in record[self._read:]:
            if entry["event"] == "listening":
                self._starts += 1
            elif entry["event"] == "request" and entry["target"].startswith("/report?socket="):
                self._sockets += 1
            elif entry["event"] == "ws_frame" and entry["opcode"] == 1:
                assert json.loads(entry["text"])["hotkey"] in HOTKEYS.values(), entry["text"]
                self._frames += 1
        self._read = len(record)

    def _count_starts(self):
        self._update()
        return self._starts

    def _count_frames(self):
        self._update()
        return self._frames

    def _count_sockets(self):
        """How often a page has told that its socket is open: until then, hotkeys are lost, as they should be."""
        self._update()
        return self._sockets

    def _wait_socket(self, before):
        wait.until(lambda: self._count_sockets() > before, PATIENCE, "the page's socket opens")

    def _wish(self, action):
        """Has the page do something the next time it asks."""
        self._wishes += 1
        with open(self._wish_file + ".new", "w", encoding="ascii") as file:
            file.write(f"{self._wishes} {action}")
        os.rename(self._wish_file + ".new", self._wish_file)

    # What a user does

    def _activate(self):
        screen = self._world.screen
        screen.activate(self._window, PATIENCE)

        def focused():
            focus = screen.display.get_input_focus().focus
            # The toolkit takes the keys with a window inside of the one that shows.
            return hasattr(focus, "id") and self._window.id in (focus.id, focus.query_tree().parent.id)

        wait.until(focused, PATIENCE, "the window gets the keys")

    def work_elsewhere(self):
        """Hotkeys and text while another program has the keyboard."""
        other = OtherWindow(self._world.screen)
        self.press_hotkeys()
        self.type_text()
        other.close()
        self._activate()

    def press_hotkeys(self):
        """All thirteen, three times; each has to arrive."""
        before = self._count_frames()
        for _ in range(3):
            for key in HOTKEYS:
                self._world.hands.hotkey(key)
        self.done["hotkeys"] += 39
        wait.until(lambda: self._count_frames() == before + 39, PATIENCE,
                   lambda: f"39 hotkeys arrive, {self._count_frames() - before} did")

    def type_text(self):
        """Ordinary keys."""
        for _ in range(100):
            self._world.hands.press(self._random.choice(LETTERS))
        self.done["keys"] += 100

    def write_console_lines(self):
        """Two hundred console messages of three values each."""
        mark = self.shell.mark()
        self._wish("console")
        self.shell.wait_line(re.compile("^🔵 JS Log: line 199 "), PATIENCE, mark)
        self.done["console lines asked for"] += 200

    def answer_panels(self):
        """Alert, confirm and prompt, with one answer or the other."""
        for panel, answer in (("alert", "return"), ("confirm", "return"), ("confirm", "escape"), ("prompt", "return"),
                              ("prompt", "escape")):
            self._wish(panel)
            dialog = self._world.dialog(self.shell, PATIENCE)
            self._world.screen.activate(dialog, PATIENCE)
            if panel == "prompt":
                self._world.hands.type("name")
            self._answer(answer)
            self._activate()
            self.done["panels"] += 1

    def _answer(self, key):
        def answered():
            self._world.hands.press(key)
            return wait_quietly(lambda: not self._world.dialogs(self.shell), 1)
        wait.until(answered, PATIENCE, "the panel closes")

    def zoom(self):
        """In, out and back."""
        for item in ("Zoom In", "Zoom Out", "Actual Size"):
            self._world.choose(self.shell, "View", item)
            self.done["zooms"] += 1

    def toggle_modes(self):
        """Both modes, there and back, as far as the defaults store."""
        for item, name in (("Always on Top", "alwaysOnTop"), ("Hide in Screenshots", "hideInScreenshots")) * 2:
            before = self._world.home.read_defaults().get(name)
            self._world.choose(self.shell, "Vantor", item)
            wait.until(lambda: self._world.home.read_defaults().get(name) not in (None, before), PATIENCE,
                       f"{name} changes")
            self.done["modes"] += 1

    def move_window(self):
        """Sizes and places all over the screen, the first size at last."""
        screen = self._world.screen
        for width, height in ((700, 500), (1000, 800), (900, 750)):
            screen.resize(self._window, width, height, PATIENCE)
            x, y = self._random.randint(0, 300), self._random.randint(0, 150)
            screen.move(self._window, x, y)
            wait.settled(lambda: screen.geometry(self._window), 0.1, PATIENCE)
            self.done["moves and sizes"] += 2

    def request_popup(self):
        """A new window for the page: one start of the browser."""
        before = self._opened()
        self._wish("popup")
        wait.until(lambda: self._opened() > before, PATIENCE, "the browser starts")
        self.done["pop-ups"] += 1

    def reload(self):
        """By the menu; the page connects again."""
        mark, sockets = self.shell.mark(), self._count_sockets()
        self._world.choose(self.shell, "View", "Reload")
        self.shell.wait_line(LOADED, PATIENCE, mark)
        self._wait_socket(sockets)
        self.done["reloads"] += 1

    def look_at_about(self):
        """The About panel."""
        self._world.choose(self.shell, "Vantor", "About Vantor")
        self._world.screen.activate(self._world.dialog(self.shell, PATIENCE), PATIENCE)
        self._answer("return")
        self._activate()
        self.done["panels"] += 1

    def restart_server(self):
        """The page's server is killed and comes back; the page finds it again."""
        sockets = self._count_sockets()
        self._page_server.kill()
        self._page_server.wait()
        self._start_page_server()
        self._wait_socket(sockets)
        self.done["server restarts"] += 1

    def work_until(self, over, rest):
        """Round after round until `over()` is true; calls `rest()` each time the page's server has come back, with nothing
        going on."""
        for number in itertools.count(1):
            for step in (self.work_elsewhere, self.write_console_lines, self.zoom, self.toggle_modes,
                         self.answer_panels, self.request_popup, self.reload, self.move_window):
                step()
                if over():
                    return
            if number % 3 == 0:
                self.look_at_about()
                self.restart_server()
                rest()


def wait_quietly(condition, seconds):
    """Whether the condition comes true within the time."""
    try:
        return wait.until(condition, seconds, "it")
    except AssertionError:
        return False
