#include "host/cli/statistics.h"

#include "host/cli/json_output.h"
#include "host/cli/memory_use.h"

#include <fmt/format.h>
#include <ostream>

namespace velm::host {

namespace {

constexpr double kMega = 1e6;
constexpr double kMebibyte = 1024.0 * 1024.0;

} // namespace

void TotalStatistics::prepared(std::size_t points) {
    preparation_ = std::chrono::duration<double>(Clock::now() - start_).count();
    points_ = points;
}

void TotalStatistics::add(const RenderStatistics &frame) {
    ++frames_;
    sum_.seconds += frame.seconds;
    sum_.rays += frame.rays;
    sum_.samples += frame.samples;
    sum_.threads = frame.threads;
    sum_.triangles = frame.triangles;
    sum_.accelerationBytes = frame.accelerationBytes;
}

void TotalStatistics::print(std::ostream &out) const {
    const auto row = [&out](const char *what, const std::string &value) {
        out << fmt::format("{:<20} {}\n", what, value);
    };
    const auto rays = [&](const char *what, std::uint64_t count) {
        const double rate = sum_.seconds > 0 ? static_cast<double>(count) / sum_.seconds / kMega : 0;
        row(what, fmt::format("{:>14}  {:8.3f} million a second", count, rate));
    };
    row("frames", fmt::format("{:>14}", frames_));
    row("threads", fmt::format("{:>14}", sum_.threads));
    row("triangles", fmt::format("{:>14}", sum_.triangles));
    row("points", fmt::format("{:>14}", points_));
    row("shaded samples", fmt::format("{:>14}", sum_.samples));
    rays("camera rays", sum_.rays.camera);
    rays("cast rays", sum_.rays.cast);
    rays("shaded rays", sum_.rays.shaded);
    rays("shadow rays", sum_.rays.shadow);
    rays("all rays", sum_.rays.total());
    row("preparation", fmt::format("{:>14.3f} s", preparation_));
    row("rendering", fmt::format("{:>14.3f} s", sum_.seconds));
    row("ray acceleration", fmt::format("{:>14.1f} MiB", static_cast<double>(sum_.accelerationBytes) / kMebibyte));
    row("peak memory", fmt::format("{:>14.1f} MiB", peakMemory()));
}

void TotalStatistics::printAsJson(std::ostream &out) const {
    printJson({{"frames", frames_},
               {"threads", sum_.threads},
               {"triangles", sum_.triangles},
               {"points", points_},
               {"shadedSamples", sum_.samples},
               {"rays",
                {{"camera", sum_.rays.camera},
                 {"cast", sum_.rays.cast},
                 {"shaded", sum_.rays.shaded},
                 {"shadow", sum_.rays.shadow},
                 {"all", sum_.rays.total()}}},
               {"seconds", {{"preparation", preparation_}, {"rendering", sum_.seconds}}},
               {"bytes",
                {{"rayAcceleration", sum_.accelerationBytes},
                 {"peakMemory", static_cast<std::uint64_t>(peakMemory() * kMebibyte)}}}},
              out);
}

} // namespace velm::host
