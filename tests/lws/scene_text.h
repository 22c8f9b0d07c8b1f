// Small LightWave scenes for tests.
#pragma once

#include "host/base/error.h"
#include "host/lws/scene_record.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace velm::host::test {

inline lws::Scene readLws(int version, const std::string &text) {
    return lws::readScene("LWSC\n" + std::to_string(version) + "\n" + text, "a.lws");
}

// The error of a scene's lines after the head, which begin with line 3; empty when there is none.
inline std::string errorOf(int version, const std::string &text) {
    try {
        readLws(version, text);
        return {};
    } catch (const InputError &error) {
        return error.what();
    }
}

// The losses as "line: message".
inline std::vector<std::string> lossesOf(const lws::Scene &scene) {
    std::vector<std::string> texts;
    for (const auto &loss : scene.losses.texts()) texts.push_back(std::to_string(loss.line) + ": " + loss.message);
    return texts;
}

// A block `{ Envelope` with those lines of keys.
inline std::string envelope(const std::string &keys, const std::string &behaviours = "1 1") {
    return "{ Envelope\n  1\n" + keys + "  Behaviors " + behaviours + "\n}\n";
}

} // namespace velm::host::test
