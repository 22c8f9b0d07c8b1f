#include "shading/sincos.h"

#include <bit>
#include <cmath>
#include <cstdint>

// Not for Windows, where GCC puts 32-byte vectors on a stack that it aligns to 16 bytes only (GCC bug 54412).
#if (defined(__x86_64__) || defined(__i386__)) && !defined(_WIN32)
#define VELM_WIDE_VECTORS
#include <cpuid.h>
#endif

namespace velm::plugin {
namespace {

// A quarter turn in three parts. The first two have 33 bits, so that their products with a number of quarter turns
// below 2^20 are exact (W. J. Cody and W. Waite, "Software Manual for the Elementary Functions", 1980).
constexpr double kQuarterTurns = 6.36619772367581382433e-01; // in one radian
constexpr double kQuarter1 = 1.57079632673412561417e+00;
constexpr double kQuarter2 = 6.07710050630396597660e-11;
constexpr double kQuarter3 = 2.02226624879595063154e-21;
constexpr double kFarthest = 1.6e6; // radians: slightly less than 2^20 quarter turns

// Adding this to a number rounds the number to an integer, whose lowest bits become the lowest bits of the sum.
constexpr double kRounder = 6755399441055744.0; // 1.5 * 2^52

// Polynomials on [-pi/4, pi/4], from the kernels of K. C. Ng in Sun's fdlibm, 1993. The error is below 2^-57.
double sineNearZero(double x, double square) {
    const double rest =
        8.33333333332248946124e-03 +
        square * (-1.98412698298579493134e-04 +
                  square * (2.75573137070700676789e-06 +
                            square * (-2.50507602534068634195e-08 + square * 1.58969099521155010221e-10)));
    return x + x * square * (-1.66666666666666324348e-01 + square * rest);
}

double cosineNearZero(double square) {
    const double rest =
        4.16666666666666019037e-02 +
        square * (-1.38888888888741095749e-03 +
                  square * (2.48015872894767294178e-05 +
                            square * (-2.75573143513906633035e-07 +
                                      square * (2.08757232129817482790e-09 + square * -1.13596475577881948265e-11))));
    return 1 - (0.5 * square - square * square * rest);
}

constexpr std::uint64_t kSign = std::uint64_t{1} << 63;

// False if an angle is too large. Compiled twice: the operations on each angle are the same, only the number of angles
// in a step differs.
[[gnu::always_inline]] inline bool computeNear(const double *angles, int count, double *sines, double *cosines) {
    std::uint64_t far = 0;
    for (int i = 0; i < count; ++i) {
        far |= std::fabs(angles[i]) < kFarthest ? 0 : 1;
        const double shifted = angles[i] * kQuarterTurns + kRounder;
        const double quarters = shifted - kRounder;
        const auto bits = std::bit_cast<std::uint64_t>(shifted);
        const double x = angles[i] - quarters * kQuarter1 - quarters * kQuarter2 - quarters * kQuarter3;
        const double square = x * x;
        // An odd number of quarter turns swaps sine and cosine; bits 0 and 1 of the number give the signs.
        const std::uint64_t swap = 0 - (bits & 1);
        const auto sine = std::bit_cast<std::uint64_t>(sineNearZero(x, square));
        const auto cosine = std::bit_cast<std::uint64_t>(cosineNearZero(square));
        const std::uint64_t mixed = (sine ^ cosine) & swap;
        sines[i] = std::bit_cast<double>(sine ^ mixed ^ ((bits << 62) & kSign));
        cosines[i] = std::bit_cast<double>(cosine ^ mixed ^ (((bits + 1) << 62) & kSign));
    }
    return far == 0;
}

} // namespace

bool nearSinesAndCosinesNarrow(const double *angles, int count, double *sines, double *cosines) {
    return computeNear(angles, count, sines, cosines);
}

#ifdef VELM_WIDE_VECTORS
[[gnu::target("avx2")]] bool nearSinesAndCosinesWide(const double *angles, int count, double *sines, double *cosines) {
    return computeNear(angles, count, sines, cosines);
}

namespace {

// Whether the processor has AVX2, and the operating system saves the wide registers when it switches threads. Asks the
// processor by CPUID: the compilers' own query needs their runtime library, which the module for Macintosh does not
// link. XGETBV, which reads XCR0, may be executed only if CPUID reports OSXSAVE.
bool findWideVectors() noexcept {
    constexpr unsigned int kStateSaved = bit_OSXSAVE | bit_AVX;
    constexpr unsigned int kWideRegisters = 6; // bits of XCR0 for the lower and the upper halves of the registers
    unsigned int a, b, c, d;
    if (!__get_cpuid(1, &a, &b, &c, &d) || (c & kStateSaved) != kStateSaved) return false;
    __asm__("xgetbv" : "=a"(a), "=d"(d) : "c"(0));
    if ((a & kWideRegisters) != kWideRegisters) return false;
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & bit_AVX2) != 0;
}

const bool wideVectors = findWideVectors(); // false until it is initialised, as the module is loaded; that is safe

} // namespace

bool hasWideVectors() { return wideVectors; }
#else
bool nearSinesAndCosinesWide(const double *angles, int count, double *sines, double *cosines) {
    return computeNear(angles, count, sines, cosines);
}
bool hasWideVectors() { return false; }
#endif

void sinesAndCosines(const double *angles, int count, double *sines, double *cosines) {
    const auto compute = hasWideVectors() ? nearSinesAndCosinesWide : nearSinesAndCosinesNarrow;
    if (compute(angles, count, sines, cosines)) return;
    for (int i = 0; i < count; ++i) {
        sines[i] = std::sin(angles[i]);
        cosines[i] = std::cos(angles[i]);
    }
}

} // namespace velm::plugin
