// Vantorel. MIT licence, see LICENSE.
// The bare window and web view: no status strip, no bridge, no child, no probe, no log.
#include <glib-unix.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "bare_window.h"

void bareStamp(const char* name) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    printf("%s %lld\n", name, (long long)now.tv_sec * 1000000000LL + (long long)now.tv_nsec);
    fflush(stdout);
}

static void onMap(GtkWidget* widget, gpointer data) {
    (void)widget;
    (void)data;
    bareStamp("mapped");
}

static void onLoadChanged(WebKitWebView* view, WebKitLoadEvent event, gpointer data) {
    (void)view;
    (void)data;
    if (event == WEBKIT_LOAD_FINISHED)
        bareStamp("page-loaded");
}

static gboolean onLoadFailed(WebKitWebView* view, WebKitLoadEvent event, char* uri, GError* error, gpointer data) {
    (void)view;
    (void)event;
    (void)uri;
    (void)error;
    (void)data;
    bareStamp("page-failed");
    return TRUE;
}

static gboolean onLoadTime(gpointer data) {
    BareWindow* bare = data;
    bareStamp("load-requested");
    webkit_web_view_load_uri(bare->view, bare->url);
    return G_SOURCE_REMOVE;
}

static gboolean onStopSignal(gpointer data) {
    g_main_loop_quit(data);
    return G_SOURCE_CONTINUE;
}

static gboolean onCloseRequest(GtkWindow* window, gpointer data) {
    (void)window;
    g_main_loop_quit(data);
    return TRUE;
}

void bareWindowOpen(BareWindow* bare, int argc, char** argv) {
    bareStamp("start");
    if (argc < 2 || argc > 3) {
        fprintf(stderr, "usage: %s URL [LOAD-DELAY-MS]\n", argv[0]);
        exit(2);
    }
    bare->url = argv[1];
    const guint delay = argc == 3 ? (guint)strtoul(argv[2], NULL, 10) : BARE_DEFAULT_LOAD_DELAY_MS;

    gtk_init();
    bare->loop = g_main_loop_new(NULL, FALSE);
    bare->window = GTK_WINDOW(gtk_window_new());
    gtk_window_set_title(bare->window, "bare window");
    gtk_window_set_default_size(bare->window, 900, 750);
    bare->view = WEBKIT_WEB_VIEW(webkit_web_view_new());
    gtk_window_set_child(bare->window, GTK_WIDGET(bare->view));
    g_signal_connect(bare->window, "map", G_CALLBACK(onMap), NULL);
    g_signal_connect(bare->window, "close-request", G_CALLBACK(onCloseRequest), bare->loop);
    g_signal_connect(bare->view, "load-changed", G_CALLBACK(onLoadChanged), NULL);
    g_signal_connect(bare->view, "load-failed", G_CALLBACK(onLoadFailed), NULL);
    g_unix_signal_add(SIGTERM, onStopSignal, bare->loop);
    g_unix_signal_add(SIGINT, onStopSignal, bare->loop);
    gtk_window_present(bare->window);
    g_timeout_add(delay, onLoadTime, bare);
}

void bareWindowRun(BareWindow* bare) {
    g_main_loop_run(bare->loop);
    gtk_window_destroy(bare->window);
    g_main_loop_unref(bare->loop);
}
