// Damaged, truncated and malicious data must give errors that state their position, never a crash or a read beyond the
// data. Builds with sanitizers detect such reads.

#include "tests/state/state_fixture.h"

#include "host/base/error.h"

#include <gtest/gtest.h>

using namespace velm::host;

namespace {

// Reads whatever is there. The data alone determines the calls; `budget` limits their number.
void readAnything(Loader &loader, int budget = 2000) {
    while (budget-- > 0) {
        const unsigned int found = loader.find();
        if (found != 0) {
            loader.i2();
            loader.string(8);
            loader.dp();
            continue;
        }
        loader.u4();
        loader.string();
        loader.fp();
        loader.id();
        loader.bytes(3);
        if (loader.depth() == 0) return;
        loader.end();
    }
}

std::string everything(int mode) {
    Saver saver(mode);
    saveEverything(saver);
    saveEverything(saver);
    return saver.finish();
}

TEST(DamagedState, TruncationAtEveryByteIsDetected) {
    for (const int mode : {kStateBinary, kStateText}) {
        const std::string complete = everything(mode);
        const std::size_t half = complete.size() / 2;
        for (std::size_t size = 0; size < complete.size(); ++size) {
            Loader loader(mode, complete.substr(0, size));
            while (loader.find() != 0) loader.end();
            // Data that ends between two blocks, or before the line break after a closing brace, is valid. A truncated
            // binary block header cannot be distinguished from values.
            const bool between = mode == kStateBinary
                                     ? size % half < 6
                                     : size % half == 0 || size + 1 == complete.size() || size + 1 == half;
            const bool opening = mode == kStateText && size % half < 7; // within "{ Outer", which is not a block yet
            if (between || opening) continue;
            EXPECT_TRUE(loader.failed()) << "form " << mode << ", " << size << " bytes";
        }
    }
}

TEST(ForeignState, GivesNoUnreadContents) {
    const StateReader reader(kStateBinary, "abcd", "saved");
    HostLoadState foreign = *reader.state();
    EXPECT_TRUE(isOfReader(foreign));
    EXPECT_EQ(unreadContents(foreign), "abcd");
    foreign.data = nullptr; // the program that made it may store anything here
    foreign.readI2 = [](void *, short *, int) { return 0; };
    EXPECT_FALSE(isOfReader(foreign));
    EXPECT_EQ(unreadContents(foreign), "");
}

TEST(DamagedState, AnyReadingOfTruncatedDataEnds) {
    for (const int mode : {kStateBinary, kStateText}) {
        const std::string complete = everything(mode);
        for (std::size_t size = 0; size <= complete.size(); ++size) {
            Loader loader(mode, complete.substr(0, size));
            readAnything(loader);
        }
    }
}

TEST(DamagedState, AnyReadingOfChangedDataEnds) {
    for (const int mode : {kStateBinary, kStateText}) {
        const std::string complete = everything(mode);
        for (std::size_t at = 0; at < complete.size(); ++at) {
            for (const int change : {0x00, 0x01, 0x22, 0x0a, 0x7b, 0x7d, 0x5c, 0xff}) {
                std::string bytes = complete;
                bytes[at] = static_cast<char>(change);
                Loader loader(mode, bytes);
                readAnything(loader);
            }
        }
    }
}

TEST(DamagedState, BinaryErrorsStateTheByte) {
    Loader large(kStateBinary, literal("\0\1LEAF\0\x9xxxx"));
    EXPECT_EQ(large.i2(), 1);
    EXPECT_EQ(large.find(), 0U);
    EXPECT_EQ(large.error(), "data: byte 2: the block LEAF has 9 bytes where 4 are left");
    Loader half(kStateBinary, literal("LEAF\0\3\0\1\2\0"));
    half.find();
    EXPECT_EQ(half.i4(), Loader::kNone);
    EXPECT_EQ(half.error(), "data: byte 6: the block ends within a value of 4 bytes");
    Loader endless(kStateBinary, "abc");
    EXPECT_EQ(endless.string(), "");
    EXPECT_EQ(endless.error(), "data: byte 0: the string has no end");
    Loader leaving(kStateBinary, literal("LEAF\0\3abcd\0"));
    leaving.find();
    EXPECT_EQ(leaving.string(), "") << "the string would end outside its block";
    EXPECT_EQ(leaving.error(), "data: byte 6: the string has no end");
    Loader inner(kStateBinary, literal("OUTR\0\x8LEAF\0\x9xx"));
    inner.find();
    EXPECT_EQ(inner.find(), 0U) << "a block may not leave the one around it";
    EXPECT_TRUE(inner.failed());
}

TEST(DamagedState, TextErrorsStateTheLine) {
    const struct {
        const char *text;
        const char *error;
    } rows[] = {{"1\n2\nx1\n{ Outer\n", "data:5: the block Outer is not closed"},
                {"{ Outer\n  }x\n}\n", "data:3: a \"}\" closes nothing"},
                {"{ Foreign\n  Leaf 1\n", "data:3: a block is not closed: a \"}\" is missing"},
                {"}\n", "data:1: a \"}\" closes nothing"}};
    for (const auto &row : rows) {
        Loader loader(kStateText, row.text);
        while (loader.find() != 0) {
            while (loader.find() != 0) loader.end();
            loader.end();
        }
        EXPECT_EQ(loader.error(), row.error) << row.text;
    }
}

TEST(DamagedState, InvalidWordsAreSkipped) {
    Loader loader(kStateText, "1\n2.5\n3\n\"x\"\n4\n7z\n5\n99999999999999999999\n6\n\"endless\n7\n");
    EXPECT_EQ(loader.i4(), 1);
    EXPECT_EQ(loader.i4(), Loader::kNone);
    EXPECT_EQ(loader.error(), "data:2: expected a whole number");
    EXPECT_EQ(loader.i4(), 3);
    EXPECT_EQ(loader.i4(), Loader::kNone);
    EXPECT_EQ(loader.i4(), 4);
    EXPECT_EQ(loader.i4(), Loader::kNone);
    EXPECT_EQ(loader.i4(), 5);
    EXPECT_EQ(loader.i4(), Loader::kNone);
    EXPECT_EQ(loader.string(), "") << "a number is no string";
    EXPECT_EQ(loader.string(), "");
    EXPECT_EQ(loader.i4(), 7);
    EXPECT_EQ(loader.error(), "data:2: expected a whole number") << "the first error is kept";
}

TEST(DamagedState, DeepNestingIsSkippedWithoutRecursion) {
    const int depth = 100000;
    std::string text = "{ Outer\n";
    for (int i = 0; i < depth; ++i) text += "{ Foreign\n";
    for (int i = 0; i < depth; ++i) text += "}\n";
    text += "  Leaf 5\n}\n";
    Loader loader(kStateText, text);
    ASSERT_EQ(loader.find(), kOuter.id);
    ASSERT_EQ(loader.find(), kLeaf.id);
    EXPECT_EQ(loader.i2(), 5);
    EXPECT_FALSE(loader.failed());
}

TEST(DamagedState, NestingDepthIsLimited) {
    std::string text, bytes;
    for (int i = 0; i < 5000; ++i) {
        text += "{ Outer\n";
        bytes += literal("OUTR\x75\x30");
    }
    bytes.resize(5000 * 6 + 40000);
    for (const auto &[mode, data] : {std::pair(kStateText, text), std::pair(kStateBinary, bytes)}) {
        Loader loader(mode, data);
        int entered = 0;
        while (loader.find() != 0) ++entered;
        EXPECT_LE(entered, kMaxBlockDepth);
        EXPECT_TRUE(loader.failed());
    }
    for (const int mode : {kStateBinary, kStateText}) {
        for (const int depth : {kMaxBlockDepth, kMaxBlockDepth + 1}) {
            Saver saver(mode);
            for (int i = 0; i < depth; ++i) saver.begin(kOuter);
            for (int i = 0; i < depth; ++i) saver.end();
            if (depth > kMaxBlockDepth) {
                EXPECT_THROW(saver.finish(), InputError);
            } else
                EXPECT_NO_THROW(saver.finish());
        }
    }
}

} // namespace
