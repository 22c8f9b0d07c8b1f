// A save and load state in memory that keeps what was written as a list of entries, one for each write, and reads it
// back: what the tests of saving and loading compare.
#pragma once

#include "module/host.h"

#include <string>
#include <vector>

namespace velm::plugin {

class RecordedState {
  public:
    struct Entry {
        enum class Kind { integer, text, begin, end, parm };
        Kind kind;
        int integer = 0;       // the value, or whether a block is a leaf
        std::string text = {}; // the text, a block's token, a parameter's channel
        unsigned int id = 0;   // a block's
        std::vector<double> values = {};
    };
    std::vector<Entry> entries;

    RecordedState();
    RecordedState(const RecordedState &) = delete;
    RecordedState &operator=(const RecordedState &) = delete;

    const HostSaveState *save() const { return &save_; }
    // Reading starts at the first entry again.
    const HostLoadState *load();

    // What a file holds, put together by hand.
    RecordedState &integer(int value);
    RecordedState &text(const std::string &value);
    RecordedState &begin(unsigned int id);
    RecordedState &end();
    RecordedState &parm(std::vector<double> values);

    // One line for each entry: "I2 5", "text Wood", "begin MODE Mode leaf", "end", "parm A".
    std::vector<std::string> lines() const;

    // How the parameters of the fake host get at the state they are saved to and loaded from.
    static RecordedState &of(const HostSaveState *state) { return *static_cast<RecordedState *>(state->data); }
    static RecordedState &of(const HostLoadState *state) { return *static_cast<RecordedState *>(state->data); }
    // The next entry if it is of this kind; null, and nothing is passed over, if it is not.
    const Entry *take(Entry::Kind kind);

  private:
    size_t next_ = 0;
    HostSaveState save_{};
    HostLoadState load_{};

    unsigned int findBlock(const HostBlockId *table);
    void skipToBlockEnd();
};

} // namespace velm::plugin
