# What our own code is compiled with: every target links one of these.
add_library(velm_warnings INTERFACE)
target_compile_options(velm_warnings INTERFACE
    -Wall -Wextra -Wshadow -Wconversion -Wimplicit-fallthrough -Werror)
