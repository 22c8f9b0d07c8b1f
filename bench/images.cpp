// Images: one pixel, one bilinear lookup, walking the list, and a whole Pixel Image, each beside hand-written code over
// a plain buffer of floats and beside the image library's own cache and texture system. The coordinates are scattered
// over the image and the same for all.
#include "host/graph/network.h"
#include "host/image/image.h"
#include "host/image/picture.h"
#include "host/load/module.h"
#include "host/panel/settings.h"
#include "host/services/services.h"

#include <OpenImageIO/imagecache.h>
#include <OpenImageIO/texture.h>
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <vector>

namespace {

using namespace velm::host;

constexpr int kWidth = 1024, kHeight = 512, kListed = 10;

// The image in all its forms: a file, a plain buffer, and the last of ten images in the host's list.
class Pictures {
  public:
    static const Pictures &all() {
        static const Pictures pictures;
        return pictures;
    }
    ~Pictures() { std::filesystem::remove(file); }
    Pictures(const Pictures &) = delete;
    Pictures &operator=(const Pictures &) = delete;

    std::string file;
    std::vector<float> plain; // three components per pixel
    HostImage *image = nullptr;

  private:
    Pictures()
        : file((std::filesystem::temp_directory_path() / ("velm_bench_" + std::to_string(::getpid()) + ".exr"))
                   .string()) {
        Picture picture(kWidth, kHeight);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                for (int i = 0; i < 3; ++i) {
                    picture.pixel(x, y)[i] = static_cast<float>((x * 7 + y * 13 + i * 5) % 256) / 255;
                    plain.push_back(picture.pixel(x, y)[i]);
                }
        writePicture(picture, file);
        for (int i = 0; i < kListed; ++i) image = &ImageList::instance().load(file, "Bench " + std::to_string(i));
    }
};

// A cheap walk over all pixels in an order that defeats prefetching.
class Scattered {
  public:
    void step() { state_ = state_ * 1664525u + 1013904223u; }
    int x() const { return static_cast<int>(state_ >> 8 & (kWidth - 1)); }
    int y() const { return static_cast<int>(state_ >> 20 & (kHeight - 1)); }
    double u() const { return (x() + 0.3) / kWidth; }
    double v() const { return (y() + 0.6) / kHeight; }

  private:
    unsigned state_ = 1;
};

// ---- One pixel ----

void pixelOfThePlainBuffer(benchmark::State &state) {
    const std::vector<float> &plain = Pictures::all().plain;
    Scattered at;
    for (auto _ : state) {
        at.step();
        float colour[3];
        std::copy_n(&plain[3 * (static_cast<std::size_t>(at.y()) * kWidth + static_cast<std::size_t>(at.x()))], 3,
                    colour);
        benchmark::DoNotOptimize(colour);
    }
}
BENCHMARK(pixelOfThePlainBuffer)->Threads(1)->Threads(2);

void pixelOfTheHost(benchmark::State &state) {
    HostImage *image = Pictures::all().image;
    const HostImageList &images = *imageListFuncs();
    Scattered at;
    for (auto _ : state) {
        at.step();
        float colour[3];
        images.rgb(image, at.x(), at.y(), colour);
        benchmark::DoNotOptimize(colour);
    }
}
BENCHMARK(pixelOfTheHost)->Threads(1)->Threads(2);

struct DestroyCache {
    void operator()(OIIO::ImageCache *cache) const { OIIO::ImageCache::destroy(cache); }
};

void pixelOfTheLibrarysCache(benchmark::State &state) {
    const std::unique_ptr<OIIO::ImageCache, DestroyCache> cache(OIIO::ImageCache::create(false));
    auto *thread = cache->get_perthread_info();
    auto *handle = cache->get_image_handle(OIIO::ustring(Pictures::all().file), thread);
    Scattered at;
    for (auto _ : state) {
        at.step();
        float colour[3];
        const int x = at.x(), y = at.y();
        if (!cache->get_pixels(handle, thread, 0, 0, x, x + 1, y, y + 1, 0, 1, 0, 3, OIIO::TypeFloat, colour)) {
            state.SkipWithError(cache->geterror().c_str());
            break;
        }
        benchmark::DoNotOptimize(colour);
    }
}
BENCHMARK(pixelOfTheLibrarysCache);

// ---- One bilinear lookup: u wraps, v is clamped ----

void bilinearOfThePlainBuffer(benchmark::State &state) {
    const float *plain = Pictures::all().plain.data();
    Scattered at;
    for (auto _ : state) {
        at.step();
        const double u = at.u(), v = at.v();
        const double x = (u - std::floor(u)) * kWidth - 0.5, y = std::clamp(v, 0.0, 1.0) * kHeight - 0.5;
        const double left = std::floor(x), top = std::floor(y), across = x - left, down = y - top;
        const int column = static_cast<int>(left), row = static_cast<int>(top);
        const int x0 = column < 0 ? kWidth - 1 : column, x1 = column + 1 == kWidth ? 0 : column + 1;
        const int y0 = std::max(row, 0), y1 = std::min(row + 1, kHeight - 1);
        double colour[3];
        for (int i = 0; i < 3; ++i) {
            const double a = plain[3 * (y0 * kWidth + x0) + i], b = plain[3 * (y0 * kWidth + x1) + i];
            const double c = plain[3 * (y1 * kWidth + x0) + i], d = plain[3 * (y1 * kWidth + x1) + i];
            const double upper = a + across * (b - a), lower = c + across * (d - c);
            colour[i] = upper + down * (lower - upper);
        }
        benchmark::DoNotOptimize(colour);
    }
}
BENCHMARK(bilinearOfThePlainBuffer)->Threads(1)->Threads(2);

void bilinearSpotOfTheHost(benchmark::State &state) {
    HostImage *image = Pictures::all().image;
    const HostImageList &images = *imageListFuncs();
    Scattered at;
    for (auto _ : state) {
        at.step();
        double colour[3];
        images.rgbSpot(image, at.u(), at.v(), 0, 1, colour);
        benchmark::DoNotOptimize(colour);
    }
}
BENCHMARK(bilinearSpotOfTheHost)->Threads(1)->Threads(2);

struct DestroyTextures {
    void operator()(OIIO::TextureSystem *textures) const { OIIO::TextureSystem::destroy(textures); }
};

void bilinearOfTheLibrarysTextures(benchmark::State &state) {
    const std::unique_ptr<OIIO::TextureSystem, DestroyTextures> textures(OIIO::TextureSystem::create(false));
    auto *thread = textures->get_perthread_info();
    auto *handle = textures->get_texture_handle(OIIO::ustring(Pictures::all().file), thread);
    OIIO::TextureOpt options;
    options.swrap = OIIO::TextureOpt::WrapPeriodic;
    options.twrap = OIIO::TextureOpt::WrapClamp;
    options.mipmode = OIIO::TextureOpt::MipModeNoMIP;
    options.interpmode = OIIO::TextureOpt::InterpBilinear;
    Scattered at;
    for (auto _ : state) {
        at.step();
        float colour[3];
        const auto s = static_cast<float>(at.u()), t = static_cast<float>(at.v());
        if (!textures->texture(handle, thread, options, s, t, 0, 0, 0, 0, 3, colour)) {
            state.SkipWithError(textures->geterror().c_str());
            break;
        }
        benchmark::DoNotOptimize(colour);
    }
}
BENCHMARK(bilinearOfTheLibrarysTextures);

// ---- The walk to the last image of the list ----

void walkOfThePlainList(benchmark::State &state) {
    struct Link {
        Link *next = nullptr;
    };
    std::vector<Link> links(kListed);
    for (std::size_t i = 0; i + 1 < links.size(); ++i) links[i].next = &links[i + 1];
    for (auto _ : state) {
        Link *last = nullptr;
        for (Link *link = links.data(); link; link = link->next) {
            last = link;
            benchmark::DoNotOptimize(last);
        }
    }
}
BENCHMARK(walkOfThePlainList);

void walkOfTheHostsList(benchmark::State &state) {
    Pictures::all();
    const HostImageList &images = *imageListFuncs();
    for (auto _ : state) {
        HostImage *last = nullptr;
        for (HostImage *image = images.first(); image; image = images.next(image)) {
            last = image;
            benchmark::DoNotOptimize(last);
        }
    }
}
BENCHMARK(walkOfTheHostsList);

// ---- A whole Pixel Image, of the last image of ten ----

void evaluatePixelImage(benchmark::State &state) {
    const Pictures &pictures = Pictures::all();
    offerNodeServices();
    const Module module = Module::open(VELM_MODULE_FILE);
    serverList().add(module.servers(), module.path());
    {
        Network editor("Bench", "Bench", nullptr, nullptr);
        HostNode &node = editor.addNode(serverList().get("Velm Pixel Image"));
        HostInput *input = createInput(editor.root(), kConnectColour, "In", nullptr);
        editor.connect(*node.findOutput("Color"), *input);
        applySetting(*panelOf(node), {.label = "Image", .value = pictures.image->name, .location = {}});
        applySetting(*panelOf(node), {.label = "X", .value = 500.0, .location = {}});
        editor.init(kInitRender);
        editor.newTime(0, 0);
        ShadingSample sample{};
        for (auto _ : state) {
            double colour[3] = {};
            evaluateInput(input, &sample, colour);
            benchmark::DoNotOptimize(colour);
        }
        editor.cleanup();
    }
    serverList().remove(module.path());
}
BENCHMARK(evaluatePixelImage);

} // namespace

BENCHMARK_MAIN();
