// The text form of saved states: its exact text, and reading it back.

#include "tests/state/state_fixture.h"

#include "host/base/error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace velm::host;

namespace {

TEST(TextState, WritesReadableText) {
    Saver saver(kStateText);
    saveEverything(saver);
    EXPECT_EQ(saver.finish(), "{ Outer\n"
                              "  -5\n"
                              "  -300\n"
                              "  -70000\n"
                              "  fe\n"
                              "  abcd\n"
                              "  deadbeef\n"
                              "  0.1\n"
                              "  0.1\n"
                              "  \"a \\\"quoted\\\" word\"\n"
                              "  { Inner\n"
                              "    Leaf 7 \"odd\"\n"
                              "    Leaf Of Two Words\n"
                              "  }\n"
                              "  42\n"
                              "}\n");
}

TEST(TextState, ReadsBackEverything) {
    Saver saver(kStateText);
    saveEverything(saver);
    Loader loader(kStateText, saver.finish());
    ASSERT_EQ(loader.find(), kOuter.id);
    EXPECT_EQ(loader.i1(), -5);
    EXPECT_EQ(loader.i2(), -300);
    EXPECT_EQ(loader.i4(), -70000);
    EXPECT_EQ(loader.u1(), 0xfe);
    EXPECT_EQ(loader.u2(), 0xabcd);
    EXPECT_EQ(loader.u4(), 0xdeadbeef);
    EXPECT_EQ(loader.fp(), 0.1F);
    EXPECT_EQ(loader.dp(), 0.1);
    EXPECT_EQ(loader.string(), "a \"quoted\" word");
    EXPECT_EQ(loader.i2(), Loader::kNone) << "a block is next";
    ASSERT_EQ(loader.find(), kInner.id);
    ASSERT_EQ(loader.find(), kLeaf.id);
    EXPECT_EQ(loader.i2(), 7);
    EXPECT_EQ(loader.string(), "odd");
    EXPECT_EQ(loader.i2(), Loader::kNone);
    loader.end();
    ASSERT_EQ(loader.find(), kTwoWords.id);
    EXPECT_EQ(loader.i2(), Loader::kNone);
    loader.end();
    EXPECT_EQ(loader.find(), 0U);
    loader.end();
    EXPECT_EQ(loader.i2(), 42);
    EXPECT_EQ(loader.i2(), Loader::kNone);
    loader.end();
    EXPECT_EQ(loader.depth(), 0);
    EXPECT_FALSE(loader.failed()) << loader.error();
}

TEST(TextState, SeveralValuesOfOneWriteShareALine) {
    Saver saver(kStateText);
    const float values[] = {0.5F, -1.0F, 1e-20F};
    saver.state().writeFP(saver.state().data, values, 3);
    saver.bytes("Az");
    EXPECT_EQ(saver.finish(), "0.5 -1 1e-20\n41 7a\n");
}

TEST(TextState, ALeafThatGetsABlockBecomesABlock) {
    Saver saver(kStateText);
    saver.begin(kOuter);
    saver.leaf(kLeaf);
    saver.i2(1);
    saver.i2(2);
    saver.begin(kInner);
    saver.i2(3);
    saver.end();
    saver.i2(4);
    saver.end();
    saver.leaf(kLeaf);
    saver.leaf(kTwoWords);
    saver.end();
    saver.end();
    saver.end();
    const std::string text = saver.finish();
    EXPECT_EQ(text, "{ Outer\n"
                    "  { Leaf\n"
                    "    1 2\n"
                    "    { Inner\n"
                    "      3\n"
                    "    }\n"
                    "    4\n"
                    "  }\n"
                    "  { Leaf\n"
                    "    Leaf Of Two Words\n"
                    "  }\n"
                    "}\n");
    Loader loader(kStateText, text);
    ASSERT_EQ(loader.find(), kOuter.id);
    ASSERT_EQ(loader.find(), kLeaf.id);
    EXPECT_EQ(loader.i2(), 1);
    EXPECT_EQ(loader.i2(), 2);
    ASSERT_EQ(loader.find(), kInner.id);
    EXPECT_EQ(loader.i2(), 3);
    loader.end();
    EXPECT_EQ(loader.i2(), 4);
}

TEST(TextState, AnyStringReadsBack) {
    std::string all;
    for (int code = 1; code < 256; ++code) all += static_cast<char>(code);
    const std::string strings[] = {
        "",           "plain",           "\"",           "\\",    "\\\"",     "line\nbreak\r\n",
        "\ttab",      "\\n is no break", "end\\",        "\\x41", "\x01\x7f", "Grüße, 世界 🌍",
        "} { Leaf 1", "  blanks  ",      "a\"b\"c \\ d", "\\x4",  all};
    for (const std::string &text : strings) {
        Saver saver(kStateText);
        saver.leaf(kLeaf);
        saver.string(text.c_str());
        saver.i2(1);
        saver.end();
        const std::string written = saver.finish();
        EXPECT_EQ(written.find('\n'), written.size() - 1) << "a string must not break its line: " << written;
        Loader loader(kStateText, written);
        ASSERT_EQ(loader.find(), kLeaf.id);
        EXPECT_EQ(loader.string(1024), text);
        EXPECT_EQ(loader.i2(), 1);
        EXPECT_FALSE(loader.failed()) << loader.error();
    }
}

TEST(TextState, EscapesAreAsDocumented) {
    Saver saver(kStateText);
    saver.string("q\" b\\ n\n r\r t\t e\x1b d\x7f");
    EXPECT_EQ(saver.finish(), "\"q\\\" b\\\\ n\\n r\\r t\\t e\\x1b d\\x7f\"\n");
}

TEST(TextState, UnknownEscapesAreReadAsTheyAre) {
    Loader loader(kStateText, "\"C:\\pictures\\moon\"\n");
    EXPECT_EQ(loader.string(), "C:\\pictures\\moon");
}

TEST(TextState, FloatsReadBackToTheSameBits) {
    const double values[] = {0.0,
                             -0.0,
                             0.1,
                             1.0 / 3,
                             5e-324,
                             std::numeric_limits<double>::max(),
                             1e300,
                             -1e-30,
                             3e10,
                             0.78431,
                             123456789.123456789};
    for (const double value : values) {
        Saver saver(kStateText);
        saver.dp(value);
        saver.fp(static_cast<float>(value));
        Loader loader(kStateText, saver.finish());
        const double read = loader.dp();
        EXPECT_EQ(read, value);
        EXPECT_EQ(std::signbit(read), std::signbit(value));
        EXPECT_EQ(loader.fp(), static_cast<float>(value));
        EXPECT_FALSE(loader.failed()) << loader.error();
    }
    Saver saver(kStateText);
    saver.fp(std::numeric_limits<float>::infinity());
    saver.fp(std::numeric_limits<float>::quiet_NaN());
    Loader loader(kStateText, saver.finish());
    EXPECT_TRUE(std::isinf(loader.fp()));
    EXPECT_TRUE(std::isnan(loader.fp()));
}

TEST(TextState, IntegersKeepTheirLowBits) {
    const struct {
        const char *text;
        int read;
    } rows[] = {{"40000", -25536}, {"70000", 4464}, {"-1", -1}, {"+5", 5}, {"-40000", 25536}};
    for (const auto &row : rows) {
        Loader loader(kStateText, row.text);
        EXPECT_EQ(loader.i2(), row.read) << row.text;
        EXPECT_FALSE(loader.failed());
    }
    EXPECT_EQ(Loader(kStateText, "0x1F").u2(), 0x1f) << "the prefix 0x is accepted";
}

TEST(TextState, AReadEndsWithItsLine) {
    Loader loader(kStateText, "1 2\n3\n");
    short values[3] = {};
    EXPECT_EQ(loader.state().readI2(loader.state().data, values, 3), 2);
    EXPECT_EQ(loader.i2(), 3);
    Loader single(kStateText, "1 2\n3\n");
    EXPECT_EQ(single.i2(), 1);
    EXPECT_EQ(single.i2(), 2) << "the rest of a line can still be read";
    EXPECT_EQ(single.i2(), 3);
}

TEST(TextState, FindsBlocksPastUnreadValuesAndUnknownBlocks) {
    Loader loader(kStateText, "1 2 3\n"
                              "\"Leaf 1\"\n"
                              "\n"
                              "{ Foreign\n"
                              "  Leaf 2\n"
                              "  { Foreign Again\n"
                              "  }\n"
                              "}\n"
                              "Foreign 9\n"
                              "Leafy 8\n"
                              "\tLeaf\t3\r\n"
                              "{ Leaf\r\n"
                              "  4\r\n"
                              "}\r\n");
    EXPECT_EQ(loader.i2(), 1);
    ASSERT_EQ(loader.find(), kLeaf.id);
    EXPECT_EQ(loader.i2(), 3);
    loader.end();
    ASSERT_EQ(loader.find(), kLeaf.id) << "a known block is found in either shape";
    EXPECT_EQ(loader.i2(), 4);
    loader.end();
    EXPECT_EQ(loader.find(), 0U);
    EXPECT_FALSE(loader.failed()) << loader.error();
}

TEST(TextState, DoesNotMoveIfNoBlockIsFound) {
    Loader loader(kStateText, "{ Outer\n  1\n  2\n}\nLeaf 5\n");
    ASSERT_EQ(loader.find(), kOuter.id);
    EXPECT_EQ(loader.i2(), 1);
    EXPECT_EQ(loader.find(), 0U) << "the block after the brace is outside";
    EXPECT_EQ(loader.i2(), 2);
    loader.end();
    EXPECT_EQ(loader.find(), kLeaf.id);
}

TEST(TextState, TheLongestTokenWinsInAnyOrder) {
    const HostBlockId end = {.id = 0, .token = nullptr};
    for (const std::array<HostBlockId, 3> &table :
         {std::array{kLeaf, kTwoWords, end}, std::array{kTwoWords, kLeaf, end}}) {
        Loader loader(kStateText, "Leaf Of Two Words 1\nLeaf Of 2\n");
        const HostLoadState &state = loader.state();
        EXPECT_EQ(state.findBlock(state.data, table.data()), kTwoWords.id);
        EXPECT_EQ(loader.i2(), 1);
        loader.end();
        EXPECT_EQ(state.findBlock(state.data, table.data()), kLeaf.id);
    }
}

TEST(TextState, AnUnreadableTokenIsRefused) {
    for (const char *token : {"", "{", "}x", "\"x", " x", "x ", "x\ny"}) {
        Saver saver(kStateText);
        const HostBlockId id = {.id = 1, .token = token};
        saver.leaf(id);
        saver.end();
        EXPECT_THROW(saver.finish(), InputError) << token;
    }
}

TEST(TextState, IdentifiersAreTokens) {
    Saver saver(kStateText);
    saver.leaf(kOuter);
    saver.id(kLeaf);
    saver.i2(1);
    saver.end();
    const std::string text = saver.finish();
    EXPECT_EQ(text, "Outer Leaf 1\n");
    Loader loader(kStateText, text);
    loader.find();
    EXPECT_EQ(loader.id(), kLeaf.id);
    EXPECT_EQ(loader.i2(), 1);
}

} // namespace
