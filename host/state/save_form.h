// The base of the two forms of saving: the table of operations, and the first mistake of the caller.
#pragma once

#include "module/host.h"

#include <memory>
#include <string>
#include <string_view>

namespace velm::host {

// Turns the operations of a save state into calls that write one value each. A form appends to `out_`.
class SaveForm {
  public:
    virtual ~SaveForm() = default;
    SaveForm(const SaveForm &) = delete;
    SaveForm &operator=(const SaveForm &) = delete;

    const HostSaveState *state() const { return &state_; }
    std::string finish(); // see StateWriter::finish
    static void writeLines(void *data, std::string_view lines);
    static std::string mistakeIn(const HostSaveState &state); // see firstMistake

  protected:
    explicit SaveForm(int mode);

    virtual void startWrite() {} // called before the values of one operation
    virtual void endWrite() {}
    virtual void putSigned(long long value, int bytes) = 0;
    virtual void putUnsigned(unsigned long long value, int bytes) = 0;
    virtual void putFloat(float value) = 0;
    virtual void putDouble(double value) = 0;
    virtual void putString(const char *text) = 0;
    virtual void putId(const HostBlockId &id) = 0;
    virtual void putLines(std::string_view lines) = 0;
    virtual void open(const HostBlockId &id, bool leaf) = 0;
    virtual void close() = 0;
    virtual int depth() const = 0;
    virtual std::string innermost() const = 0; // the name of the innermost open block

    void mistake(const std::string &text); // only the first is remembered

    std::string out_;

  private:
    template <typename Value>
    static void writeValues(void *data, const Value *values, int count);
    template <typename Value>
    void put(Value value);
    template <typename Work>
    static void guarded(void *data, Work work);
    static void begin(void *data, const HostBlockId *id, int leaf);
    static void end(void *data);

    HostSaveState state_;
    std::string mistake_;
    bool outOfMemory_ = false;
};

std::unique_ptr<SaveForm> makeBinarySaveForm();
std::unique_ptr<SaveForm> makeTextSaveForm();

} // namespace velm::host
