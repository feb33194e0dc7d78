# Vantorel. MIT licence, see LICENSE.
# tests/fuzz/NAME_fuzz.cpp becomes the libFuzzer program fuzz/NAME_fuzz of the build folder; the target "fuzzers" is all
# of them. Those in tests/fuzz/linux read through the Linux backend.

if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "VANTOREL_FUZZ needs Clang, which brings libFuzzer")
endif()
set(fuzz_libraries vantorel_logic vantorel_portable)
vantorel_glob(fuzz_files tests/fuzz/*_fuzz.cpp)
if(VANTOREL_BACKEND STREQUAL "linux")
    vantorel_glob(native_fuzz_files tests/fuzz/linux/*_fuzz.cpp)
    list(PREPEND fuzz_libraries vantorel_platform)
endif()

add_custom_target(fuzzers)
foreach(file IN LISTS fuzz_files native_fuzz_files)
    cmake_path(GET file STEM name)
    add_executable(${name} ${file})
    target_link_libraries(${name} PRIVATE vantorel_options)
    vantorel_link(${name} ${fuzz_libraries})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/fuzz)
    add_dependencies(fuzzers ${name})
endforeach()
# The libraries count coverage too: without that the fuzzer would walk blind. Only fuzz targets link in such a build.
foreach(library IN LISTS fuzz_libraries)
    if(TARGET ${library})
        target_compile_options(${library} PUBLIC -fsanitize=fuzzer-no-link)
    endif()
endforeach()

# Readers that need a library of the desktop, but nothing else of the Linux backend than the file named beside them.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    find_package(PkgConfig REQUIRED)
    function(vantorel_linux_fuzz name reader module)
        pkg_check_modules(${name} IMPORTED_TARGET ${module})
        if(${name}_FOUND)
            add_executable(${name}_fuzz
                ${PROJECT_SOURCE_DIR}/tests/fuzz/linux/${name}_fuzz.cpp ${PROJECT_SOURCE_DIR}/${reader})
            target_link_libraries(${name}_fuzz PRIVATE vantorel_options vantorel_portable PkgConfig::${name})
            target_link_options(${name}_fuzz PRIVATE -fsanitize=fuzzer)
            set_target_properties(${name}_fuzz PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/fuzz)
        endif()
    endfunction()
    vantorel_linux_fuzz(key_file platform/linux/user_defaults.cpp gio-2.0)
    vantorel_linux_fuzz(script_bundle platform/linux/script_bundle.cpp glib-2.0)
    vantorel_linux_fuzz(script_values platform/linux/script_values.cpp javascriptcoregtk-6.0)
endif()
