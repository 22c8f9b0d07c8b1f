// Names of files in other files.
#include "host/io/named_files.h"

#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

namespace velm::host::test {
namespace {

TEST(NamedFiles, EscapesAreDecoded) {
    EXPECT_EQ(withoutEscapes("my%20wood%2fa%C3%a4.png"), "my wood/a\xc3\xa4.png");
    for (const char *same : {"", "wood.png", "100%", "100%2", "%zz%2z%z2", "%00", "% 1"})
        EXPECT_EQ(withoutEscapes(same), same);
}

TEST(NamedFiles, AreFoundInTheirSpellings) {
    const TemporaryDirectory directory;
    directory.write("my%20wood.png", "");
    directory.write("maps/my wood.png", "");
    const std::string here = directory / "";
    EXPECT_EQ(namedFile(here, "my%20wood.png"), here + "my%20wood.png") << "the name as it is comes first";
    EXPECT_EQ(namedFile(here, "maps/my%20wood.png"), here + "maps/my wood.png");
    EXPECT_EQ(namedFile(here, "maps\\my wood.png"), here + "maps/my wood.png");
    EXPECT_EQ(namedFile(here, "maps%5Cmy%20wood.png"), here + "maps/my wood.png");
    EXPECT_EQ(namedFile(here, "maps\\other%20wood.png"), here + "maps\\other%20wood.png") << "no such file";
}

} // namespace
} // namespace velm::host::test
