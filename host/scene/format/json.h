// A JSON text as a tree that remembers the line of every key and value, so that errors that are found later can be
// reported with their line.
#pragma once

#include "host/base/error.h"

#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

struct JsonMember;

struct JsonValue {
    enum class Kind { null, boolean, number, text, list, object };

    Kind kind = Kind::null;
    int line = 0; // of its first character; from 1
    bool boolean = false;
    double number = 0;
    std::string text; // UTF-8
    std::vector<JsonValue> list;
    std::vector<JsonMember> members; // in the order of the file; no key occurs twice

    // The value of the member with that key, owned by the tree; null when there is no such member.
    const JsonValue *find(std::string_view key) const;

    // The value as messages show it: `"abc"`, `12`, `a list of 2 values`, `an object`.
    std::string shown() const;
};

struct JsonMember {
    std::string key;
    int line = 0; // of the key
    JsonValue value;
};

// Parses the text of a whole file. `file` is its name, for errors. Throws InputError, with the line and what was
// expected, on a syntax error, on a key that occurs twice in one object, on the character U+0000 in a text, and on
// nesting deeper than a scene can need.
JsonValue parseJson(std::string_view text, const std::string &file);

} // namespace velm::host
