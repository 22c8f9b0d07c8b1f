# 32-bit Linux, with the compiler of 64-bit Linux (Debian: g++-multilib). The programs run on 64-bit Linux directly.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)

# -malign-double: the host aligns doubles in records to 8 bytes; the platform's own rule is 4. Records that are passed
# to the system's libraries must therefore not contain 8-byte numbers. The module passes no such records, and the
# program that checks the module only passes string streams, which contain none.
# The other options are explained in 32-bit-arithmetic.cmake.
include(${CMAKE_CURRENT_LIST_DIR}/32-bit-arithmetic.cmake)
set(CMAKE_C_FLAGS_INIT "-m32 -malign-double ${VELM_32_BIT_ARITHMETIC}")
set(CMAKE_CXX_FLAGS_INIT "-m32 -malign-double ${VELM_32_BIT_ARITHMETIC}")
