# Vantorel. MIT licence, see LICENSE.
# Where the bundle and the desktop's files lie once installed.

include(GNUInstallDirs)
# Whatever mask the builder has.
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

if(APPLE)
    install(DIRECTORY ${VANTOREL_BUNDLE} DESTINATION . USE_SOURCE_PERMISSIONS)
    # The bundle is all that is installed, and it is signed as it lies there.
    add_custom_target(installed_files)
    set(CPACK_GENERATOR DragNDrop)
    set(CPACK_DMG_VOLUME_NAME Vantor)
    set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
    include(CPack)
    return()
endif()

set(packaging ${PROJECT_SOURCE_DIR}/packaging/linux)
set(made ${PROJECT_BINARY_DIR}/installed)
set(application_id app.vantorel.Vantorel)

# The bundle keeps its layout, so that the shell finds its server in it as it does in the build folder.
set(bundle_folder lib/vantorel/Vantorel.app/Contents)
foreach(program vantorel vantorel-guard)
    if(TARGET ${program})
        install(TARGETS ${program} RUNTIME DESTINATION ${bundle_folder}/Linux)
    endif()
endforeach()
# The server that comes along steps back for the machine's own one, which lies where no upgrade overwrites it.
install(PROGRAMS ${packaging}/vantor-srv DESTINATION ${bundle_folder}/Resources)
if(VANTOREL_SERVER)
    install(PROGRAMS ${VANTOREL_RESOURCES}/vantor-srv DESTINATION ${bundle_folder}/Resources/default)
elseif(TARGET vantor-srv)
    install(TARGETS vantor-srv RUNTIME DESTINATION ${bundle_folder}/Resources/default)
endif()

# Beyond what the linker strips, in our own programs only: the compiler's name in each.
if(CMAKE_STRIP AND CMAKE_BUILD_TYPE STREQUAL "Release")
    foreach(program Linux/Vantorel Linux/vantorel-guard Resources/default/vantor-srv)
        if(NOT (program MATCHES "vantor-srv" AND VANTOREL_SERVER))
            install(CODE "execute_process(COMMAND ${CMAKE_STRIP} --remove-section=.comment
                \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${bundle_folder}/${program}\" COMMAND_ERROR_IS_FATAL ANY)")
        endif()
    endforeach()
endif()

# vantorel_install_link(NAME TARGET FOLDER): a symbolic link. It may point at nothing.
function(vantorel_install_link name target folder)
    set(link ${made}/links/${name})
    file(MAKE_DIRECTORY ${made}/links)
    file(REMOVE ${link})
    file(CREATE_LINK ${target} ${link} SYMBOLIC)
    install(FILES ${link} DESTINATION ${folder})
endfunction()
vantorel_install_link(vantorel ../${bundle_folder}/Linux/Vantorel ${CMAKE_INSTALL_BINDIR})
vantorel_install_link(.env /etc/vantorel/env ${bundle_folder}/Resources)

install(FILES ${packaging}/${application_id}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${packaging}/${application_id}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES ${packaging}/${application_id}.svg DESTINATION ${icons}/scalable/apps)

# Desktops that draw no SVG take the nearest of these sizes.
find_program(RSVG_CONVERT_PROGRAM rsvg-convert)
find_program(GZIP_PROGRAM gzip)
mark_as_advanced(RSVG_CONVERT_PROGRAM GZIP_PROGRAM)
set(made_files)
if(RSVG_CONVERT_PROGRAM)
    foreach(size 16 22 24 32 48 64 128 256 512)
        set(icon ${made}/${size}/${application_id}.png)
        file(MAKE_DIRECTORY ${made}/${size})
        add_custom_command(OUTPUT ${icon} DEPENDS ${packaging}/${application_id}.svg
            COMMAND ${RSVG_CONVERT_PROGRAM} --width ${size} --height ${size} --output ${icon}
                ${packaging}/${application_id}.svg
            COMMENT "Drawing the icon at ${size} points" VERBATIM)
        list(APPEND made_files ${icon})
        install(FILES ${icon} DESTINATION ${icons}/${size}x${size}/apps)
    endforeach()
else()
    message(STATUS "No rsvg-convert: the icon is installed as SVG only")
endif()

# vantorel_install_packed(FILE NAME FOLDER): FILE packed as NAME.gz, with no name and no time in it.
function(vantorel_install_packed file name folder)
    add_custom_command(OUTPUT ${made}/${name}.gz DEPENDS ${file}
        COMMAND ${GZIP_PROGRAM} -9nc ${file} > ${made}/${name}.gz
        COMMENT "Packing ${name}")
    set(made_files ${made_files} ${made}/${name}.gz PARENT_SCOPE)
    install(FILES ${made}/${name}.gz DESTINATION ${folder})
endfunction()
if(GZIP_PROGRAM)
    vantorel_install_packed(${packaging}/vantorel.1 vantorel.1 ${CMAKE_INSTALL_MANDIR}/man1)
endif()

include(Package)
add_custom_target(installed_files ALL DEPENDS ${made_files})
