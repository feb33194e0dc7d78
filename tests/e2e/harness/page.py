# Vantorel. MIT licence, see LICENSE.
# Pages for the cases. What a page finds out comes back as requests of "/report?NAME=VALUE" in the server's record.

HELPER = """
function report(name, value) {
    return fetch('/report?' + encodeURIComponent(name) + '=' + encodeURIComponent(JSON.stringify(value ?? null)),
                 {cache: 'no-store'}).catch(() => {});
}
"""

SOCKET = """
window.ws = new WebSocket('ws://' + location.host + '/ws');
window.ws.onopen = () => report('socket', 'open');
window.ws.onclose = () => report('socket', 'closed');
"""


def html(script="", body="", socket=False, style=""):
    """A page that runs `script` at once; the function report(name, value) is at hand, a socket in window.ws on wish."""
    return ("<!doctype html><html><head><meta charset='utf-8'><title>page</title>"
            f"<style>html,body{{margin:0;height:100%;background:#fff}}{style}</style>"
            f"<script>{HELPER}{SOCKET if socket else ''}</script></head>"
            f"<body>{body}<script>{script}</script></body></html>")


def colored(color, script="", socket=False, body=""):
    """A page of one colour, to be told from others in a picture."""
    return html(script, body, socket, f"body{{background:{color}}}")
