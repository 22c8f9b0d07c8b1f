#include "host/state/load_state.h"

#include "host/state/load_form.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

namespace velm::host {

// Plug-ins call the operations, and no exception may propagate into a plug-in.
template <typename Result, typename Work>
Result LoadForm::guarded(void *data, Result failed, Work work) {
    auto &form = *static_cast<LoadForm *>(data);
    try {
        return work(form);
    } catch (const std::bad_alloc &) {
        // Short enough for the small-string optimisation: it allocates nothing.
        if (form.damage_.empty()) form.damage_ = "out of memory";
        return failed;
    }
}

template <typename Value>
bool LoadForm::get(Value &value) {
    if constexpr (std::is_same_v<Value, float>) {
        return getFloat(value);
    } else if constexpr (std::is_same_v<Value, double>) {
        return getDouble(value);
    } else if constexpr (std::is_signed_v<Value>) {
        long long read = 0;
        if (!getSigned(sizeof(Value), read)) return false;
        value = static_cast<Value>(read); // keeps the low bits
        return true;
    } else {
        unsigned long long read = 0;
        if (!getUnsigned(sizeof(Value), read)) return false;
        value = static_cast<Value>(read);
        return true;
    }
}

template <typename Value>
int LoadForm::readValues(void *data, Value *values, int count) {
    if (count < 1 || !values) return 0;
    return guarded(data, 0, [=](LoadForm &form) {
        int read = 0;
        if (form.startRead())
            while (read < count && form.get(values[read])) ++read;
        return read;
    });
}

int LoadForm::readString(void *data, char *buffer, int size) {
    if (!buffer || size < 1) return 0;
    buffer[0] = '\0';
    return guarded(data, 0, [=](LoadForm &form) {
        std::string text;
        if (!form.startRead() || !form.getString(text)) return 0;
        const std::size_t length = std::min(text.size(), static_cast<std::size_t>(size) - 1);
        std::memcpy(buffer, text.data(), length);
        buffer[length] = '\0';
        return static_cast<int>(length);
    });
}

LoadForm::LoadForm(int mode, std::string_view bytes, std::string name, std::size_t before)
    : bytes_(bytes), name_(std::move(name)), before_(before),
      state_{
          .mode = mode,
          .data = this,
          .read = [](void *data, char *values,
                     int count) { return readValues(data, reinterpret_cast<unsigned char *>(values), count); },
          .readI1 = [](void *data, char *values,
                       int count) { return readValues(data, reinterpret_cast<signed char *>(values), count); },
          .readI2 = readValues<short>,
          .readI4 = readValues<int>,
          .readU1 = readValues<unsigned char>,
          .readU2 = readValues<unsigned short>,
          .readU4 = readValues<unsigned int>,
          .readFP = readValues<float>,
          .readString = readString,
          .readId =
              [](void *data, const HostBlockId *table) {
                  if (!table) return 0U;
                  return guarded(data, 0U, [=](LoadForm &form) { return form.startRead() ? form.getId(table) : 0U; });
              },
          .findBlock =
              [](void *data, const HostBlockId *table) {
                  if (!table) return 0U;
                  return guarded(data, 0U, [=](LoadForm &form) { return form.enter(table); });
              },
          .endBlock =
              [](void *data) {
                  guarded(data, 0, [](LoadForm &form) {
                      if (form.depth() > 0) form.leave();
                      return 0;
                  });
              },
          .depth = [](void *data) { return static_cast<LoadForm *>(data)->depth(); },
          .readDP = readValues<double>,
      } {}

void LoadForm::damaged(std::size_t at, const std::string &what) {
    if (damage_.empty()) damage_ = position(at) + ": " + what;
}

StateReader::StateReader(int mode, std::string_view bytes, std::string name, std::size_t before)
    : form_(mode == kStateText ? makeTextLoadForm(bytes, std::move(name), before)
                               : makeBinaryLoadForm(bytes, std::move(name), before)) {}
StateReader::~StateReader() = default;
const HostLoadState *StateReader::state() const { return form_->state(); }
bool StateReader::failed() const { return !form_->damage().empty(); }
std::string StateReader::error() const { return form_->damage(); }

bool isOfReader(const HostLoadState &state) { return LoadForm::owns(state); }

std::string unreadContents(const HostLoadState &state) {
    return isOfReader(state) ? static_cast<const LoadForm *>(state.data)->unread() : std::string();
}

} // namespace velm::host
