// Warnings: their texts, policies and summary.
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

TEST(Warnings, StateLocationPathAndMessage) {
    Warning warning = noSky();
    EXPECT_EQ(warning.text(), "scene.json:12: images.Sky.file: there is no file");
    warning.path.clear();
    EXPECT_EQ(warning.text(), "scene.json:12: there is no file");
    warning.location = {};
    EXPECT_EQ(warning.text(), "there is no file");
    warning.path = "images";
    EXPECT_EQ(warning.text(), "images: there is no file");
}

TEST(Warnings, QuotePathElementsThatAreNotPlainWords) {
    EXPECT_EQ(pathTo("", "images"), "images");
    EXPECT_EQ(pathTo("images", "Sky-2_b"), "images.Sky-2_b");
    EXPECT_EQ(pathTo("nodes", "Pixel Image (1)"), "nodes.\"Pixel Image (1)\"");
    EXPECT_EQ(pathTo("nodes", "a.b"), "nodes.\"a.b\"");
    EXPECT_EQ(pathTo("nodes", ""), "nodes.\"\"");
}

TEST(Warnings, AreReportedOnceEachInOrder) {
    std::vector<std::string> reported;
    Warnings warnings(Warnings::Policy::goOn, [&](const Warning &warning) { reported.push_back(warning.text()); });
    EXPECT_EQ(warnings.summary(), "");
    warnings.add(noSky(12));
    warnings.add(noSky(30));
    warnings.add(noSky(12));
    EXPECT_EQ(reported, (std::vector<std::string>{noSky(12).text(), noSky(30).text()}));
    EXPECT_EQ(warnings.all().size(), 2u);
}

TEST(Warnings, AreSummarisedByTheirBriefTexts) {
    Warnings warnings(Warnings::Policy::goOn);
    warnings.add(noSky(12));
    warnings.add(noSky(30));
    EXPECT_EQ(warnings.summary(), "1 warning: no image \"Sky\"");
    Warning wood = noSky();
    wood.brief = "no image \"Wood\"";
    wood.message = "it is damaged";
    warnings.add(wood);
    EXPECT_EQ(warnings.summary(), "2 warnings: no image \"Sky\"; no image \"Wood\"");
    for (int i = 0; i < 10000; ++i) {
        const std::string what = "no image " + std::to_string(i);
        warnings.add({.location = {}, .path = {}, .brief = what, .message = what});
    }
    EXPECT_TRUE(warnings.summary().starts_with("10002 warnings: no image \"Sky\"; ")) << warnings.summary();
    EXPECT_TRUE(warnings.summary().ends_with("; no image 17; and 9982 more")) << warnings.summary();
}

TEST(Warnings, AreErrorsUnderTheStrictPolicy) {
    bool reported = false;
    Warnings warnings(Warnings::Policy::strict, [&](const Warning &) { reported = true; });
    try {
        warnings.add(noSky());
        FAIL() << "no exception was thrown";
    } catch (const InputError &error) {
        EXPECT_EQ(std::string(error.what()), noSky().text());
    }
    EXPECT_FALSE(reported);
    EXPECT_TRUE(warnings.all().empty());
}

} // namespace
} // namespace velm::host
