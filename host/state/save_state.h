// Writes saved settings: the save state that is handed to every save callback, in the binary form of object files or
// the text form of scene files.
//
// Binary form: big-endian integers and floats; a block is its 4-byte identifier, a 2-byte size and its contents,
// followed by one zero byte where the size is odd (the size does not count it); a string is zero-terminated and padded
// to an even length. A block holds at most 65,535 bytes.
//
// Text form: every write outside a leaf block is a line of its own; a leaf block is one line, its token and then its
// values; another block is `{ Token`, its contents indented by two blanks, and `}`. Signed integers are decimal,
// unsigned ones (and raw bytes) bare hexadecimal digits, floats the shortest decimal that reads back to the same float.
// Strings are in double quotes, with \" \\ \n \r \t for those characters and \xHH for every other control character,
// so that a string never breaks its line; all other bytes are written unchanged. If another block begins inside a leaf
// block, the leaf becomes a block in braces whose first line holds the values written so far.
#pragma once

#include "host/state/blocks.h"
#include "module/host.h"

#include <memory>
#include <string>
#include <string_view>

namespace velm::host {

class SaveForm; // one of the two forms, save_form.h

// Collects what save callbacks write. [interface thread]
class StateWriter {
  public:
    explicit StateWriter(int mode); // kStateBinary or kStateText
    ~StateWriter();
    StateWriter(const StateWriter &) = delete;
    StateWriter &operator=(const StateWriter &) = delete;

    // The state to be passed to callbacks; valid as long as the writer. Its operations report no errors: `finish`
    // reports the first mistake. Null texts are written as empty strings; counts below 1 write nothing.
    const HostSaveState *state() const;

    // The bytes written. Throws InputError for the first mistake: a block larger than its form allows, left open,
    // closed without being open, or nested too deeply. Throws MachineError if memory ran out.
    std::string finish();

  private:
    std::unique_ptr<SaveForm> form_;
};

// The first mistake that has been made in writing to a state of a StateWriter; empty for none, and for other states.
std::string firstMistake(const HostSaveState &state);

// Writes lines, as unreadContents returned them, into the innermost block of a text state of a StateWriter, with the
// indentation of the block's contents. In a binary state it is a mistake.
void writeLines(const HostSaveState &state, std::string_view lines);

} // namespace velm::host
