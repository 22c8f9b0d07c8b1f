#include "tests/module/recorded_state.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace velm::plugin {
namespace {

using Kind = RecordedState::Entry::Kind;

RecordedState &self(void *data) { return *static_cast<RecordedState *>(data); }

std::string fourCharacters(unsigned int id) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(id >> shift & 0xff);
    return text;
}

} // namespace

// The operations that no node uses stay null: calling one crashes the test.
RecordedState::RecordedState() {
    save_.mode = kStateBinary;
    save_.data = this;
    save_.writeI2 = [](void *data, const short *values, int count) {
        for (int i = 0; i < count; ++i) self(data).integer(values[i]);
    };
    save_.writeString = [](void *data, const char *text) { self(data).text(text); };
    save_.beginBlock = [](void *data, const HostBlockId *id, int leaf) {
        self(data).entries.push_back({.kind = Kind::begin, .integer = leaf, .text = id->token, .id = id->id});
    };
    save_.endBlock = [](void *data) { self(data).end(); };
    load_.mode = kStateBinary;
    load_.data = this;
    load_.readI2 = [](void *data, short *values, int count) {
        int read = 0;
        for (; read < count; ++read) {
            const Entry *entry = self(data).take(Kind::integer);
            if (!entry) break;
            values[read] = static_cast<short>(entry->integer);
        }
        return read;
    };
    load_.readString = [](void *data, char *buffer, int size) {
        const Entry *entry = self(data).take(Kind::text);
        const std::string text = entry ? entry->text.substr(0, static_cast<size_t>(size) - 1) : std::string();
        std::memcpy(buffer, text.c_str(), text.size() + 1);
        return static_cast<int>(text.size());
    };
    load_.findBlock = [](void *data, const HostBlockId *table) { return self(data).findBlock(table); };
    load_.endBlock = [](void *data) { self(data).skipToBlockEnd(); };
}

const HostLoadState *RecordedState::load() {
    next_ = 0;
    return &load_;
}

RecordedState &RecordedState::integer(int value) {
    entries.push_back({.kind = Kind::integer, .integer = value});
    return *this;
}
RecordedState &RecordedState::text(const std::string &value) {
    entries.push_back({.kind = Kind::text, .text = value});
    return *this;
}
RecordedState &RecordedState::begin(unsigned int id) {
    entries.push_back({.kind = Kind::begin, .id = id});
    return *this;
}
RecordedState &RecordedState::end() {
    entries.push_back({.kind = Kind::end});
    return *this;
}
RecordedState &RecordedState::parm(std::vector<double> values) {
    entries.push_back({.kind = Kind::parm, .values = std::move(values)});
    return *this;
}

std::vector<std::string> RecordedState::lines() const {
    std::vector<std::string> result;
    for (const Entry &entry : entries) {
        switch (entry.kind) {
        case Kind::integer: result.push_back("I2 " + std::to_string(entry.integer)); break;
        case Kind::text: result.push_back("text " + entry.text); break;
        case Kind::begin:
            result.push_back("begin " + fourCharacters(entry.id) + " " + entry.text);
            if (entry.integer == 1) result.back() += " leaf";
            if (entry.integer != 0 && entry.integer != 1) result.back() += " odd";
            break;
        case Kind::end: result.emplace_back("end"); break;
        case Kind::parm: result.push_back("parm " + entry.text); break;
        }
    }
    return result;
}

const RecordedState::Entry *RecordedState::take(Entry::Kind kind) {
    if (next_ == entries.size() || entries[next_].kind != kind) return nullptr;
    return &entries[next_++];
}

unsigned int RecordedState::findBlock(const HostBlockId *table) {
    while (next_ < entries.size() && entries[next_].kind != Kind::end) {
        const Entry &entry = entries[next_++];
        if (entry.kind != Kind::begin) continue;
        for (const HostBlockId *row = table; row->id != 0; ++row)
            if (row->id == entry.id) return entry.id;
        skipToBlockEnd();
    }
    return 0;
}

void RecordedState::skipToBlockEnd() {
    for (int open = 1; open > 0 && next_ < entries.size(); ++next_) {
        if (entries[next_].kind == Kind::begin) ++open;
        if (entries[next_].kind == Kind::end) --open;
    }
}

} // namespace velm::plugin
