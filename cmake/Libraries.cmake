# Vantorel. MIT licence, see LICENSE.
# The libraries that know no toolkit: the logic, the helpers that both backends share, and the fake platform.

vantorel_library(vantorel_portable platform/portable/*.cpp)
vantorel_library(vantorel_logic app/*.cpp server/*.cpp web/*.cpp ui/*.cpp hotkeys/*.cpp EXCLUDE app/main.cpp)
vantorel_library(vantorel_fake tests/unit/fake/*.cpp)
foreach(library vantorel_logic vantorel_fake)
    if(TARGET ${library} AND TARGET vantorel_portable)
        target_link_libraries(${library} PUBLIC vantorel_portable)
    endif()
endforeach()
