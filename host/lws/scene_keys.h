// Values with keys in LightWave's scene files: envelopes in blocks, and the lists of numbers of versions 1 and 2.
#pragma once

#include "host/lws/scene_lines.h"
#include "host/lws/scene_losses.h"
#include "host/lws/scene_record.h"

#include <span>
#include <string_view>

namespace velm::host::lws {

// What the values of a file are multiplied by.
struct KeyUnits {
    double framesPerSecond = 30; // of version 1, whose keys have frames
};

// Whether the arguments of a line, or the block after it, say that its value has keys.
bool isEnvelope(const Lines &lines, std::string_view arguments);

// Reads the block `{ Envelope` that follows, if there is one: its values times `factor`. A single key becomes the
// constant. Returns false when there is no such block. InputError with the line when it is damaged.
bool readEnvelope(Lines &lines, double factor, Value &value, Losses &losses);

// Reads the list of a motion or a value in a file of version 1 or 2, its values times `factors`, one for each channel.
// The file may have fewer channels than `values`, whose rest is left as it is, or more, which are skipped. InputError
// with the line when it is damaged.
void readKeyList(Lines &lines, const KeyUnits &units, std::span<const double> factors, std::span<Value> values);

} // namespace velm::host::lws
