# Vantorel. MIT licence, see LICENSE.
# The macOS backend: AppKit and WebKit, from Objective-C++ with ARC.

if(NOT APPLE)
    message(FATAL_ERROR "VANTOREL_BACKEND=macos builds on a Mac; elsewhere ./dev check-macos cross-builds it")
endif()
enable_language(OBJCXX)
set(CMAKE_OBJCXX_STANDARD 20)
set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)

vantorel_library(vantorel_platform platform/macos/*.mm platform/macos/*.cpp)
if(TARGET vantorel_platform)
    target_compile_options(vantorel_platform PUBLIC $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-arc>)
    foreach(framework AppKit WebKit Foundation CoreFoundation CoreGraphics AVFoundation ApplicationServices)
        target_link_libraries(vantorel_platform PUBLIC "-framework ${framework}")
    endforeach()
    target_link_libraries(vantorel_platform PUBLIC objc)
    if(TARGET vantorel_portable)
        target_link_libraries(vantorel_platform PUBLIC vantorel_portable)
    endif()
endif()
