// Each mistake that a scene file can have, with its line and its message.
#include "tests/scene/scene_text.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

struct BadScene {
    const char *name;
    std::string text;
    const char *message; // after "scene.json:"
};

// The mistake is on line 2.
std::string withCamera(const std::string &rest) { return "{\"cameras\": {\"Main\": {}},\n" + rest + "}"; }
std::string camera(const std::string &inside) { return "{\"cameras\": {\"Main\": {\n" + inside + "}}}"; }
std::string render(const std::string &inside) { return withCamera("\"render\": {" + inside + "}"); }
std::string light(const std::string &inside) { return withCamera("\"lights\": {\"L\": {" + inside + "}}"); }
std::string object(const std::string &inside) {
    return "{\"cameras\": {\"Main\": {}}, \"surfaces\": {\"Clay\": {}},\n\"objects\": {\"O\": {" + inside + "}}}";
}
std::string surface(const std::string &inside) { return withCamera("\"surfaces\": {\"Clay\": {" + inside + "}}"); }
std::string node(const std::string &inside) {
    return surface("\"nodes\": {\"AO\": {\"server\": \"N\", " + inside + "}}");
}
std::string inside(const std::string &network) { return node("\"network\": {\n" + network + "}"); }
std::string setting(const std::string &value) { return node("\"settings\": {\"Max\": " + value + "}"); }

class BadScenes : public testing::TestWithParam<BadScene> {};

TEST_P(BadScenes, AreRefusedWithTheirLine) {
    EXPECT_EQ(test::refusal(GetParam().text), std::string("scene.json:") + GetParam().message);
}

const BadScene kBadScenes[] = {
    {"NotAnObject", "[]", "1: a scene must be an object in braces; found a list of 0 values"},
    {"NoCameras", "\n{}", "2: a scene needs \"cameras\""},
    {"NullCharacter", withCamera("\"surfaces\": {\"a\\u0000b\": {}}"), "2: a text cannot hold the character \\u0000"},
    {"NullCharacterInAValue", light("\"kind\": \"a\\u0000\""), "2: a text cannot hold the character \\u0000"},
    {"ControlCharacters", withCamera("\"a\\nb\\u001b[31m\": {}"),
     "2: a scene has no key \"a\\nb\\x1b[31m\", there are \"$schema\", \"render\", \"cameras\", \"lights\", "
     "\"backdrop\", \"fog\", \"images\", \"objects\", \"nulls\" and \"surfaces\""},
    {"EmptyCameras", "{\n\"cameras\": {}}", "2: a scene needs at least one camera"},
    {"UnknownKey", withCamera("\"light\": {}"), "2: a scene has no key \"light\", did you mean \"lights\"?"},
    {"AnEmptyRegion", render("\"region\":\n[0, 0.5, 1, 0.5]"),
     "3: \"region\" is empty: its right and bottom edges must lie beyond its left and top"},
    {"AMaskBeyondThePicture", "{\"cameras\": {\"Main\":\n{\"mask\": [0, 0, 1, 1.5]}}}",
     "2: \"mask\" must be a list of four numbers, each from 0 to 1; its fourth is 1.5"},
    {"FogThatEndsBeforeItBegins", withCamera("\"fog\": {\"kind\": \"linear\",\n\"minDistance\": 100}"),
     "3: \"maxDistance\" must be above \"minDistance\""},
    {"ALensOfTwoBlades", "{\"cameras\": {\"Main\":\n{\"blades\": 2}}}",
     "2: a lens has 3 blades or more, or 0 if it is round"},
    {"ASequenceOfOneName",
     withCamera("\"images\": {\"I\": {\"sequence\": {\"first\": 1, \"last\": 2},\n\"file\": \"a.png\"}}"),
     "3: the \"file\" of a sequence needs \"#\" in its name, in place of the number, such as \"fire_####.png\"; found "
     "\"a.png\""},
    {"ASequenceThatEndsBeforeItBegins",
     withCamera("\"images\": {\"I\": {\"file\": \"a#\", \"sequence\": {\"first\": 2, \"last\": 1}}}"),
     "2: \"last\" must not be below \"first\""},
    {"FiltersThatAreNoList", withCamera("\"images\": {\"I\": {\"file\": \"a\", \"filters\": {}}}"),
     "2: \"filters\" must be a list of filters; found an object"},
    {"AFilterWithoutAnAmount", withCamera("\"images\": {\"I\": {\"file\": \"a\", \"filters\": [{\"kind\": \"hue\"}]}}"),
     "2: a filter needs \"amount\""},
    {"ANegativeWithAnAmount",
     withCamera("\"images\": {\"I\": {\"file\": \"a\", \"filters\": [{\"kind\": \"negative\", \"amount\": 1}]}}"),
     "2: \"amount\" does not go with the kind \"negative\""},
    {"ASequenceWithoutAnEnd", withCamera("\"images\": {\"I\": {\"file\": \"a#\", \"sequence\": {\"first\": 2}}}"),
     "2: \"sequence\" needs \"last\""},
    {"RepeatedKey", withCamera("\"cameras\": {}"), "2: \"cameras\" occurs twice; first on line 1"},

    {"WidthText", render("\"width\": \"640\""), "2: \"width\" must be a whole number from 1 to 32768; found \"640\""},
    {"WidthZero", render("\"width\": 0"), "2: \"width\" must be a whole number from 1 to 32768; found 0"},
    {"WidthFraction", render("\"width\": 1.5"), "2: \"width\" must be a whole number from 1 to 32768; found 1.5"},
    {"WidthHuge", render("\"width\": 1e300"), "2: \"width\" must be a whole number from 1 to 32768; found 1e+300"},
    {"NegativeRate", render("\"framesPerSecond\": -1"), "2: \"framesPerSecond\" must be a number above 0; found -1"},
    {"NegativeAmbient", render("\"ambientIntensity\": -1"),
     "2: \"ambientIntensity\" must be a number of at least 0; found -1"},
    {"FramesBackwards", render("\"firstFrame\": 5, \"lastFrame\": 4"),
     "2: the last frame, 4, comes before the first one, 5"},
    {"FirstFrameAlone", render("\"firstFrame\": 5"), "2: the last frame, 1, comes before the first one, 5"},
    {"UnknownCamera", render("\"camera\": \"Mian\""), "2: there is no camera \"Mian\", did you mean \"Main\"?"},
    {"AmericanColour", render("\"ambientColor\": [1, 1, 1]"),
     "2: \"render\" has no key \"ambientColor\", did you mean \"ambientColour\"?"},

    {"PositionOfTwo", camera("\"position\": [1, 2]"),
     "2: \"position\" must be a list of three numbers; found a list of 2 values"},
    {"PositionWithText", camera("\"position\": [1,\n\"2\", 3]"),
     "3: \"position\" must be a list of three numbers; its second is \"2\""},
    {"WideView", camera("\"fieldOfView\": 180"),
     "2: \"fieldOfView\" must be a number above 0 and below 180; found 180"},
    {"TargetAndRotation", camera("\"target\": [0, 0, 0], \"rotation\": [0, 0, 0]"),
     "2: a camera that has a \"target\" cannot have a \"rotation\" too"},
    {"CameraInTarget", camera("\"target\": [0, 0, -5]"), "2: the position of the camera is its target"},
    {"EmptyName", "{\"cameras\": {\n\"\": {}}}", "2: a camera has an empty name"},
    {"NameWithBlank", "{\"cameras\": {\n\"Main \": {}}}", "2: the name \"Main \" starts or ends with a blank"},
    {"NameWithArrow", surface("\"nodes\": {\"a->b\": {}}"),
     "2: the name \"a->b\" contains \"->\", which separates the ends of connections"},

    {"LightWithoutKind", light("\"position\": [0, 1, 0]"), "2: a light needs \"kind\""},
    {"LightOfNoKind", light("\"kind\": \"laser\""),
     "2: \"kind\" must be one of \"point\", \"distant\", \"area\", \"spot\", \"linear\", \"dome\"; found \"laser\""},
    {"ConeOfAPoint", light("\"kind\": \"point\", \"position\": [0, 1, 0], \"cone\": 20"),
     "2: \"cone\" does not go with the kind \"point\""},
    {"FalloffOfTheSun", light("\"kind\": \"distant\", \"position\": [0, 1, 0], \"falloff\": \"none\""),
     "2: \"falloff\" does not go with the kind \"distant\""},
    {"NoFalloff", light("\"kind\": \"spot\", \"position\": [0, 1, 0], \"falloff\": \"cubic\""),
     "2: \"falloff\" must be one of \"none\", \"linear\", \"inverseDistance\", \"inverseSquare\"; found \"cubic\""},
    {"KeysOfOneNumber", camera("\"position\": {\"keys\": [{\"time\": 0, \"value\": 1}]}"),
     "2: the keys of \"position\" must have lists of three as values"},
    {"KeysOfThreeNumbers", camera("\"fieldOfView\": {\"keys\": [{\"time\": 0, \"value\": [1, 2, 3]}]}"),
     "2: the keys of \"fieldOfView\" must have numbers as values"},
    {"KeysBeyondLimits", camera("\"fieldOfView\": {\"keys\": [{\"time\": 0, \"value\": 190}]}"),
     "2: \"fieldOfView\" must be a number above 0 and below 180; found 190"},
    {"KeysOfTwoComponents", camera("\"position\": [{\"keys\": [{\"time\": 0, \"value\": 1}]}, 2]"),
     "2: \"position\" must have three components; found a list of 2 values"},
    {"UnknownParent", camera("\"parent\": \"Arm\""),
     "2: there is no object, null, light or camera \"Arm\", there is only \"Main\""},
    {"OwnParent", camera("\"parent\": \"Main\""), "1: the camera \"Main\" follows itself, by its parent or its target"},
    {"OwnTarget", camera("\"target\": \"Main\""), "2: the camera \"Main\" is its own target"},
    {"CircleOfParents",
     withCamera("\"nulls\": {\n\"A\": {\"parent\": \"B\"},\n\"B\": {\"parent\": \"C\"}, \"C\": {\"parent\": \"A\"}}"),
     "3: parents and targets lead in a circle: \"A\" follows \"B\", which follows \"C\", which follows \"A\""},
    {"TwoOfOneName", withCamera("\"nulls\": {\"Main\": {},\n\"A\": {\"parent\": \"Main\"}}"),
     "3: \"Main\" may be the null or the camera of that name"},
    {"NullAndRotation", withCamera("\"nulls\": {\"A\": {\"target\": \"Main\",\n\"rotation\": [0, 0, 0]}}"),
     "3: a null that has a \"target\" cannot have a \"rotation\" too"},
    {"WidthOfAPoint", light("\"kind\": \"point\", \"position\": [0, 1, 0], \"width\": 2"),
     "2: \"width\" does not go with the kind \"point\""},
    {"LightInTarget", light("\"kind\": \"distant\", \"position\": [0, 0, 0]"),
     "2: the position of the light is its target"},
    {"LightWithoutPosition", light("\"kind\": \"linear\""), "2: a light needs \"position\""},
    {"LengthOfAnAreaLight", light("\"kind\": \"area\", \"position\": [0, 1, 0], \"length\": 2"),
     "2: \"length\" does not go with the kind \"area\""},
    {"DomeWithATarget", light("\"kind\": \"dome\", \"target\": [0, 1, 0]"),
     "2: \"target\" does not go with the kind \"dome\""},
    {"UnknownImageOfADome", light("\"kind\": \"dome\", \"image\": \"Sky\""),
     "2: there is no image \"Sky\", there are none"},
    {"NegativeColour", light("\"kind\": \"point\", \"position\": [0, 1, 0], \"colour\": [1, -1, 0]"),
     "2: \"colour\" must be a list of three numbers, each of at least 0; its second is -1"},

    {"BackdropMix", withCamera("\"backdrop\": {\"kind\": \"plain\", \"zenith\": [0, 0, 0]}"),
     "2: \"zenith\" does not go with the kind \"plain\""},
    {"BackdropNoImage", withCamera("\"backdrop\": {\"kind\": \"image\"}"), "2: \"backdrop\" needs \"image\""},
    {"BackdropUnknownImage", withCamera("\"backdrop\": {\"kind\": \"image\", \"image\": \"Sky\"}"),
     "2: there is no image \"Sky\", there are none"},
    {"ImageWithoutFile", withCamera("\"images\": {\"Sky\": {\"source\": \"a shop\"}}"), "2: an image needs \"file\""},
    {"ImageFileEmpty", withCamera("\"images\": {\"Sky\": {\n\"file\": \"\"}}"), "3: \"file\" is empty"},

    {"NoShape", object("\"surface\": \"Clay\""), "2: an object needs one of \"mesh\", \"plane\", \"box\", \"sphere\""},
    {"TwoShapes", object("\"box\": {}, \"sphere\": {}, \"surface\": \"Clay\""),
     "2: an object cannot be both \"box\" and \"sphere\""},
    {"NoSurface", object("\"box\": {}"), "2: an object needs \"surface\""},
    {"UnknownSurface", object("\"box\": {}, \"surface\": \"Caly\""),
     "2: there is no surface \"Caly\", did you mean \"Clay\"?"},
    {"UnknownMaterialSurface", object("\"box\": {}, \"surface\": \"Clay\", \"materials\": {\n\"Lid\": \"Cley\"}"),
     "3: there is no surface \"Cley\", did you mean \"Clay\"?"},
    {"MeshNotThere", object("\"mesh\": {\"file\": \"bunny.obj\"}, \"surface\": \"Clay\""),
     "2: there is no file \"bunny.obj\"; looked in ."},
    {"MeshNotThereAtAll", object("\"mesh\": {\"file\": \"/nowhere/bunny.obj\"}, \"surface\": \"Clay\""),
     "2: there is no file \"/nowhere/bunny.obj\""},
    {"MeshADevice", object("\"mesh\": {\"file\": \"/dev/zero\"}, \"surface\": \"Clay\""),
     "2: cannot read \"/dev/zero\": it is a device"},
    {"FlatScale", object("\"box\": {}, \"surface\": \"Clay\", \"scale\": [1, 0, 1]"),
     "2: \"scale\" must be a number or a list of three, none of them 0; found a list of 3 values"},
    {"FlatBox", object("\"box\": {\"size\": [1, 0, 1]}, \"surface\": \"Clay\""),
     "2: \"size\" must be a list of three numbers, each above 0; its second is 0"},
    {"SubdivisionTooHigh", object("\"mesh\": {\"subdivision\": 9, \"file\": \"a.lwo\"}, \"surface\": \"Clay\""),
     "2: \"subdivision\" must be a whole number from 0 to 8; found 9"},
    {"KeyOfAnotherShape", object("\"sphere\": {\"size\": [1, 1, 1]}, \"surface\": \"Clay\""),
     "2: \"sphere\" has no key \"size\", there are \"radius\" and \"segments\""},

    {"NoServer", surface("\"nodes\": {\"AO\": {}}"), "2: a node needs \"server\""},
    {"EmptyServer", surface("\"nodes\": {\"AO\": {\"server\": \"\"}}"), "2: \"server\" is empty"},
    {"NodeLikeSurface", surface("\"nodes\": {\"Clay\": {\"server\": \"N\"}}"),
     "2: the node \"Clay\" has the name of its surface"},
    {"SettingNull", setting("null"),
     "2: \"Max\" must be true or false, a number, a text, a list of three numbers, or an "
     "object with \"keys\"; found null"},
    {"SettingOfTwo", setting("[1, 2]"), "2: \"Max\" must be a list of three numbers; found a list of 2 values"},
    {"NoKeys", setting("{\"before\": \"reset\"}"), "2: an animated setting needs \"keys\""},
    {"EmptyKeys", setting("{\"keys\": []}"),
     "2: \"keys\" must be a list of at least one key; found a list of 0 values"},
    {"KeyWithoutTime", setting("{\"keys\": [{\"value\": 1}]}"), "2: a key needs \"time\""},
    {"KeyOfText", setting("{\"keys\": [{\"time\": 0, \"value\": \"1\"}]}"),
     "2: \"value\" must be a number or a list of three; found \"1\""},
    {"KeysOutOfOrder", setting("{\"keys\": [{\"time\": 1, \"value\": 1},\n{\"time\": 1, \"value\": 2}]}"),
     "3: keys must follow one another in time; 1 s comes after 1 s"},
    {"KeysOfTwoKinds", setting("{\"keys\": [{\"time\": 0, \"value\": 1},\n{\"time\": 1, \"value\": [1, 2, 3]}]}"),
     "3: all keys must have values of one kind: a number, or a list of three"},
    {"TensionOfALine", setting("{\"keys\": [{\"time\": 0, \"value\": 1, \"shape\": \"linear\", \"tension\": 1}]}"),
     "2: \"tension\" does not go with the kind \"linear\""},
    {"ThreeParameters",
     setting("{\"keys\": [{\"time\": 0, \"value\": 1, \"shape\": \"hermite\", \"parameters\": [1, 2, 3]}]}"),
     "2: \"parameters\" must be a list of four numbers; found a list of 3 values"},
    {"UnknownBehaviour", setting("{\"keys\": [{\"time\": 0, \"value\": 1}], \"after\": \"loop\"}"),
     "2: \"after\" must be one of \"reset\", \"constant\", \"repeat\", \"oscillate\", \"offsetRepeat\", \"linear\"; "
     "found "
     "\"loop\""},

    {"ConnectionsNoList", surface("\"connections\": \"AO.Color -> Clay.Color\""),
     "2: \"connections\" must be a list of texts such as \"Node.Output -> Node.Input\"; found \"AO.Color -> "
     "Clay.Color\""},
    {"ConnectionNoText", surface("\"connections\": [1]"), "2: \"connections\" must be a text; found 1"},
    {"ConnectionUnknown",
     surface("\"nodes\": {\"AO\": {\"server\": \"N\"}}, \"connections\": [\"Oa.Color -> Clay.Color\"]"),
     "2: there is no node \"Oa\" here, there are \"Clay\" and \"AO\""},

    {"NetworkNoObject", node("\"network\": []"), "2: a network must be an object in braces; found a list of 0 values"},
    {"NetworkUnknownKey", inside("\"settings\": {}"),
     "3: a network has no key \"settings\", there are \"nodes\", \"connections\" and \"view\""},
    {"NodeLikeItsHolder", inside("\"nodes\": {\"AO\": {\"server\": \"N\"}}"),
     "3: the node \"AO\" has the name of the node that holds it"},
    {"ConnectionToTheSurfaceFromInside",
     inside("\"nodes\": {\"In\": {\"server\": \"N\"}}, \"connections\": [\"In.Color -> Clay.Color\"]"),
     "3: there is no node \"Clay\" here, there are \"AO\" and \"In\""},
    {"ConnectionFromTheHolder",
     inside("\"nodes\": {\"In\": {\"server\": \"N\"}}, \"connections\": [\"AO.Color -> In.Color\"]"),
     "3: \"AO\" is the node that holds the network, whose outputs are outside"},
    {"ConnectedTwiceInside",
     inside("\"nodes\": {\"In\": {\"server\": \"N\"}}, \"connections\": [\"In.A -> AO.Color\",\n\"In.B -> AO.Color\"]"),
     "4: \"AO.Color\" is connected twice; first on line 3"},
    {"NoServerInside", inside("\"nodes\": {\n\"In\": {}}"), "4: a node needs \"server\""},
};

INSTANTIATE_TEST_SUITE_P(All, BadScenes, testing::ValuesIn(kBadScenes), [](const auto &row) { return row.param.name; });

TEST(BadConnections, AnInputTakesOneConnection) {
    const std::string text = R"({"cameras": {"Main": {}}, "surfaces": {"Clay": {
        "nodes": {"AO": {"server": "N"}},
        "connections": ["AO.Color -> Clay.Color",
                        "AO.Scalar -> Clay.Color"]}}})";
    EXPECT_EQ(test::refusal(text), "scene.json:4: \"Clay.Color\" is connected twice; first on line 3");
}

} // namespace
} // namespace velm::host
