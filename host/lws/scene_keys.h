// Values with keys in LightWave's scene files: envelopes in blocks, and the lists of numbers of versions 1 and 2.
#pragma once

#include "host/lws/scene_lines.h"
#include "host/lws/scene_losses.h"
#include "host/lws/scene_record.h"

#include <span>
#include <string_view>

namespace velm::host::lws {

// Whether the value of a line has keys: its arguments or the block after it say so.
bool isEnvelope(const Lines &lines, std::string_view arguments);

// Reads the block `{ Envelope` that follows, if there is one, and multiplies its values by `factor`. Keys that do not
// change the value become the constant. Returns false when there is no such block. InputError with the line for a
// damaged block.
bool readEnvelope(Lines &lines, double factor, Value &value, Losses &losses);

// Reads the keys of a motion or a value in a file of version 1 or 2, and multiplies their values by `factors`, one for
// each of `values`. `framesPerSecond` converts the times of version 1, which are in frames. Channels that the file does
// not have keep their constants; those that `values` does not have are skipped. InputError with the line for damaged
// keys.
void readKeyList(Lines &lines, double framesPerSecond, std::span<const double> factors, std::span<Value> values);

} // namespace velm::host::lws
