// The envelopes of object files: values that change over time.
#pragma once

#include "host/object/iff.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace velm::host {

// A key of an envelope. Its shape is that of the span which ends at the key.
struct EnvelopeKey {
    double time = 0; // seconds
    double value = 0;
    int shape = 0; // kShapeTcb and so on
    // As many as the shape has: tension, continuity and bias; the incoming and outgoing tangents; or time and value of
    // the incoming handle and of the outgoing one, relative to the key. The rest are 0.
    std::array<double, 4> numbers{};

    bool operator==(const EnvelopeKey &) const = default;
};

struct ObjectEnvelope {
    std::uint32_t number = 0;      // by which values refer to it
    int before = 1, after = 1;     // kBehaveReset and so on
    std::vector<EnvelopeKey> keys; // in order of time, no two at the same time
    bool isModified = false;       // a plug-in changes the values

    bool operator==(const ObjectEnvelope &) const = default;
};

// The envelope in a chunk "ENVL". Keys whose numbers are not finite are left out; of several keys at the same time, the
// last one counts. Behaviours and shapes that the format does not define count as constant and linear. Throws
// InputError with the byte's offset for what is too short. [any thread]
ObjectEnvelope readEnvelope(const IffFile &file, const Chunk &chunk);

// The envelopes that drive a value: one for each of its components, and null for a component without one, which keeps
// its value. Empty for a value that is not animated.
using ComponentEnvelopes = std::vector<std::shared_ptr<const ObjectEnvelope>>;

// The envelopes of an object. [any thread]
class EnvelopeList {
  public:
    // Of several envelopes with the same number, the first one counts.
    void add(ObjectEnvelope envelope) {
        const std::uint32_t number = envelope.number;
        envelopes_.try_emplace(number, std::make_shared<const ObjectEnvelope>(std::move(envelope)));
    }
    // Envelopes with consecutive numbers, one for each component; null for a number without an envelope. Empty if
    // `first` is 0, which means none.
    ComponentEnvelopes from(std::uint32_t first, std::size_t components) const;

  private:
    std::map<std::uint32_t, std::shared_ptr<const ObjectEnvelope>> envelopes_; // by number
};

} // namespace velm::host
