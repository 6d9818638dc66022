# Builds for Windows XP and later with Debian's mingw-w64.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(host i686-w64-mingw32)
set(CMAKE_C_COMPILER ${host}-gcc-posix)
set(CMAKE_CXX_COMPILER ${host}-g++-posix)
set(CMAKE_RC_COMPILER ${host}-windres)
list(APPEND CMAKE_FIND_ROOT_PATH /usr/${host})  # searched after wxWidgets
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# The x87 computes with more precision than a double; values in variables must be doubles. SSE2,
# which computes in doubles, is missing in the oldest supported processor, a Pentium II.
set(CMAKE_CXX_FLAGS_INIT "-ffloat-store")

# Link the compiler's libraries in, so that no program needs a DLL. Windows XP, which is 5.1, starts
# no program that requires a later version.
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-static -s -Wl,--major-subsystem-version,5,--minor-subsystem-version,1")
