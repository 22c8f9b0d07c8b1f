// Warnings: their texts, the policies, the summary.
#include "host/base/warnings.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

Warning noSky(int line = 12) {
    return {.location = {.file = "scene.json", .line = line},
            .path = "images.Sky.file",
            .brief = "no image \"Sky\"",
            .message = "there is no file"};
}

TEST(Warnings, TellPlacePathAndMessage) {
    Warning warning = noSky();
    EXPECT_EQ(warning.text(), "scene.json:12: images.Sky.file: there is no file");
    warning.path.clear();
    EXPECT_EQ(warning.text(), "scene.json:12: there is no file");
    warning.location = {};
    EXPECT_EQ(warning.text(), "there is no file");
    warning.path = "images";
    EXPECT_EQ(warning.text(), "images: there is no file");
}

TEST(Warnings, QuoteWhatIsNoPlainWordInAPath) {
    EXPECT_EQ(pathTo("", "images"), "images");
    EXPECT_EQ(pathTo("images", "Sky-2_b"), "images.Sky-2_b");
    EXPECT_EQ(pathTo("nodes", "Pixel Image (1)"), "nodes.\"Pixel Image (1)\"");
    EXPECT_EQ(pathTo("nodes", "a.b"), "nodes.\"a.b\"");
    EXPECT_EQ(pathTo("nodes", ""), "nodes.\"\"");
}

TEST(Warnings, AreToldOnceEachInTheirOrder) {
    std::vector<std::string> told;
    Warnings warnings(Warnings::Policy::goOn, [&](const Warning &warning) { told.push_back(warning.text()); });
    EXPECT_EQ(warnings.summary(), "");
    warnings.add(noSky(12));
    warnings.add(noSky(30));
    warnings.add(noSky(12));
    EXPECT_EQ(told, (std::vector<std::string>{noSky(12).text(), noSky(30).text()}));
    EXPECT_EQ(warnings.all().size(), 2u);
}

TEST(Warnings, AreSummedUpByThings) {
    Warnings warnings(Warnings::Policy::goOn);
    warnings.add(noSky(12));
    warnings.add(noSky(30));
    EXPECT_EQ(warnings.summary(), "1 warning: no image \"Sky\"");
    Warning wood = noSky();
    wood.brief = "no image \"Wood\"";
    wood.message = "it is damaged";
    warnings.add(wood);
    EXPECT_EQ(warnings.summary(), "2 warnings: no image \"Sky\"; no image \"Wood\"");
}

TEST(Warnings, AreErrorsUnderTheStrictPolicy) {
    bool told = false;
    Warnings warnings(Warnings::Policy::strict, [&](const Warning &) { told = true; });
    try {
        warnings.add(noSky());
        FAIL() << "went on";
    } catch (const InputError &error) {
        EXPECT_EQ(std::string(error.what()), noSky().text());
    }
    EXPECT_FALSE(told);
    EXPECT_TRUE(warnings.all().empty());
}

} // namespace
} // namespace velm::host
