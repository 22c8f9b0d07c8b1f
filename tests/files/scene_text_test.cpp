// Scene files of LightWave: their blocks, and that writing preserves the rest.
#include "tests/files/test_files.h"

#include "host/animation/channel.h"
#include "host/base/error.h"
#include "host/files/scene_text.h"

namespace velm::host::test {
namespace {

const std::string kScene = "LWSC\n5\n\nFramesPerSecond 30\nLoadObjectLayer 1 10000000 cube.lwo\nNumChannels 1\n"
                           "Channel 0\n{ Envelope\n  2\n  Key 1 0 3 0 0 0 0 0 0\n  Key 3 1 3 0 0 0 0 0 0\n"
                           "  Behaviors 1 5\n}\n{ Nodal_Block\n  { Root\n    Zoom 1\n  }\n}\nAddLight 20000000\n"
                           "{ Nodal_Block\n}\n";

std::string withCarriageReturns(const std::string &text) {
    std::string result;
    for (const char character : text) result += character == '\n' ? "\r\n" : std::string(1, character);
    return result;
}

TEST(SceneText, TellsItsBlocks) {
    const SceneText scene(kScene, "a.lws");
    EXPECT_EQ(scene.version(), 5);
    ASSERT_EQ(scene.blocks().size(), 3U);
    EXPECT_EQ(scene.find("Nodal_Block"), (std::vector<std::size_t>{1, 2}));
    const SceneBlock &envelope = scene.blocks()[0], &first = scene.blocks()[1];
    EXPECT_EQ(envelope.before, "Channel 0");
    EXPECT_EQ(envelope.line, 8U);
    EXPECT_EQ(first.owner, "LoadObjectLayer 1 10000000 cube.lwo");
    EXPECT_EQ(scene.blocks()[2].owner, "AddLight 20000000");
    EXPECT_EQ(scene.text(first), "{ Nodal_Block\n  { Root\n    Zoom 1\n  }\n}\n");
    const auto read = readEnvelope(scene, envelope);
    EXPECT_EQ(read->evaluate(0.5), 2);
    EXPECT_EQ(read->evaluate(2), 5); // goes on in a line
}

TEST(SceneText, WritesWhatItReadWhateverItsLineEnds) {
    for (const std::string &text : {kScene, withCarriageReturns(kScene), kScene.substr(0, kScene.size() - 1)})
        EXPECT_EQ(SceneText(text, "a.lws").write(), text);
}

TEST(SceneText, ANewBlockGetsTheLineEndsOfTheFile) {
    const std::string block = "{ Nodal_Block\n  Version 1\n}\n";
    const std::string old = "{ Nodal_Block\n}\n", before = kScene.substr(0, kScene.size() - old.size());
    SceneText unix(kScene, "a.lws");
    unix.setBlock(2, block);
    EXPECT_EQ(unix.write(), before + block);
    SceneText dos(withCarriageReturns(kScene), "a.lws");
    dos.setBlock(2, block);
    EXPECT_EQ(dos.write(), withCarriageReturns(before + block));
    SceneText endless(kScene.substr(0, kScene.size() - 1), "a.lws");
    endless.setBlock(2, block);
    EXPECT_EQ(endless.write(), before + block.substr(0, block.size() - 1));
}

std::string errorOf(const std::string &text) {
    try {
        const SceneText scene(text, "a.lws");
        for (const std::size_t i : scene.find("Envelope")) readEnvelope(scene, scene.blocks()[i]);
    } catch (const InputError &error) {
        return error.what();
    }
    return "no error";
}

TEST(SceneText, WrongFilesSayWhereTheyAreWrong) {
    const std::pair<std::string, const char *> kRows[] = {
        {"", "a.lws:1: this is no scene file: its first line is not LWSC"},
        {"FORM", "a.lws:1: this is no scene file: its first line is not LWSC"},
        {"LWSC\n", "a.lws:2: the version is missing"},
        {"LWSC\nfive\n", "a.lws:2: expected the version, a whole number"},
        {"LWSC\n5\n}\n", "a.lws:3: a \"}\" closes nothing"},
        {"LWSC\n5\n{ A\n{ B\n}\n", "a.lws:3: the block A is not closed"},
        {"LWSC\n5\nChannel 0\n{ Envelope\n  1\n  Key 0 zero 0\n  Behaviors 1 1\n}\n", "a.lws:6: expected a number"},
        {"LWSC\n5\nChannel 0\n{ Envelope\n  2\n  Key 0 0 0\n}\n", "a.lws:4: an envelope in the file is damaged"},
    };
    for (const auto &[text, expected] : kRows) EXPECT_EQ(errorOf(text), expected) << text;
}

} // namespace
} // namespace velm::host::test
