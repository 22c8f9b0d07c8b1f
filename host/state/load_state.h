// Reads saved settings: the load state that is handed to every load callback, over bytes that `StateWriter` or another
// program wrote. save_state.h describes the two forms.
//
// Reads return the number of values that they found, and stop at the end of their block or, in text form, of their
// line. Running out of values is not an error; half a value, or a word that is not a value, is one. Integers in text
// that are too large for their type keep their low bits, as in binary form.
//
// `findBlock` enters the next block of the current level whose identifier is in the given table, and skips unread
// values and unknown blocks before it. If there is none, it does not move and returns 0. In binary form, unread values
// are not marked as such. It therefore searches for the first known identifier with a size that fits, skips what looks
// like an unknown block (four printable characters and a size that fits), reports damage for four capitals or digits
// with a size that does not fit, and otherwise moves on by one byte. In text form, tokens may contain blanks; the
// longest token of the table that matches wins.
#pragma once

#include "host/state/blocks.h"
#include "module/host.h"

#include <memory>
#include <string>
#include <string_view>

namespace velm::host {

class LoadForm; // one of the two forms, load_form.h

// Reads one state. It holds its own copy of the bytes; the memory it needs is bounded by their size.
// [interface thread]
class StateReader {
  public:
    // `name` starts error texts: the name of the file, or a description of the bytes. `before` is how much of the file
    // precedes the bytes, for the positions in error texts: a number of bytes or, in text form, of lines.
    StateReader(int mode, std::string_view bytes, std::string name, std::size_t before = 0);
    ~StateReader();
    StateReader(const StateReader &) = delete;
    StateReader &operator=(const StateReader &) = delete;

    // The state to be passed to callbacks; valid as long as the reader. Damaged data yields counts of 0, never a crash.
    const HostLoadState *state() const;

    // Whether damage was found so far: a block that is larger than the one around it, braces that do not match, a
    // string without an end, half a value, blocks nested deeper than kMaxBlockDepth.
    bool failed() const;
    // The first damage: "name: byte 12: ..." or "name:3: ..."; empty when there was none.
    std::string error() const;

  private:
    std::unique_ptr<LoadForm> form_;
};

// Whether a state belongs to a StateReader. A module may pass a state of its own that reads from another one.
bool isOfReader(const HostLoadState &state);

// The unread contents of the innermost block, or of the outermost level, of a state of a StateReader, without reading
// them. Nothing for any other state. In text form: whole lines with their line ends, without the indentation of the
// block's contents.
std::string unreadContents(const HostLoadState &state);

// Enters each block of the table's kinds in turn, calls `act` with its identifier, and leaves it. The table ends with
// an identifier of 0.
template <class Act>
void forEachBlock(const HostLoadState &state, const HostBlockId *table, const Act &act) {
    while (const unsigned int id = state.findBlock(state.data, table)) {
        act(id);
        state.endBlock(state.data);
    }
}

} // namespace velm::host
