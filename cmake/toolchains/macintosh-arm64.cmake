# Macintosh with an Apple processor: macOS 11 and later. The linker signs the file ad hoc, as macOS requires there.
set(CMAKE_SYSTEM_PROCESSOR arm64)
set(VELM_MACINTOSH_TARGET arm64-apple-macosx11.0)
include(${CMAKE_CURRENT_LIST_DIR}/macintosh.cmake)
