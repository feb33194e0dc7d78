# Vantorel. MIT licence, see LICENSE.
# Where the bundle lies once installed, and the packages that install it.

include(GNUInstallDirs)

set(CPACK_PACKAGE_NAME vantorel)
set(CPACK_PACKAGE_VENDOR "The Vantorel authors")
set(CPACK_PACKAGE_CONTACT "The Vantorel authors <authors@vantorel.app>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "native window around the page of a companion server")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)

if(APPLE)
    install(DIRECTORY ${VANTOREL_BUNDLE} DESTINATION . USE_SOURCE_PERMISSIONS)
    set(CPACK_GENERATOR DragNDrop)
    include(CPack)
    return()
endif()

# The bundle keeps its layout, so that the shell finds its server in it as it does in the build folder.
set(bundle_folder lib/vantorel/Vantorel.app/Contents)
foreach(program vantorel vantorel-guard)
    if(TARGET ${program})
        install(TARGETS ${program} RUNTIME DESTINATION ${bundle_folder}/Linux)
    endif()
endforeach()
if(VANTOREL_SERVER)
    install(PROGRAMS ${VANTOREL_RESOURCES}/vantor-srv DESTINATION ${bundle_folder}/Resources)
elseif(TARGET vantor-srv)
    install(TARGETS vantor-srv RUNTIME DESTINATION ${bundle_folder}/Resources)
endif()
install(CODE "
    set(launcher \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    file(MAKE_DIRECTORY \"\${launcher}\")
    file(CREATE_LINK ../${bundle_folder}/Linux/Vantorel \"\${launcher}/vantorel\" SYMBOLIC)")
set(desktop_files ${PROJECT_SOURCE_DIR}/packaging/linux/app.vantorel.Vantorel)
install(FILES ${desktop_files}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${desktop_files}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${desktop_files}.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
# The programs' libraries are read from the programs; what the engine starts by itself is not to be seen there.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "bubblewrap, xdg-dbus-proxy")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-noto-color-emoji, default-dbus-session-bus | dbus-session-bus")
set(CPACK_STRIP_FILES OFF)
include(CPack)
