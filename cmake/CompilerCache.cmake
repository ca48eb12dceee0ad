# The compiler cache, set up here once for every tree: when ccache is
# installed and no launcher is given (on the command line, in the cache or
# in the environment), every compile goes through it. Paths are hashed
# relative to the checkout, so another clone of the same commit hits the
# cache. CCACHE_DISABLE=1 in the environment still turns it off for a run,
# and -DKESTRUNE_CCACHE=OFF for a tree.
if(NOT DEFINED CMAKE_C_COMPILER_LAUNCHER
   AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  find_program(KESTRUNE_CCACHE ccache)
  mark_as_advanced(KESTRUNE_CCACHE)
  if(KESTRUNE_CCACHE)
    # ccache reads its settings from the environment only: `cmake -E env`
    # gives them to each compile without asking anything of the caller.
    set(launcher ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}
                 CCACHE_NOHASHDIR=1 ${KESTRUNE_CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
  endif()
endif()
