// Object files: what reading finds in them, and that writing preserves the rest.
#include "tests/files/test_files.h"

#include "host/base/error.h"
#include "host/files/object_file.h"
#include "host/files/same_network.h"

namespace velm::host::test {
namespace {

TEST(ObjectFile, TellsSurfacesImagesAndNetworks) {
    const ObjectFile file(smallObject(), "small.lwo");
    ASSERT_EQ(file.surfaces().size(), 2U);
    EXPECT_EQ(file.surfaces()[0].name, "Clay");
    EXPECT_EQ(file.surfaces()[1].name, "Plain");
    EXPECT_EQ(file.surfaces()[1].source, "Clay");
    EXPECT_EQ(file.findSurface("Plain"), 1U);
    EXPECT_FALSE(file.findSurface("Glass"));
    ASSERT_EQ(file.images().size(), 1U);
    EXPECT_EQ(file.images()[0].number, 1U);
    EXPECT_EQ(file.images()[0].file, "C:images/wall.jpg");
    EXPECT_FALSE(file.network(1));
    ASSERT_TRUE(file.network(0));
    EXPECT_EQ(file.network(0)->substr(0, 4), "NODS");
    EXPECT_EQ(smallObject().substr(file.networkOffset(0), 4), "NODS");
}

TEST(ObjectFile, TellsASurfacesOwnValues) {

    const std::string half = std::string("\x3f\0\0\0", 4), one = std::string("\x3f\x80\0\0", 4);
    const std::string none = big(0, 2);
    const std::string bytes = objectFile(
        chunk("SURF", cString("A") + cString("") + subChunk("COLR", one + half + half + none) +
                          subChunk("LUMI", half + none) + subChunk("BUMP", half + none) +
                          subChunk("DIFF", one + big(7, 2)) + subChunk("SMAN", one) + subChunk("SIDE", big(3, 2))));
    const SurfaceChunkValues values = ObjectFile(bytes, "a.lwo").values(0);
    EXPECT_EQ(values.colour, (std::array<float, 3>{1, 0.5F, 0.5F}));
    EXPECT_EQ(values.luminosity, 0.5F);
    EXPECT_EQ(values.bump, 0.5F);
    EXPECT_EQ(values.diffuse, 1.0F);
    EXPECT_FALSE(values.specular);
    EXPECT_EQ(values.smoothingAngle, 1.0F);
    EXPECT_EQ(values.sides, 3);
    ASSERT_EQ(values.envelopes.size(), 1U);
    EXPECT_EQ(values.envelopes.at("DIFF"), ComponentEnvelopes{nullptr}) << "the object has no envelope 7";
}

TEST(ObjectFile, ValuesHaveTheirEnvelopes) {
    const std::string one = std::string("\x3f\x80\0\0", 4), longNumber = big(0xff000102, 4);
    const auto envelope = [&](const std::string &number) {
        return chunk("ENVL", number + subChunk("KEY ", one + one));
    };
    const std::string bytes =
        objectFile(chunk("SURF", cString("A") + cString("") + subChunk("COLR", one + one + one + big(3, 2)) +
                                     subChunk("GLOS", one + longNumber)) +
                   envelope(big(3, 2)) + envelope(big(5, 2)) + envelope(longNumber));
    const SurfaceChunkValues values = ObjectFile(bytes, "a.lwo").values(0);
    const ComponentEnvelopes &colour = values.envelopes.at("COLR"), &glossiness = values.envelopes.at("GLOS");
    ASSERT_EQ(colour.size(), 3U);
    EXPECT_EQ(colour[0]->number, 3U);
    EXPECT_FALSE(colour[1]) << "the object has no envelope 4";
    EXPECT_EQ(colour[2]->number, 5U);
    ASSERT_EQ(glossiness.size(), 1U);
    EXPECT_EQ(glossiness[0]->keys, (std::vector<EnvelopeKey>{{.time = 1, .value = 1}}));
}

TEST(ObjectFile, WritesWhatItRead) {
    // What follows the form, an odd byte's worth of padding that is not zero, and a last chunk without its padding.
    std::string bytes = smallObject();
    EXPECT_EQ(ObjectFile(bytes, "a.lwo").write(), bytes);
    bytes += "behind";
    EXPECT_EQ(ObjectFile(bytes, "a.lwo").write(), bytes);
    std::string odd = objectFile("ODD " + big(1, 4) + "xyLAST" + big(3, 4) + "abc");
    EXPECT_EQ(ObjectFile(odd, "a.lwo").write(), odd);
}

TEST(ObjectFile, ANewNetworkChangesItselfAndTheSizesAroundItAlone) {
    const std::string bytes = smallObject(), network = subChunk("NODS", "a new network!");
    ObjectFile file(bytes, "a.lwo");
    const std::string old(*file.network(0));
    file.setNetwork(0, network);
    EXPECT_EQ(file.network(0), network);
    const std::string written = file.write();
    const std::size_t at = file.networkOffset(0);
    EXPECT_EQ(written.substr(at, network.size()), network);
    EXPECT_EQ(written.substr(at + network.size()), bytes.substr(at + old.size()));
    EXPECT_EQ(written.size(), bytes.size() - old.size() + network.size());
    // Back again, it is the old file.
    ObjectFile again(written, "a.lwo");
    again.setNetwork(0, old);
    EXPECT_EQ(again.write(), bytes);
}

TEST(ObjectFile, ASurfaceWithoutANetworkGetsItAtItsEnd) {
    const std::string network = subChunk("NODS", "net");
    ObjectFile file(smallObject(), "a.lwo");
    file.setNetwork(1, network.substr(0, network.size() - 1)); // a block may come without its padding
    const ObjectFile again(file.write(), "a.lwo");
    EXPECT_EQ(again.network(1), network.substr(0, network.size() - 1));
    EXPECT_EQ(again.surfaces()[1].subChunks.size(), 2U);
    EXPECT_EQ(again.surfaces()[1].subChunks[0].id, 0x434f4c52U); // COLR
}

TEST(ObjectFile, AnAddedSurfaceStandsBehindAllOthers) {
    const std::string bytes = smallObject(), network = subChunk("NODS", "net!");
    ObjectFile file(bytes, "a.lwo");
    file.addSurface("New", subChunk("SIDE", big(3, 2)), network);
    const std::string written = file.write();
    EXPECT_EQ(written.substr(8, bytes.size() - 8), bytes.substr(8));
    const ObjectFile again(written, "a.lwo");
    ASSERT_EQ(again.surfaces().size(), 3U);
    EXPECT_EQ(again.surfaces()[2].name, "New");
    EXPECT_EQ(again.values(2).sides, 3);
    EXPECT_EQ(again.network(2), network);
}

TEST(ObjectFile, NetworksAreTheSameInWhicheverOrderTheyAreToldIn) {
    const std::string root = nodeBlocks("Surface", "Surface", ""), rain = nodeBlocks("Weather", "Rain", "wet!");
    const std::string one = connectionBlocks("Rain", "Drops", "Surface", "Color"),
                      two = connectionBlocks("Rain", "Wind", "Surface", "Diffuse");
    const std::string network = networkBlock(root + rain, one + two);
    // Other parts first, and not a word of what is as usual.
    const std::string terse =
        subChunk("NODS", subChunk("NCON", two + one) + subChunk("NVER", big(1, 4)) + subChunk("NNDS", root + rain));
    EXPECT_TRUE(sameNetwork(network, network));
    EXPECT_TRUE(sameNetwork(network, terse));
    EXPECT_FALSE(sameNetwork(network, networkBlock(root + rain, one)));
    EXPECT_FALSE(sameNetwork(networkBlock(root + nodeBlocks("Weather", "Rain", ""), one),
                             networkBlock(root + nodeBlocks("Weather", "Rain", big(0, 4)), one)));
    EXPECT_FALSE(sameNetwork(network, networkBlock(root + nodeBlocks("Weather", "Rain", "dry!"), one + two)));
    EXPECT_FALSE(sameNetwork(network, networkBlock(root + nodeBlocks("Climate", "Rain", "wet!"), one + two)));
    EXPECT_FALSE(
        sameNetwork(network, subChunk("NODS", subChunk("NROT", subChunk("NSTA", big(1, 2))) + terse.substr(6))));
    const std::string damaged = std::string(terse).replace(terse.find("NTAG") + 4, 2, big(0x7000, 2));
    EXPECT_FALSE(sameNetwork(damaged, damaged));
}

TEST(ObjectFile, ANetworkThatIsTooLargeIsRefused) {
    ObjectFile file(smallObject(), "a.lwo");
    file.setNetwork(0, "NODS" + big(0xffff, 2) + std::string(0x10000, 'x'));
    EXPECT_THROW(file.write(), InputError);
}

std::string errorOf(const std::string &bytes) {
    try {
        const ObjectFile file(bytes, "a.lwo");
    } catch (const InputError &error) {
        return error.what();
    }
    return "no error";
}

TEST(ObjectFile, WrongFilesSayWhereTheyAreWrong) {
    const std::pair<std::string, const char *> kRows[] = {
        {"", "a.lwo: byte 0: this is no object file: it does not start with FORM"},
        {"solid cube, and so on", "a.lwo: byte 0: this is no object file: it does not start with FORM"},
        {"FORM" + big(4, 4) + "LWOB", "a.lwo: byte 8: the object file has the form LWOB; only LWO2 is read"},
        {"FORM" + big(100, 4) + "LWO2", "a.lwo: byte 4: the form has 100 bytes where 4 are there"},
        {objectFile("TAGS"), "a.lwo: byte 12: the form ends within the head of a chunk"},
        {objectFile("TAGS" + big(9, 4) + "abcd"), "a.lwo: byte 12: the chunk TAGS has 9 bytes where 4 are left"},
        {objectFile(std::string(8, '\0')), "a.lwo: byte 12: expected a chunk; found 0x00000000"},
        {objectFile(chunk("SURF", "no end")), "a.lwo: byte 20: the name of a surface has no end"},
        {objectFile(chunk("SURF", cString("A"))), "a.lwo: byte 22: the name of a surface's source has no end"},
        {objectFile(chunk("SURF", cString("A") + cString("") + "COLR" + big(8, 2) + "abcd")),
         "a.lwo: byte 24: the sub-chunk COLR has 8 bytes where 4 are left"},
        {objectFile(chunk("CLIP", big(1, 4) + subChunk("STIL", "wall"))),
         "a.lwo: byte 30: the name of an image has no end"},
        {objectFile(chunk("CLIP", "ab")), "a.lwo: byte 20: the clip ends within its number"},
    };
    for (const auto &[bytes, expected] : kRows) EXPECT_EQ(errorOf(bytes), expected);
}

// Each instance of a clip has a copy of the clip's file name.
TEST(ObjectFile, RefusesNamesOfClipsThatTakeTooMuchMemory) {
    const auto withInstances = [](int count) {
        std::string chunks = chunk("CLIP", big(1, 4) + subChunk("STIL", cString(std::string(60000, 'a'))));
        for (int i = 0; i < count; ++i)
            chunks += chunk("CLIP", big(2, 4) + subChunk("XREF", big(1, 4) + cString("an instance")));
        return objectFile(chunks);
    };
    EXPECT_NO_THROW(ObjectFile(withInstances(200), "a.lwo"));
    EXPECT_THROW(ObjectFile(withInstances(300), "a.lwo"), InputError);
}

} // namespace
} // namespace velm::host::test
