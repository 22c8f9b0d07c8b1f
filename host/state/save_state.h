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
// Strings stand in double quotes, with \" \\ \n \r \t for those characters and \xHH for every other control character,
// so that a string never breaks its line; all other bytes stand as they are. A leaf block in which a further block is
// begun becomes a block in braces, whose first line holds the values that it had until then.
#pragma once

#include "host/state/blocks.h"
#include "module/host.h"

#include <memory>
#include <string>
#include <string_view>

namespace velm::host {

class SaveForm; // one of the two forms, save_form.h

// Collects what save callbacks write. For one thread, the interface thread.
class StateWriter {
  public:
    explicit StateWriter(int mode); // kStateBinary or kStateText
    ~StateWriter();
    StateWriter(const StateWriter &) = delete;
    StateWriter &operator=(const StateWriter &) = delete;

    // The state for the callbacks; valid as long as the writer. Its operations never fail visibly: mistakes are kept
    // for `finish`. Null texts count as empty, counts below 1 write nothing.
    const HostSaveState *state() const;

    // What was written. Throws InputError when a block was larger than its form allows, was left open, was closed
    // without being open or was nested too deeply, and MachineError when memory ran out; the first mistake is told.
    std::string finish();

  private:
    std::unique_ptr<SaveForm> form_;
};

// Writes whole lines, each with its end, into the innermost block of a text state of a StateWriter, indented as the
// block's contents are: what unreadContents gave. In a binary state it is a mistake.
void writeLines(const HostSaveState &state, std::string_view lines);

} // namespace velm::host
