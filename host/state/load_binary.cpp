#include "host/state/blocks.h"
#include "host/state/load_form.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

namespace velm::host {

namespace {

constexpr std::size_t kHeader = 6; // identifier and size

bool isPrintable(unsigned int id) {
    for (int shift = 0; shift < 32; shift += 8) {
        const unsigned int character = (id >> shift) & 0xff;
        if (character < ' ' || character > '~') return false;
    }
    return (id >> 24) != ' ';
}

// All identifiers in common use consist of capitals, digits and blanks, and start with a capital.
bool isUsual(unsigned int id) {
    for (int shift = 0; shift < 32; shift += 8) {
        const unsigned int character = (id >> shift) & 0xff;
        const bool capital = character >= 'A' && character <= 'Z';
        const bool digit = character >= '0' && character <= '9';
        if (!capital && (shift == 24 || (!digit && character != ' '))) return false;
    }
    return true;
}

bool knows(const HostBlockId *table, unsigned int id) {
    for (const HostBlockId *entry = table; entry->id != 0; ++entry)
        if (entry->id == id) return true;
    return false;
}

class BinaryLoadForm final : public LoadForm {
  public:
    BinaryLoadForm(std::string_view bytes, std::string name, std::size_t before)
        : LoadForm(kStateBinary, bytes, std::move(name), before) {}

  private:
    std::size_t limit() const { return ends_.empty() ? bytes_.size() : ends_.back(); }

    unsigned long long peek(std::size_t at, std::size_t count) const {
        unsigned long long value = 0;
        for (std::size_t i = 0; i < count; ++i) value = value << 8 | static_cast<unsigned char>(bytes_[at + i]);
        return value;
    }

    bool startRead() override { return at_ < limit(); }

    bool getUnsigned(int bytes, unsigned long long &value) override {
        const auto count = static_cast<std::size_t>(bytes);
        const std::size_t left = limit() - at_;
        if (left < count) {
            if (left > 0) damaged(at_, "the block ends within a value of " + std::to_string(count) + " bytes");
            at_ = limit();
            return false;
        }
        value = peek(at_, count);
        at_ += count;
        return true;
    }
    bool getSigned(int bytes, long long &value) override {
        unsigned long long read = 0;
        if (!getUnsigned(bytes, read)) return false;
        const int spare = 64 - 8 * bytes;
        value = static_cast<long long>(read << spare) >> spare;
        return true;
    }
    bool getFloat(float &value) override {
        unsigned long long read = 0;
        if (!getUnsigned(4, read)) return false;
        value = std::bit_cast<float>(static_cast<std::uint32_t>(read));
        return true;
    }
    bool getDouble(double &value) override {
        unsigned long long read = 0;
        if (!getUnsigned(8, read)) return false;
        value = std::bit_cast<double>(static_cast<std::uint64_t>(read));
        return true;
    }
    bool getString(std::string &text) override {
        const std::size_t end = bytes_.find('\0', at_);
        if (end >= limit()) {
            damaged(at_, "the string has no end");
            at_ = limit();
            return false;
        }
        text = bytes_.substr(at_, end - at_);
        const std::size_t length = end + 1 - at_;
        at_ = std::min(at_ + length + length % 2, limit());
        return true;
    }
    unsigned int getId(const HostBlockId *table) override {
        if (limit() - at_ < 4) return 0;
        const auto id = static_cast<unsigned int>(peek(at_, 4));
        if (!knows(table, id)) return 0;
        at_ += 4;
        return id;
    }

    unsigned int enter(const HostBlockId *table) override;

    void leave() override {
        const std::size_t end = ends_.back();
        const std::size_t start = starts_.back();
        ends_.pop_back();
        starts_.pop_back();
        at_ = std::min(end + (end - start) % 2, limit());
    }
    int depth() const override { return static_cast<int>(ends_.size()); }
    std::string unread() const override { return at_ < limit() ? bytes_.substr(at_, limit() - at_) : std::string(); }
    std::string position(std::size_t at) const override { return name_ + ": byte " + std::to_string(before_ + at); }

    std::vector<std::size_t> starts_, ends_; // of the contents of the open blocks
};

unsigned int BinaryLoadForm::enter(const HostBlockId *table) {
    std::size_t at = at_;
    while (at < limit() && limit() - at >= kHeader) {
        const auto id = static_cast<unsigned int>(peek(at, 4));
        const auto size = static_cast<std::size_t>(peek(at + 4, 2));
        const std::size_t room = limit() - at - kHeader;
        const bool known = knows(table, id);
        if (size > room && (known || isUsual(id))) {
            damaged(at, "the block " + blockName(id) + " has " + std::to_string(size) + " bytes where " +
                            std::to_string(room) + " are left");
            return 0;
        }
        if (known) {
            if (depth() >= kMaxBlockDepth) {
                damaged(at, "blocks are nested too deeply");
                return 0;
            }
            at_ = at + kHeader;
            starts_.push_back(at_);
            ends_.push_back(at_ + size);
            return id;
        }
        at += size <= room && isPrintable(id) ? kHeader + size + size % 2 : 1;
    }
    return 0;
}

} // namespace

std::unique_ptr<LoadForm> makeBinaryLoadForm(std::string_view bytes, std::string name, std::size_t before) {
    return std::make_unique<BinaryLoadForm>(bytes, std::move(name), before);
}

} // namespace velm::host
