#include "host/render/not_finite.h"

#include "host/base/shared_memory.h"
#include "host/base/thread_role.h"
#include "host/guard/call_record.h"
#include "host/guard/workers.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>

namespace velm::host {
namespace {

constexpr std::size_t kLongestName = 256; // bytes; a longer name is cut

bool isFinite(const float *pixel) {
    return std::all_of(pixel, pixel + Picture::kChannels, [](float value) { return std::isfinite(value); });
}

NotFinitePixels countNotFinite(const Picture &picture) {
    NotFinitePixels found;
    const Region &window = picture.window();
    for (int y = window.top; y < window.bottom; ++y) {
        for (int x = window.left; x < window.right; ++x) {
            if (isFinite(picture.pixel(x, y))) continue;
            if (found.count++ == 0) {
                found.x = x;
                found.y = y;
            }
        }
    }
    return found;
}

// Renders the samples of a pixel until one shows where its value comes from.
NotFiniteSource sourceAt(const SampleRenderer &renderer, int x, int y) {
    SlotScope slot(0);
    const RoleScope role(ThreadRole::render);
    const DenormalsAreZero denormals;
    NotFiniteSource source;
    RayState &state = rayState;
    state = renderer.initialState(0);
    state.notFinite = &source;
    const int first = renderer.job().firstSample, end = first + samplesOf(renderer.job());
    for (int index = first; index < end && !source.isKnown(); ++index) {
        Vec3 colour;
        renderer.render(state, x, y, static_cast<std::uint32_t>(index), colour);
        slot.step();
    }
    return source;
}

} // namespace

NotFinitePixels findNotFinite(const Picture &picture, const SampleRenderer &renderer) {
    NotFinitePixels found = countNotFinite(picture);
    if (found.count == 0) return found;
    SharedArray<char> surface(kLongestName), node(kLongestName);
    SharedArray<bool> isBackdrop(1);
    const SceneServices services = servicesFor(renderer, 1);
    const std::function<void(int)> work = [&](int) {
        const NotFiniteSource source = sourceAt(renderer, found.x, found.y);
        std::snprintf(surface.data(), kLongestName, "%s", source.surface.c_str());
        std::snprintf(node.data(), kLongestName, "%s", source.node.c_str());
        *isBackdrop.data() = source.isBackdrop;
    };
    Workers worker(1, Workers::In::processes, work);
    worker.waitForAll();
    found.surface = surface.data();
    found.node = node.data();
    found.isBackdrop = *isBackdrop.data();
    return found;
}

} // namespace velm::host
