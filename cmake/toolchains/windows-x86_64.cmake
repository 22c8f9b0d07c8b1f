# 64-bit Windows, with mingw-w64's compiler (Debian: g++-mingw-w64-x86-64-win32).
set(VELM_WINDOWS_PROCESSOR x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/windows.cmake)
