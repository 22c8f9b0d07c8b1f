// What items of all kinds have in common, and what objects have.
#include "host/lws/keywords.h"

namespace velm::host::lws {

namespace {

// The factor that converts a channel to metres or degrees. Rotations are in radians, but in versions 1 and 2 in
// degrees.
double channelFactor(const Statement &statement, std::size_t channel) {
    return channel >= kRotationChannel && channel < kScaleChannel && !statement.isOld() ? kDegreesPerRadian : 1;
}

// Starts a motion. In versions 1 and 2 its keys follow; later its channels, each with a line of its own.
bool readMotion(Statement &statement, Item &item) {
    if (!statement.isOld()) return true;
    std::array<double, kChannels> factors{};
    for (std::size_t i = 0; i < kChannels; ++i) factors[i] = channelFactor(statement, i);
    readKeyList(statement.lines, statement.framesPerSecond, factors, item.motion);
    return true;
}

bool readChannel(Statement &statement, Item &item) {
    const std::optional<int> channel = statement.words.integer();
    if (!channel || *channel < 0) return false;
    const auto index = static_cast<std::size_t>(*channel);
    if (index >= kChannels) return true;
    return readEnvelope(statement.lines, channelFactor(statement, index), item.motion[index], statement.losses);
}

bool readId(Statement &statement, std::optional<std::uint32_t> &id) {
    if (statement.words.rest() == "0") return true; // no item
    const std::optional<std::uint32_t> read = statement.words.hex();
    if (read) id = read;
    return read.has_value();
}

bool readParent(Statement &statement, Item &item) { return readId(statement, item.parent); }
bool readTarget(Statement &statement, Item &item) { return readId(statement, item.target); }

// In versions 1 and 2: the number of an object, from 1; 0 for none.
bool readObjectNumber(Statement &statement, std::optional<std::uint32_t> &id) {
    const std::optional<int> number = statement.words.integer();
    if (!number || *number < 0 || *number > static_cast<int>(kMostItems)) return false;
    if (*number > 0) id = itemId(ItemKind::object, static_cast<std::uint32_t>(*number - 1));
    return true;
}

bool readParentObject(Statement &statement, Item &item) { return readObjectNumber(statement, item.parent); }

bool readTargetObject(Statement &statement, Item &item) {
    item.aims = true;
    return readObjectNumber(statement, item.target);
}

enum Controller { kControlledByKeys = 0, kControlledByTarget = 1 };

bool readController(Statement &statement, Item &) {
    const std::optional<int> code = statement.words.integer();
    if (code && *code != kControlledByKeys) statement.lose(Loss::controller);
    return code.has_value();
}

bool readAimController(Statement &statement, Item &item) {
    const std::optional<int> code = statement.words.integer();
    if (!code) return false;
    if (*code == kControlledByTarget)
        item.aims = true;
    else if (*code != kControlledByKeys)
        statement.lose(Loss::controller);
    return true;
}

bool readSameAs(Statement &statement, Item &) {
    std::optional<std::uint32_t> id;
    if (!readId(statement, id)) return false;
    if (id) statement.lose(Loss::sameAsItem);
    return true;
}

std::optional<Double3> readThree(Statement &statement) {
    Double3 numbers{};
    for (double &one : numbers) {
        const std::optional<double> number = statement.words.number();
        if (!number) return std::nullopt;
        one = *number;
    }
    return numbers;
}

bool readPivot(Statement &statement, Item &item) {
    const std::optional<Double3> pivot = readThree(statement);
    if (pivot) item.pivot = pivot;
    return pivot.has_value();
}

bool readPivotRotation(Statement &statement, Item &) {
    const std::optional<Double3> rotation = readThree(statement);
    if (rotation && *rotation != Double3{}) statement.lose(Loss::pivotRotation);
    return rotation.has_value();
}

bool readName(Statement &statement, Item &item) {
    if (!statement.words.rest().empty()) item.name = statement.words.rest();
    return true;
}

constexpr Keyword<Item> kItemKeywords[] = {
    {.name = "ObjectMotion", .read = readMotion},
    {.name = "LightMotion", .read = readMotion},
    {.name = "CameraMotion", .read = readMotion},
    {.name = "BoneMotion", .read = readMotion},
    {.name = "Channel", .read = readChannel},
    {.name = "ParentItem", .read = readParent},
    {.name = "ParentObject", .read = readParentObject},
    {.name = "TargetItem", .read = readTarget},
    {.name = "TargetObject", .read = readTargetObject},
    {.name = "XController", .read = readController},
    {.name = "YController", .read = readController},
    {.name = "ZController", .read = readController},
    {.name = "HController", .read = readAimController},
    {.name = "PController", .read = readAimController},
    {.name = "BController", .read = readController},
    {.name = "SXController", .read = readController},
    {.name = "SYController", .read = readController},
    {.name = "SZController", .read = readController},
    {.name = "PositionItem", .read = readSameAs},
    {.name = "RotationItem", .read = readSameAs},
    {.name = "ScaleItem", .read = readSameAs},
    {.name = "PivotPosition", .read = readPivot},
    {.name = "PivotPoint", .read = readPivot},
    {.name = "PivotRotation", .read = readPivotRotation},
    {.name = "ItemActive", .read = flag<&Item::active>},
    {.name = "LightName", .read = readName},
    {.name = "CameraName", .read = readName},
    {.name = "BoneName", .read = readName},
    {.name = "BoneActive", .read = leftOutUnless<Loss::bone, 0>},
};

constexpr int kSelfShadow = 1, kCastShadow = 2, kReceiveShadow = 4;

bool readShadowOptions(Statement &statement, Object &object) {
    const std::optional<int> bits = statement.words.integer();
    if (!bits) return false;
    object.castsShadows = (*bits & kCastShadow) != 0;
    if ((*bits & kSelfShadow) == 0 || (*bits & kReceiveShadow) == 0) statement.lose(Loss::shadowOption);
    return true;
}

bool readExcludedLight(Statement &statement, Object &) {
    const std::optional<std::uint32_t> id = statement.words.hex();
    // Much larger ids mean radiosity and caustics.
    if (id && kindOf(*id) == ItemKind::light && *id < itemId(ItemKind::light, kMostItems))
        statement.lose(Loss::excludedLight);
    return true;
}

// The numbers of segments on the screen and when rendering; old scenes may have one number for both.
bool readSegments(Statement &statement, Object &object) {
    const std::optional<int> shown = statement.words.integer(), rendered = statement.words.integer();
    if (shown) object.segments = rendered ? rendered : shown;
    return shown.has_value();
}

constexpr Keyword<Object> kObjectKeywords[] = {
    {.name = "UnseenByRays", .read = flag<&Object::seenByRays, false>},
    {.name = "UnseenByCamera", .read = flag<&Object::seenByCamera, false>},
    {.name = "ShadowOptions", .read = readShadowOptions},
    {.name = "ObjectDissolve", .read = value<&Object::dissolve>},
    {.name = "ObjDissolve", .read = value<&Object::dissolve>},
    {.name = "DistanceDissolve", .read = leftOutUnless<Loss::distanceDissolve, 0>},
    {.name = "PolygonSize", .read = leftOutUnless<Loss::polygonSize, 1>},
    {.name = "ExcludeLight", .read = readExcludedLight},
    {.name = "SubPatchLevel", .read = readSegments},
    {.name = "MorphAmount", .read = leftOutUnless<Loss::morph, 0>},
    {.name = "Metamorph", .read = leftOutUnless<Loss::morph, 0>},
    {.name = "UseBonesFrom", .read = leftOut<Loss::bone>},
    {.name = "NodeDisplacement", .read = leftOutUnless<Loss::displacement, 0>},
    {.name = "DisplacementMaps", .read = leftOut<Loss::displacement>},
    {.name = "DisplacementMap", .read = leftOut<Loss::displacement>},
    {.name = "BumpDistance", .read = leftOutUnless<Loss::displacement, 0>},
    {.name = "ClipMaps", .read = leftOut<Loss::clipMap>},
    {.name = "ClipMap", .read = leftOut<Loss::clipMap>},
};

} // namespace

std::span<const Keyword<Item>> itemKeywords() { return kItemKeywords; }
std::span<const Keyword<Object>> objectKeywords() { return kObjectKeywords; }

} // namespace velm::host::lws
