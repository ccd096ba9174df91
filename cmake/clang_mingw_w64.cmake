# Compiles with clang and the headers of Debian's g++-mingw-w64-x86-64-posix. This is only a check: nothing is linked,
# since clang's inline functions do not link with that compiler's libraries.
include(${CMAKE_CURRENT_LIST_DIR}/mingw_w64.cmake)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include/c++
    OUTPUT_VARIABLE LIBRARY_HEADERS OUTPUT_STRIP_TRAILING_WHITESPACE)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
# clang searches only folders named after a plain version number; the name of Debian's ends in "-posix".
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -isystem ${LIBRARY_HEADERS} -isystem ${LIBRARY_HEADERS}/x86_64-w64-mingw32")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_EXE_LINKER_FLAGS_INIT "--ld-path=/bin/true -Wno-unused-command-line-argument")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${CMAKE_EXE_LINKER_FLAGS_INIT}")
