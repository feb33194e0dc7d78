# Vantorel. MIT licence, see LICENSE.
# How the build finds its files, and how it makes a library of a folder.

# vantorel_glob(OUT PATTERN...): the files that match, patterns taken from the project's root.
# A folder's files are what lies in it: CONFIGURE_DEPENDS looks again at each build, so that a new file takes part
# without an edit here and a forgotten entry can't leave a test out.
function(vantorel_glob out)
    list(TRANSFORM ARGN PREPEND ${PROJECT_SOURCE_DIR}/)
    file(GLOB found CONFIGURE_DEPENDS ${ARGN})
    set(${out} ${found} PARENT_SCOPE)
endfunction()

# vantorel_library(NAME PATTERN... [EXCLUDE FILE...]): a static library of the files that match, with our warnings.
# Makes no target where nothing matches.
function(vantorel_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "EXCLUDE")
    vantorel_glob(sources ${arg_UNPARSED_ARGUMENTS})
    list(TRANSFORM arg_EXCLUDE PREPEND ${PROJECT_SOURCE_DIR}/)
    if(arg_EXCLUDE)
        list(REMOVE_ITEM sources ${arg_EXCLUDE})
    endif()
    if(sources)
        add_library(${name} STATIC ${sources})
        target_link_libraries(${name} PUBLIC vantorel_options)
    endif()
endfunction()

# vantorel_link(TARGET LIBRARY...): links those of the libraries that this build has.
function(vantorel_link target)
    foreach(library IN LISTS ARGN)
        if(TARGET ${library})
            target_link_libraries(${target} PRIVATE ${library})
        endif()
    endforeach()
endfunction()
