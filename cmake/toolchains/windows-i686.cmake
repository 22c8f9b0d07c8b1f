# 32-bit Windows, with mingw-w64's compiler (Debian: g++-mingw-w64-i686-win32).
set(VELM_WINDOWS_PROCESSOR i686)
# Doubles in records are aligned to 8 bytes by default on this platform.
include(${CMAKE_CURRENT_LIST_DIR}/32-bit-arithmetic.cmake)
set(CMAKE_C_FLAGS_INIT "${VELM_32_BIT_ARITHMETIC}")
set(CMAKE_CXX_FLAGS_INIT "${VELM_32_BIT_ARITHMETIC}")
include(${CMAKE_CURRENT_LIST_DIR}/windows.cmake)
