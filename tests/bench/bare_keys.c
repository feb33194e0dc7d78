// Vantorel. MIT licence, see LICENSE.
// The least a program needs to bring a key from anywhere to a page's socket: key, script, socket. It stands against the
// shell's hotkeys: Shift, Control, Alt and Super with the key at the position of S send the "screenshot_active"
// message.
#include <X11/Xlib.h>
// After Xlib.h, whose types they use.
#include <X11/extensions/record.h>
#include <X11/Xproto.h>

#include <stdio.h>
#include <stdlib.h>

#include "bare_window.h"

enum { kPositionOfS = 39, kChord = ShiftMask | ControlMask | Mod1Mask | Mod4Mask };

static const char kScript[] =
    "if (window.ws && window.ws.readyState === WebSocket.OPEN) {"
    "    window.ws.send(JSON.stringify({type: 'trigger_hotkey', hotkey: 'screenshot_active'}));"
    "}";

static gboolean runScript(gpointer data) {
    webkit_web_view_evaluate_javascript(data, kScript, -1, NULL, NULL, NULL, NULL, NULL);
    return G_SOURCE_REMOVE;
}

// On the recording thread: the core protocol's own event bytes.
static void onRecord(XPointer view, XRecordInterceptData* data) {
    if (data->category == XRecordFromServer && data->data_len > 0) {
        const xEvent* event = (const xEvent*)(const void*)data->data;
        const unsigned state = event->u.keyButtonPointer.state;
        if (event->u.u.detail == kPositionOfS && (state & kChord) == kChord) {
            g_idle_add_full(G_PRIORITY_HIGH, runScript, view, NULL);
        }
    }
    XRecordFreeData(data);
}

static gpointer recordKeys(gpointer view) {
    Display* control = XOpenDisplay(NULL);
    Display* events = XOpenDisplay(NULL);
    XRecordRange* range = XRecordAllocRange();
    if (control == NULL || events == NULL || range == NULL) {
        fputs("bare_keys: no display to record\n", stderr);
        exit(1);
    }
    range->device_events.first = KeyPress;
    range->device_events.last = KeyPress;
    XRecordClientSpec clients = XRecordAllClients;
    const XRecordContext context = XRecordCreateContext(control, 0, &clients, 1, &range, 1);
    XSync(control, False);
    bareStamp("recording");
    if (context == 0 || XRecordEnableContext(events, context, onRecord, view) == 0) {
        fputs("bare_keys: the RECORD extension is missing\n", stderr);
        exit(1);
    }
    return NULL;
}

int main(int argc, char** argv) {
    BareWindow bare = {0};
    bareWindowOpen(&bare, argc, argv);
    g_thread_unref(g_thread_new("record", recordKeys, bare.view));
    bareWindowRun(&bare);
    return 0;
}
