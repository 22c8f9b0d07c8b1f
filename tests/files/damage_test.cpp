// Truncated, changed and invented files give a clear error, or whatever is readable in them, and never a crash.
#include "tests/files/test_files.h"

#include "host/animation/channel.h"
#include "host/base/error.h"
#include "host/files/network_block.h"
#include "host/files/object_file.h"

namespace velm::host::test {
namespace {

// Reads everything in an object file. Gives the error; empty when there is none.
std::string readObject(const std::string &bytes) {
    try {
        const ObjectFile file(bytes, "a.lwo");
        for (std::size_t i = 0; i < file.surfaces().size(); ++i) {
            file.values(i);
            const auto network = file.network(i);
            if (!network) continue;
            Surface surface(file.surfaces()[i].name);
            loadNetwork(surface, *network, file.name(), file.networkOffset(i));
        }
        EXPECT_EQ(file.write(), bytes);
        return "";
    } catch (const InputError &error) {
        return error.what();
    }
}

std::string readScene(const std::string &text) {
    try {
        const SceneText scene(text, "a.lws");
        for (const std::size_t i : scene.find("Nodal_Block")) readNetwork(scene, scene.blocks()[i]);
        for (const std::size_t i : scene.find("Envelope")) readEnvelope(scene, scene.blocks()[i]);
        EXPECT_EQ(scene.write(), text);
        return "";
    } catch (const InputError &error) {
        return error.what();
    }
}

const std::string kScene = "LWSC\n5\nChannel 0\n{ Envelope\n  1\n  Key 1 0 3 0 0 0 0 0 0\n  Behaviors 1 5\n}\n"
                           "{ Nodal_Block\n  { Root\n    Location 0 0\n    Zoom 1\n    Disabled 1\n  }\n  Version 1\n"
                           "  { Nodes\n    Server \"Displacement\"\n    { Tag\n      RealName \"Displacement\"\n"
                           "      Name \"Displacement\"\n      Coordinates 0 0\n      Mode 1\n      { Data\n      }\n"
                           "      Preview \"\"\n      Comment \"\"\n    }\n    Server \"Weather\"\n    { Tag\n"
                           "      RealName \"Weather\"\n      Name \"Rain (1)\"\n      { Data\n        1 \"2\" { 3\n"
                           "        { Drops\n        }\n      }\n    }\n  }\n  { Connections\n"
                           "    NodeName \"Displacement\"\n    InputName \"Height\"\n    InputNodeName \"Rain (1)\"\n"
                           "    InputOutputName \"Drops\"\n  }\n}\n";

TEST(Damage, TheWholeFilesAreRight) {
    EXPECT_EQ(readObject(smallObject()), "");
    EXPECT_EQ(readScene(kScene), "");
}

TEST(Damage, AnObjectCutAnywhereSaysWhere) {
    const std::string bytes = smallObject();
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        const std::string error = readObject(bytes.substr(0, length));
        EXPECT_TRUE(error.starts_with("a.lwo: byte ")) << length << ": " << error;
    }
    // The same, with the size in the file's head corrected.
    for (std::size_t length = 12; length < bytes.size(); ++length) {
        const std::string error = readObject(objectFile(bytes.substr(12, length - 12)));
        EXPECT_TRUE(error.empty() || error.starts_with("a.lwo: byte ")) << length << ": " << error;
    }
}

TEST(Damage, EveryWordOfAnObjectMayHoldAnything) {
    const std::string bytes = smallObject();
    for (std::size_t at = 0; at + 2 <= bytes.size(); ++at) {
        const int old = static_cast<unsigned char>(bytes[at]) * 256 + static_cast<unsigned char>(bytes[at + 1]);
        for (const int word : {0, old + 1, old - 1, 0x7fff, 0x8000, 0xffff}) {
            const std::string error =
                readObject(std::string(bytes).replace(at, 2, big(static_cast<std::size_t>(word & 0xffff), 2)));
            EXPECT_TRUE(error.empty() || error.starts_with("a.lwo: byte ")) << at << ": " << error;
        }
    }
    for (std::size_t at = 0; at + 4 <= bytes.size(); ++at)
        for (const std::size_t word : {0x7fffffffU, 0x80000000U, 0xffffffffU})
            readObject(std::string(bytes).replace(at, 4, big(word, 4)));
}

TEST(Damage, ANetworkSaysWhereInItsFileItIsDamaged) {
    const std::string bytes = smallObject();
    const std::size_t tag = bytes.find("NTAG"), version = bytes.find("NVER"), network = bytes.find("NODS");
    EXPECT_EQ(readObject(std::string(bytes).replace(tag + 4, 2, big(0x7000, 2))),
              "a.lwo: byte " + std::to_string(tag) + ": the block NTAG has 28672 bytes where 174 are left");
    EXPECT_EQ(readObject(std::string(bytes).replace(version + 6, 4, big(2, 4))),
              "a.lwo: byte " + std::to_string(network) +
                  ": surface \"Clay\": the network has version 2 of the format; only version 1 is known");
}

TEST(Damage, ASceneCutAnywhereSaysWhere) {
    for (std::size_t length = 0; length < kScene.size(); ++length) {
        const std::string error = readScene(kScene.substr(0, length));
        EXPECT_TRUE(error.empty() || error.starts_with("a.lws:")) << length << ": " << error;
    }
}

TEST(Damage, EveryCharacterOfASceneMayBeAnother) {
    for (std::size_t at = 0; at < kScene.size(); ++at) {
        for (const char character : {'{', '}', '"', '\n', ' ', '\\', '9', '\0', '\xff'}) {
            std::string text = kScene;
            text[at] = character;
            const std::string error = readScene(text);
            EXPECT_TRUE(error.empty() || error.starts_with("a.lws:")) << at << ": " << error;
        }
    }
}

TEST(Damage, BlocksNestedAThousandDeepAreNoTrouble) {
    constexpr int kDeep = 1000;
    for (const std::string token : {"Nodal_Block", "Nodes", "Tag", "Data", "Other"}) {
        std::string text = "LWSC\n5\n{ Nodal_Block\n  { Nodes\n    Server \"X\"\n    { Tag\n";
        for (int i = 0; i < kDeep; ++i) text += "{ " + token + '\n';
        EXPECT_NE(readScene(text), "");
        for (int i = 0; i < kDeep + 3; ++i) text += "}\n";
        readScene(text);
    }
    for (const std::string id : {"NODS", "NNDS", "NTAG", "NDTA", "NROT", "OTHR"}) {
        std::string blocks;
        for (int i = 0; i < kDeep; ++i) blocks = subChunk(id, blocks);
        const std::string error = readObject(objectFile(chunk(
            "SURF", cString("A") + cString("") + networkBlock(nodeBlocks("Surface", "Surface", "") + blocks, ""))));
        EXPECT_TRUE(error.empty() || error.starts_with("a.lwo: byte ")) << error;
    }
}

TEST(Damage, AHundredMegabytesOfZerosAreRefusedAtOnce) {
    const std::string zeros(100 << 20, '\0');
    const std::string body = zeros.substr(12 + 8);
    EXPECT_EQ(readObject(zeros), "a.lwo: byte 0: this is no object file: it does not start with FORM");
    EXPECT_EQ(readObject(objectFile(body)), "a.lwo: byte 12: expected a chunk; found 0x00000000");
    EXPECT_EQ(readObject(objectFile(chunk("SURF", body))), "a.lwo: byte 24: expected a sub-chunk; found 0x00000000");
    EXPECT_EQ(readScene(zeros), "a.lws:1: this is no scene file: its first line is not LWSC");
    EXPECT_EQ(readScene("LWSC\n5\n{ Nodal_Block\n" + body), "a.lws:3: the block Nodal_Block is not closed");
}

TEST(Damage, ANetworkOfZerosIsEmpty) {
    EXPECT_EQ(
        readObject(objectFile(chunk("SURF", cString("A") + cString("") + subChunk("NODS", std::string(0xfffe, '\0'))))),
        "");
}

} // namespace
} // namespace velm::host::test
