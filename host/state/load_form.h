// The base of the two forms of loading: the table of operations, and the first damage that was found.
#pragma once

#include "module/host.h"

#include <memory>
#include <string>
#include <string_view>

namespace velm::host {

// Turns the operations of a load state into calls that read one value each. A form reads `bytes_` from index `at_` on.
class LoadForm {
  public:
    virtual ~LoadForm() = default;
    LoadForm(const LoadForm &) = delete;
    LoadForm &operator=(const LoadForm &) = delete;

    const HostLoadState *state() const { return &state_; }
    const std::string &damage() const { return damage_; }
    virtual std::string unread() const = 0; // see unreadContents
    static bool owns(const HostLoadState &state) { return state.readI2 == readValues<short>; }

  protected:
    LoadForm(int mode, std::string_view bytes, std::string name, std::size_t before);

    // Called before the values of one operation; false if no value can follow.
    virtual bool startRead() = 0;
    // Read one value each; false if none is left, or if the bytes there are not such a value, which counts as damage.
    virtual bool getSigned(int bytes, long long &value) = 0;
    virtual bool getUnsigned(int bytes, unsigned long long &value) = 0;
    virtual bool getFloat(float &value) = 0;
    virtual bool getDouble(double &value) = 0;
    virtual bool getString(std::string &text) = 0;
    virtual unsigned int getId(const HostBlockId *table) = 0;
    virtual unsigned int enter(const HostBlockId *table) = 0;
    virtual void leave() = 0;
    virtual int depth() const = 0;
    virtual std::string position(std::size_t at) const = 0; // "name: byte 12" or "name:3"

    void damaged(std::size_t at, const std::string &what); // only the first is remembered

    const std::string bytes_;
    const std::string name_;
    const std::size_t before_; // bytes or lines of the file that precede `bytes_`
    std::size_t at_ = 0;

  private:
    template <typename Value>
    static int readValues(void *data, Value *values, int count);
    template <typename Value>
    bool get(Value &value);
    template <typename Result, typename Work>
    static Result guarded(void *data, Result failed, Work work);
    static int readString(void *data, char *buffer, int size);

    HostLoadState state_;
    std::string damage_;
};

std::unique_ptr<LoadForm> makeBinaryLoadForm(std::string_view bytes, std::string name, std::size_t before);
std::unique_ptr<LoadForm> makeTextLoadForm(std::string_view bytes, std::string name, std::size_t before);

} // namespace velm::host
