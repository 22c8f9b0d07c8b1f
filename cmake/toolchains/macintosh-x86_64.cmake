# Macintosh with an Intel processor: macOS 10.13 and later.
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(VELM_MACINTOSH_TARGET x86_64-apple-macosx10.13)
include(${CMAKE_CURRENT_LIST_DIR}/macintosh.cmake)
