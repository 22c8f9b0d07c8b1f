# Cross-compiles for Macintosh, with Clang, LLVM's linker and the SDK of Apple's developer tools. Only those who have
# these tools may use the SDK, so that its path has to be given:
#
#     cmake --preset macintosh -DVELM_MACINTOSH_SDK=/path/to/MacOSX.sdk
#
# On a Macintosh itself no toolchain file is needed: cmake -DVELM_HOST=OFF.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)

set(VELM_MACINTOSH_SDK "$ENV{VELM_MACINTOSH_SDK}" CACHE PATH "The SDK of Apple's developer tools")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VELM_MACINTOSH_SDK)
if(NOT EXISTS "${VELM_MACINTOSH_SDK}/SDKSettings.json" AND NOT EXISTS "${VELM_MACINTOSH_SDK}/SDKSettings.plist")
    message(FATAL_ERROR "VELM_MACINTOSH_SDK must name a directory like MacOSX.sdk, which holds SDKSettings.json or "
        "SDKSettings.plist; it is: '${VELM_MACINTOSH_SDK}'")
endif()
set(CMAKE_OSX_SYSROOT "${VELM_MACINTOSH_SDK}")
set(CMAKE_OSX_DEPLOYMENT_TARGET 10.13)
set(CMAKE_C_COMPILER_TARGET x86_64-apple-macosx${CMAKE_OSX_DEPLOYMENT_TARGET})
set(CMAKE_CXX_COMPILER_TARGET ${CMAKE_C_COMPILER_TARGET})
foreach(kind EXE MODULE SHARED)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT -fuse-ld=lld)
endforeach()
