# 32-bit Linux, with the compiler of a 64-bit one (Debian: g++-multilib). The programs run as they are on such a machine.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)

# -malign-double: the host aligns doubles to 8 bytes, where the platform's own rule is 4. What is handed to the system's
# libraries must then hold no 8-byte numbers; the module hands over none, and the program that tries it out only streams
# in memory, whose records have none.
# The rest: 32-bit-arithmetic.cmake.
include(${CMAKE_CURRENT_LIST_DIR}/32-bit-arithmetic.cmake)
set(CMAKE_C_FLAGS_INIT "-m32 -malign-double ${VELM_32_BIT_ARITHMETIC}")
set(CMAKE_CXX_FLAGS_INIT "-m32 -malign-double ${VELM_32_BIT_ARITHMETIC}")
