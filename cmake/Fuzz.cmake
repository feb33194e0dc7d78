# Vantorel. MIT licence, see LICENSE.
# tests/fuzz/NAME_fuzz.cpp becomes the libFuzzer program fuzz/NAME_fuzz of the build folder.

if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "VANTOREL_FUZZ needs Clang, which brings libFuzzer")
endif()
vantorel_glob(fuzz_files tests/fuzz/*_fuzz.cpp)
foreach(file IN LISTS fuzz_files)
    cmake_path(GET file STEM name)
    add_executable(${name} ${file})
    target_link_libraries(${name} PRIVATE vantorel_options)
    vantorel_link(${name} vantorel_logic vantorel_fake vantorel_portable)
    # The libraries get the coverage counters too: without them the fuzzer would walk blind.
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/fuzz)
endforeach()
foreach(target vantorel_portable vantorel_logic vantorel_fake)
    if(TARGET ${target})
        target_compile_options(${target} PUBLIC -fsanitize=fuzzer-no-link)
    endif()
endforeach()
