#include "host/state/blocks.h"
#include "host/state/load_form.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace velm::host {

namespace {

bool isBlank(char character) { return character == ' ' || character == '\t' || character == '\r'; }
bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

std::optional<int> hexDigit(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return {};
}

class TextLoadForm final : public LoadForm {
  public:
    TextLoadForm(std::string_view bytes, std::string name, std::size_t before)
        : LoadForm(kStateText, bytes, std::move(name), before) {}

  private:
    struct Block {
        std::string token;
        bool leaf;
    };
    enum class Line { end, close, open, other }; // the kind of a line, by its first character

    bool atEnd() const { return at_ >= bytes_.size(); }
    bool atLineEnd() const { return atEnd() || bytes_[at_] == '\n'; }
    bool inLeaf() const { return !blocks_.empty() && blocks_.back().leaf; }
    void skipBlanks() {
        while (!atLineEnd() && isBlank(bytes_[at_])) ++at_;
    }
    void skipLine() {
        at_ = std::min(bytes_.find('\n', at_), bytes_.size());
        lineStarted_ = true;
    }
    bool startRead() override;
    Line nextLine();
    std::string_view word() const;
    std::optional<std::string> quoted();
    bool notAValue(std::size_t start, const char *wanted);
    template <typename Value, typename Parse>
    bool number(Value &value, const char *wanted, Parse parse);
    const HostBlockId *match(const HostBlockId *table) const;
    bool skipToClose();

    bool getSigned(int, long long &value) override {
        return number(value, "a whole number", [](const char *from, const char *to, long long &read) {
            return std::from_chars(from, to, read);
        });
    }
    bool getUnsigned(int, unsigned long long &value) override {
        return number(value, "a hexadecimal number", [](const char *from, const char *to, unsigned long long &read) {
            const bool prefixed = to - from > 2 && from[0] == '0' && (from[1] == 'x' || from[1] == 'X');
            return std::from_chars(prefixed ? from + 2 : from, to, read, 16);
        });
    }
    bool getFloat(float &value) override {
        return number(value, "a number",
                      [](const char *from, const char *to, float &read) { return std::from_chars(from, to, read); });
    }
    bool getDouble(double &value) override {
        return number(value, "a number",
                      [](const char *from, const char *to, double &read) { return std::from_chars(from, to, read); });
    }
    bool getString(std::string &text) override;
    unsigned int getId(const HostBlockId *table) override;
    unsigned int enter(const HostBlockId *table) override;
    void leave() override;
    int depth() const override { return static_cast<int>(blocks_.size()); }
    std::string unread() const override;
    std::string position(std::size_t at) const override {
        const auto end = bytes_.begin() + static_cast<std::ptrdiff_t>(std::min(at, bytes_.size()));
        return name_ + ":" +
               std::to_string(before_ + 1 + static_cast<std::size_t>(std::count(bytes_.begin(), end, '\n')));
    }

    std::vector<Block> blocks_;
    bool lineStarted_ = false; // whether a part of the current line was read already
};

// Moves to the first character of the next line that is not empty; stays at the current line if nothing of it was read.
TextLoadForm::Line TextLoadForm::nextLine() {
    if (lineStarted_) {
        at_ = std::min(bytes_.find('\n', at_), bytes_.size());
        lineStarted_ = false;
    }
    while (!atEnd() && (isBlank(bytes_[at_]) || bytes_[at_] == '\n')) ++at_;
    if (atEnd()) return Line::end;
    if (bytes_[at_] == '}') return Line::close;
    return bytes_[at_] == '{' ? Line::open : Line::other;
}

bool TextLoadForm::startRead() {
    skipBlanks();
    if (!atLineEnd() && lineStarted_) return true;
    return !inLeaf() && nextLine() == Line::other;
}

// Up to the next blank or the end of the line.
std::string_view TextLoadForm::word() const {
    std::size_t end = at_;
    while (end < bytes_.size() && bytes_[end] != '\n' && !isBlank(bytes_[end])) ++end;
    return std::string_view(bytes_).substr(at_, end - at_);
}

// A line that starts with a letter and holds no value of the wanted kind is a block, which ends the values. Anything
// else that is not such a value is damage and is skipped, so that reading can go on after it.
bool TextLoadForm::notAValue(std::size_t start, const char *wanted) {
    if (!lineStarted_ && isLetter(bytes_[start])) {
        at_ = start;
        return false;
    }
    damaged(start, "expected " + std::string(wanted));
    lineStarted_ = true;
    if (bytes_[start] == '"')
        quoted();
    else
        at_ = start + word().size();
    return false;
}

template <typename Value, typename Parse>
bool TextLoadForm::number(Value &value, const char *wanted, Parse parse) {
    skipBlanks();
    if (atLineEnd()) return false;
    const std::string_view text = word();
    const char *from = text.data();
    const char *to = from + text.size();
    const char *sign = text.size() > 1 && *from == '+' ? from + 1 : from;
    Value read{};
    const auto result = parse(sign, to, read);
    if (result.ec != std::errc() || result.ptr != to) return notAValue(at_, wanted);
    value = read;
    at_ += text.size();
    lineStarted_ = true;
    return true;
}

// The quoted string that starts here. If it has no end: nothing, and the rest of the line is skipped.
std::optional<std::string> TextLoadForm::quoted() {
    std::string text;
    for (++at_; !atLineEnd(); ++at_) {
        const char character = bytes_[at_];
        if (character == '"') {
            ++at_;
            return text;
        }
        if (character != '\\' || at_ + 1 >= bytes_.size()) {
            text += character;
            continue;
        }
        const char escape = bytes_[at_ + 1];
        constexpr const char *kEscapes = "\"\\nrt";
        constexpr const char *kMeanings = "\"\\\n\r\t";
        if (const char *found = std::strchr(kEscapes, escape); found && escape != '\0') {
            text += kMeanings[found - kEscapes];
            ++at_;
        } else if (escape == 'x' && at_ + 3 < bytes_.size() && hexDigit(bytes_[at_ + 2]) && hexDigit(bytes_[at_ + 3])) {
            text += static_cast<char>(*hexDigit(bytes_[at_ + 2]) * 16 + *hexDigit(bytes_[at_ + 3]));
            at_ += 3;
        } else {
            text += character; // other programs write paths with single backslashes
        }
    }
    return {};
}

bool TextLoadForm::getString(std::string &text) {
    skipBlanks();
    if (atLineEnd()) return false;
    const std::size_t start = at_;
    if (bytes_[start] != '"') return notAValue(start, "a string in quotes");
    lineStarted_ = true;
    std::optional<std::string> read = quoted();
    if (!read) {
        damaged(start, "the string has no end");
        return false;
    }
    text = std::move(*read);
    return true;
}

// The longest token of the table that matches a whole word here.
const HostBlockId *TextLoadForm::match(const HostBlockId *table) const {
    const HostBlockId *best = nullptr;
    std::size_t bestLength = 0;
    for (const HostBlockId *entry = table; entry->id != 0; ++entry) {
        if (!entry->token) continue;
        const std::size_t length = std::strlen(entry->token);
        if (length <= bestLength || bytes_.compare(at_, length, entry->token) != 0) continue;
        const std::size_t after = at_ + length;
        if (after < bytes_.size() && bytes_[after] != '\n' && !isBlank(bytes_[after])) continue;
        best = entry;
        bestLength = length;
    }
    return best;
}

unsigned int TextLoadForm::getId(const HostBlockId *table) {
    const HostBlockId *found = match(table);
    if (!found) return 0;
    at_ += std::strlen(found->token);
    lineStarted_ = true;
    return found->id;
}

// Skips to the end of the current block, behind its closing brace. Damage if there is none.
bool TextLoadForm::skipToClose() {
    std::size_t open = 1;
    while (open > 0) {
        switch (nextLine()) {
        case Line::end: damaged(at_, "a block is not closed: a \"}\" is missing"); return false;
        case Line::close: --open; break;
        case Line::open: ++open; break;
        case Line::other: break;
        }
        lineStarted_ = true;
    }
    skipLine();
    return true;
}

std::string TextLoadForm::unread() const {
    std::string lines;
    std::size_t at = lineStarted_ ? std::min(bytes_.find('\n', at_), bytes_.size() - 1) + 1 : at_;
    for (std::size_t open = 1; at < bytes_.size();) {
        const std::size_t end = std::min(bytes_.find('\n', at), bytes_.size());
        std::string_view line = std::string_view(bytes_).substr(at, end - at);
        const std::size_t first = std::min(line.find_first_not_of(" \t\r"), line.size());
        if (first < line.size() && line[first] == '{') ++open;
        if (first < line.size() && line[first] == '}' && --open == 0) break;
        line.remove_prefix(std::min(first, 2 * blocks_.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        lines.append(line) += '\n';
        at = end + 1;
    }
    return lines;
}

unsigned int TextLoadForm::enter(const HostBlockId *table) {
    if (inLeaf()) return 0;
    const std::size_t before = at_;
    const bool startedBefore = lineStarted_;
    for (Line line = nextLine(); line == Line::open || line == Line::other; line = nextLine()) {
        lineStarted_ = true;
        if (line == Line::open) {
            ++at_;
            skipBlanks();
        }
        if (const HostBlockId *found = match(table)) {
            if (depth() < kMaxBlockDepth) {
                at_ += std::strlen(found->token);
                blocks_.push_back({.token = found->token, .leaf = line == Line::other});
                return found->id;
            }
            damaged(at_, "blocks are nested too deeply");
            break;
        }
        if (line == Line::open && !skipToClose()) break;
    }
    if (atEnd() && !blocks_.empty()) damaged(at_, "the block " + blocks_.back().token + " is not closed");
    if (!atEnd() && bytes_[at_] == '}' && blocks_.empty()) damaged(at_, "a \"}\" closes nothing");
    at_ = before;
    lineStarted_ = startedBefore;
    return 0;
}

void TextLoadForm::leave() {
    if (inLeaf())
        skipLine();
    else
        skipToClose();
    blocks_.pop_back();
}

} // namespace

std::unique_ptr<LoadForm> makeTextLoadForm(std::string_view bytes, std::string name, std::size_t before) {
    return std::make_unique<TextLoadForm>(bytes, std::move(name), before);
}

} // namespace velm::host
