#include "host/render/geometry/items_3ds.h"

#include "host/base/angles.h"
#include "host/render/geometry/mesh_words.h"
#include "host/render/geometry/transform.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

namespace velm::host {
namespace {

enum Chunk3ds : std::uint16_t {
    kColour = 0x0010, // three floats
    kByteColour = 0x0011,
    kAmbientLight = 0x2100,
    kEditor = 0x3d3d,
    kNamedObject = 0x4000,
    kLight = 0x4600,
    kSpot = 0x4610,
    kLightIsOff = 0x4620,
    kMultiplier = 0x465b,
    kCamera = 0x4700,
    kMain = 0x4d4d
};

// Calls `take(type, contents)` for the chunks in these bytes, and stops at one that claims more bytes than are left.
template <class Take>
void forEachChunk(std::string_view bytes, Take take) {
    constexpr std::size_t kHeader = 6;
    while (bytes.size() >= kHeader) {
        const auto type = binaryNumber<std::uint16_t>(bytes.data());
        const auto size = binaryNumber<std::uint32_t>(bytes.data() + 2); // with the header
        if (size < kHeader || size > bytes.size()) return;
        take(type, bytes.substr(kHeader, size - kHeader));
        bytes.remove_prefix(size);
    }
}

// Takes floats off the front of the contents of a chunk. Returns 0 once there are too few bytes, and after a float that
// is not finite.
class Floats {
  public:
    explicit Floats(std::string_view bytes) : bytes_(bytes) {}

    double next() {
        if (bytes_.size() < sizeof(float)) isBroken_ = true;
        if (isBroken_) return 0;
        const auto number = static_cast<double>(binaryNumber<float>(bytes_.data()));
        bytes_.remove_prefix(sizeof(float));
        if (!std::isfinite(number)) isBroken_ = true;
        return number;
    }
    // A point or direction, turned from +Z up to +Y up and to left-handed axes.
    Vec3 nextPoint() {
        const double x = next(), y = next(), z = next();
        return {x, z, y};
    }
    // Whether all floats that were taken were there and finite.
    bool areWhole() const { return !isBroken_; }
    std::string_view rest() const { return bytes_; }

  private:
    std::string_view bytes_;
    bool isBroken_ = false;
};

Double3 stored3ds(const Vec3 &vector) { return {vector.x, vector.y, vector.z}; }

// The last of the colours in these chunks; `otherwise` if there is none.
Vec3 colourIn(std::string_view chunks, const Vec3 &otherwise) {
    Vec3 colour = otherwise;
    forEachChunk(chunks, [&](std::uint16_t type, std::string_view contents) {
        const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(contents[i]) / 255.0; };
        if (type == kByteColour && contents.size() >= 3) colour = {byteAt(0), byteAt(1), byteAt(2)};
        if (type != kColour) return;
        Floats floats(contents);
        const Vec3 read{floats.next(), floats.next(), floats.next()};
        if (floats.areWhole()) colour = {std::max(0.0, read.x), std::max(0.0, read.y), std::max(0.0, read.z)};
    });
    return colour;
}

void setColour3ds(const Vec3 &colour, double multiplier, MeshLight &light) {
    const double most = largest(colour);
    light.intensity = most * std::max(0.0, multiplier);
    light.colour = most > 0 ? stored3ds(1 / most * colour) : Double3{1, 1, 1};
}

class Items3ds {
  public:
    explicit Items3ds(double scale) : scale_(scale) {}

    void addObject(std::string_view object) {
        const std::size_t end = object.find('\0');
        if (end == std::string_view::npos) return;
        const std::string name(object.substr(0, end));
        forEachChunk(object.substr(end + 1), [&](std::uint16_t type, std::string_view contents) {
            if (type == kCamera) addCamera(name, contents);
            if (type == kLight) addLight(name, contents);
        });
    }

    void addAmbient(std::string_view chunks) {
        MeshLight light{};
        light.kind = MeshLight::Kind::ambient;
        setColour3ds(colourIn(chunks, {0, 0, 0}), 1, light);
        if (light.intensity > 0) items_.lights.push_back(light);
    }

    MeshItems take() { return std::move(items_); }

  private:
    void addCamera(const std::string &name, std::string_view contents) {
        Floats floats(contents);
        const Vec3 position = floats.nextPoint(), target = floats.nextPoint();
        const double roll = floats.next(), lens = floats.next(); // degrees; millimetres
        if (!floats.areWhole()) return;
        MeshCamera camera{};
        camera.name = name;
        camera.position = stored3ds(scale_ * position);
        camera.rotation = anglesOf(lookAlong(target - position));
        camera.rotation[2] -= roll; // a positive roll lowers the right side of the camera
        // The format's field of view is 2400 / lens: 45 degrees at 53.3 mm.
        constexpr double kLensTimesView = 2400, kWidest = 179;
        if (lens > 0) camera.halfWidth = std::tan(std::min(kLensTimesView / lens, kWidest) / 2 * kRadiansPerDegree);
        items_.cameras.push_back(std::move(camera));
    }

    void addLight(const std::string &name, std::string_view contents) {
        Floats floats(contents);
        const Vec3 position = floats.nextPoint();
        if (!floats.areWhole()) return;
        MeshLight light{};
        light.name = name;
        light.kind = MeshLight::Kind::point;
        light.position = stored3ds(scale_ * position);
        bool isOff = false;
        double multiplier = 1;
        forEachChunk(floats.rest(), [&](std::uint16_t type, std::string_view part) {
            if (type == kLightIsOff) isOff = true;
            if (type == kMultiplier) {
                Floats numbers(part);
                const double number = numbers.next();
                if (numbers.areWhole()) multiplier = number;
            }
            if (type == kSpot) setSpot(position, part, light);
        });
        setColour3ds(colourIn(floats.rest(), {1, 1, 1}), multiplier, light);
        if (!isOff) items_.lights.push_back(std::move(light));
    }

    static void setSpot(const Vec3 &position, std::string_view contents, MeshLight &light) {
        Floats floats(contents);
        const Vec3 target = floats.nextPoint();
        const double inner = floats.next() / 2, outer = floats.next() / 2; // the file has whole angles
        if (!floats.areWhole() || !(outer > 0)) return;
        light.kind = MeshLight::Kind::spot;
        light.rotation = anglesOf(lookAlong(target - position));
        light.cone = std::min(outer, 180.0);
        light.edge = std::clamp(outer - inner, 0.0, light.cone);
    }

    double scale_;
    MeshItems items_;
};

} // namespace

MeshItems itemsOf3ds(std::string_view bytes, double scale) {
    Items3ds items(scale);
    forEachChunk(bytes, [&](std::uint16_t mainType, std::string_view main) {
        if (mainType != kMain) return;
        forEachChunk(main, [&](std::uint16_t editorType, std::string_view editor) {
            if (editorType != kEditor) return;
            forEachChunk(editor, [&](std::uint16_t type, std::string_view contents) {
                if (type == kNamedObject) items.addObject(contents);
                if (type == kAmbientLight) items.addAmbient(contents);
            });
        });
    });
    return items.take();
}

} // namespace velm::host
