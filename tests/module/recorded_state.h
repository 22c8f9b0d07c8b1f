// A save and load state in memory for tests. It records each write as an entry of a list, and reads the entries back.
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
        int integer = 0;       // the value; of a block, whether it is a leaf
        std::string text = {}; // the text, a block's token, a parameter's channel
        unsigned int id = 0;   // of a block
        std::vector<double> values = {};
    };
    std::vector<Entry> entries;

    RecordedState();
    RecordedState(const RecordedState &) = delete;
    RecordedState &operator=(const RecordedState &) = delete;

    const HostSaveState *save() const { return &save_; }
    // Starts reading at the first entry.
    const HostLoadState *load();

    // Appends entries, to compose the contents of a file by hand.
    RecordedState &integer(int value);
    RecordedState &text(const std::string &value);
    RecordedState &begin(unsigned int id);
    RecordedState &end();
    RecordedState &parm(std::vector<double> values);

    // One line for each entry: "I2 5", "text Wood", "begin MODE Mode leaf", "end", "parm A".
    std::vector<std::string> lines() const;

    // The state behind the host's record, for the parameters of the fake host.
    static RecordedState &of(const HostSaveState *state) { return *static_cast<RecordedState *>(state->data); }
    static RecordedState &of(const HostLoadState *state) { return *static_cast<RecordedState *>(state->data); }
    // The next entry, if it is of this kind. Otherwise null, and no entry is skipped.
    const Entry *take(Entry::Kind kind);

  private:
    size_t next_ = 0;
    HostSaveState save_{};
    HostLoadState load_{};

    unsigned int findBlock(const HostBlockId *table);
    void skipToBlockEnd();
};

} // namespace velm::plugin
