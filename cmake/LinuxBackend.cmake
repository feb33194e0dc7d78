# Vantorel. MIT licence, see LICENSE.
# The Linux backend: GTK 4 and WebKitGTK 6.0 on X11 first, Wayland second.

find_package(PkgConfig REQUIRED)
pkg_check_modules(GTK REQUIRED IMPORTED_TARGET gtk4 gtk4-x11)
pkg_check_modules(WEBKIT REQUIRED IMPORTED_TARGET webkitgtk-6.0)
pkg_check_modules(SOUP REQUIRED IMPORTED_TARGET libsoup-3.0)
pkg_check_modules(X11 REQUIRED IMPORTED_TARGET x11 xi xtst xkbcommon)

vantorel_library(vantorel_platform platform/linux/*.cpp)
if(TARGET vantorel_platform)
    target_link_libraries(vantorel_platform PUBLIC PkgConfig::GTK PkgConfig::WEBKIT PkgConfig::SOUP PkgConfig::X11)
    if(TARGET vantorel_portable)
        target_link_libraries(vantorel_platform PUBLIC vantorel_portable)
    endif()
    if(VANTOREL_PCH)
        # X11's headers stay out: they define None, Bool and Status as macros.
        target_precompile_headers(vantorel_platform PRIVATE <functional> <memory> <string> <vector>
            <gtk/gtk.h> <webkit/webkit.h> <libsoup/soup.h>)
    endif()
endif()
