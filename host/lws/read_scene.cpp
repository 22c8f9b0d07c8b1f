#include "host/lws/keywords.h"
#include "host/lws/scene_links.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace velm::host::lws {

namespace {

constexpr int kFirstVersionWithIds = 4;
constexpr std::uint32_t kBoneShift = 16, kBoneOwnerMask = 0xffff;

// Reads a line whose keyword the table has; returns whether it has it.
template <class Target>
bool readByTable(std::span<const Keyword<Target>> table, std::string_view keyword, Statement &statement,
                 Target &target) {
    const auto row = std::ranges::find(table, keyword, &Keyword<Target>::name);
    if (row == table.end()) return false;
    if (!row->read(statement, target)) statement.lose(Loss::unreadLine);
    return true;
}

// The default name of an object: its file name without directories and extension.
std::string nameOfFile(std::string_view path) {
    std::string_view name =
        path.substr(path.find_last_of("/\\:") + 1); // all of it, where there is no separator: npos + 1 is 0
    const std::size_t dot = name.find_last_of('.');
    if (dot != std::string_view::npos && dot > 0) name = name.substr(0, dot);
    return std::string(name.empty() ? path : name);
}

bool isNegative(const Value &value) {
    return value.constant < 0 ||
           std::ranges::any_of(value.keys.keys, [](const KeyDescription &key) { return key.value[0] < 0; });
}

class Reader {
  public:
    Reader(std::string_view bytes, const std::string &file) : lines_(bytes, file) { scene_.version = lines_.version(); }

    Scene read() {
        while (const std::optional<Line> line = lines_.next()) {
            if (line->opensBlock())
                lines_.skipBlock(*line); // of an unknown keyword
            else if (line->closesBlock())
                lines_.fail(line->number, "a \"}\" closes nothing");
            else
                readLine(*line);
        }
        finish();
        return std::move(scene_);
    }

  private:
    // The item that is being read. The pointers lead into growing vectors: they are valid until an item of the same
    // kind is added.
    struct Current {
        Object *object = nullptr;
        Light *light = nullptr;
        Camera *camera = nullptr;
        Item *item = nullptr; // one of the three, or a bone of `object`
    };

    void readLine(const Line &line) {
        Words words(line.text);
        const std::string_view keyword = words.word().value_or("");
        Statement statement{.lines = lines_,
                            .losses = scene_.losses,
                            .framesPerSecond = scene_.framesPerSecond,
                            .line = line,
                            .words = words};
        if (keyword == "Plugin")
            readPlugin(statement);
        else if (!startItem(keyword, statement))
            readValue(keyword, statement);
    }

    void readValue(std::string_view keyword, Statement &statement) {
        const Current &at = current_;
        if (at.object && !isBone() && readByTable(objectKeywords(), keyword, statement, *at.object)) return;
        if (at.light && readByTable(lightKeywords(), keyword, statement, *at.light)) return;
        if (at.camera && readByTable(cameraKeywords(), keyword, statement, *at.camera)) return;
        if (at.item && readByTable(itemKeywords(), keyword, statement, *at.item)) return;
        readByTable(sceneKeywords(), keyword, statement, scene_);
    }

    bool isBone() const { return kindOf(current_.item->id) == ItemKind::bone; }

    // Starts an item if the keyword is one of those that do; returns whether it is.
    bool startItem(std::string_view keyword, const Statement &statement) {
        if (keyword == "LoadObjectLayer" || keyword == "LoadObject" || keyword == "AddNullObject")
            return startObject(keyword, statement);
        if (keyword == "AddLight") {
            Light &light = add(scene_.lights, ItemKind::light, statement, scene_.lights.size());
            light.name = "Light";
            current_ = {.light = &light, .item = &light};
        } else if (keyword == "AddCamera") {
            addCamera(statement);
        } else if (keyword == "AddBone") {
            startBone(statement);
        } else {
            return false;
        }
        return true;
    }

    bool startObject(std::string_view keyword, const Statement &statement) {
        Words words = statement.words;
        int layer = 0;
        if (keyword == "LoadObjectLayer") {
            const std::optional<int> number = words.integer();
            if (!number || *number < 1) lines_.fail(statement.line.number, "expected the number of a layer, from 1");
            layer = *number;
        }
        Statement rest = statement; // after the number of the layer
        rest.words = words;
        Object &object = add(scene_.objects, ItemKind::object, rest, scene_.objects.size());
        if (hasId(rest, ItemKind::object)) words.hex();
        object.layer = layer;
        const std::string_view text = words.rest();
        if (keyword == "AddNullObject") {
            object.name = text.empty() ? "Null" : text;
        } else {
            if (text.empty()) lines_.fail(statement.line.number, "expected the name of an object file");
            object.path = text;
            object.name = nameOfFile(text);
        }
        current_ = {.object = &object, .item = &object};
        return true;
    }

    void addCamera(const Statement &statement) {
        Camera &camera = add(scene_.cameras, ItemKind::camera, statement, scene_.cameras.size());
        camera.name = "Camera";
        current_ = {.camera = &camera, .item = &camera};
    }

    // A bone belongs to the object before it, and is attached to it if it has no other parent.
    void startBone(const Statement &statement) {
        Object *const object = current_.object;
        const std::uint32_t owner = object ? object->id & kBoneOwnerMask : 0;
        bonesOfObject_ = object && object->id == boneOwner_ ? bonesOfObject_ + 1 : 0;
        boneOwner_ = object ? object->id : 0;
        const std::size_t number = std::size_t{bonesOfObject_} << kBoneShift | owner;
        Item &bone = add(scene_.bones, ItemKind::bone, statement, number);
        bone.name = "Bone";
        if (object) bone.parent = object->id;
        current_ = {.object = object, .item = &bone};
    }

    bool hasId(const Statement &statement, ItemKind kind) const {
        Words words = statement.words;
        const std::optional<std::uint32_t> id = words.hex();
        return statement.version() >= kFirstVersionWithIds && id && kindOf(*id) == kind;
    }

    template <class Kind>
    Kind &add(std::vector<Kind> &items, ItemKind kind, const Statement &statement, std::size_t number) {
        if (++itemCount_ > kMostItems)
            lines_.fail(statement.line.number, fmt::format("a scene may have at most {} items", kMostItems));
        Words words = statement.words;
        Kind &item = items.emplace_back();
        item.id = ids_.take(kind, hasId(statement, kind) ? words.hex() : std::nullopt,
                            static_cast<std::uint32_t>(number) & 0x0fffffff);
        item.line = statement.line.number;
        return item;
    }

    void readPlugin(const Statement &statement) {
        Words words = statement.words;
        const std::string_view kind = words.word().value_or("");
        words.word(); // the index in a list
        const std::string_view server = words.word().value_or("");
        if (kind == "LightHandler" && current_.light)
            current_.light->kind = kindOfLight(server);
        else if (kind == "CameraHandler" && server != "Perspective" && server != "Classic")
            statement.lose(Loss::cameraKind);
        else if (kind == "ItemMotionHandler" || kind == "ChannelHandler")
            statement.lose(Loss::motionModifier);
        else if (kind == "DisplacementHandler")
            statement.lose(Loss::displacement);
        else if (kind == "EnvironmentHandler" || kind == "VolumetricHandler")
            statement.lose(Loss::environment);
        else if (kind == "PixelFilterHandler" || kind == "ImageFilterHandler")
            statement.lose(Loss::imageFilter);
        lines_.skipPlugin(statement.line);
    }

    static Light::Kind kindOfLight(std::string_view server) {
        if (server == "DistantLight") return Light::Kind::distant;
        if (server == "PointLight") return Light::Kind::point;
        if (server == "SpotLight") return Light::Kind::spot;
        if (server == "AreaLight") return Light::Kind::area;
        if (server == "LinearLight") return Light::Kind::linear;
        if (server == "DomeLight") return Light::Kind::dome;
        const bool isPoint = server == "SphericalLight" || server == "PhotometricLight";
        return isPoint ? Light::Kind::otherPoint : Light::Kind::none;
    }

    // Completes values that depend on several lines, and checks them.
    void finish() {
        for (const Light &light : scene_.lights) {
            if (light.kind == Light::Kind::otherPoint) scene_.losses.add(Loss::lightShape, light.line);
            if (light.kind == Light::Kind::none) scene_.losses.add(Loss::unknownLight, light.line);
            if (isNegative(light.intensity)) scene_.losses.add(Loss::negativeLight, light.line);
        }
        for (Camera &camera : scene_.cameras) finishCamera(camera);
        checkLinks(scene_, lines_.file());
    }

    void finishCamera(Camera &camera) {
        constexpr double kWidth = 640, kHeight = 480;
        const Camera &global = scene_.globalCamera;
        if (camera.usesGlobalSize) {
            camera.width = global.width;
            camera.height = global.height;
            camera.multiplier = global.multiplier;
            camera.pixelAspect = global.pixelAspect;
            camera.apertureHeight = global.apertureHeight;
        }
        if (camera.usesGlobalBlur) camera.hasMotionBlur = global.hasMotionBlur;
        if (camera.usesGlobalMask) camera.mask = global.mask;
        if (camera.hasDepthOfField && camera.hasFilmCode) scene_.losses.add(Loss::filmSize, camera.line);
        if (camera.hasPixelCode) scene_.losses.add(Loss::pixelAspect, camera.line);
        if (camera.width > 0) return;
        if (camera.usesSizeCode) scene_.losses.add(Loss::frameSizeCode, camera.line);
        camera.width = kWidth;
        camera.height = kHeight;
    }

    Lines lines_;
    Scene scene_;
    Current current_;
    ItemIds ids_;
    std::size_t itemCount_ = 0;
    std::uint32_t boneOwner_ = 0, bonesOfObject_ = 0;
};

} // namespace

bool isScene(std::string_view head) {
    return head.starts_with("LWSC") && head.size() > 4 && (head[4] == '\n' || head[4] == '\r' || head[4] == ' ');
}

Scene readScene(std::string_view bytes, const std::string &file) { return Reader(bytes, file).read(); }

} // namespace velm::host::lws
