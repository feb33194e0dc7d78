# Vantorel. MIT licence, see LICENSE.
# How the server is prepared and launched: what is wrong with it and what that shows, and the environment it runs with.

import os
import re
import struct

from harness import children, wait

# Writes what the kernel says about the process into files beside it, then idles.
TELLER = """#!/bin/sh
/bin/cat /proc/$$/environ > environ.seen
/bin/cat /proc/$$/status > status.seen
/bin/ls -l /proc/$$/fd > fds.seen
/bin/cat /proc/$$/stat > stat.seen
/bin/readlink /proc/$$/cwd > cwd.seen
: > all.seen
exec /bin/sleep 1000
"""


def told(world, name):
    """What the teller has written, as bytes."""
    wait.until(lambda: os.path.exists(os.path.join(world.bundle.resources, "all.seen")), 10, "the server has told all")
    with open(os.path.join(world.bundle.resources, f"{name}.seen"), "rb") as file:
        return file.read()


def environment_seen(world):
    """The environment of the server as a dictionary; fails on entries that come twice."""
    entries = [entry.partition(b"=")[::2] for entry in told(world, "environ").split(b"\0")[:-1]]
    names = [name for name, _ in entries]
    assert len(names) == len(set(names)), f"variables that come twice: {sorted(names)}"
    return {os.fsdecode(name): os.fsdecode(value) for name, value in entries}


def with_env_file(world, content, environment=None):
    """Launches with that `.env` file and returns what the server got of it: all but inherited and fixed variables."""
    world.bundle.use_server(TELLER)
    world.bundle.write_env(content)
    shell = world.launch(environment=environment)
    shell.wait_launched()
    assert shell.find("✅ .env file found (will be loaded into environment)")
    seen = environment_seen(world)
    for name in ("WEBSOCKET_ENABLED", "WEBSOCKET_PORT", "DISABLE_NATIVE_HOTKEYS"):
        seen.pop(name)
    return {name: value for name, value in seen.items() if shell.environment.get(name) != value}


def expect_alert(world, shell, title, message):
    """One alert with these texts and one button; answered with OK, after which the window still works."""
    dialog = world.dialog(shell)
    wait.until(lambda: world.dialog_labels(shell)[:2] == [title, message], 5,
               lambda: f"alert {title!r}, {message!r}; it says {world.dialog_labels(shell)}")
    wait.same(world.dialog_buttons(shell), ["OK"], "buttons")
    world.screen.activate(dialog)
    world.hands.press("return")
    wait.until(lambda: not world.dialogs(shell), 5, "the alert closes")
    assert world.screen.ping(world.window(shell)) < 1


def test_missing(world):
    os.unlink(world.bundle.server)
    shell = world.launch()
    status = f"❌ Server binary not found at: {world.bundle.server}"
    world.wait_status(shell, status)
    world.wait_color(world.window(shell), "red")
    expect_alert(world, shell, "Server binary not found",
                 "Please rebuild the application with the Go server included.")
    shell.wait_launched()
    env_path = shell.find(f"📁 .env path: {world.bundle.env_file}").index
    wait.same(shell.texts(env_path + 1)[0], "⌨️ Setting up global hotkeys...", "the line after the paths")
    assert not shell.find(re.compile("❌ Server binary not found"))
    wait.stays(lambda: world.status(shell) == status, 4.5, "the red status stays")
    assert not shell.find(re.compile("Loading"))
    mark = shell.mark()
    shell.quit()
    wait.same(shell.texts(mark), [], "log lines of the quit")


def test_quit_while_the_alert_is_up(world):
    os.unlink(world.bundle.server)
    shell = world.launch()
    world.dialog(shell)
    shell.quit(5)
    assert world.home.saved_size(), "the frame is stored"


def fails_to_launch(world):
    """The outcome of every launch that fails; returns the shell."""
    shell = world.launch()
    line = shell.wait_line(re.compile(r"^❌ Failed to start server: .+"))
    description = line.text.partition(": ")[2]
    world.wait_status(shell, line.text)
    world.wait_color(world.window(shell), "red")
    expect_alert(world, shell, "Server Start Failed", description)
    shell.wait_launched()
    wait.same(shell.texts(line.index - 1)[0], "🚀 Calling run() on process...", "the line before the failure")
    wait.same(shell.texts(line.index + 1)[0], "⌨️ Setting up global hotkeys...", "the line after the failure")
    wait.stays(lambda: world.status(shell) == line.text and not shell.find(re.compile("Loading")), 3.5,
               "the red status stays, no page is loaded")
    mark = shell.mark()
    shell.quit()
    wait.same(shell.texts(mark), [], "log lines of the quit")
    return shell


def test_directory(world):
    os.unlink(world.bundle.server)
    os.mkdir(world.bundle.server)
    fails_to_launch(world)


def test_no_execute_bit_and_none_to_be_had(world):
    os.unlink(world.bundle.server)
    folder = world.empty_folder("disk")
    os.symlink(os.path.join(folder, "server"), world.bundle.server)
    with world.mounted(folder, "size=64k", read_only=True, files=[("server", "#!/bin/sh\nexit 0\n", 0o644)]):
        shell = fails_to_launch(world)
    assert shell.find(re.compile(r"^⚠️ Warning: Could not set executable permissions: .+"))


def test_text_without_an_interpreter_line(world):
    world.bundle.use_server("echo this is no program > ran.seen\nexec sleep 1000\n")
    fails_to_launch(world)
    assert not os.path.exists(os.path.join(world.bundle.resources, "ran.seen")), "no shell runs it in its stead"


def test_missing_interpreter(world):
    world.bundle.use_server("#!/no/such/interpreter\n")
    fails_to_launch(world)


def test_binary_for_another_machine(world):
    header = b"\x7fELF\x02\x01\x01" + bytes(9) + struct.pack("<HHIQQQIHHHHHH", 2, 183, 1, 0x400000, 64, 0, 0, 64, 56,
                                                             0, 64, 0, 0)
    world.bundle.use_server(header + bytes(4096))
    fails_to_launch(world)


def test_empty_file(world):
    world.bundle.use_server(b"")
    fails_to_launch(world)


def test_permissions_are_set(world):
    for mode in (0o600, 0o644, 0o777, 0o4711):
        world.bundle.use_server("#!/bin/sh\nexec sleep 1000\n", mode)
        shell = world.launch()
        shell.wait_line("✅ Server process started successfully")
        wait.same(oct(world.bundle.server_mode()), oct(0o755), f"mode that was {oct(mode)}")
        shell.wait_launched()
        shell.quit()


def test_environment_is_inherited_and_three_variables(world):
    world.bundle.use_server(TELLER)
    shell = world.launch(environment={"WEBSOCKET_ENABLED": "no", "DISABLE_NATIVE_HOTKEYS": "0", "UNICODE": "🤖 ä",
                                      "EMPTY": "", "LINES": "a\nb", "EQUALS": "a=b=c"})
    shell.wait_launched()
    wanted = shell.environment | {"WEBSOCKET_ENABLED": "true", "WEBSOCKET_PORT": str(world.port),
                                  "DISABLE_NATIVE_HOTKEYS": "true"}
    seen = environment_seen(world)
    wait.same({name: seen.get(name) for name in wanted}, wanted, "inherited and fixed variables")
    wait.same(sorted(set(seen) - set(wanted)), [], "variables that nobody gave")


def test_port_is_the_converted_number(world):
    world.bundle.use_server(TELLER)
    shell = world.launch(environment={"WEBSOCKET_PORT": "+0009123"})
    shell.wait_launched()
    wait.same(environment_seen(world)["WEBSOCKET_PORT"], "9123", "port that the server is given")


def test_env_file_rules(world):
    seen = with_env_file(world, "# comment\n   # indented comment\n\nPLAIN=value\nHASH=#x\nNOTHING=\nMANY=a=b\n"
                                "SPACED = padded\n\t TRIMMED=both \t\nQUOTED=\"in quotes\"\nSINGLE='q'\nno entry\n"
                                "export EXPORTED=1\nTWICE=first\nTWICE=second\nREF=$PLAIN\nESC=a\\nb\n"
                                "WEBSOCKET_PORT=1\nWEBSOCKET_ENABLED=false\nDISABLE_NATIVE_HOTKEYS=false\n"
                                "EMOJI=🤖 ä\nLAST=no line end")
    wait.same(seen, {"PLAIN": "value", "HASH": "#x", "NOTHING": "", "MANY": "a=b", "SPACED ": " padded",
                     "TRIMMED": "both", "QUOTED": '"in quotes"', "SINGLE": "'q'", "export EXPORTED": "1",
                     "TWICE": "second", "REF": "$PLAIN", "ESC": "a\\nb", "EMOJI": "🤖 ä", "LAST": "no line end"},
              "variables from the file")


def test_env_file_wins_over_inherited(world):
    seen = with_env_file(world, "PATH=/from/file\nMINE=file\n", {"MINE": "inherited"})
    wait.same(seen, {"PATH": "/from/file", "MINE": "file"}, "variables from the file")


def test_env_file_line_breaks_and_blanks(world):
    seen = with_env_file(world, "A=1\r\nB=2\rC=3\vD=4\fE=5\u0085F=6\u2028G=7\u2029H=8\n"
                                "\u00a0\u2003\u3000I=9\u00a0\u202f\nJ=a\u2003b\n")
    wait.same(seen, {"A": "1", "B": "2", "C": "3", "D": "4", "E": "5", "F": "6", "G": "7", "H": "8", "I": "9",
                     "J": "a\u2003b"}, "variables from the file")


def test_env_file_that_is_not_utf8(world):
    for content in (b"GOOD=1\nBAD=\xff\n", b"OVERLONG=\xc0\xaf\n", b"SURROGATE=\xed\xa0\x80\n", b"CUT=\xf0\x9f\xa4"):
        wait.same(with_env_file(world, content), {}, f"variables from {content!r}")
        os.unlink(os.path.join(world.bundle.resources, "all.seen"))
        world.shells[-1].quit()


def test_env_file_with_nul_bytes(world):
    seen = with_env_file(world, b"BEFORE=1\nWITH=a\0b\nAFTER=2\n")
    assert seen.get("BEFORE", "1") == "1" and seen.get("AFTER", "2") == "2", f"variables from the file: {seen}"
    assert "WITH" not in seen, "a value is not cut at a NUL"
    assert set(seen) <= {"BEFORE", "AFTER"}


def test_env_file_that_is_a_directory(world):
    world.bundle.use_server(TELLER)
    os.mkdir(world.bundle.env_file)
    shell = world.launch()
    shell.wait_launched()
    assert shell.find("✅ .env file found (will be loaded into environment)")
    assert environment_seen(world)["WEBSOCKET_PORT"] == str(world.port)


def test_working_directory_and_process_group(world):
    world.bundle.use_server(TELLER)
    shell = world.launch()
    pid = shell.server_pid()
    wait.same(told(world, "cwd").decode().strip(), world.bundle.resources, "working directory")
    _, _, parent, group, _ = children.stat(pid)
    wait.same((parent, group), (shell.pid, pid), "parent and process group")


def test_signals_and_descriptors_of_the_server(world):
    world.launch().wait_launched()
    start = world.server.wait_event("start")[0]
    # Two bits are the C library's own signals; the interpreter itself ignores SIGPIPE and SIGXFSZ.
    own = 1 << 31 | 1 << 32 | 1 << 12 | 1 << 24
    wait.same(hex(int(start["sig_blocked"], 16)), "0x0", "blocked signals")
    wait.same(hex(int(start["sig_ignored"], 16) & ~own), "0x0", "ignored signals")
    fds = {number: target for number, target in start["fds"].items() if "scripted_server" not in target}
    wait.same(sorted(fds), ["0", "1", "2"], f"descriptors of {fds}")
    assert fds["1"].startswith("pipe:") and fds["1"] == fds["2"], "output and errors share one pipe"


def test_a_broken_pipe_ends_the_server_as_usual(world):
    world.bundle.use_server("#!/bin/sh\n(sh -c 'kill -PIPE $$; echo survived'; echo \"status $?\")\n"
                            "exec /bin/sleep 1000\n")
    shell = world.launch()
    line = shell.wait_line(re.compile("^🤖 Server: "))
    assert line.text.startswith("🤖 Server: status 14") or "Broken" in line.text, line.text
    assert not shell.find(re.compile("survived"))
