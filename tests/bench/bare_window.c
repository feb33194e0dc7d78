// Vantorel. MIT licence, see LICENSE.
// The least a program needs to show a page in a window: what the shell's start-up, page load and memory are held
// against.
#include "bare_window.h"

int main(int argc, char** argv) {
    BareWindow bare = {0};
    bareWindowOpen(&bare, argc, argv);
    bareWindowRun(&bare);
    return 0;
}
