// The binary form of saved states: its exact bytes, and reading it back.

#include "tests/state/state_fixture.h"

#include "host/base/error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace velm::host;

namespace {

TEST(BinaryState, WritesEveryKindOfValueBigEndian) {
    Saver saver(kStateBinary);
    saver.i1(-1);
    saver.i2(-2);
    saver.i4(0x01020304);
    saver.u1(0xfe);
    saver.u2(0xabcd);
    saver.u4(0xdeadbeef);
    saver.fp(1.0F);
    saver.dp(-2.0);
    saver.bytes("xyz");
    saver.id(kLeaf);
    EXPECT_EQ(saver.finish(), literal("\xff\xff\xfe\x01\x02\x03\x04\xfe\xab\xcd\xde\xad\xbe\xef\x3f\x80\0\0"
                                      "\xc0\0\0\0\0\0\0\0xyzLEAF"));
}

TEST(BinaryState, WritesSeveralValuesInARow) {
    Saver saver(kStateBinary);
    const short values[] = {1, 2, 3};
    saver.state().writeI2(saver.state().data, values, 3);
    EXPECT_EQ(saver.finish(), literal("\0\1\0\2\0\3"));
}

TEST(BinaryState, PadsStringsToAnEvenLength) {
    const struct {
        const char *text;
        std::string bytes;
    } rows[] = {{"", literal("\0\0")}, {"a", literal("a\0")}, {"ab", literal("ab\0\0")}, {nullptr, literal("\0\0")}};
    for (const auto &row : rows) {
        Saver saver(kStateBinary);
        saver.string(row.text);
        EXPECT_EQ(saver.finish(), row.bytes);
    }
}

TEST(BinaryState, BlocksHaveIdentifierSizeAndPadding) {
    Saver saver(kStateBinary);
    saver.begin(kOuter);
    saver.leaf(kLeaf);
    saver.u1(9);
    saver.end();
    saver.leaf(kInner);
    saver.end();
    EXPECT_EQ(saver.depth(), 1);
    saver.end();
    EXPECT_EQ(saver.finish(), literal("OUTR\0\xeLEAF\0\1\x9\0INNR\0\0"));
}

TEST(BinaryState, ReadsBackEverything) {
    Saver saver(kStateBinary);
    saveEverything(saver);
    Loader loader(kStateBinary, saver.finish());
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
    ASSERT_EQ(loader.find(), kInner.id);
    EXPECT_EQ(loader.depth(), 2);
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

TEST(BinaryState, FloatsKeepEveryBit) {
    const float floats[] = {0.0F, -0.0F, 1e-45F, std::numeric_limits<float>::max(),
                            std::numeric_limits<float>::infinity()};
    for (const float value : floats) {
        Saver saver(kStateBinary);
        saver.fp(value);
        saver.dp(value);
        Loader loader(kStateBinary, saver.finish());
        const float read = loader.fp();
        EXPECT_EQ(read, value);
        EXPECT_EQ(std::signbit(read), std::signbit(value));
        EXPECT_EQ(loader.dp(), static_cast<double>(value));
    }
}

TEST(BinaryState, ABlockHoldsAtMost65535Bytes) {
    for (const std::size_t size : {std::size_t{65535}, std::size_t{65536}}) {
        Saver saver(kStateBinary);
        saver.begin(kOuter);
        saver.bytes(std::string(size, 'x'));
        saver.end();
        if (size > 65535) {
            EXPECT_THROW(saver.finish(), InputError);
            continue;
        }
        const std::string bytes = saver.finish();
        EXPECT_EQ(bytes.size(), 6 + size + 1);
        EXPECT_EQ(bytes.substr(0, 6), literal("OUTR\xff\xff"));
    }
}

TEST(BinaryState, NamesTheBlockThatIsTooLarge) {
    Saver saver(kStateBinary);
    saver.begin(kOuter);
    for (int i = 0; i < 2; ++i) {
        saver.begin(kInner);
        saver.bytes(std::string(40000, 'x'));
        saver.end();
    }
    saver.end();
    try {
        saver.finish();
        FAIL();
    } catch (const InputError &error) {
        EXPECT_STREQ(error.what(), "the block OUTR has 80012 bytes; the binary form holds at most 65535");
    }
}

TEST(BinaryState, RefusesOpenAndStrayBlocks) {
    Saver open(kStateBinary);
    open.begin(kOuter);
    EXPECT_THROW(open.finish(), InputError);
    Saver stray(kStateBinary);
    stray.end();
    EXPECT_THROW(stray.finish(), InputError);
    Saver nameless(kStateBinary);
    nameless.state().beginBlock(nameless.state().data, nullptr, 0);
    nameless.end();
    EXPECT_THROW(nameless.finish(), InputError);
}

TEST(BinaryState, FindsBlocksPastUnreadValuesAndUnknownBlocks) {
    Saver saver(kStateBinary);
    saver.i2(1);
    saver.string("Store Material"); // could be a block's identifier, but the size that follows would be wrong
    saver.leaf(kForeign);
    saver.leaf(kLeaf); // inside an unknown block
    saver.end();
    saver.end();
    saver.leaf(kLeaf);
    saver.i2(5);
    saver.end();
    Loader loader(kStateBinary, saver.finish());
    ASSERT_EQ(loader.find(), kLeaf.id);
    EXPECT_EQ(loader.i2(), 5);
    loader.end();
    EXPECT_EQ(loader.find(), 0U);
    EXPECT_FALSE(loader.failed()) << loader.error();
}

TEST(BinaryState, DoesNotMoveIfNoBlockIsFound) {
    Saver saver(kStateBinary);
    saver.i2(1);
    saver.i2(2);
    Loader loader(kStateBinary, saver.finish());
    EXPECT_EQ(loader.i2(), 1);
    EXPECT_EQ(loader.find(), 0U);
    EXPECT_EQ(loader.i2(), 2);
}

TEST(BinaryState, EndingABlockSkipsTheRest) {
    Saver saver(kStateBinary);
    saver.leaf(kLeaf);
    saver.bytes("odd");
    saver.end();
    saver.i2(5);
    Loader loader(kStateBinary, saver.finish());
    ASSERT_EQ(loader.find(), kLeaf.id);
    EXPECT_EQ(loader.u1(), 'o');
    loader.end();
    EXPECT_EQ(loader.i2(), 5) << "and its padding";
}

TEST(BinaryState, StringsAreCutToTheBuffer) {
    Saver saver(kStateBinary);
    saver.string("abcdef");
    saver.i2(3);
    Loader loader(kStateBinary, saver.finish());
    EXPECT_EQ(loader.string(4), "abc");
    EXPECT_EQ(loader.i2(), 3) << "the rest of the string is skipped";
}

TEST(BinaryState, IdentifiersAreReadByTable) {
    Saver saver(kStateBinary);
    saver.id(kLeaf);
    saver.id(kForeign);
    Loader loader(kStateBinary, saver.finish());
    EXPECT_EQ(loader.id(), kLeaf.id);
    EXPECT_EQ(loader.id(), 0U);
    EXPECT_EQ(loader.bytes(4), "FORE") << "an unknown identifier is not consumed";
}

TEST(BinaryState, ReadsOnlyWhatFitsTheBlock) {
    Saver saver(kStateBinary);
    saver.leaf(kLeaf);
    saver.i2(1);
    saver.i2(2);
    saver.end();
    saver.i2(3);
    Loader loader(kStateBinary, saver.finish());
    ASSERT_EQ(loader.find(), kLeaf.id);
    short values[4] = {};
    EXPECT_EQ(loader.state().readI2(loader.state().data, values, 4), 2);
    EXPECT_EQ(values[1], 2);
    EXPECT_FALSE(loader.failed());
}

TEST(BinaryState, IgnoresNullArguments) {
    Saver saver(kStateBinary);
    saver.state().writeI2(saver.state().data, nullptr, 1);
    saver.state().writeId(saver.state().data, nullptr);
    saver.i2(1);
    Loader loader(kStateBinary, saver.finish());
    const HostLoadState &state = loader.state();
    EXPECT_EQ(state.readI2(state.data, nullptr, 1), 0);
    EXPECT_EQ(state.readString(state.data, nullptr, 5), 0);
    EXPECT_EQ(state.readId(state.data, nullptr), 0U);
    EXPECT_EQ(state.findBlock(state.data, nullptr), 0U);
    state.endBlock(state.data);
    EXPECT_EQ(loader.i2(), 1);
}

} // namespace
