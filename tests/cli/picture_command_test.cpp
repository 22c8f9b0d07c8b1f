// The command line that the headers of pictures have.
#include "host/cli/picture_command.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velm::host {
namespace {

std::string commandOf(const std::vector<std::string> &words) { return pictureCommand(words); }

TEST(PictureCommand, KeepsWhatChangesThePicture) {
    EXPECT_EQ(commandOf({"render", "a.json", "--samples", "4", "--seed=7", "--part", "1/3", "--lock-noise"}),
              "velm render a.json --samples 4 --seed=7 --part 1/3 --lock-noise");
}

TEST(PictureCommand, KeepsTheOutputThatIsBaked) {
    EXPECT_EQ(commandOf({"bake", "a.json", "--output", "AO.Color", "-o", "b.exr", "--output=lit"}),
              "velm bake a.json --output AO.Color --output=lit");
}

TEST(PictureCommand, LeavesOutWhatDoesNot) {
    for (const std::vector<std::string> &silent : std::vector<std::vector<std::string>>{{"--threads", "4"},
                                                                                        {"--threads=4"},
                                                                                        {"-o", "b.exr"},
                                                                                        {"-ob.exr"},
                                                                                        {"--output=b.exr"},
                                                                                        {"--quiet"},
                                                                                        {"--progress", "none"},
                                                                                        {"--log", "l"},
                                                                                        {"--time-limit", "5"},
                                                                                        {"--read-memory", "9"},
                                                                                        {"--strict"}}) {
        std::vector<std::string> words{"render"};
        words.insert(words.end(), silent.begin(), silent.end());
        words.emplace_back("a.json");
        EXPECT_EQ(commandOf(words), "velm render a.json") << silent.front();
    }
}

TEST(PictureCommand, TakesNoOptionForTheBeginningOfAnother) {
    EXPECT_EQ(commandOf({"render", "--order", "classic", "a.json"}), "velm render --order classic a.json");
    EXPECT_EQ(commandOf({"render", "--quiet-night", "a.json"}), "velm render --quiet-night a.json");
}

} // namespace
} // namespace velm::host
