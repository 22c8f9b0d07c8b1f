#include "host/scene/format/json.h"

#include <algorithm>
#include <cstddef>
#include <fmt/format.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <unordered_map>

namespace velm::host {

namespace {

// The tree is built, copied and destroyed by recursion, so its depth is limited. Networks inside nodes, which need the
// most, are nested at most 16 deep.
constexpr std::size_t kDeepest = 64;

// Reads characters and counts lines. The lexer reads one character past a number. A line break therefore counts only
// when the character after it is read, so that the line is still the number's own when its event comes.
class LineCountingIterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char *;
    using reference = const char &;

    LineCountingIterator(const char *at, int *line) : at_(at), line_(line) {}

    reference operator*() const {
        if (pendingBreak_) ++*line_;
        pendingBreak_ = *at_ == '\n';
        return *at_;
    }
    LineCountingIterator &operator++() {
        ++at_;
        return *this;
    }
    bool operator==(const LineCountingIterator &other) const { return at_ == other.at_; }
    bool operator!=(const LineCountingIterator &other) const { return at_ != other.at_; }

  private:
    const char *at_;
    int *line_;
    mutable bool pendingBreak_ = false; // the last character was a line break
};

// The part of the library's text after "[json.exception.parse_error.101] parse error at line 1, column 5: ".
std::string plainMessage(const std::string &message) {
    const auto start = message.find(": ");
    std::string plain = start == std::string::npos ? message : message.substr(start + 2);
    if (message.find("out_of_range") != std::string::npos) plain = message.substr(message.find("] ") + 2);
    return plain;
}

class TreeBuilder : public nlohmann::json_sax<nlohmann::json> {
  public:
    TreeBuilder(const std::string &file, const int &line) : file_(file), line_(line) {}

    JsonValue &root() { return root_; }

    bool null() override {
        add(JsonValue::Kind::null);
        return true;
    }
    bool boolean(bool value) override {
        add(JsonValue::Kind::boolean).boolean = value;
        return true;
    }
    bool number_integer(number_integer_t value) override { return number(static_cast<double>(value)); }
    bool number_unsigned(number_unsigned_t value) override { return number(static_cast<double>(value)); }
    bool number_float(number_float_t value, const string_t &) override { return number(value); }
    bool string(string_t &text) override {
        refuseNull(text);
        add(JsonValue::Kind::text).text = std::move(text);
        return true;
    }
    bool binary(binary_t &) override { fail("a text cannot hold binary data"); }
    bool start_object(std::size_t) override { return open(JsonValue::Kind::object); }
    bool start_array(std::size_t) override { return open(JsonValue::Kind::list); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t &key) override {
        refuseNull(key);
        JsonValue &object = *open_.back();
        if (const auto [earlier, isNew] = keys_.back().emplace(key, line_); !isNew)
            fail(fmt::format("\"{}\" occurs twice; first on line {}", key, earlier->second));
        object.members.push_back({.key = std::move(key), .line = line_, .value = {}});
        return true;
    }

    bool parse_error(std::size_t, const std::string &, const nlohmann::json::exception &error) override {
        fail(plainMessage(error.what()));
    }

  private:
    [[noreturn]] void fail(const std::string &message) const { throw InputError({file_, line_}, message); }

    // Modules and the system take the character for the end of the text.
    void refuseNull(const std::string &text) const {
        if (text.find('\0') != std::string::npos) fail("a text cannot hold the character \\u0000");
    }

    // Adds a value to the innermost open list or object.
    JsonValue &add(JsonValue::Kind kind) {
        JsonValue *value = &root_;
        if (!open_.empty()) {
            JsonValue &parent = *open_.back();
            value = parent.kind == JsonValue::Kind::object ? &parent.members.back().value : &parent.list.emplace_back();
        }
        value->kind = kind;
        value->line = line_;
        return *value;
    }
    bool number(double number) {
        add(JsonValue::Kind::number).number = number;
        return true;
    }
    // Pointers into the tree stay valid: a list or an object grows only while its newest child is closed.
    bool open(JsonValue::Kind kind) {
        if (open_.size() == kDeepest) fail(fmt::format("lists and objects are nested deeper than {}", kDeepest));
        open_.push_back(&add(kind));
        keys_.emplace_back();
        return true;
    }
    bool close() {
        open_.pop_back();
        keys_.pop_back();
        return true;
    }

    const std::string &file_;
    const int &line_;
    JsonValue root_;
    std::vector<JsonValue *> open_;
    std::vector<std::unordered_map<std::string, int>> keys_; // the lines of the keys of each open object
};

} // namespace

const JsonValue *JsonValue::find(std::string_view key) const {
    const auto found = std::ranges::find(members, key, &JsonMember::key);
    return found == members.end() ? nullptr : &found->value;
}

std::string JsonValue::shown() const {
    constexpr std::size_t kLongestText = 40;
    switch (kind) {
    case Kind::null: return "null";
    case Kind::boolean: return boolean ? "true" : "false";
    case Kind::number: return fmt::format("{}", number);
    case Kind::text: return text.size() > kLongestText ? "a long text" : '"' + text + '"';
    case Kind::list: return list.size() == 1 ? "a list of 1 value" : fmt::format("a list of {} values", list.size());
    case Kind::object: return "an object";
    }
    return {};
}

JsonValue parseJson(std::string_view text, const std::string &file) {
    int line = 1;
    TreeBuilder builder(file, line);
    const char *end = text.data() + text.size();
    nlohmann::json::sax_parse(LineCountingIterator(text.data(), &line), LineCountingIterator(end, &line), &builder);
    return std::move(builder.root());
}

} // namespace velm::host
