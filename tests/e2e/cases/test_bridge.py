# Vantorel. MIT licence, see LICENSE.
# The console bridge: what a page writes to its console, or posts to the channel, and the log line that comes of it.

import json
import os
import re

from harness import latency, wait
from harness.page import html


def test_three_levels(world):
    shell, _ = world.launch_loaded(html("console.log('l'); console.warn('w'); console.error('e');"
                                        "console.info('i'); console.debug('d'); console.log('end')"))
    shell.wait_line("🔵 JS Log: end")
    seen = [line for line in shell.texts() if "JS" in line and "JavaScript" not in line]
    wait.same(seen, ["🔵 JS Log: l", "🟡 JS Warning: w", "🔴 JS Error: e", "🔵 JS Log: end"], "console lines")


def test_arguments(world):
    shell, _ = world.launch_loaded(html(
        "console.log('a', 1, true, 2.5); console.log('x', undefined, null, 'y'); console.log();"
        "console.log({}, [1, 2, [3]], function f() {}); console.log('🤖 äöü €'); console.log('');"
        "console.warn(); console.error(undefined); console.log('  blanks  '); console.log('end')"))
    shell.wait_line("🔵 JS Log: end")
    seen = [line for line in shell.texts() if "JS" in line]
    wait.same(seen, ["🔵 JS Log: a 1 true 2.5", "🔵 JS Log: x   y", "🔵 JS Log: ",
                     "🔵 JS Log: [object Object] 1,2,3 function f() {}", "🔵 JS Log: 🤖 äöü €", "🔵 JS Log: ",
                     "🟡 JS Warning: ", "🔴 JS Error: ", "🔵 JS Log:   blanks  ", "🔵 JS Log: end"], "console lines")


def test_line_breaks_stay(world):
    shell, _ = world.launch_loaded(html(r"console.log('one\ntwo\n\nfour'); console.log('end')"))
    shell.wait_line("🔵 JS Log: end")
    begin = shell.find("🔵 JS Log: one").index
    wait.same(shell.texts(begin)[:4], ["🔵 JS Log: one", "two", "", "four"], "lines of one record")


def test_sub_frames(world):
    world.server.route("/sub.html", html("console.log('from the frame'); console.error('frame error')"))
    shell, _ = world.launch_loaded(html("console.log('from the page')", "<iframe src='/sub.html'></iframe>"
                                        "<iframe srcdoc=\"<script>console.warn('from srcdoc')</script>\"></iframe>"))
    for line in ("🔵 JS Log: from the page", "🔵 JS Log: from the frame", "🔴 JS Error: frame error",
                 "🟡 JS Warning: from srcdoc"):
        shell.wait_line(line)
        wait.same(shell.count(line), 1, line)


def test_runs_before_any_script_of_the_page(world):
    shell, _ = world.launch_loaded(
        "<!doctype html><html><head><script>console.log('in the head', console.log.toString().includes('old.log'))"
        "</script></head><body></body></html>")
    shell.wait_line("🔵 JS Log: in the head true")


def test_direct_posts(world):
    shell, _ = world.launch_loaded(html("""
        const post = value => { try { webkit.messageHandlers.consoleLog.postMessage(value); } catch (e) {} };
        post({type: 'info', message: 'x'}); post({type: 'LOG', message: 'upper'}); post({type: 'Error', message: 'e'});
        post({type: '', message: 'empty type'}); post({type: 'log', message: ''});
        post({type: 'log', message: 'more', extra: {deep: [1]}});
        post({type: 'log', message: 5}); post({type: 'log', message: ['a']}); post({type: 'log'});
        post({type: 'log', message: null}); post({type: 7, message: 'x'}); post({message: 'no type'});
        post('a text'); post(42); post(true); post(null); post(undefined); post(['log', 'x']); post([]); post({});
        post(new Date()); post(/x/); post(new Map([['type', 'log'], ['message', 'map']])); post(new Error('x'));
        post({type: {toString() { return 'log'; }}, message: 'x'}); post(() => 1); post(Symbol('s')); post(10n);
        post({type: new String('log'), message: new String('boxed')}); post(window); post(document.body);
        post(Object.create({type: 'log', message: 'inherited'}));
        console.log('end');"""))
    shell.wait_line("🔵 JS Log: end")
    seen = [line for line in shell.texts() if line.startswith(("JS: ", "🔵 JS", "🟡 JS", "🔴 JS"))]
    wait.same(seen, ["JS: x", "JS: upper", "JS: e", "JS: empty type", "🔵 JS Log: ", "🔵 JS Log: more",
                     "🔵 JS Log: end"], "lines of posts")


def test_nul_and_half_characters(world):
    shell, _ = world.launch_loaded(html(r"""
        console.log('a\u0000b'); console.log('half \ud800 mark'); console.log('half \udc00');
        webkit.messageHandlers.consoleLog.postMessage({type: 'log\u0000x', message: 'odd type'});
        console.log('end')"""))
    shell.wait_line("🔵 JS Log: end")
    assert shell.find(re.compile(r"^🔵 JS Log: a")), "a text with a NUL is not lost"
    assert shell.find(re.compile(r"^🔵 JS Log: half .* mark$")), "a text with half a character is not lost"
    assert shell.find("JS: odd type"), "a type with a NUL is another type"


def test_cyclic_and_deep_and_throwing_values(world):
    shell, _ = world.launch_loaded(html("""
        const post = value => { try { webkit.messageHandlers.consoleLog.postMessage(value); } catch (e) {} };
        const cyclic = {type: 'log', message: 'cyclic'}; cyclic.self = cyclic; post(cyclic);
        const list = []; list.push(list); post({type: 'log', message: list});
        let deep = {}; for (let i = 0; i < 20000; i++) deep = {deep}; post(deep);
        let nested = []; for (let i = 0; i < 20000; i++) nested = [nested]; post({type: 'log', message: nested});
        post({type: 'log', get message() { throw new Error('no'); }});
        post(new Proxy({}, {get() { throw new Error('no'); }, ownKeys() { throw new Error('no'); }}));
        const wide = {type: 'log', message: 'wide'}; for (let i = 0; i < 20000; i++) wide['k' + i] = i; post(wide);
        post({type: 'log', message: 'x', toJSON() { throw new Error('no'); }});
        post({length: 4294967295, type: 'log', message: 1});
        post(new Array(10000)); post(new Uint8Array(100000));
        try { console.log({toString() { throw new Error('no'); }}); } catch (e) {}
        console.log('end');"""))
    shell.wait_line("🔵 JS Log: end", 30)
    seen = [line for line in shell.texts() if line.startswith(("JS: ", "🔵 JS", "🟡 JS", "🔴 JS"))]
    wait.same(seen, ["🔵 JS Log: cyclic", "🔵 JS Log: wide", "🔵 JS Log: x", "🔵 JS Log: end"], "lines of posts")
    pings = latency.Watch(world, shell)
    for _ in range(5):
        pings.ping()
    pings.expect_below(0.1)
    assert shell.running()


def bridge_script():
    """The bridge's script as it stands in the source; a unit test compares what the shell injects with its bytes."""
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "..", "web", "bridge_script.cpp")
    with open(path, encoding="utf-8") as file:
        return re.search(r'R"\((.*?)\)";', file.read(), re.DOTALL).group(1)


def test_page_without_a_console(world):
    shell, _ = world.launch_loaded(html(
        f"const bare = {{webkit: window.webkit}}; new Function('window', {json.dumps(bridge_script())})(bare);"
        "report('left', Object.keys(bare).join()); console.log('end')"))
    wait.same(world.server.wait_report("left"), "webkit", "members of a window without a console")
    shell.wait_line("🔵 JS Log: end")
    wait.same([line for line in shell.texts() if "JS" in line], ["🔵 JS Log: end"], "console lines")
