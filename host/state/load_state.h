// Reads saved settings: the load state that is handed to every load callback, over bytes that `StateWriter` or another
// program wrote. save_state.h tells the two forms.
//
// Reads give the number of values that were there and stop at the end of their block or, in text form, of their line;
// running out of values is no error, a half value or a word that is no value is one. Text integers too large for their
// type keep their low bits, as the binary form does. `findBlock` enters the next block of the current level that its
// table knows, passing over unread values and unknown blocks; where there is none it stays where it was and gives 0.
// In binary form unread values carry no mark, so it takes the first place where a known identifier and a size that fits
// stand, steps over what looks like an unknown block (four printable characters and a size that fits), takes four
// capitals or digits with a size that does not fit for damage, and otherwise moves on by one byte. In text form a token
// with blanks is found as well; the longest token of the table that fits wins.
#pragma once

#include "host/state/blocks.h"
#include "module/host.h"

#include <memory>
#include <string>
#include <string_view>

namespace velm::host {

class LoadForm; // one of the two forms, load_form.h

// Reads one state. Holds its own copy of the bytes; memory is bounded by their size. For the interface thread.
class StateReader {
  public:
    // `name` stands before error texts: a file's name, or what the bytes are. `before` is how much of the file stands
    // before the bytes, for the places in error texts: a number of bytes, or of lines in text form.
    StateReader(int mode, std::string_view bytes, std::string name, std::size_t before = 0);
    ~StateReader();
    StateReader(const StateReader &) = delete;
    StateReader &operator=(const StateReader &) = delete;

    // The state for the callbacks; valid as long as the reader. Damaged data gives counts of 0, never a crash.
    const HostLoadState *state() const;

    // Whether damage was met so far: a block that is larger than what holds it, braces that do not match, a string
    // without an end, half a value, blocks nested deeper than kMaxBlockDepth.
    bool failed() const;
    // The first damage: "name: byte 12: ..." or "name:3: ..."; empty when there was none.
    std::string error() const;

  private:
    std::unique_ptr<LoadForm> form_;
};

// Whether a state is one of a StateReader. A module may hand on a state of its own making, which reads from another.
bool isOfReader(const HostLoadState &state);

// What stands unread in the innermost block, or at the outermost level, of a state of a StateReader; it stays unread.
// Nothing for another state, which gives only what it is asked to read. In text form whole lines, each with its end,
// without the blanks by which the block's contents are indented.
std::string unreadContents(const HostLoadState &state);

} // namespace velm::host
