#include "host/state/save_state.h"

#include "host/base/error.h"
#include "host/state/save_form.h"

#include <new>
#include <stdexcept>
#include <type_traits>

namespace velm::host {

// Plug-ins call the operations, and no exception may propagate into a plug-in.
template <typename Work>
void SaveForm::guarded(void *data, Work work) {
    auto &form = *static_cast<SaveForm *>(data);
    try {
        work(form);
    } catch (const std::bad_alloc &) {
        form.outOfMemory_ = true;
    } catch (const std::length_error &) {
        form.outOfMemory_ = true;
    }
}

template <typename Value>
void SaveForm::put(Value value) {
    if constexpr (std::is_same_v<Value, float>)
        putFloat(value);
    else if constexpr (std::is_same_v<Value, double>)
        putDouble(value);
    else if constexpr (std::is_same_v<Value, char>)
        putSigned(static_cast<signed char>(value), 1);
    else if constexpr (std::is_signed_v<Value>)
        putSigned(value, sizeof(Value));
    else
        putUnsigned(value, sizeof(Value));
}

template <typename Value>
void SaveForm::writeValues(void *data, const Value *values, int count) {
    if (count < 1 || !values) return;
    guarded(data, [=](SaveForm &form) {
        form.startWrite();
        for (int i = 0; i < count; ++i) form.put(values[i]);
        form.endWrite();
    });
}

void SaveForm::begin(void *data, const HostBlockId *id, int leaf) {
    guarded(data, [=](SaveForm &form) {
        static const HostBlockId nameless = {.id = 0, .token = "?"};
        if (!id || !id->token) form.mistake("a block without an identifier was begun");
        form.open(id && id->token ? *id : nameless, leaf != 0);
    });
}

void SaveForm::end(void *data) {
    guarded(data, [](SaveForm &form) {
        if (form.depth() == 0)
            form.mistake("a block was ended that was not begun");
        else
            form.close();
    });
}

SaveForm::SaveForm(int mode)
    : state_{
          .mode = mode,
          .data = this,
          .write = [](void *data, const char *bytes,
                      int count) { writeValues(data, reinterpret_cast<const unsigned char *>(bytes), count); },
          .writeI1 = writeValues<char>,
          .writeI2 = writeValues<short>,
          .writeI4 = writeValues<int>,
          .writeU1 = writeValues<unsigned char>,
          .writeU2 = writeValues<unsigned short>,
          .writeU4 = writeValues<unsigned int>,
          .writeFP = writeValues<float>,
          .writeString =
              [](void *data, const char *text) {
                  guarded(data, [=](SaveForm &form) {
                      form.startWrite();
                      form.putString(text ? text : "");
                      form.endWrite();
                  });
              },
          .writeId =
              [](void *data, const HostBlockId *id) {
                  if (!id || !id->token) return;
                  guarded(data, [=](SaveForm &form) {
                      form.startWrite();
                      form.putId(*id);
                      form.endWrite();
                  });
              },
          .beginBlock = begin,
          .endBlock = end,
          .depth = [](void *data) { return static_cast<SaveForm *>(data)->depth(); },
          .writeDP = writeValues<double>,
      } {}

void SaveForm::mistake(const std::string &text) {
    if (mistake_.empty()) mistake_ = text;
}

std::string SaveForm::finish() {
    if (outOfMemory_) throw MachineError("out of memory while saving");
    if (depth() > 0) mistake("the block " + innermost() + " was not ended");
    if (!mistake_.empty()) throw InputError(mistake_);
    return std::move(out_);
}

StateWriter::StateWriter(int mode) : form_(mode == kStateText ? makeTextSaveForm() : makeBinarySaveForm()) {}
StateWriter::~StateWriter() = default;
const HostSaveState *StateWriter::state() const { return form_->state(); }
std::string StateWriter::finish() { return form_->finish(); }

void SaveForm::writeLines(void *data, std::string_view lines) {
    guarded(data, [=](SaveForm &form) { form.putLines(lines); });
}

std::string SaveForm::mistakeIn(const HostSaveState &state) {
    return state.beginBlock == begin ? static_cast<const SaveForm *>(state.data)->mistake_ : std::string();
}

std::string firstMistake(const HostSaveState &state) { return SaveForm::mistakeIn(state); }

void writeLines(const HostSaveState &state, std::string_view lines) { SaveForm::writeLines(state.data, lines); }

} // namespace velm::host
