# The common part of the toolchain files for Macintosh, which set VELM_MACINTOSH_TARGET first. The tools are Debian's
# (clang-14, lld-14, llvm-14, libc++-14-dev, musl-dev); no SDK is needed. The module uses only a few plain C functions,
# whose declarations are the same on all systems. So musl's headers replace those of macOS, and libSystem.tbd lists the
# symbols that the linker may expect in the library of macOS.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_AR /usr/bin/llvm-ar-14)
set(CMAKE_RANLIB /usr/bin/llvm-ranlib-14)
set(CMAKE_INSTALL_NAME_TOOL /usr/bin/llvm-install-name-tool-14)
set(CMAKE_OSX_SYSROOT "")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY) # programs cannot be linked without the SDK

set(velm_headers "-nostdlibinc -isystem /usr/include/x86_64-linux-musl")
set(CMAKE_C_FLAGS_INIT "--target=${VELM_MACINTOSH_TARGET} ${velm_headers}")
set(CMAKE_CXX_FLAGS_INIT "--target=${VELM_MACINTOSH_TARGET} -D_GNU_SOURCE -nostdinc++")
string(APPEND CMAKE_CXX_FLAGS_INIT " -isystem /usr/lib/llvm-14/include/c++/v1 ${velm_headers}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-fuse-ld=lld -nostdlib ${CMAKE_CURRENT_LIST_DIR}/libSystem.tbd")
unset(velm_headers)
