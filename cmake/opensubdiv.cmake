# Finds the CPU library of OpenSubdiv. Debian's CMake files for it also require static libraries, which Debian does not
# have, and the GPU library.
find_path(VELM_OPENSUBDIV_HEADERS opensubdiv/far/topologyRefiner.h REQUIRED)
find_library(VELM_OPENSUBDIV_LIBRARY osdCPU REQUIRED)
mark_as_advanced(VELM_OPENSUBDIV_HEADERS VELM_OPENSUBDIV_LIBRARY)

add_library(velm_opensubdiv INTERFACE)
target_include_directories(velm_opensubdiv SYSTEM INTERFACE ${VELM_OPENSUBDIV_HEADERS})
target_link_libraries(velm_opensubdiv INTERFACE ${VELM_OPENSUBDIV_LIBRARY})
