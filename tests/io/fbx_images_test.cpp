// Images inside of FBX files, which these tests write themselves.
#include "host/io/fbx_images.h"

#include "host/base/error.h"
#include "host/io/embedded_images.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>

namespace velm::host::test {
namespace {

std::string little(std::uint64_t value, std::size_t size) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(value >> 8 * i & 0xff);
    return bytes;
}

// Writes nodes of binary files. A node begins with the offset of its end, which is filled in once it is known.
class BinaryWriter {
  public:
    explicit BinaryWriter(std::uint64_t version) : width_(version >= 7500 ? 8 : 4) {
        bytes = "Kaydara FBX Binary  " + std::string("\0\x1a\0", 3) + little(version, 4);
    }

    template <class Inside>
    void node(const std::string &name, const std::string &properties, Inside inside) {
        const std::size_t start = bytes.size();
        bytes += std::string(width_, '\0') + little(1, width_) + little(properties.size(), width_) +
                 static_cast<char>(name.size()) + name + properties;
        inside();
        bytes.replace(start, width_, little(bytes.size(), width_));
    }
    void leaf(const std::string &name, const std::string &properties) {
        node(name, properties, [] {});
    }
    void endList() { bytes += std::string(3 * width_ + 1, '\0'); }

    std::string bytes;

  private:
    std::size_t width_;
};

std::string raw(const std::string &data) { return "R" + little(data.size(), 4) + data; }

std::string binaryFile(std::uint64_t version) {
    BinaryWriter writer(version);
    writer.leaf("Content", raw("of another node"));
    writer.node("Objects", "", [&] {
        writer.node("Video", "I" + little(7, 4), [&] {
            writer.leaf("Type", "S" + little(4, 4) + "Clip");
            writer.leaf("Content", raw("first"));
            writer.endList();
        });
        writer.node("Video", "", [&] {
            writer.leaf("Content", "S" + little(0, 4));
            writer.leaf("Content", raw(""));
        });
        writer.node("Texture", "", [&] { writer.leaf("Content", raw("of a texture")); });
        writer.node("Video", "", [&] { writer.leaf("Content", raw(std::string("\0second", 7))); });
    });
    writer.endList();
    return writer.bytes;
}

std::vector<std::string> imagesIn(const std::string &bytes) {
    std::vector<std::string> images;
    for (const FbxImage &image : imagesOfFbx(bytes, "a.fbx")) images.push_back(image.bytes());
    return images;
}

TEST(FbxImages, AreInNodesOfBinaryFiles) {
    const std::vector<std::string> expected{"first", std::string("\0second", 7)};
    for (const std::uint64_t version : {7400U, 7500U}) EXPECT_EQ(imagesIn(binaryFile(version)), expected) << version;
}

TEST(FbxImages, DamagedBinaryFilesAreErrors) {
    const std::string whole = binaryFile(7400);
    int refused = 0;
    for (std::size_t size = 20; size < whole.size(); ++size) {
        try {
            EXPECT_LE(imagesIn(whole.substr(0, size)).size(), 2U);
        } catch (const InputError &error) {
            EXPECT_NE(std::string(error.what()).find("a.fbx: cannot read the images inside"), std::string::npos);
            ++refused;
        }
    }
    EXPECT_GT(refused, 100);
    for (std::size_t at = 23; at < whole.size(); ++at) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ 0xff);
        try {
            std::size_t size = 0;
            for (const std::string &image : imagesIn(damaged)) size += image.size();
            EXPECT_LT(size, whole.size()) << "byte " << at;
        } catch (const InputError &error) {
            EXPECT_NE(std::string(error.what()).find("a.fbx: "), std::string::npos) << "byte " << at;
        }
    }
}

TEST(FbxImages, AreInLinesOfTextFiles) {
    const std::string text =
        "; FBX 7.5.0 project file\nFBXHeaderExtension:  {\n}\nObjects:  {\n"
        "\tVideo: 1, \"Video::Content: a\", \"Clip\" {\n\t\tContent: ,\n \"Zmly\",\n\"c3Q=\"\n\t}\n"
        "\tVideo: 2 {\n\t\tContent: ,\n\t}\n\tVideo: 3 {\n\t\tContent: , \"c2Vjb25k\"\n\t}\n}\n";
    EXPECT_TRUE(isFbx(text));
    EXPECT_EQ(imagesIn(text), (std::vector<std::string>{"first", "second"}));
    EXPECT_EQ(imagesIn("Content: \"Zmly"), std::vector<std::string>{}) << "the closing quote is missing";
    const TemporaryDirectory directory;
    const std::string file = directory.write("a.fbx", text);
    EXPECT_EQ(readEmbeddedImages(file), (std::vector<std::string>{"first", "second"}));
    EXPECT_EQ(readEmbeddedImage({.file = file, .index = 1}), "second");
    EXPECT_EQ(readEmbeddedImage({.file = file, .index = 2}), "");
    EXPECT_EQ(filesOfEmbeddedImages(file), std::vector<std::string>{file});
}

TEST(FbxImages, OtherFilesAreNotTakenForFbx) {
    for (const char *other : {"", "{\"asset\": \"FBXHeaderExtension\"}", "glTF FBXHeaderExtension", "Kaydara", "\n {}"})
        EXPECT_FALSE(isFbx(other)) << other;
}

} // namespace
} // namespace velm::host::test
