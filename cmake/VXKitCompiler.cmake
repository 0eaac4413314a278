# Language level, warnings, sanitizers and the compiler cache, the same for every target of the project.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Precompiled headers carry their own time stamps; without this sloppiness ccache never hits on a file that uses one.
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
      ${CCACHE_PROGRAM})
  set(VXKIT_PCH_CACHE_OPTION $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
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
    $<$<BOOL:${VXKIT_WARNINGS_AS_ERRORS}>:-Werror>
    ${VXKIT_PCH_CACHE_OPTION})
endfunction()
