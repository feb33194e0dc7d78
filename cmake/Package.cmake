# Vantorel. MIT licence, see LICENSE.
# The Debian package of what is installed.

# Each of these is read by other people's programs; they must not drift apart.
function(vantorel_same_version file pattern)
    file(STRINGS ${PROJECT_SOURCE_DIR}/${file} line REGEX "${pattern}" LIMIT_COUNT 1)
    string(REGEX REPLACE ".*${pattern}.*" "\\1" version "${line}")
    if(NOT version STREQUAL PROJECT_VERSION)
        message(FATAL_ERROR "${file} begins with version \"${version}\", the project has ${PROJECT_VERSION}")
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${file})
endfunction()
vantorel_same_version(CHANGELOG.md "^## ([0-9.]+)")
vantorel_same_version(packaging/linux/changelog "^vantorel \\(([0-9.]+)\\)")
vantorel_same_version(packaging/linux/app.vantorel.Vantorel.metainfo.xml "<release version=\"([0-9.]+)\"")
vantorel_same_version(packaging/linux/vantorel.1 "\"Vantorel ([0-9.]+)\"")

set(documents ${CMAKE_INSTALL_DATADIR}/doc/vantorel)
install(FILES ${packaging}/copyright DESTINATION ${documents})
install(FILES ${packaging}/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME vantorel)
if(GZIP_PROGRAM)
    vantorel_install_packed(${packaging}/changelog changelog ${documents})
endif()

# Nothing but what is installed is built for the package.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES OFF) # the linker did
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/FinishPackage.cmake)
set(CPACK_PACKAGE_NAME vantorel)
set(CPACK_PACKAGE_VENDOR "The Vantorel authors")
set(CPACK_PACKAGE_CONTACT "The Vantorel authors <authors@vantorel.app>")
set(CPACK_PACKAGE_HOMEPAGE_URL https://vantorel.app)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "native window around the page of a companion server")
set(CPACK_PACKAGE_DESCRIPTION
"Vantorel starts a companion server, shows its page in a native window,
watches whether the server answers, and stops it when the window is closed.
The window can stay above all others, and thirteen system-wide hotkeys are
forwarded to the page.

A small server for trying it out comes along. One's own goes to
/usr/local/lib/vantorel/vantor-srv.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Dependencies are read from the programs. What is left are the page's emoji, and the bus of bare desktops.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-noto-color-emoji, default-dbus-session-bus | dbus-session-bus")
include(CPack)
