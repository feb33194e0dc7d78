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
