# The warning options of the project's own code; every target links this library.
add_library(velm_warnings INTERFACE)
target_compile_options(velm_warnings INTERFACE
    -Wall -Wextra -Wshadow -Wconversion -Wimplicit-fallthrough -Werror)
# With optimisation, GCC 12 wrongly reports both of these inside std::string (GCC bugs 105329 and 105562). The
# sanitizers find actual errors of these kinds.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(velm_warnings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict -Wno-maybe-uninitialized>)
endif()
