#include "host/cli/statistics.h"

#include <fmt/format.h>
#include <ostream>
#include <sys/resource.h>

namespace velm::host {

namespace {

constexpr double kMega = 1e6;
constexpr double kMebibyte = 1024.0 * 1024.0;

double peakMemory() { // in MiB
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0; // in KiB on Linux
}

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

} // namespace velm::host
