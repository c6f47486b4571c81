# Windows x86-64 programs and DLLs from Debian's mingw-w64 cross compiler,
# with POSIX threads (std::thread and std::mutex need them). The runtime is
# linked statically, so that the programs run without the compiler's DLLs on
# their path.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(NVK_MINGW x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${NVK_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${NVK_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${NVK_MINGW}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${NVK_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
# The runtime stays private to each DLL: exporting it would clash with the
# copy of every other DLL and program.
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -Wl,--exclude-libs,ALL")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${CMAKE_SHARED_LINKER_FLAGS_INIT}")

# Tests run under Wine, in a prefix of the build folder's own.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run.sh ${CMAKE_BINARY_DIR}/wine)
