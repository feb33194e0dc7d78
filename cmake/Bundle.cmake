# Vantorel. MIT licence, see LICENSE.
# The application bundle: the shell and its guard side by side, the server in Resources.

if(APPLE)
    set(program_folder MacOS)
else()
    set(program_folder Linux)
endif()
set(VANTOREL_BUNDLE ${PROJECT_BINARY_DIR}/Vantorel.app)
set(VANTOREL_PROGRAMS ${VANTOREL_BUNDLE}/Contents/${program_folder})
set(VANTOREL_RESOURCES ${VANTOREL_BUNDLE}/Contents/Resources)
file(MAKE_DIRECTORY ${VANTOREL_PROGRAMS} ${VANTOREL_RESOURCES})

# The guard knows no toolkit, so every backend builds it. Its main stands alone; the rest can be tested as a library.
string(TOLOWER ${program_folder} os_folder)
vantorel_library(vantorel_guard_logic guard/*.cpp guard/${os_folder}/*.cpp EXCLUDE guard/main.cpp)
target_link_libraries(vantorel_guard_logic PUBLIC vantorel_portable)
add_executable(vantorel-guard guard/main.cpp)
target_link_libraries(vantorel-guard PRIVATE vantorel_options vantorel_guard_logic)
set_target_properties(vantorel-guard PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${VANTOREL_PROGRAMS})

if(VANTOREL_BACKEND STREQUAL "fake")
    return()
endif()

add_executable(vantorel app/main.cpp)
target_link_libraries(vantorel PRIVATE vantorel_logic vantorel_platform)
set_target_properties(vantorel PROPERTIES OUTPUT_NAME Vantorel)
if(APPLE)
    set_target_properties(vantorel PROPERTIES MACOSX_BUNDLE ON RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
    set_target_properties(vantorel PROPERTIES MACOSX_BUNDLE_INFO_PLIST ${PROJECT_SOURCE_DIR}/packaging/macos/Info.plist)
    set(icon ${PROJECT_SOURCE_DIR}/packaging/macos/Vantorel.icns)
    target_sources(vantorel PRIVATE ${icon})
    set_source_files_properties(${icon} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
else()
    set_target_properties(vantorel PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${VANTOREL_PROGRAMS})
endif()
add_dependencies(vantorel vantorel-guard)

find_package(PkgConfig)
if(APPLE AND PKG_CONFIG_FOUND)
    pkg_check_modules(DEVSERVER_PRESENT QUIET libsoup-3.0)
endif()
if(NOT APPLE OR DEVSERVER_PRESENT_FOUND)
    add_subdirectory(devserver)
elseif(NOT VANTOREL_SERVER)
    message(WARNING "The development server needs libsoup 3 and pkg-config (brew install libsoup pkg-config); "
        "without it the bundle has no server, unless VANTOREL_SERVER names one")
endif()
if(VANTOREL_SERVER)
    get_filename_component(server ${VANTOREL_SERVER} ABSOLUTE BASE_DIR ${PROJECT_SOURCE_DIR})
    if(NOT EXISTS ${server} OR IS_DIRECTORY ${server})
        message(FATAL_ERROR "VANTOREL_SERVER: ${server} is not a file")
    endif()
    add_custom_command(OUTPUT ${VANTOREL_RESOURCES}/vantor-srv DEPENDS ${server}
        COMMAND ${CMAKE_COMMAND} -E copy ${server} ${VANTOREL_RESOURCES}/vantor-srv
        COMMENT "Bundling ${server} as vantor-srv")
    add_custom_target(bundled_server ALL DEPENDS ${VANTOREL_RESOURCES}/vantor-srv)
elseif(TARGET vantor-srv)
    set_target_properties(vantor-srv PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${VANTOREL_RESOURCES})
endif()

# All that ./dev run needs, without the tests.
add_custom_target(bundle)
foreach(part vantorel vantorel-guard bundled_server)
    if(TARGET ${part})
        add_dependencies(bundle ${part})
    endif()
endforeach()
if(TARGET vantor-srv AND NOT VANTOREL_SERVER)
    add_dependencies(bundle vantor-srv)
endif()

if(APPLE AND TARGET vantorel)
    # Arm Macs run signed code only, and a signature covers the resources: last of all, at each build.
    add_custom_target(signed_bundle ALL
        COMMAND codesign --force --sign - ${VANTOREL_PROGRAMS}/vantorel-guard
        COMMAND codesign --force --sign - --options runtime
            --entitlements ${PROJECT_SOURCE_DIR}/packaging/macos/Vantorel.entitlements ${VANTOREL_BUNDLE}
        COMMENT "Signing ${VANTOREL_BUNDLE}")
    add_dependencies(signed_bundle vantorel vantorel-guard)
    foreach(part vantor-srv bundled_server)
        if(TARGET ${part})
            add_dependencies(signed_bundle ${part})
        endif()
    endforeach()
    add_dependencies(bundle signed_bundle)
endif()
