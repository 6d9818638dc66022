# Builds for Windows XP and all that came after it, with Debian's mingw-w64.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(host i686-w64-mingw32)
set(CMAKE_C_COMPILER ${host}-gcc-posix)
set(CMAKE_CXX_COMPILER ${host}-g++-posix)
set(CMAKE_RC_COMPILER ${host}-windres)
list(APPEND CMAKE_FIND_ROOT_PATH /usr/${host})  # behind wxWidgets
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# The x87 computes more exactly than a double; a value that is kept must not. SSE2, which computes in
# doubles, is missing in the processors of the simulator's time: the oldest one served is a Pentium II.
set(CMAKE_CXX_FLAGS_INIT "-ffloat-store")

# The compiler's own libraries too are linked in, so that no DLL is needed beside a program. Windows XP,
# which is 5.1, starts no program that asks for a later version.
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-static -s -Wl,--major-subsystem-version,5,--minor-subsystem-version,1")
