// Vantorel. MIT licence, see LICENSE.
// Prints "mapped NANOSECONDS WIDTH HEIGHT" (CLOCK_MONOTONIC) whenever a window or its frame appears on the screen. It
// sees the shell and the bare program with the same eyes.
#include <stdio.h>
#include <time.h>
#include <X11/Xlib.h>

static int ignoreError(Display* display, XErrorEvent* error) {
    (void)display;
    (void)error;
    return 0;
}

int main(void) {
    Display* display = XOpenDisplay(NULL);
    if (display == NULL) {
        fputs("map_watch: no display\n", stderr);
        return 1;
    }
    XSetErrorHandler(ignoreError);
    XSelectInput(display, DefaultRootWindow(display), SubstructureNotifyMask);
    XSync(display, False);
    puts("watching");
    fflush(stdout);
    for (;;) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type != MapNotify)
            continue;
        struct timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        XWindowAttributes attributes;
        if (XGetWindowAttributes(display, event.xmap.window, &attributes) == 0)
            continue;
        printf("mapped %lld %d %d\n", (long long)now.tv_sec * 1000000000LL + (long long)now.tv_nsec, attributes.width,
               attributes.height);
        fflush(stdout);
    }
}
