#include "host/scene/format/connection.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

const NodeNameSet kNodes({"Clay", "AO", "AO.2", "My Node"});

struct Good {
    const char *text, *fromNode, *output, *toNode, *input;
};

class GoodConnection : public testing::TestWithParam<Good> {};

TEST_P(GoodConnection, IsParsed) {
    const Good &good = GetParam();
    const SourceLocation location{.file = "f.json", .line = 4};
    const ConnectionDescription connection = parseConnection(good.text, kNodes, surfaceRoot("Clay"), location);
    EXPECT_EQ(connection.fromNode, good.fromNode);
    EXPECT_EQ(connection.output, good.output);
    EXPECT_EQ(connection.toNode, good.toNode);
    EXPECT_EQ(connection.input, good.input);
    EXPECT_EQ(connection.location.text(), "f.json:4");
}

INSTANTIATE_TEST_SUITE_P(All, GoodConnection,
                         testing::Values(Good{"AO.Color -> Clay.Color", "AO", "Color", "Clay", "Color"},
                                         Good{"AO.Color->Clay.Color", "AO", "Color", "Clay", "Color"},
                                         Good{"  My Node.An Output  ->  Clay.Refraction Index ", "My Node", "An Output",
                                              "Clay", "Refraction Index"},
                                         Good{"AO.2.Color -> Clay.Color", "AO.2", "Color", "Clay", "Color"},
                                         Good{"AO.3.Color -> Clay.Color", "AO", "3.Color", "Clay", "Color"},
                                         Good{"AO.Color -> AO.2.Max. Size", "AO", "Color", "AO.2", "Max. Size"}));

struct Bad {
    const char *text, *message;
};

class BadConnection : public testing::TestWithParam<Bad> {};

TEST_P(BadConnection, IsRefused) {
    try {
        parseConnection(GetParam().text, kNodes, surfaceRoot("Clay"), {.file = "f.json", .line = 4});
        FAIL() << "not refused";
    } catch (const InputError &error) {
        EXPECT_EQ(error.what(), std::string("f.json:4: ") + GetParam().message);
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, BadConnection,
    testing::Values(Bad{"AO.Color",
                        "\"AO.Color\" is not a connection; it must have the form \"Node.Output -> Node.Input\""},
                    Bad{"AO -> Clay.Color", "\"AO\" must be a node's name, a dot, and one of its inputs or outputs"},
                    Bad{"AO. -> Clay.Color", "\"AO.\" names nothing after its dot"},
                    Bad{"AO.Color -> Caly.Color", "there is no node \"Caly\" here, did you mean \"Clay\"?"},
                    Bad{"MyNode.Out -> Clay.Color", "there is no node \"MyNode\" here, did you mean \"My Node\"?"},
                    Bad{"Clay.Color -> AO.Max", "\"Clay\" is the surface itself, which has no outputs"}));

} // namespace
} // namespace velm::host
