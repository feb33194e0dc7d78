// Vantorel. MIT licence, see LICENSE.
// What the bare comparison programs share: a window, a web view, one load, and monotonic-clock stamps.
#pragma once

#include <gtk/gtk.h>
#include <webkit/webkit.h>

/// Milliseconds between start and the page's load: the shell waits as long for its server.
#define BARE_DEFAULT_LOAD_DELAY_MS 3000

/// A GTK window of the shell's size that holds one web view and nothing else.
typedef struct BareWindow {
    GtkWindow* window;
    WebKitWebView* view;
    const char* url;
    GMainLoop* loop;
} BareWindow;

/// Prints "NAME NANOSECONDS" (CLOCK_MONOTONIC) as one flushed line. Any thread.
void bareStamp(const char* name);

/// Reads `URL [LOAD-DELAY-MS]`, builds and shows the window, and asks for the load after the delay. Prints the stamps
/// "start", "mapped", "load-requested" and "page-loaded" (or "page-failed"). Ends the program with 2 on bad arguments.
void bareWindowOpen(BareWindow* bare, int argc, char** argv);

/// Runs until SIGTERM or SIGINT or until the window is closed.
void bareWindowRun(BareWindow* bare);
