# Compiler options for arithmetic in 32-bit builds for Intel processors.
#
# -msse2 -mfpmath=sse: by default, 32-bit compilers use the x87 unit, which keeps intermediate results with 64 bits of
# mantissa until they are stored in memory. Pictures would then differ from those of 64-bit builds, and between
# optimisation levels. SSE2 rounds every operation to double, as 64-bit builds do. Every processor since 2003 has it.
# -mstackrealign: SSE2 needs a stack that is aligned to 16 bytes, but 32-bit hosts may align it to 4 bytes only.
set(VELM_32_BIT_ARITHMETIC "-march=i686 -msse2 -mfpmath=sse -mstackrealign")
