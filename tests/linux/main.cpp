// Vantorel. MIT licence, see LICENSE.
// Starts the tests of the Linux backend; cases that need a display are skipped where there is none.
#include <cstdlib>

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include "platform/linux/graphics.h"
#include "platform/linux/process_info.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    for (const auto& [name, value] : vantorel::gtk::graphicsVariables(vantorel::gtk::currentEnvironment(), false)) {
        ::setenv(name.c_str(), value.c_str(), 1);
    }
    g_set_prgname("vantorel-tests");
    // Whatever GTK complains about is a bug of ours.
    g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL));
    gdk_set_allowed_backends("x11");
    gtk_init_check();
    return RUN_ALL_TESTS();
}
