# Vantorel. MIT licence, see LICENSE.
# The libraries that know no toolkit: the logic, the helpers that both backends share, and the fake platform.

vantorel_library(vantorel_portable platform/portable/*.cpp)
vantorel_library(vantorel_logic app/*.cpp server/*.cpp web/*.cpp ui/*.cpp hotkeys/*.cpp EXCLUDE app/main.cpp)
vantorel_library(vantorel_fake tests/unit/fake/*.cpp)
# Reading a large .env file is the one work that the launch waits for: there speed counts more than size.
target_compile_options(vantorel_portable PRIVATE $<$<CONFIG:Release>:-O2>)
set_source_files_properties(server/env_file.cpp PROPERTIES COMPILE_OPTIONS $<$<CONFIG:Release>:-O2>)
foreach(library vantorel_logic vantorel_fake)
    if(TARGET ${library} AND TARGET vantorel_portable)
        target_link_libraries(${library} PUBLIC vantorel_portable)
    endif()
endforeach()
