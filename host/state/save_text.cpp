#include "host/state/blocks.h"
#include "host/state/save_form.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <vector>

namespace velm::host {

namespace {

class TextSaveForm final : public SaveForm {
  public:
    TextSaveForm() : SaveForm(kStateText) {}

  private:
    struct Block {
        std::string token;
        bool leaf;
        std::size_t lineStart; // of a leaf's line
    };

    bool inLeaf() const { return !blocks_.empty() && blocks_.back().leaf; }

    // Only the innermost block can be a leaf, and a leaf adds no indentation.
    void indent(std::size_t levels) { out_.append(2 * levels, ' '); }

    void startWrite() override {
        if (!inLeaf()) indent(blocks_.size());
        firstOfLine_ = !inLeaf();
    }
    void endWrite() override {
        if (!inLeaf()) out_ += '\n';
    }
    void word(std::string_view text) {
        if (!firstOfLine_) out_ += ' ';
        firstOfLine_ = false;
        out_ += text;
    }
    template <typename Value, typename... Base>
    void number(Value value, Base... base) {
        std::array<char, 64> text{};
        const auto end = std::to_chars(text.data(), text.data() + text.size(), value, base...);
        word({text.data(), end.ptr});
    }

    void putSigned(long long value, int) override { number(value); }
    void putUnsigned(unsigned long long value, int) override { number(value, 16); }
    void putFloat(float value) override { number(value); }
    void putDouble(double value) override { number(value); }
    void putString(const char *text) override;
    void putId(const HostBlockId &id) override {
        checkToken(id.token);
        word(id.token);
    }
    void putLines(std::string_view lines) override {
        while (!lines.empty()) {
            const std::size_t end = std::min(lines.find('\n'), lines.size() - 1) + 1;
            indent(blocks_.size());
            out_ += lines.substr(0, end);
            lines.remove_prefix(end);
        }
    }
    void open(const HostBlockId &id, bool leaf) override;
    void close() override;
    int depth() const override { return static_cast<int>(blocks_.size()); }
    std::string innermost() const override { return blocks_.back().token; }

    // A token that a reader could mistake for a value would make the file read differently.
    void checkToken(std::string_view token) {
        const bool blankEnds = token.empty() || token.front() == ' ' || token.back() == ' ';
        const bool isMark = !token.empty() && std::string_view("{}\"").find(token.front()) != std::string_view::npos;
        bool hasControl = false;
        for (const char character : token) hasControl |= static_cast<unsigned char>(character) < 0x20;
        if (blankEnds || isMark || hasControl)
            mistake("\"" + std::string(token) + "\" cannot name a block in text form");
    }

    std::vector<Block> blocks_;
    bool firstOfLine_ = true;
};

void TextSaveForm::putString(const char *text) {
    std::string quoted = "\"";
    for (const char *at = text; *at != '\0'; ++at) {
        const auto code = static_cast<unsigned char>(*at);
        switch (*at) {
        case '"': quoted += "\\\""; break;
        case '\\': quoted += "\\\\"; break;
        case '\n': quoted += "\\n"; break;
        case '\r': quoted += "\\r"; break;
        case '\t': quoted += "\\t"; break;
        default:
            if (code < 0x20 || code == 0x7f) {
                constexpr std::string_view digits = "0123456789abcdef";
                quoted += {'\\', 'x', digits[code >> 4], digits[code & 0xf]};
            } else {
                quoted += *at;
            }
        }
    }
    word(quoted + '"');
}

void TextSaveForm::open(const HostBlockId &id, bool leaf) {
    if (blocks_.size() >= kMaxBlockDepth) mistake(std::string("blocks are nested too deeply at ") + id.token);
    checkToken(id.token);
    if (inLeaf()) {
        Block &outer = blocks_.back();
        const std::size_t level = blocks_.size() - 1;
        const std::string values = out_.substr(outer.lineStart + 2 * level + outer.token.size());
        out_.resize(outer.lineStart);
        indent(level);
        out_ += "{ " + outer.token + '\n';
        if (!values.empty()) {
            indent(level + 1);
            out_ += values.substr(1) + '\n';
        }
        outer.leaf = false;
    }
    const std::size_t lineStart = out_.size();
    indent(blocks_.size());
    out_ += leaf ? id.token : "{ " + std::string(id.token) + '\n';
    blocks_.push_back({.token = id.token, .leaf = leaf, .lineStart = lineStart});
}

void TextSaveForm::close() {
    const bool leaf = inLeaf();
    blocks_.pop_back();
    if (!leaf) {
        indent(blocks_.size());
        out_ += '}';
    }
    out_ += '\n';
}

} // namespace

std::unique_ptr<SaveForm> makeTextSaveForm() { return std::make_unique<TextSaveForm>(); }

} // namespace velm::host
