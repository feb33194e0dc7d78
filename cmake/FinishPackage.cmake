# Vantorel. MIT licence, see LICENSE.
# Run by CPack on the finished package, which it packs once more with Debian's own tool: CPack 3.25 counts the builder's
# folders, whose sizes differ from file system to file system, into Installed-Size, and writes the builder's mask down.
cmake_policy(VERSION 3.25)

set(tree ${CPACK_TEMPORARY_DIRECTORY}-finished)
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    file(REMOVE_RECURSE ${tree})
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${tree} COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND chmod --recursive u=rwX,go=rX ${tree} COMMAND_ERROR_IS_FATAL ANY)
    # As dpkg-gencontrol counts: each file in whole kilobytes, and one for everything else.
    file(GLOB_RECURSE entries LIST_DIRECTORIES true ${tree}/usr/*)
    set(kilobytes 1)
    foreach(entry IN LISTS entries)
        if(IS_DIRECTORY ${entry} OR IS_SYMLINK ${entry})
            set(size 1)
        else()
            file(SIZE ${entry} size)
        endif()
        math(EXPR kilobytes "${kilobytes} + (${size} + 1023) / 1024")
    endforeach()
    file(READ ${tree}/DEBIAN/control control)
    string(REGEX REPLACE "Installed-Size: [0-9]+" "Installed-Size: ${kilobytes}" control "${control}")
    file(WRITE ${tree}/DEBIAN/control "${control}")
    execute_process(COMMAND dpkg-deb --root-owner-group --build ${tree} ${package}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${tree})
endforeach()
