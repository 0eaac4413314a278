# Language level, warnings, sanitizers and the compiler cache, the same for every target of the project.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# For the project's own sources alone: who uses the kit decides this for themselves, and its headers bear either.
add_compile_definitions(QT_NO_CAST_FROM_ASCII QT_NO_KEYWORDS)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Precompiled headers carry their own time stamps; without this sloppiness ccache never hits on a file that uses one.
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
      ${CCACHE_PROGRAM})
  set(VXKIT_PCH_CACHE_OPTION $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endif()

# Several sources are compiled as one, where that is asked for: a fifth of the time. GCC takes what is in an unnamed
# namespace of one of them for something that another translation unit might see, because it is in no main file.
if(CMAKE_UNITY_BUILD)
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()

if(VXKIT_SANITIZE)
  add_compile_options(-fsanitize=${VXKIT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VXKIT_SANITIZE})
endif()

# Adds the project's warnings to a target. Names that begin with an underscore and a capital letter are the kit's own
# (_LTSnippet and its kin), so -Wno-reserved-identifier.
function(vxkit_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
    -Woverloaded-virtual -Wcast-align -Wunused -Wdouble-promotion -Wformat=2 -Wimplicit-fallthrough
    -Wno-reserved-identifier
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op>
    # Where sources are compiled as one, clang takes a name of the first for one that the headers of the second shadow.
    $<$<AND:$<CXX_COMPILER_ID:Clang>,$<BOOL:${CMAKE_UNITY_BUILD}>>:-Wno-shadow>
    $<$<BOOL:${VXKIT_WARNINGS_AS_ERRORS}>:-Werror>
    ${VXKIT_PCH_CACHE_OPTION})
endfunction()

# Puts the sources of a target that are compiled as one into groups: at most eight, all of one folder. So what is private
# to a source need be named differently from what is private to those of its folder alone.
function(vxkit_group_sources target)
  get_target_property(sources ${target} SOURCES)
  set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
  foreach(source IN LISTS sources)
    cmake_path(ABSOLUTE_PATH source OUTPUT_VARIABLE file)
    cmake_path(GET file PARENT_PATH folder)
    cmake_path(GET file EXTENSION LAST_ONLY extension)
    get_source_file_property(alone "${source}" SKIP_PRECOMPILE_HEADERS)
    if(NOT extension STREQUAL ".cpp" OR alone)
      continue()
    endif()
    string(MD5 name "${folder}")
    math(EXPR number "${count_${name}} + 0")
    math(EXPR group "${number} / 8")
    math(EXPR count_${name} "${number} + 1")
    set_source_files_properties("${source}" PROPERTIES UNITY_GROUP "${name}_${group}")
  endforeach()
endfunction()
