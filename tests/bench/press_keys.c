// Vantorel. MIT licence, see LICENSE.
// Presses Shift + Control + Alt + Super + the key at the position of S again and again, while a window of its own has
// the focus: press_keys COUNT INTERVAL-MS. Prints "pressed NANOSECONDS" (CLOCK_MONOTONIC) for each press.
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

enum { kPositionOfS = 39, kHoldMs = 5 };

static const KeySym kModifiers[] = {XK_Shift_L, XK_Control_L, XK_Alt_L, XK_Super_L};
enum { kModifierCount = sizeof kModifiers / sizeof kModifiers[0] };

static void sleepMs(long milliseconds) {
    const struct timespec span = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
    nanosleep(&span, NULL);
}

static void waitForEvent(Display* display, int type) {
    XEvent event;
    do {
        XNextEvent(display, &event);
    } while (event.type != type);
}

static void holdModifiers(Display* display, Bool down) {
    for (int index = 0; index < kModifierCount; ++index) {
        XTestFakeKeyEvent(display, XKeysymToKeycode(display, kModifiers[index]), down, CurrentTime);
    }
    XSync(display, False);
}

int main(int argc, char** argv) {
    const long count = argc == 3 ? strtol(argv[1], NULL, 10) : 0;
    const long interval = argc == 3 ? strtol(argv[2], NULL, 10) : 0;
    Display* display = XOpenDisplay(NULL);
    if (count <= 0 || interval <= kHoldMs || display == NULL) {
        fputs("usage: press_keys COUNT INTERVAL-MS, with a display\n", stderr);
        return 2;
    }
    const Window window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 200, 100, 0, 0, 0);
    XSelectInput(display, window, StructureNotifyMask | FocusChangeMask | KeyPressMask | KeyReleaseMask);
    XMapWindow(display, window);
    waitForEvent(display, MapNotify);
    XSetInputFocus(display, window, RevertToParent, CurrentTime);
    waitForEvent(display, FocusIn);

    holdModifiers(display, True);
    for (long press = 0; press < count; ++press) {
        struct timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        XTestFakeKeyEvent(display, kPositionOfS, True, CurrentTime);
        XFlush(display);
        printf("pressed %lld\n", (long long)now.tv_sec * 1000000000LL + (long long)now.tv_nsec);
        sleepMs(kHoldMs);
        XTestFakeKeyEvent(display, kPositionOfS, False, CurrentTime);
        XSync(display, True);
        sleepMs(interval - kHoldMs);
    }
    holdModifiers(display, False);
    XCloseDisplay(display);
    return 0;
}
