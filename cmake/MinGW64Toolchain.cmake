# Cross build for 64-bit Windows with Debian's MinGW-w64 compilers (the posix thread model: std::thread and
# std::mutex need it). Libraries and packages come from the MinGW system root and from the cache of
# dependencies that tools/build-mingw-deps.sh builds; programs (pkg-config, the resource embedder) from the
# build machine.
#   cmake --preset windows
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(VANTEL_MINGW_TRIPLE x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${VANTEL_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${VANTEL_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${VANTEL_MINGW_TRIPLE}-windres)

# The dependency cache: VANTEL_MINGW_DEPS when set, else the folder the build script points "current" at.
if(DEFINED ENV{VANTEL_MINGW_DEPS})
    set(VANTEL_MINGW_DEPS $ENV{VANTEL_MINGW_DEPS})
elseif(DEFINED ENV{XDG_CACHE_HOME})
    set(VANTEL_MINGW_DEPS $ENV{XDG_CACHE_HOME}/vantel/mingw-deps/current)
else()
    set(VANTEL_MINGW_DEPS $ENV{HOME}/.cache/vantel/mingw-deps/current)
endif()

set(CMAKE_FIND_ROOT_PATH /usr/${VANTEL_MINGW_TRIPLE} ${VANTEL_MINGW_DEPS})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The header-only dependencies are Debian's own packages, the same files the Linux build uses.
set(nlohmann_json_DIR /usr/share/cmake/nlohmann_json CACHE PATH "")
set(glm_DIR /usr/share/cmake/glm CACHE PATH "")

# Debug objects of large sources pass COFF's section limit without the big object format.
set(CMAKE_CXX_FLAGS_INIT "-Wa,-mbig-obj")
