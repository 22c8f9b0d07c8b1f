// Single draws from the module's random stream, against generators that are not shared between threads.
#include "bench/compare.h"
#include "bench/reference_mt19937.h"
#include "random/random.h"

#include <random>

namespace velm::host::bench {
namespace {

using plugin::gaussianNoise, plugin::genrand_real1;

constexpr int kRounds = 15, kCalls = 4000000;

template <class Draw>
auto timed(Draw draw) {
    return [draw]() mutable { return nanosecondsOf(kCalls, [&draw] { keep(draw()); }); };
}

} // namespace

void compareDraws(Table &table) {
    plugin::init_genrand(3);
    const auto stream = timed([] { return genrand_real1(); });
    table.compare({.what = "one genrand_real1",
                   .against = "the published generator in plain C",
                   .unit = "ns",
                   .goal = Goal::ratioAtMost,
                   .target = 1.10},
                  kRounds, stream, timed([twister = ReferenceTwister(3)]() mutable { return twister.closed(); }));
    table.compare({.what = "one genrand_real1",
                   .against = "std::mt19937",
                   .unit = "ns",
                   .goal = Goal::ratioAtMost,
                   .target = 1.00},
                  kRounds, stream, timed([twister = std::mt19937(3)]() mutable {
                      return static_cast<uint32_t>(twister()) * (1.0 / 4294967295.0);
                  }));
    table.compare({.what = "one gaussianNoise",
                   .against = "three plain draws, the same arithmetic",
                   .unit = "ns",
                   .goal = Goal::ratioAtMost,
                   .target = 1.10},
                  kRounds, timed([] { return gaussianNoise(); }),
                  timed([twister = ReferenceTwister(3)]() mutable { return twister.noise(); }));
}

} // namespace velm::host::bench
