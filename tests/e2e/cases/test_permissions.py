# Vantorel. MIT licence, see LICENSE.
# The permission lines of a first and of later launches, and the marker between them.

from harness import wait

IDLE_SERVER = "#!/bin/sh\nexec sleep 1000\n"
FIRST = ["🔐 First launch - requesting system permissions...", "✅ Screen recording already authorized",
         "✅ Microphone status: authorized", "✅ Accessibility already authorized"]
LATER = ["✅ Permissions already requested in previous launch"]


def lines(world):
    """The lines between the screenshot line and the server's banner of one more launch."""
    world.bundle.use_server(IDLE_SERVER)
    shell = world.launch()
    shell.wait_launched()
    texts = shell.texts()
    begin = [number for number, text in enumerate(texts) if text.startswith("🖼️ Screenshot hiding: ")][0]
    return shell, texts[begin + 1:texts.index("=" * 40) - 1]


def test_first_and_second_launch(world):
    shell, seen = lines(world)
    wait.same(seen, FIRST, "lines of the first launch")
    wait.same(world.home.read_defaults().get("hasRequestedPermissions"), "true", "marker")
    shell.quit()
    _, seen = lines(world)
    wait.same(seen, LATER, "lines of the second launch")
    wait.same(world.home.read_defaults().get("hasRequestedPermissions"), "true", "marker")


def test_marker_survives_a_kill(world):
    shell, _ = lines(world)
    shell.kill()
    world.expect_no_server()
    _, seen = lines(world)
    wait.same(seen, LATER, "lines of the second launch")


def test_marker_that_says_false(world):
    world.home.write_defaults(hasRequestedPermissions=False)
    _, seen = lines(world)
    wait.same(seen, FIRST, "lines of the launch")
