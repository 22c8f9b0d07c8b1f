// Scene files of LightWave: text whose first line is "LWSC" and whose second line is the version. Reading finds the
// outermost blocks in braces; networks and envelopes are such blocks. Writing preserves every byte that was read, line
// ends included, except those of blocks that were replaced.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct HostEnvelope;

namespace velm::host {

// A block, from the line of its `{` to the end of the line of its `}`.
struct SceneBlock {
    std::string token;            // "Nodal_Block"
    std::string before;           // the line before the block, without blanks around it: "Channel 0"
    std::string owner;            // the line of the item that it belongs to: "LoadObjectLayer 1 10000000 cube.lwo"
    std::size_t at = 0, size = 0; // offset in the file, and size, in bytes
    std::size_t line = 0;         // of its `{`, counted from 1
};

class SceneText {
  public:
    // Parses the file. `name` is for errors. Throws InputError with the line when the file is not a scene file or its
    // braces do not match.
    SceneText(std::string_view bytes, std::string name);
    SceneText(std::span<const std::byte> bytes, std::string name);

    const std::string &name() const { return name_; }
    int version() const { return version_; }
    const std::vector<SceneBlock> &blocks() const { return blocks_; }
    std::string_view text(const SceneBlock &block) const {
        return std::string_view(bytes_).substr(block.at, block.size);
    }

    // The indices of the blocks with that token.
    std::vector<std::size_t> find(std::string_view token) const;

    // Replaces a block, given by its index, by a block in braces whose lines end in "\n", as a text state writes it.
    // The line ends become those of the file.
    void setBlock(std::size_t block, std::string_view text);

    // The file's bytes: exactly those that were read if nothing was set.
    std::string write() const;

  private:
    void readHead();
    void readBlocks();
    bool nextLine(std::size_t &at, std::string_view &line) const;
    [[noreturn]] void fail(std::size_t line, const std::string &what) const;

    std::string name_, bytes_;
    int version_ = 0;
    std::size_t bodyAt_ = 0;
    bool carriageReturns_ = false;
    std::vector<SceneBlock> blocks_;
    std::map<std::size_t, std::string> set_;
};

// The envelope in a block "Envelope"; never null. Throws InputError with the line when the block is damaged.
std::unique_ptr<HostEnvelope> readEnvelope(const SceneText &scene, const SceneBlock &block);

} // namespace velm::host
