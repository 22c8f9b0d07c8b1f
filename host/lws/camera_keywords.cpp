#include "host/lws/keywords.h"

namespace velm::host::lws {

namespace {

// Four numbers, all or none of which are set.
bool readFour(Statement &statement, std::array<double, 4> &numbers) {
    std::array<double, 4> read{};
    for (double &number : read) {
        const std::optional<double> found = statement.words.number();
        if (!found) return false;
        number = *found;
    }
    numbers = read;
    return true;
}

} // namespace

bool readFrameSize(Statement &statement, Camera &camera) {
    const std::optional<double> width = statement.words.number(), height = statement.words.number();
    if (!width || !height || *width < 1 || *height < 1) return false;
    camera.width = *width;
    camera.height = *height;
    return true;
}

bool readMultiplier(Statement &statement, Camera &camera) {
    const std::optional<double> multiplier = statement.words.number();
    if (!multiplier || *multiplier <= 0) return false;
    camera.multiplier = *multiplier;
    return true;
}

bool readPixelAspect(Statement &statement, Camera &camera) {
    const std::optional<double> aspect = statement.words.number();
    if (!aspect || *aspect <= 0) return false;
    camera.pixelAspect = *aspect;
    return true;
}

bool readFilmHeight(Statement &statement, Camera &camera) {
    double height = 0;
    if (!readConstant(statement, height) || height <= 0) return false;
    camera.apertureHeight = height;
    return true;
}

// In versions 1 and 2: bits, of which the first is for particles only.
bool readMotionBlur(Statement &statement, Camera &camera) {
    constexpr int kParticles = 1;
    const std::optional<int> kind = statement.words.integer();
    if (kind) camera.hasMotionBlur = statement.isOld() ? (*kind & ~kParticles) != 0 : *kind != 0;
    return kind.has_value();
}

bool readMask(Statement &statement, Camera &camera) { return readFour(statement, camera.mask); }

namespace {

bool readRegion(Statement &statement, Camera &camera) { return readFour(statement, camera.region); }

// In versions 1 and 2: the number of a video format, or -1 for the ratio in another line.
bool readPixelAspectCode(Statement &statement, Camera &camera) {
    constexpr int kOwn = -1, kSquare = 2;
    const std::optional<int> code = statement.words.integer();
    if (!code) return false;
    camera.usesOwnPixelRatio = *code == kOwn;
    camera.hasPixelCode = *code != kOwn && *code != kSquare;
    return true;
}

// The height of a pixel divided by its width.
bool readPixelRatio(Statement &statement, Camera &camera) {
    const std::optional<double> ratio = statement.words.number();
    if (!ratio || *ratio <= 0) return false;
    if (camera.usesOwnPixelRatio) camera.pixelAspect = 1 / *ratio;
    return true;
}

// In versions 1 and 2: the number of a kind of film.
bool readFilmCode(Statement &statement, Camera &camera) {
    constexpr int k35Millimetres = 2;
    const std::optional<int> code = statement.words.integer();
    if (code) camera.hasFilmCode = *code != k35Millimetres;
    return code.has_value();
}

// In versions 1 and 2: the number of a video format.
bool readResolution(Statement &, Camera &camera) {
    camera.usesSizeCode = true;
    return true;
}

constexpr Keyword<Camera> kCameraKeywords[] = {
    {.name = "ZoomFactor", .read = value<&Camera::zoom>},
    {.name = "FrameSize", .read = readFrameSize},
    {.name = "CustomSize", .read = readFrameSize},
    {.name = "ResolutionMultiplier", .read = readMultiplier},
    {.name = "Resolution", .read = readResolution},
    {.name = "PixelAspect", .read = readPixelAspect},
    {.name = "PixelAspectRatio", .read = readPixelAspectCode},
    {.name = "CustomPixelRatio", .read = readPixelRatio},
    {.name = "ApertureHeight", .read = readFilmHeight},
    {.name = "UseGlobalResolution", .read = flag<&Camera::usesGlobalSize>},
    {.name = "AASamples", .read = integer<&Camera::samples>},
    {.name = "MotionBlur", .read = readMotionBlur},
    {.name = "BlurLength", .read = constant<&Camera::blurLength>},
    {.name = "UseGlobalBlur", .read = flag<&Camera::usesGlobalBlur>},
    {.name = "DepthOfField", .read = flag<&Camera::hasDepthOfField>},
    {.name = "DepthofField", .read = flag<&Camera::hasDepthOfField>},
    {.name = "FocalDistance", .read = value<&Camera::focusDistance>},
    {.name = "LensFStop", .read = value<&Camera::fNumber>},
    {.name = "DiaphragmSides", .read = integer<&Camera::blades>},
    {.name = "DiaphragmRotation", .read = constant<&Camera::bladeRotation>},
    {.name = "FilmSize", .read = readFilmCode},
    {.name = "FieldRendering", .read = leftOutUnless<Loss::fieldRendering, 0>},
    {.name = "CameraMask", .read = flag<&Camera::hasMask>},
    {.name = "MaskPosition", .read = readMask},
    {.name = "MaskColor", .read = constant<&Camera::maskColour>},
    {.name = "UseGlobalMask", .read = flag<&Camera::usesGlobalMask>},
    {.name = "LimitedRegion", .read = flag<&Camera::hasRegion>},
    {.name = "RegionLimits", .read = readRegion},
};

} // namespace

std::span<const Keyword<Camera>> cameraKeywords() { return kCameraKeywords; }

} // namespace velm::host::lws
