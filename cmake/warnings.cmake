# What our own code is compiled with: every target links this.
add_library(velm_warnings INTERFACE)
target_compile_options(velm_warnings INTERFACE
    -Wall -Wextra -Wshadow -Wconversion -Wimplicit-fallthrough -Werror)
# GCC 12 raises both of these falsely inside std::string once it optimises (GCC bugs 105329 and 105562); the sanitizers
# look for the real ones.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(velm_warnings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict -Wno-maybe-uninitialized>)
endif()
