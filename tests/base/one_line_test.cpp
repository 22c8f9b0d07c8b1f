#include "host/base/error.h"
#include "host/base/one_line.h"
#include "host/base/warnings.h"

#include <gtest/gtest.h>

using namespace velm::host;
using namespace std::string_literals;

namespace {

TEST(OneLine, EscapesControlCharacters) {
    EXPECT_EQ(onOneLine("a\nb\r\tc"), "a\\nb\\r\\tc");
    EXPECT_EQ(onOneLine("\x1b[31m\x7f\0end"s), "\\x1b[31m\\x7f\\x00end");
    EXPECT_EQ(onOneLine("\xc2\x9b"
                        "31m"),
              "\\xc2\\x9b31m")
        << "U+009B starts a control sequence of terminals, too";
}

TEST(OneLine, LeavesOtherTextUnchanged) {
    for (const std::string text :
         {"", "plain ~", "\xc3\xbc\xc2\xa0\xe2\x80\xa6", "\xff\xfe", "\xc2", "\x9b", "back\\slash"})
        EXPECT_EQ(onOneLine(text), text);
}

// Writers of JSON escape only the control characters below U+0020.
TEST(OneLine, EscapesTheOtherControlCharactersOfJson) {
    EXPECT_EQ(escapedJson("{\"a\x7f\": \"\xc2\x9b"
                          "31m\"}"),
              "{\"a\\u007f\": \"\\u009b31m\"}");
    for (const std::string text : {"", "{\n  \"a\": 1\n}", "\"\xc3\xbc\xc2\xa0\\u001b\""})
        EXPECT_EQ(escapedJson(text), text);
}

TEST(OneLine, AppliesToErrorsAndWarnings) {
    EXPECT_STREQ(MachineError("no \x1b[2J").what(), "no \\x1b[2J");
    EXPECT_STREQ(ModuleError("server \"\x1b[2J\"").what(), "server \"\\x1b[2J\"");
    EXPECT_STREQ(InputError("no node \"a\0b\n\""s).what(), "no node \"a\\x00b\\n\"");
    EXPECT_STREQ(InputError({.file = "a\nb.json", .line = 3}, "wrong").what(), "a\\nb.json:3: wrong");
    const Warning warning{.location = {.file = "a.json", .line = 1}, .path = "", .brief = "x\ny", .message = "no \x1b"};
    EXPECT_EQ(warning.text(), "a.json:1: no \\x1b");
    Warnings warnings(Warnings::Policy::goOn);
    warnings.add(warning);
    EXPECT_EQ(warnings.summary(), "1 warning: x\\ny");
}

} // namespace
