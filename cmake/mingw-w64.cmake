# Builds for Windows with Debian's mingw-w64. MINGW_ARCHITECTURE is x86_64 or i686.
set(MINGW_ARCHITECTURE x86_64 CACHE STRING "Processor to build for: x86_64 or i686")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MINGW_ARCHITECTURE)

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${MINGW_ARCHITECTURE})
set(host ${MINGW_ARCHITECTURE}-w64-mingw32)
set(CMAKE_C_COMPILER ${host}-gcc-posix)
set(CMAKE_CXX_COMPILER ${host}-g++-posix)
set(CMAKE_RC_COMPILER ${host}-windres)
list(APPEND CMAKE_FIND_ROOT_PATH /usr/${host})  # behind the widget set
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# The x87 of a 32-bit machine computes more exactly than a double; a value that is kept must not.
if(MINGW_ARCHITECTURE STREQUAL "i686")
  set(CMAKE_CXX_FLAGS_INIT "-ffloat-store")
endif()

# The compiler's own libraries too are linked in, so that no DLL is needed beside a program.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -s")
