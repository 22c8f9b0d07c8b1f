# How the 32-bit builds for Intel processors compute.
#
# -msse2 -mfpmath=sse: with the x87 unit, which 32-bit compilers choose by themselves, every intermediate result has 64
# bits of mantissa until it happens to be stored: a picture would differ from the 64-bit builds', and between two
# optimisation levels. With SSE2 every operation rounds to double, as in the 64-bit builds. Every processor since 2003
# has it.
# -mstackrealign: hosts of that time keep the stack aligned to 4 bytes only, and SSE2 wants 16.
set(VELM_32_BIT_ARITHMETIC "-march=i686 -msse2 -mfpmath=sse -mstackrealign")
