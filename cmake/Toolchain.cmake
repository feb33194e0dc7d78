# Vantorel. MIT licence, see LICENSE.
# Language level, warnings, sanitizers, hardening, ccache and linker: everything that holds for each of our targets.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# No target uses C++ modules; scanning for them would only cost time.
set(CMAKE_CXX_SCAN_FOR_MODULES OFF)
set(CMAKE_LINK_DEPENDS_NO_SHARED ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Debug CACHE STRING "Debug or Release" FORCE)
endif()

# Our own targets link this one; third-party code never does, so that its warnings stay its own.
add_library(vantorel_options INTERFACE)
target_include_directories(vantorel_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(vantorel_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
find_package(Threads REQUIRED)
target_link_libraries(vantorel_options INTERFACE Threads::Threads)

find_program(CCACHE_PROGRAM ccache)
mark_as_advanced(CCACHE_PROGRAM)
if(CCACHE_PROGRAM)
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
    set(CMAKE_OBJCXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
    # ccache can only serve a file that uses a precompiled header when the compiler keeps the header visible in
    # preprocessed output (GCC), or when the header carries no time stamp (Clang).
    if(VANTOREL_PCH AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(vantorel_options INTERFACE -fpch-preprocess)
    elseif(VANTOREL_PCH AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        target_compile_options(vantorel_options INTERFACE "SHELL:-Xclang -fno-pch-timestamp")
    endif()
endif()

if(VANTOREL_SANITIZE)
    set(sanitize_flags -fsanitize=${VANTOREL_SANITIZE} -fno-omit-frame-pointer)
    if(VANTOREL_SANITIZE MATCHES "undefined")
        list(APPEND sanitize_flags -fno-sanitize-recover=undefined)
        # The engine shares our instances of the standard library's templates, and its objects carry no type information.
        list(APPEND sanitize_flags -fno-sanitize=vptr)
    endif()
    # On every target, third-party ones included: a sanitizer that sees half a program reports ghosts.
    add_compile_options(${sanitize_flags} -O1 -g)
    add_link_options(${sanitize_flags})
endif()

if(CMAKE_BUILD_TYPE STREQUAL "Release")
    include(CheckIPOSupported)
    check_ipo_supported(RESULT CMAKE_INTERPROCEDURAL_OPTIMIZATION LANGUAGES CXX)
    # Small rather than fast: the shell waits nearly always, and what it does meanwhile the benchmarks watch.
    set(CMAKE_C_FLAGS_RELEASE "-Os -DNDEBUG")
    set(CMAKE_CXX_FLAGS_RELEASE "-Os -DNDEBUG")
    # Nothing is loaded into the shell that would look for its names.
    set(CMAKE_CXX_VISIBILITY_PRESET hidden)
    set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
    add_compile_options(-ffunction-sections -fdata-sections -fstack-protector-strong)
    # The same bytes, whatever folder they are built in.
    add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)
    if(NOT VANTOREL_SANITIZE)
        add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    endif()
    if(APPLE)
        add_link_options(-Wl,-dead_strip)
    else()
        if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|aarch64")
            add_compile_options(-fstack-clash-protection)
        endif()
        if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
            add_compile_options(-fcf-protection)
        endif()
        add_link_options(-Wl,--as-needed -Wl,--gc-sections -Wl,-z,relro,-z,now,-z,noexecstack -s
            -Wl,--no-export-dynamic)
    endif()
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES C CXX)
elseif(VANTOREL_FAST_LINK AND NOT APPLE)
    # Release builds keep the default linker: GCC's link-time optimisation speaks to it through a plug-in.
    foreach(linker lld gold)
        find_program(VANTOREL_LD_${linker} ld.${linker})
        mark_as_advanced(VANTOREL_LD_${linker})
        if(VANTOREL_LD_${linker})
            add_link_options(-fuse-ld=${linker} -Wl,--as-needed)
            break()
        endif()
    endforeach()
endif()
