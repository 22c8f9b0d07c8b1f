#include "host/state/blocks.h"
#include "host/state/save_form.h"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace velm::host {

std::string blockName(unsigned int id) {
    std::string name;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto character = static_cast<char>((id >> shift) & 0xff);
        if (character < ' ' || character > '~') {
            char hex[16];
            std::snprintf(hex, sizeof hex, "0x%08x", id);
            return hex;
        }
        name += character;
    }
    return name;
}

namespace {

constexpr std::size_t kLargestBlock = 65535;

class BinarySaveForm final : public SaveForm {
  public:
    BinarySaveForm() : SaveForm(kStateBinary) {}

  private:
    struct Block {
        unsigned int id;
        std::size_t start; // of the contents
    };

    void putSigned(long long value, int bytes) override { putUnsigned(static_cast<unsigned long long>(value), bytes); }
    void putUnsigned(unsigned long long value, int bytes) override {
        for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) out_ += static_cast<char>((value >> shift) & 0xff);
    }
    void putFloat(float value) override { putUnsigned(std::bit_cast<std::uint32_t>(value), 4); }
    void putDouble(double value) override { putUnsigned(std::bit_cast<std::uint64_t>(value), 8); }
    void putString(const char *text) override {
        const std::size_t length = std::strlen(text) + 1;
        out_.append(text, length);
        if (length % 2 != 0) out_ += '\0';
    }
    void putId(const HostBlockId &id) override { putUnsigned(id.id, 4); }

    void putLines(std::string_view) override { mistake("binary data cannot contain lines of text"); }

    void open(const HostBlockId &id, bool) override {
        if (blocks_.size() >= kMaxBlockDepth) mistake("blocks are nested too deeply at " + blockName(id.id));
        putUnsigned(id.id, 4);
        putUnsigned(0, 2);
        blocks_.push_back({.id = id.id, .start = out_.size()});
    }
    void close() override {
        const Block block = blocks_.back();
        blocks_.pop_back();
        const std::size_t size = out_.size() - block.start;
        if (size > kLargestBlock) {
            mistake("the block " + blockName(block.id) + " has " + std::to_string(size) +
                    " bytes; the binary form holds at most " + std::to_string(kLargestBlock));
        }
        out_[block.start - 2] = static_cast<char>((size >> 8) & 0xff);
        out_[block.start - 1] = static_cast<char>(size & 0xff);
        if (size % 2 != 0) out_ += '\0';
    }
    int depth() const override { return static_cast<int>(blocks_.size()); }
    std::string innermost() const override { return blockName(blocks_.back().id); }

    std::vector<Block> blocks_;
};

} // namespace

std::unique_ptr<SaveForm> makeBinarySaveForm() { return std::make_unique<BinarySaveForm>(); }

} // namespace velm::host
