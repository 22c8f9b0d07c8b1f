// Surfaces of object files in scenes, and surfaces of scenes in object files; without a module.
#include "tests/files/test_files.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include "host/graph/node_data.h"
#include "host/io/files.h"
#include "host/scene/convert/object_surfaces.h"
#include "host/scene/convert/write_surfaces.h"
#include "host/scene/format/shortest.h"
#include "host/scene/read_scene.h"

#include <clocale>
#include <locale>
#include <nlohmann/json.hpp>

namespace velm::host::test {
namespace {

// The text of a scene with the surfaces of an object, and with the data that restore the object to the byte.
std::string unpacked(const ObjectFile &object, std::vector<Warning> *reported = nullptr) {
    Warnings warnings(Warnings::Policy::goOn);
    UnpackedSurfaces surfaces = unpackSurfaces(object, {}, serverList(), warnings);
    while (completeUnpacked(surfaces, serverList())) {
    }
    if (reported) *reported = warnings.all();
    return writeSurfaces(surfaces.images, surfaces.surfaces);
}

// An object with the surfaces of a scene's text packed into it.
std::string packed(const std::string &scene, std::string object) {
    const TemporaryDirectory directory;
    directory.write("scene.json", scene);
    const SceneDescription description = readSurfaces(directory / "scene.json", {});
    Warnings warnings(Warnings::Policy::goOn);
    const SceneSurfaces built(description, serverList(), &warnings);
    ObjectFile file(object, "object.lwo");
    packSurfaces(file, description, built, DefaultSettings(serverList()));
    return file.write();
}

const std::string kScene = R"json({
  "surfaces": {
    "Clay": {
      "settings": {"Diffuse": 0.8, "Refraction Index": 1.33},
      "nodes": {
        "Cells (1)": {
          "server": "Checker",
          "settings": {"Color 1": [0.1, 0.25, 1], "Size": 33.3},
          "at": [-120, 40],
          "mode": 0,
          "preview": "Color",
          "comment": "of \"this\" & that"
        },
        "Noise": {
          "server": "Fractal Noise",
          "settings": {
            "Coordinates": "World",
            "Gain": {
              "keys": [{"time": 0, "value": 12.5}, {"time": 0.1, "value": 55, "shape": "linear"}],
              "after": "oscillate"
            }
          }
        },
        "Rain": {"server": "Weather", "kind": "Some Weather", "data": "000102ff", "at": [1, 2]}
      },
      "connections": [
        "Noise.Color -> Cells (1).Color 2",
        "Rain.Drops -> Noise.Scale",
        "Cells (1).Color -> Clay.Color",
        "Rain.Drops -> Clay.Wetness"
      ],
      "otherInputs": ["Wetness"],
      "view": {"location": [-3, 4], "zoom": 0.75, "disabled": 1, "at": [-10, -10], "comment": "root"}
    }
  }
}
)json";

TEST(ObjectSurfaces, AScenesTextComesBackFromAnObjectAsItWas) {
    const std::string object = objectFile(chunk("TAGS", cString("Clay")));
    const std::string first = packed(kScene, object);
    const std::string text = unpacked(ObjectFile(first, "object.lwo"));
    EXPECT_EQ(nlohmann::json::parse(text), nlohmann::json::parse(kScene)) << text;
    EXPECT_EQ(packed(text, object), first);
    EXPECT_EQ(packed(text, first), first);
}

TEST(ObjectSurfaces, PackingLeavesAllElseInTheObject) {
    const std::string object = smallObject();
    const std::string written = packed(kScene, object);
    const ObjectFile before(object, "a.lwo"), after(written, "b.lwo");
    const std::size_t at = before.networkOffset(0);
    // Everything before the network, except the sizes of the form and of the surface, and everything after it.
    const std::size_t sizeAt = before.surfaces()[0].chunk.at - 4;
    EXPECT_EQ(written.substr(8, sizeAt - 8), object.substr(8, sizeAt - 8));
    EXPECT_EQ(written.substr(sizeAt + 4, at - sizeAt - 4), object.substr(sizeAt + 4, at - sizeAt - 4));
    EXPECT_EQ(written.substr(at + after.network(0)->size()), object.substr(at + before.network(0)->size()));
}

TEST(ObjectSurfaces, ANewSurfaceBringsItsOwnValues) {
    const std::string scene = R"({"surfaces": {"New": {"settings": {"Color": [1, 0.5, 0.25], "Diffuse": 0.3,
        "Transparency": 0.9}, "smoothingAngle": 60, "doubleSided": false}}})";
    const ObjectFile file(packed(scene, smallObject()), "a.lwo");
    ASSERT_EQ(file.findSurface("New"), 2U);
    const SurfaceChunkValues values = file.values(2);
    EXPECT_EQ(values.colour, (std::array<float, 3>{1, 0.5F, 0.25F}));
    EXPECT_EQ(values.diffuse, 0.3F);
    EXPECT_EQ(values.transparency, 0.9F);
    EXPECT_NEAR(*values.smoothingAngle, 1.0471975511965976, 1e-7);
    EXPECT_EQ(values.sides, 1);
    const std::vector<SurfaceDescription> surfaces = surfacesOf(file).surfaces;
    EXPECT_EQ(surfaces[2].smoothingAngle, 60);
    EXPECT_FALSE(surfaces[2].doubleSided);
}

TEST(ObjectSurfaces, ValuesOtherThanTheObjectsGoIntoTheNetwork) {
    // "Clay" of the object is orange. A scene without a colour means grey, the default.
    const std::string grey = R"({"surfaces": {"Clay": {}}})", orange = R"({"surfaces": {"Clay": {"settings":
        {"Color": [1, 0.5, 0]}}}})";
    const auto rootData = [](const std::string &object) {
        const ObjectFile file(object, "a.lwo");
        return file.network(0)->find("VPRM") != std::string_view::npos;
    };
    EXPECT_TRUE(rootData(packed(grey, smallObject())));
    EXPECT_FALSE(rootData(packed(orange, smallObject())));
    EXPECT_EQ(unpacked(ObjectFile(packed(grey, smallObject()), "a.lwo")),
              "{\n  \"surfaces\": {\n    \"Clay\": {}\n  }\n}\n");
}

TEST(ObjectSurfaces, MissingServersAreReportedWithSurfaceAndNode) {
    std::vector<Warning> reported;
    const std::string text = unpacked(ObjectFile(smallObject(), "small.lwo"), &reported);
    EXPECT_EQ(packed(text, smallObject()), smallObject()) << text;
    std::string messages;
    for (const Warning &warning : reported) messages += warning.text() + '\n';
    EXPECT_NE(messages.find("surface \"Clay\", node \"Rain (1)\": there is no node \"Weather\" here"),
              std::string::npos)
        << messages;
    Warnings strict(Warnings::Policy::strict);
    EXPECT_THROW(unpackSurfaces(ObjectFile(smallObject(), "small.lwo"), {}, serverList(), strict), InputError);
}

TEST(ObjectSurfaces, ANetworkThatIsLaidOutOtherwiseStaysAsItIs) {
    const std::string nodes =
        subChunk("NNDS", nodeBlocks("Surface", "Surface", "") + nodeBlocks("Weather", "Rain", "wet!"));
    const std::string network = subChunk("NODS", subChunk("NCON", "") + nodes + subChunk("OTHR", "kept"));
    const std::string object = objectFile(chunk("SURF", cString("A") + cString("") + network));
    EXPECT_EQ(packed(unpacked(ObjectFile(object, "a.lwo")), object), object);
}

TEST(ObjectSurfaces, DataThatSettingsDoNotTellAreKept) {
    // An integer for which the panel's popup has no entry, in one of the host's own nodes.
    Network editor("Net", "Net", nullptr, nullptr);
    std::string data = savedData(editor.addNode(serverList().get("Fractal Noise")));
    const std::string longer = data + "of a later version";
    for (const std::string &kept : {data, longer}) {
        const std::string object = objectFile(
            chunk("SURF",
                  cString("A") + cString("") +
                      networkBlock(nodeBlocks("Surface", "Surface", "") + nodeBlocks("Fractal Noise", "N", kept), "")));
        const std::string text = unpacked(ObjectFile(object, "a.lwo"));
        EXPECT_EQ(text.find("\"data\"") != std::string::npos, kept == longer) << text;
        EXPECT_NE(packed(text, objectFile("")).find(kept), std::string::npos);
    }
}

TEST(ObjectSurfaces, AMeshOfAnObjectFileBringsItsSurfaces) {
    const TemporaryDirectory directory;
    directory.write("small.lwo", smallObject());
    const auto read = [&](const std::string &rest) {
        return readSceneText(R"({"cameras": {"C": {}}, )" + rest + '}', directory / "scene.json", {});
    };
    const SceneDescription own =
        read(R"("objects": {"A": {"mesh": {"file": "small.lwo"}}, "B": {"mesh": {"file": "small.lwo"}}})");
    ASSERT_EQ(own.surfaces.size(), 2U);
    EXPECT_EQ(own.surfaces[0].name, "Clay");
    EXPECT_FALSE(own.surfaces[0].saved.block.empty());
    EXPECT_EQ(own.surfaces[0].settings.front().label, "Color");
    ASSERT_EQ(own.objects[1].surfaces.size(), 2U);
    EXPECT_EQ(own.objects[1].surfaces[0].material, "Clay");
    EXPECT_EQ(own.objects[1].surfaces[0].surface, "Clay");

    const SceneDescription from = read(R"("surfaces": {"Plain": {}, "from": "small.lwo"},
        "objects": {"A": {"box": {}, "surface": "Clay"}})");
    ASSERT_EQ(from.surfaces.size(), 2U);
    EXPECT_TRUE(from.surfaces[0].saved.file.empty()); // the described one replaces the file's
    EXPECT_EQ(from.surfaces[1].name, "Clay");

    const SceneDescription named =
        read(R"("surfaces": {"Clay": {}}, "objects": {"A": {"mesh": {"file": "small.lwo"}}})");
    EXPECT_EQ(named.objects[0].surfaces[0].surface, "Clay (small.lwo)");
    EXPECT_THROW(read(R"("objects": {"A": {"box": {}}})"), InputError);
    directory.write("bad.lwo", "FORM");
    EXPECT_THROW(read(R"("surfaces": {"from": "bad.lwo"})"), InputError);
}

TEST(ObjectSurfaces, AnObjectsImagesAreFoundByTheirLastNames) {
    const TemporaryDirectory directory;
    directory.write("wall.jpg", "");
    const std::vector<ImageDescription> images = imagesOf(ObjectFile(smallObject(), directory / "small.lwo"), {});
    ASSERT_EQ(images.size(), 1U);
    EXPECT_EQ(images[0].name, "wall.jpg");
    EXPECT_EQ(images[0].file, directory / "wall.jpg");
    EXPECT_EQ(images[0].notFound, "");
    const std::vector<ImageDescription> absent = imagesOf(ObjectFile(smallObject(), "elsewhere/small.lwo"), {});
    EXPECT_EQ(absent[0].notFound,
              "there is no file \"C:images/wall.jpg\"; and there is no file \"wall.jpg\"; looked in elsewhere");
}

TEST(Shortest, SaysTheSameWithFewDigits) {
    const double degrees = 180 / 3.14159265358979323846;
    for (const double typed : {33.3, 0.1, 60.0, -88.125, 1e-5, 0.0005}) {
        EXPECT_EQ(shortest(static_cast<double>(static_cast<float>(typed)), 1), typed);
        EXPECT_EQ(shortest(static_cast<double>(static_cast<float>(typed / degrees)) * degrees, degrees), typed);
    }
    EXPECT_EQ(shortest(-0.0, 1), 0);
}

// Decimal commas, and blanks between thousands.
class Commas : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return ' '; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(ObjectSurfaces, NumbersAreTheSameInEveryLocale) {
    const std::string object = packed(kScene, objectFile("")), text = unpacked(ObjectFile(object, "a.lwo"));
    const std::locale before = std::locale::global(std::locale(std::locale(), new Commas));
    const std::string oldC = std::setlocale(LC_ALL, nullptr);
    for (const char *name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"}) // one that the machine has
        if (std::setlocale(LC_ALL, name)) break;
    EXPECT_EQ(packed(kScene, objectFile("")), object);
    EXPECT_EQ(unpacked(ObjectFile(object, "a.lwo")), text);
    std::setlocale(LC_ALL, oldC.c_str());
    std::locale::global(before);
}

} // namespace
} // namespace velm::host::test
