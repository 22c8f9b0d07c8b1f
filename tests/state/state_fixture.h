// Used by the tests of both forms of saved states: short names for reading and writing, and data with one of
// everything.
#pragma once

#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <array>
#include <string>
#include <string_view>

namespace velm::host {

inline constexpr HostBlockId kOuter = {.id = 0x4f555452, .token = "Outer"}; // OUTR
inline constexpr HostBlockId kInner = {.id = 0x494e4e52, .token = "Inner"}; // INNR
inline constexpr HostBlockId kLeaf = {.id = 0x4c454146, .token = "Leaf"};   // LEAF
inline constexpr HostBlockId kTwoWords = {.id = 0x54574f57, .token = "Leaf Of Two Words"};
inline constexpr HostBlockId kForeign = {.id = 0x464f5245, .token = "Foreign"}; // FORE
inline constexpr std::array<HostBlockId, 5> kKnown = {kOuter, kInner, kLeaf, kTwoWords, HostBlockId{0, nullptr}};

// Short names for the operations of a save state.
class Saver {
  public:
    explicit Saver(int mode) : writer_(mode), state_(*writer_.state()) {}

    void i1(char value) { state_.writeI1(state_.data, &value, 1); }
    void i2(short value) { state_.writeI2(state_.data, &value, 1); }
    void i4(int value) { state_.writeI4(state_.data, &value, 1); }
    void u1(unsigned char value) { state_.writeU1(state_.data, &value, 1); }
    void u2(unsigned short value) { state_.writeU2(state_.data, &value, 1); }
    void u4(unsigned int value) { state_.writeU4(state_.data, &value, 1); }
    void fp(float value) { state_.writeFP(state_.data, &value, 1); }
    void dp(double value) { state_.writeDP(state_.data, &value, 1); }
    void string(const char *text) { state_.writeString(state_.data, text); }
    void bytes(std::string_view bytes) { state_.write(state_.data, bytes.data(), static_cast<int>(bytes.size())); }
    void id(const HostBlockId &id) { state_.writeId(state_.data, &id); }
    void begin(const HostBlockId &id) { state_.beginBlock(state_.data, &id, 0); }
    void leaf(const HostBlockId &id) { state_.beginBlock(state_.data, &id, 1); }
    void end() { state_.endBlock(state_.data); }
    int depth() const { return state_.depth(state_.data); }
    const HostSaveState &state() const { return state_; }
    std::string finish() { return writer_.finish(); }

  private:
    StateWriter writer_;
    const HostSaveState &state_;
};

// Short names for the operations of a load state. A value that is missing reads as kNone.
class Loader {
  public:
    static constexpr int kNone = -12345;

    Loader(int mode, std::string_view bytes) : reader_(mode, bytes, "data"), state_(*reader_.state()) {}

    int i1() {
        char value = 0;
        return state_.readI1(state_.data, &value, 1) == 1 ? static_cast<signed char>(value) : kNone;
    }
    int i2() { return integer<short>(state_.readI2); }
    int i4() { return integer<int>(state_.readI4); }
    int u1() { return integer<unsigned char>(state_.readU1); }
    int u2() { return integer<unsigned short>(state_.readU2); }
    unsigned int u4() {
        unsigned int value = 0;
        return state_.readU4(state_.data, &value, 1) == 1 ? value : static_cast<unsigned int>(kNone);
    }
    float fp() {
        float value = 0;
        return state_.readFP(state_.data, &value, 1) == 1 ? value : static_cast<float>(kNone);
    }
    double dp() {
        double value = 0;
        return state_.readDP(state_.data, &value, 1) == 1 ? value : kNone;
    }
    std::string string(int size = 256) {
        std::string buffer(static_cast<std::size_t>(size), '?');
        const int length = state_.readString(state_.data, buffer.data(), size);
        buffer.resize(static_cast<std::size_t>(length));
        return buffer;
    }
    std::string bytes(int count) {
        std::string buffer(static_cast<std::size_t>(count), '?');
        buffer.resize(static_cast<std::size_t>(state_.read(state_.data, buffer.data(), count)));
        return buffer;
    }
    unsigned int id() { return state_.readId(state_.data, kKnown.data()); }
    unsigned int find() { return state_.findBlock(state_.data, kKnown.data()); }
    void end() { state_.endBlock(state_.data); }
    int depth() const { return state_.depth(state_.data); }
    const HostLoadState &state() const { return state_; }
    bool failed() const { return reader_.failed(); }
    std::string error() const { return reader_.error(); }

  private:
    template <typename Value>
    int integer(int (*read)(void *, Value *, int)) {
        Value value = 0;
        return read(state_.data, &value, 1) == 1 ? static_cast<int>(value) : kNone;
    }

    StateReader reader_;
    const HostLoadState &state_;
};

// The bytes of a string literal, including any zeros in it.
template <std::size_t size>
std::string literal(const char (&text)[size]) {
    return std::string(text, size - 1);
}

// Writes one of everything: a value of each type, nested blocks, leaf blocks with and without values, and values after
// blocks.
inline void saveEverything(Saver &saver) {
    saver.begin(kOuter);
    saver.i1(-5);
    saver.i2(-300);
    saver.i4(-70000);
    saver.u1(0xfe);
    saver.u2(0xabcd);
    saver.u4(0xdeadbeef);
    saver.fp(0.1F);
    saver.dp(0.1);
    saver.string("a \"quoted\" word");
    saver.begin(kInner);
    saver.leaf(kLeaf);
    saver.i2(7);
    saver.string("odd");
    saver.end();
    saver.leaf(kTwoWords);
    saver.end();
    saver.end();
    saver.i2(42);
    saver.end();
}

} // namespace velm::host
