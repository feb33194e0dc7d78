# Vantorel. MIT licence, see LICENSE.
# The life of a running server: what it prints, how it ends, and what the shell makes of both.

import re

from harness import children, wait
from harness.page import html
from harness.status import ORANGE_STATUS

PREFIX = "🤖 Server: "


def relayed(shell):
    """All log lines with the server's prefix, without it."""
    return [line[len(PREFIX):] for line in shell.texts() if line.startswith(PREFIX)]


def ends(world, script, code):
    """A server that ends by itself; returns the shell after the line that says so, and the statuses since its start."""
    world.bundle.use_server(script)
    shell = world.launch()
    statuses = world.watch_statuses(shell)
    line = shell.wait_line(re.compile("^🛑 Server process terminated with exit code: "))
    wait.same(line.text, f"🛑 Server process terminated with exit code: {code}", "line of the end")
    return shell, statuses


def shown(statuses, text):
    """Waits until a status has been seen; it may be gone again by then."""
    wait.until(lambda: text in statuses(), 2, lambda: f"the status {text!r}; seen: {statuses()}")


def test_exits_with_0(world):
    shell, statuses = ends(world, "#!/bin/sh\nsleep 0.7\nexit 0\n", 0)
    starting = "🔄 Server starting... Waiting for connection..."
    world.wait_status(shell, ORANGE_STATUS, 4)
    shown(statuses, ORANGE_STATUS)
    wait.same(statuses()[-2:], [starting, ORANGE_STATUS], "statuses up to the first probe")
    failed = shell.wait_line(re.compile("^❌ Provisional navigation failed: ")).text.partition(": ")[2]
    shown(statuses, f"❌ Failed to connect: {failed}")
    world.wait_status(shell, ORANGE_STATUS, 4)
    wait.stays(lambda: world.status(shell) == ORANGE_STATUS, 2.5, lambda: f"the status is {world.status(shell)}")


def test_exits_at_once_with_1(world):
    world.bundle.use_server("#!/bin/sh\nexit 1\n")
    shell = world.launch()
    statuses = world.watch_statuses(shell)
    shell.wait_launched()
    end = shell.wait_line("🛑 Server process terminated with exit code: 1")
    assert shell.find("✅ Server process started successfully").index < end.index
    shown(statuses, "❌ Server exited with code 1")
    world.wait_status(shell, ORANGE_STATUS, 4)
    shell.wait_line(re.compile("^❌ Provisional navigation failed: "))
    wait.same(shell.count(re.compile("terminated with exit code")), 1, "lines of the end")


def test_large_code(world):
    _, statuses = ends(world, "#!/bin/sh\nsleep 1\nexit 255\n", 255)
    shown(statuses, "❌ Server exited with code 255")


def test_killed_by_a_signal(world):
    _, statuses = ends(world, "#!/bin/sh\nsleep 1\nkill -KILL $$\n", 9)
    shown(statuses, "❌ Server exited with code 9")


def test_ends_by_the_termination_signal(world):
    _, statuses = ends(world, "#!/bin/sh\nsleep 1\nkill -TERM $$\n", 15)
    shown(statuses, "❌ Server exited with code 15")


def idle(world, script):
    """A server with nothing to relay: the shell uses under 1 % of a core over 5 s."""
    world.bundle.use_server(script)
    shell = world.launch()
    shell.wait_line(re.compile("^❌ Provisional navigation failed: "))
    wait.settled(lambda: children.cpu_seconds(shell.pid), 0.5, 10)
    before = children.cpu_seconds(shell.pid)
    wait.stays(shell.running, 5, "the shell runs", 0.5)
    used = children.cpu_seconds(shell.pid) - before
    assert used <= 0.05, f"{used:.2f} s of processor time in 5 s"
    return shell


def test_closes_its_output_and_lives_on(world):
    shell = idle(world, "#!/bin/sh\nexec >/dev/null 2>&1\nexec sleep 1000\n")
    assert children.alive(shell.server_pid())
    assert not shell.find(re.compile("terminated"))


def test_never_prints(world):
    shell = idle(world, "#!/bin/sh\nexec sleep 1000\n")
    wait.same(relayed(shell), [], "relayed lines")


def test_ended_long_ago(world):
    idle(world, "#!/bin/sh\necho bye\nexit 0\n")


def printing(world, body):
    """A server made of shell commands that idles afterwards."""
    world.bundle.use_server(f"#!/bin/sh\n{body}\nexec sleep 1000\n")
    return world.launch()


def test_prefix_and_trimming(world):
    shell = printing(world, "printf '  hello \\n\\n'; sleep 0.4; printf 'second'; sleep 0.4; printf 'end'")
    shell.wait_line(PREFIX + "end")
    wait.same(relayed(shell), ["hello", "second", "end"], "relayed lines")


def test_one_entry_for_each_chunk(world):
    shell = printing(world, "sleep 1; printf 'first\\n  second\\n\\nthird\\n'; sleep 0.5; printf 'end\\n'")
    shell.wait_line(PREFIX + "end")
    begin = shell.find(PREFIX + "first").index
    wait.same(shell.texts(begin)[:4], [PREFIX + "first", "  second", "", "third"], "entry")
    wait.same(relayed(shell), ["first", "end"], "first lines of entries")


def test_standard_error_is_joined(world):
    shell = printing(world, "echo out; sleep 0.4; echo err >&2; sleep 0.4; echo out again")
    shell.wait_line(PREFIX + "out again")
    wait.same(relayed(shell), ["out", "err", "out again"], "relayed lines")


def test_only_blanks(world):
    shell = printing(world, "printf ' \\n\\t \\n'; sleep 0.4; printf '\\n'; sleep 0.4; printf 'end\\n'")
    shell.wait_line(PREFIX + "end")
    wait.same(relayed(shell), ["", "", "end"], "relayed lines")


def test_invalid_bytes_drop_the_chunk(world):
    shell = printing(world, "printf 'good\\n'; sleep 0.4; printf 'bad \\377\\376\\n'; sleep 0.4;"
                            "printf 'overlong \\300\\257\\n'; sleep 0.4;"
                            "printf 'surrogate \\355\\240\\200\\n'; sleep 0.4;"
                            "printf 'beyond \\364\\220\\200\\200\\n'; sleep 0.4; printf 'end 🤖\\n'")
    shell.wait_line(PREFIX + "end 🤖")
    wait.same(relayed(shell), ["good", "end 🤖"], "relayed lines")


def test_character_split_over_two_chunks(world):
    shell = printing(world, "printf 'one \\360\\237'; sleep 0.5; printf '\\244\\226 two'; sleep 0.5; printf 'end'")
    shell.wait_line(PREFIX + "end")
    wait.same(relayed(shell), ["end"], "relayed lines")


def test_nul_bytes_survive(world):
    shell = printing(world, "printf 'a\\000b\\n'; sleep 0.4; printf 'end\\n'")
    shell.wait_line(PREFIX + "end")
    wait.same(relayed(shell), ["a\0b", "end"], "relayed lines")


def test_last_words_are_relayed(world):
    world.bundle.use_server("#!/bin/sh\necho last words\nexit 3\n")
    shell = world.launch()
    shell.wait_line(PREFIX + "last words")
    shell.wait_line("🛑 Server process terminated with exit code: 3")


def test_server_that_prints_without_line_ends(world):
    shell = printing(world, "i=0; while [ $i -lt 300 ]; do printf x; i=$((i+1)); done; sleep 0.5; printf 'end'")
    shell.wait_line(PREFIX + "end")
    wait.same(sum(len(line) for line in relayed(shell)), 303, "relayed characters")


def test_grandchild_holds_the_pipe(world):
    world.bundle.use_server("#!/bin/sh\n(sleep 2; echo late words; sleep 1000) &\nsleep 1\nexit 4\n")
    shell = world.launch()
    end = shell.wait_line("🛑 Server process terminated with exit code: 4")
    late = shell.wait_line(PREFIX + "late words")
    assert end.index < late.index
    shell.wait_line(re.compile("^❌ Provisional navigation failed"))  # the load itself is work
    before = children.cpu_seconds(shell.pid)
    wait.stays(shell.running, 2, "the shell runs", 0.5)
    assert children.cpu_seconds(shell.pid) - before < 0.5


def test_server_with_a_page(world):
    world.server.set(banner="scripted server ready\n")
    shell, _ = world.launch_loaded(html())
    wait.same(relayed(shell), ["scripted server ready"], "relayed lines")
