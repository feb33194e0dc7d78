// Vantorel. MIT licence, see LICENSE.
// The bare window and web view: no status strip, no bridge, no child, no probe, no log.
#include <glib-unix.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "bare_window.h"

void bare_stamp(const char* name) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    printf("%s %lld\n", name, (long long)now.tv_sec * 1000000000LL + (long long)now.tv_nsec);
    fflush(stdout);
}

static void on_map(GtkWidget* widget, gpointer data) {
    (void)widget;
    (void)data;
    bare_stamp("mapped");
}

static void on_load_changed(WebKitWebView* view, WebKitLoadEvent event, gpointer data) {
    (void)view;
    (void)data;
    if (event == WEBKIT_LOAD_FINISHED) bare_stamp("page-loaded");
}

static gboolean on_load_failed(WebKitWebView* view, WebKitLoadEvent event, char* uri, GError* error, gpointer data) {
    (void)view;
    (void)event;
    (void)uri;
    (void)error;
    (void)data;
    bare_stamp("page-failed");
    return TRUE;
}

static gboolean on_load_time(gpointer data) {
    BareWindow* bare = data;
    bare_stamp("load-requested");
    webkit_web_view_load_uri(bare->view, bare->url);
    return G_SOURCE_REMOVE;
}

static gboolean on_stop_signal(gpointer data) {
    g_main_loop_quit(data);
    return G_SOURCE_CONTINUE;
}

static gboolean on_close_request(GtkWindow* window, gpointer data) {
    (void)window;
    g_main_loop_quit(data);
    return TRUE;
}

void bare_window_open(BareWindow* bare, int argc, char** argv) {
    bare_stamp("start");
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
    g_signal_connect(bare->window, "map", G_CALLBACK(on_map), NULL);
    g_signal_connect(bare->window, "close-request", G_CALLBACK(on_close_request), bare->loop);
    g_signal_connect(bare->view, "load-changed", G_CALLBACK(on_load_changed), NULL);
    g_signal_connect(bare->view, "load-failed", G_CALLBACK(on_load_failed), NULL);
    g_unix_signal_add(SIGTERM, on_stop_signal, bare->loop);
    g_unix_signal_add(SIGINT, on_stop_signal, bare->loop);
    gtk_window_present(bare->window);
    g_timeout_add(delay, on_load_time, bare);
}

void bare_window_run(BareWindow* bare) {
    g_main_loop_run(bare->loop);
    gtk_window_destroy(bare->window);
    g_main_loop_unref(bare->loop);
}
