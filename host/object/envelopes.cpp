#include "host/object/envelopes.h"

#include "host/base/four_cc.h"
#include "module/host.h"

#include <algorithm>
#include <cmath>

namespace velm::host {
namespace {

struct KeyShape {
    std::uint32_t id;
    int code;
    std::size_t numbers;
};
constexpr KeyShape kKeyShapes[] = {
    {.id = fourCC("TCB "), .code = kShapeTcb, .numbers = 3},
    {.id = fourCC("HERM"), .code = kShapeHermite, .numbers = 2},
    {.id = fourCC("BEZI"), .code = kShapeBezier1, .numbers = 2},
    {.id = fourCC("LINE"), .code = kShapeLinear, .numbers = 0},
    {.id = fourCC("STEP"), .code = kShapeStepped, .numbers = 0},
    {.id = fourCC("BEZ2"), .code = kShapeBezier2, .numbers = 4},
};
constexpr std::size_t kNumberSize = 4; // bytes

int behaviourIn(ChunkCursor cursor) {
    const std::uint32_t code = cursor.u2();
    return code <= kBehaveLinear ? static_cast<int>(code) : kBehaveConstant;
}

// Some programs leave out numbers; these count as 0.
void readShape(ChunkCursor cursor, EnvelopeKey &key) {
    const std::uint32_t id = cursor.u4();
    const auto *shape = std::ranges::find(kKeyShapes, id, &KeyShape::id);
    key.shape = kShapeLinear;
    if (shape == std::end(kKeyShapes)) return;
    key.shape = shape->code;
    for (std::size_t i = 0; i < shape->numbers && cursor.left() >= kNumberSize; ++i)
        key.numbers[i] = static_cast<double>(cursor.real());
}

bool isFinite(const EnvelopeKey &key) {
    return std::isfinite(key.time) && std::isfinite(key.value) &&
           std::ranges::all_of(key.numbers, [](double number) { return std::isfinite(number); });
}

// Drops keys that are not finite, orders the others by time, and keeps the last of several at the same time.
void settle(std::vector<EnvelopeKey> &keys) {
    std::erase_if(keys, [](const EnvelopeKey &key) { return !isFinite(key); });
    std::ranges::stable_sort(keys, {}, &EnvelopeKey::time);
    const auto last = std::unique(keys.rbegin(), keys.rend(),
                                  [](const EnvelopeKey &a, const EnvelopeKey &b) { return a.time == b.time; });
    keys.erase(keys.begin(), last.base());
}

} // namespace

ObjectEnvelope readEnvelope(const IffFile &file, const Chunk &chunk) {
    ChunkCursor start(file, chunk);
    ObjectEnvelope envelope;
    envelope.number = start.index();
    const FileRange rest{.at = start.at(), .size = start.left()};
    for (const Chunk &part : file.subChunks(rest, "the envelope")) {
        ChunkCursor cursor(file, part);
        switch (part.id) {
        case fourCC("PRE "): envelope.before = behaviourIn(cursor); break;
        case fourCC("POST"): envelope.after = behaviourIn(cursor); break;
        case fourCC("KEY "): {
            EnvelopeKey &key = envelope.keys.emplace_back();
            key.time = static_cast<double>(cursor.real());
            key.value = static_cast<double>(cursor.real());
            break;
        }
        case fourCC("SPAN"):
            if (!envelope.keys.empty()) readShape(cursor, envelope.keys.back());
            break;
        case fourCC("CHAN"): {
            constexpr std::uint32_t kDisabled = 1;
            cursor.text("the name of a plug-in");
            envelope.isModified |= (cursor.u2() & kDisabled) == 0;
            break;
        }
        default: break;
        }
    }
    settle(envelope.keys);
    return envelope;
}

ComponentEnvelopes EnvelopeList::from(std::uint32_t first, std::size_t components) const {
    ComponentEnvelopes found;
    if (first == 0) return found;
    for (std::size_t i = 0; i < components; ++i) {
        const auto envelope = envelopes_.find(first + static_cast<std::uint32_t>(i));
        found.push_back(envelope == envelopes_.end() ? nullptr : envelope->second);
    }
    return found;
}

} // namespace velm::host
