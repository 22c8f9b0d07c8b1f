// A JSON text as a tree that remembers on which line everything stands, so that whatever is found wrong later can be
// reported with its place.
#pragma once

#include "host/base/error.h"

#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

struct JsonMember;

struct JsonValue {
    enum class Kind { null, truth, number, text, list, object };

    Kind kind = Kind::null;
    int line = 0; // of its first character; from 1
    bool truth = false;
    double number = 0;
    std::string text; // UTF-8
    std::vector<JsonValue> list;
    std::vector<JsonMember> members; // in the order of the file; no key occurs twice

    // The member's value; null when there is none of that key. The tree keeps it.
    const JsonValue *find(std::string_view key) const;

    // What was found, for messages: `"abc"`, `12`, `a list of 2 values`, `an object`.
    std::string shown() const;
};

struct JsonMember {
    std::string key;
    int line = 0; // of the key
    JsonValue value;
};

// Parses a whole file's text. `file` is the name that errors carry. Throws InputError, with the line and what was
// expected, on a syntax error, on a key that occurs twice in one object, and on nesting deeper than a scene can need.
JsonValue parseJson(std::string_view text, const std::string &file);

} // namespace velm::host
