#include "host/io/embedded_images.h"

#include "host/base/error.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

namespace velm::host::test {
namespace {

class EmbeddedImages : public testing::Test {
  protected:
    // The images of a text file with these members.
    std::vector<std::string> read(const std::string &members) {
        return readEmbeddedImages(directory_.write("a.gltf", "{" + members + "}"));
    }

    TemporaryDirectory directory_;
};

TEST_F(EmbeddedImages, HaveNames) {
    const auto image = embeddedImage(embeddedName("a#image/b.glb", 12));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->file, "a#image/b.glb");
    EXPECT_EQ(image->index, 12U);
    for (const char *name : {"a.glb", "a.glb#image/", "a.glb#image/x", "a.glb#image/1x", "a.glb#image/-1", "#image/1",
                             "a.glb#image/99999999999999999999"})
        EXPECT_FALSE(embeddedImage(name)) << name;
}

TEST_F(EmbeddedImages, AreNotOpenedIfAFileHasExactlyTheirName) {
    const std::string name = directory_ / "a.glb#image/0";
    EXPECT_EQ(fileToOpen(name), directory_ / "a.glb");
    directory_.write("a.glb#image/0", "");
    EXPECT_EQ(fileToOpen(name), name);
}

TEST_F(EmbeddedImages, AreInUrisAndBuffers) {
    directory_.write("b.bin", "0123456789");
    const std::string members = R"("buffers": [{"uri": "b.bin"}, {"uri": "data:;base64,aGVsbG8="}],
        "bufferViews": [{"buffer": 0, "byteOffset": 2, "byteLength": 3}, {"buffer": 1, "byteLength": 5}],
        "images": [{"uri": "data:image/png;base64,Zm9vYg=="}, {"uri": "a.png"}, {"bufferView": 0}, {"bufferView": 1}])";
    const std::vector<std::string> expected = {"foob", "", "234", "hello"};
    EXPECT_EQ(read(members), expected);
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(readEmbeddedImage({.file = directory_ / "a.gltf", .index = i}), expected[i]);
    EXPECT_EQ(readEmbeddedImage({.file = directory_ / "a.gltf", .index = expected.size()}), "");
}

TEST_F(EmbeddedImages, MayHaveNamesInsteadOfNumbers) {
    const std::string image = R"({"uri": "data:image/png;base64,Zm9vYg=="})";
    EXPECT_EQ(read(R"("images": {"Paper": )" + image + '}'), std::vector<std::string>{"foob"});
    EXPECT_EQ(read(R"("images": {"Paper": )" + image + R"(, "Wood": )" + image + '}'), std::vector<std::string>(2))
        << "in an unknown order";
    EXPECT_TRUE(read("").empty());
}

TEST_F(EmbeddedImages, NeedTheFilesOfTheirBuffers) {
    directory_.write("my data.bin", "0123456789");
    const std::string file = directory_.write("a.gltf", R"({"buffers": [{"uri": "my%20data.bin"}, {"uri": "absent.bin"},
        {"uri": "data:;base64,aGVsbG8="}, {}], "bufferViews": [{"buffer": 0, "byteOffset": 2, "byteLength": 3}],
        "images": [{"bufferView": 0}]})");
    EXPECT_EQ(readEmbeddedImage({.file = file, .index = 0}), "234");
    EXPECT_EQ(filesOfEmbeddedImages(file), (std::vector<std::string>{file, directory_ / "my data.bin"}));
    EXPECT_THROW(filesOfEmbeddedImages(directory_.write("b.gltf", "{")), InputError);
}

TEST_F(EmbeddedImages, MustBeInsideOfTheirBuffers) {
    const auto withView = [](const std::string &view) {
        return R"("buffers": [{"uri": "data:;base64,aGVsbG8="}], "images": [{"bufferView": 0}], "bufferViews": [)" +
               view + "]";
    };
    EXPECT_EQ(read(withView(R"({"buffer": 0, "byteOffset": 1, "byteLength": 4})")).at(0), "ello");
    for (const char *view :
         {R"({"buffer": 0, "byteOffset": 2, "byteLength": 4})", R"({"buffer": 0, "byteOffset": 6, "byteLength": 0})",
          R"({"buffer": 0, "byteOffset": -1, "byteLength": 2})", R"({"buffer": 0, "byteLength": -1})",
          R"({"buffer": 1, "byteLength": 1})", R"(7)", ""})
        EXPECT_THROW(read(withView(view)), InputError) << view;
}

} // namespace
} // namespace velm::host::test
