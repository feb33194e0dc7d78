# Vantorel. MIT licence, see LICENSE.
# The page's alert, confirm and prompt, answered by keyboard and by mouse, their answers read back from the page.

import time

from harness import wait
from harness.page import html


def asking(world, expression, more=""):
    """A page that soon evaluates the expression and reports its value; returns shell, window and the open panel."""
    shell, window = world.launch_loaded(html(
        f"addEventListener('load', () => setTimeout(() => {{ const answer = {expression};"
        f"report('answer', answer === undefined ? 'undefined' : answer); }}, 400)); {more}"))
    dialog = world.dialog(shell)
    wait.until(lambda: world.dialog_buttons(shell), 5, "the panel has buttons")
    return shell, window, dialog


def expect_texts(world, shell, message, buttons):
    """Main text, the page's text and the buttons of the open panel."""
    wait.until(lambda: len(world.dialog_labels(shell)) >= 1 and world.dialog_buttons(shell), 5, "the panel has texts")
    wait.same(world.dialog_labels(shell)[:2], ["Vantor", message], "texts of the panel")
    wait.same(world.dialog_buttons(shell), buttons, "buttons of the panel")


def answered(world, shell, value):
    """The page got that answer, and the panel is gone."""
    wait.same(world.server.wait_report("answer"), value, "answer to the page")
    wait.until(lambda: not world.dialogs(shell), 3, "the panel closes")


def by_keys(world, expression, keys, value):
    """One panel answered by keys."""
    shell, _, dialog = asking(world, expression)
    world.screen.activate(dialog)
    for key in keys:
        world.hands.press(key)
    answered(world, shell, value)


def test_alert_by_mouse(world):
    shell, window, _ = asking(world, "alert('Grüße 🤖')")
    expect_texts(world, shell, "Grüße 🤖", ["OK"])
    world.press_button(shell, "OK")
    answered(world, shell, "undefined")
    assert world.screen.ping(window) < 1


def test_alert_by_return(world):
    by_keys(world, "alert('x')", ["return"], "undefined")


def test_alert_by_escape(world):
    by_keys(world, "alert('x')", ["escape"], "undefined")


def test_alert_by_closing_its_window(world):
    shell, _, dialog = asking(world, "alert('x')")
    world.screen.delete_window(dialog)
    answered(world, shell, "undefined")


def test_confirm_ok_by_mouse(world):
    shell, _, _ = asking(world, "confirm('Sure?')")
    expect_texts(world, shell, "Sure?", ["Cancel", "OK"])
    world.press_button(shell, "OK")
    answered(world, shell, True)


def test_confirm_cancel_by_mouse(world):
    shell, _, _ = asking(world, "confirm('Sure?')")
    world.press_button(shell, "Cancel")
    answered(world, shell, False)


def test_confirm_by_return(world):
    by_keys(world, "confirm('x')", ["return"], True)


def test_confirm_by_escape(world):
    by_keys(world, "confirm('x')", ["escape"], False)


def test_confirm_by_tab_and_space(world):
    shell, _, dialog = asking(world, "confirm('x')")
    world.screen.activate(dialog)
    world.wait_focus(shell, "button", "Cancel")
    world.hands.press("space")
    answered(world, shell, False)


def test_first_focus_is_where_the_answer_is(world):
    shell, _, dialog = asking(world, "confirm('x')")
    world.screen.activate(dialog)
    wait.until(lambda: [node.name() for node in world.dialog_nodes(shell, "button") if node.focused()] == ["OK"], 3,
               lambda: "OK has the focus in\n" + world.ax.dump(shell.pid))
    world.hands.press("space")
    answered(world, shell, True)


def test_confirm_by_closing_its_window(world):
    shell, _, dialog = asking(world, "confirm('x')")
    world.screen.delete_window(dialog)
    answered(world, shell, False)


def field(world, shell):
    """The prompt's text field."""
    return wait.until(lambda: world.dialog_nodes(shell, "text box"), 5,
                      lambda: "a text field in\n" + world.ax.dump(shell.pid))[0]


def test_prompt_with_a_default(world):
    shell, _, dialog = asking(world, "prompt('Name?', 'Ada')")
    expect_texts(world, shell, "Name?", ["Cancel", "OK"])
    node = field(world, shell)
    wait.same(node.text(), "Ada", "text in the field")
    # Told without border and padding; the widget around it takes the whole size.
    left, top, width, height = node.extents()
    around = [group.extents() for group in world.dialog_nodes(shell, "group")]
    assert any(w == 300 and h == 24 and x <= left and y <= top and left + width <= x + w and top + height <= y + h
               for x, y, w, h in around), f"a field of 300 by 24; there is {node.extents()} in {around}"
    world.press_button(shell, "OK")
    answered(world, shell, "Ada")
    assert dialog


def test_prompt_typed_and_return(world):
    shell, _, dialog = asking(world, "prompt('Name?')")
    wait.same(field(world, shell).text(), "", "text in the field")
    world.screen.activate(dialog)
    world.hands.type("grace")
    wait.until(lambda: field(world, shell).text() == "grace", 3, "the keys reach the field without a click")
    world.hands.press("return")
    answered(world, shell, "grace")


def test_prompt_empty_text_is_no_null(world):
    by_keys(world, "prompt('x')", ["return"], "")


def test_prompt_cancel_by_mouse_after_an_edit(world):
    shell, _, dialog = asking(world, "prompt('x', 'old')")
    world.screen.activate(dialog)
    world.hands.type("new")
    world.press_button(shell, "Cancel")
    answered(world, shell, None)


def test_prompt_by_escape(world):
    by_keys(world, "prompt('x', 'old')", ["escape"], None)


def test_prompt_with_a_megabyte(world):
    shell, window, dialog = asking(world, "(prompt('x', 'y'.repeat(1 << 20)) || '').length")
    assert world.screen.ping(dialog, 20) < 10
    world.screen.activate(dialog)
    world.hands.press("return")
    wait.same(world.server.wait_report("answer", timeout=20), 1 << 20, "length of the answer")
    assert world.screen.ping(window) < 1


def test_long_message(world):
    shell, _, dialog = asking(world, "alert('line\\n'.repeat(3000) + 'w'.repeat(5000))")
    world.screen.activate(dialog)
    world.hands.press("return")
    answered(world, shell, "undefined")


def test_markup_is_plain_text(world):
    shell, _, dialog = asking(world, "alert('<b>bold</b> & <i')")
    expect_texts(world, shell, "<b>bold</b> & <i", ["OK"])
    world.screen.activate(dialog)
    world.hands.press("return")
    answered(world, shell, "undefined")


def test_empty_message(world):
    shell, _, dialog = asking(world, "alert('')")
    wait.same(world.dialog_labels(shell)[:1], ["Vantor"], "main text")
    world.screen.activate(dialog)
    world.hands.press("return")
    answered(world, shell, "undefined")


def test_from_a_sub_frame(world):
    world.server.route("/sub.html", html("setTimeout(() => report('answer', confirm('from a frame')), 300)"))
    shell, _ = world.launch_loaded(html("", "<iframe src='/sub.html'></iframe>"))
    dialog = world.dialog(shell)
    expect_texts(world, shell, "from a frame", ["Cancel", "OK"])
    world.screen.activate(dialog)
    world.hands.press("return")
    answered(world, shell, True)


def test_main_window_takes_no_input_meanwhile(world):
    shell, window, _ = asking(world, "alert('x')", "addEventListener('click', () => report('clicked', 1))")
    x, y, width, height = world.screen.geometry(window)
    world.hands.click(x + 30, y + height - 30)
    world.press_button(shell, "OK")
    answered(world, shell, "undefined")
    wait.same(world.server.reports("clicked"), [], "clicks that the page got")


def test_status_goes_on_meanwhile(world):
    world.server.probes(200, 200, {"status": 500})
    shell, _, dialog = asking(world, "alert('x')")
    world.wait_status(shell, "⚠️ Server running but not responding...", 10)
    world.screen.activate(dialog)
    world.hands.press("return")
    answered(world, shell, "undefined")


def test_endless_alerts(world):
    world.engine_patience = 15  # its page process, caught in the loop, gives itself 10 s
    shell, _ = world.launch_loaded(html("let n = 0; addEventListener('load', () => setTimeout(() => {"
                                        "for (;;) { alert('number ' + n++); } }, 300))"))
    for number in range(6):
        wait.until(lambda: f"number {number}" in world.dialog_labels(shell), 5,
                   lambda: f"alert {number}; there is {world.dialog_labels(shell)}")
        world.screen.activate(world.dialog(shell))
        world.hands.press("return")
    world.dialog(shell)
    begun = time.monotonic()
    shell.quit(6)
    assert time.monotonic() - begun < 4
    wait.same(world.server.signals(), ["TERM"], "signals at the server")


def test_endless_alerts_and_the_main_window_is_closed(world):
    world.engine_patience = 15
    shell, window = world.launch_loaded(html("addEventListener('load', () => setTimeout(() => {"
                                             "for (;;) alert('again'); }, 300))"))
    world.dialog(shell)
    world.screen.delete_window(window)
    wait.stays(lambda: world.server.signals() in ([], ["TERM"]), 1, "no more than one request")
    if shell.running():  # an application-modal panel may keep the window from closing
        world.screen.activate(world.dialog(shell))
        world.hands.press("return")
        shell.quit(6)
    wait.same(shell.wait_exit(5), 0, "exit status")


def test_quit_while_a_prompt_is_up(world):
    shell, _, _ = asking(world, "prompt('x')")
    shell.quit(5)
    assert world.home.saved_size() is not None


def leaving(world):
    """A page that asks before it is left, and that the user has touched."""
    shell, window = world.launch_loaded(html(
        "addEventListener('beforeunload', e => { e.preventDefault(); e.returnValue = 'stay'; });"
        "addEventListener('click', () => report('touched', 1));", "<p>text</p>"))
    world.screen.activate(window)
    x, y, width, height = world.screen.geometry(window)
    world.hands.click(x + width / 2, y + height / 2)
    world.server.wait_report("touched")
    return shell, window


def test_question_before_a_reload_does_not_hang_it(world):
    shell, _ = leaving(world)
    world.hands.press("r", "ctrl")
    wait.until(lambda: shell.count("✅ Page loaded successfully") == 2, 8, "the page is loaded again")
    assert not world.dialogs(shell)


def test_question_before_a_quit_does_not_hang_it(world):
    shell, _ = leaving(world)
    world.hands.press("q", "ctrl")
    wait.same(shell.wait_exit(5), 0, "exit status")


def test_alert_while_a_reload_is_asked_for(world):
    shell, window, dialog = asking(world, "alert('x')")
    world.hands.press("r", "ctrl")
    world.screen.activate(dialog)
    world.hands.press("return")
    wait.until(lambda: not world.dialogs(shell) or world.server.reports("answer"), 5, "the panel closes")
    assert world.screen.ping(window) < 1
