// Scene files of the big application: text; the first line is "LWSC", the second the version. What is read are the
// blocks in braces that stand in no other block, networks and envelopes among them; what is written back is every byte
// as it was, line ends included, but for the blocks that were given anew.
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

// A block from its `{` to the end of the line with its `}`. `line` is counted from 1.
struct SceneBlock {
    std::string token;  // "Nodal_Block"
    std::string before; // the line before the block, without blanks around it: "Channel 0"
    std::string owner;  // the item that it belongs to, as its line says: "LoadObjectLayer 1 10000000 cube.lwo"
    std::size_t at = 0, size = 0;
    std::size_t line = 0;
};

class SceneText {
  public:
    // Takes the file apart. `name` stands before error texts. Throws InputError with the line when the file is no scene
    // file or its braces do not match.
    SceneText(std::string_view bytes, std::string name);
    SceneText(std::span<const std::byte> bytes, std::string name);

    const std::string &name() const { return name_; }
    int version() const { return version_; }
    const std::vector<SceneBlock> &blocks() const { return blocks_; }
    std::string_view text(const SceneBlock &block) const {
        return std::string_view(bytes_).substr(block.at, block.size);
    }

    // The places of the blocks with that token.
    std::vector<std::size_t> find(std::string_view token) const;

    // Gives a block another text: a block in braces with lines that end in "\n", as a text state writes it. It gets the
    // file's own line ends.
    void setBlock(std::size_t block, std::string_view text);

    // The file: with nothing set, the bytes that were read.
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

// The envelope in a block "Envelope". Throws InputError with the line when it is none.
std::unique_ptr<HostEnvelope> readEnvelope(const SceneText &scene, const SceneBlock &block);

} // namespace velm::host
