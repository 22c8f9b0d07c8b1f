#include "host/cli/wrapped_text.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace velm::host {
namespace {

std::string wrapped(const std::string &text, std::size_t indent) {
    std::ostringstream out;
    printWrapped(text, indent, out);
    return out.str();
}

TEST(WrappedText, IndentsOneLine) {
    EXPECT_EQ(wrapped("Nothing to wrap.", 4), "    Nothing to wrap.\n");
    EXPECT_EQ(wrapped("Nothing to wrap.", 0), "Nothing to wrap.\n");
}

TEST(WrappedText, PrintsNothingForAnEmptyText) { EXPECT_EQ(wrapped("", 4), ""); }

TEST(WrappedText, FillsEightyCharactersWithTheIndent) {
    const std::string half(38, 'a'), rest(37, 'b');
    EXPECT_EQ(wrapped(half + ' ' + rest, 4), "    " + half + ' ' + rest + '\n');
    EXPECT_EQ(wrapped(half + ' ' + rest + 'b', 4), "    " + half + "\n    " + rest + "b\n");
}

TEST(WrappedText, KeepsALongWordInOnePiece) {
    const std::string word(100, 'w');
    EXPECT_EQ(wrapped("a " + word + " b", 2), "  a\n  " + word + "\n  b\n");
}

} // namespace
} // namespace velm::host
