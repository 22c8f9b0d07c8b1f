// glTF 2.0 files in memory, to be written as one binary file (GLB).
#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// A document with all of its buffers in one, as GLB files have it. Members of the JSON keep their order.
class GltfDocument {
  public:
    // Reads a .gltf or .glb file and the buffers that it names. Throws InputError with the file's name if it is
    // damaged, of another version, or compressed, or if a buffer is missing.
    explicit GltfDocument(const std::string &file);

    const std::string &file() const { return file_; }
    // Reading members that are not there, or have another type, throws json::exception: see guarded.
    nlohmann::ordered_json json;

    // Does work with the JSON, and turns what it throws about a member into an InputError.
    template <class Work>
    auto guarded(const Work &work) const {
        try {
            return work();
        } catch (const nlohmann::json::exception &) {
            fail("its description in JSON is damaged");
        }
    }
    [[noreturn]] void fail(const std::string &what) const;

    // Names of files that the document refers to besides its buffers, as it has them.
    std::vector<std::string> otherFiles() const;

    // The vectors of an accessor, with `size` components of floating-point numbers. InputError for another kind.
    std::vector<float> vectors(std::size_t accessor, std::size_t size) const;
    // The integers of an accessor.
    std::vector<std::size_t> integers(std::size_t accessor) const;
    std::size_t countOf(std::size_t accessor) const;

    // Adds an accessor of vectors of floating-point numbers for the attribute of a vertex, and gives its index.
    std::size_t addVectors(std::span<const float> numbers, std::size_t size);
    // Replaces the numbers of an accessor that addVectors could have made for as many numbers, and that is used once.
    // Returns false, and changes nothing, for any other accessor.
    bool replaceVectors(std::size_t accessor, std::span<const float> numbers, std::size_t size);

    // The bytes of a GLB file.
    std::string bytes() const;

  private:
    // Where the elements of an accessor are in the buffer.
    struct Elements {
        std::size_t first, stride, count;
        int type; // of a component: a code of glTF
    };
    Elements elementsOf(std::size_t accessor, const char *type, std::size_t size) const;
    std::string_view readChunks(std::string_view bytes);
    void joinBuffers();
    std::string bytesOfBuffer(const nlohmann::ordered_json &buffer) const;

    const std::string file_;
    std::string buffer_;
    std::string otherChunks_; // of a GLB file
};

} // namespace velm::host
