# Windows x86-64 from Debian: mingw-w64 with posix threads, everything linked into the programs. WKD_WINDOWS names the
# folder of the libraries built by scripts/windows.sh; a build that only compiles needs none.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES WKD_WINDOWS)
if(WKD_WINDOWS)
    list(APPEND CMAKE_PREFIX_PATH ${WKD_WINDOWS})
    list(PREPEND CMAKE_FIND_ROOT_PATH ${WKD_WINDOWS})
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The import library of zlib's DLL would be found first.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(ZLIB_LIBRARY /usr/x86_64-w64-mingw32/lib/libz.a)

# Qt's own tools run on this machine.
set(QT_HOST_PATH /usr)
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/x86_64-linux-gnu/cmake)
