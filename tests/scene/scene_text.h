// Reading scene texts in tests.
#pragma once

#include "host/base/error.h"
#include "host/scene/read_scene.h"

#include <filesystem>
#include <fstream>
#include <string>

namespace velm::host::test {

inline SceneDescription read(const std::string &text) { return readSceneText(text, "scene.json", {}); }

// The error message for a text; empty when it can be read.
inline std::string refusal(const std::string &text) {
    try {
        read(text);
    } catch (const InputError &error) {
        return error.what();
    }
    return {};
}

// An HDR image with a header for this size, such as "-Y 1 +X 1", and the data of one pixel of red light.
inline std::string redHdr(const std::string &size) {
    const std::string pixel = {'\x80', '\0', '\0', '\x81'};
    return "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n" + size + "\n" + pixel;
}

// A directory that exists during one test.
class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "velm-test-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("no temporary directory");
        path_ = name;
    }
    ~TemporaryDirectory() { std::filesystem::remove_all(path_); }
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

    std::string file(const std::string &name) const { return (path_ / name).string(); }
    std::string write(const std::string &name, const std::string &text) const {
        std::filesystem::create_directories((path_ / name).parent_path());
        std::ofstream(path_ / name, std::ios::binary) << text;
        return file(name);
    }
    const std::filesystem::path &path() const { return path_; }

  private:
    std::filesystem::path path_;
};

} // namespace velm::host::test
