# The common part of the toolchain files for Windows, which set VELM_WINDOWS_PROCESSOR first.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${VELM_WINDOWS_PROCESSOR})
set(CMAKE_C_COMPILER ${VELM_WINDOWS_PROCESSOR}-w64-mingw32-gcc)
set(CMAKE_CXX_COMPILER ${VELM_WINDOWS_PROCESSOR}-w64-mingw32-g++)
set(CMAKE_RC_COMPILER ${VELM_WINDOWS_PROCESSOR}-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${VELM_WINDOWS_PROCESSOR}-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# The programs run under Wine: ./run test --platforms.
get_filename_component(velm_root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(CMAKE_CROSSCOMPILING_EMULATOR ${velm_root}/tests/platforms/wine ${VELM_WINDOWS_PROCESSOR})
unset(velm_root)
