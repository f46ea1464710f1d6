# A compiler cache is used where there is one; nothing needs it.
find_program(VEKDB_CCACHE ccache)
if(VEKDB_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
        ${VEKDB_CCACHE})
endif()
