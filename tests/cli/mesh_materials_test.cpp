// Materials and textures of mesh files, as the commands show them.
#include "host/base/error.h"
#include "host/image/file_pixels.h"
#include "host/io/files.h"
#include "tests/cli/command.h"
#include "tests/image/image_files.h"
#include "tests/temporary_directory.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace velm::host {
namespace {

using nlohmann::json;
using test::Outcome;

// A square that faces +Z, which is the front, with the whole of its texture.
constexpr const char *kSquare = "mtllib square.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nvt 0 0\nvt 1 0\nvt 1 1\n"
                                "vt 0 1\nusemtl Paper\nf 1/1 2/2 3/3 4/4\n";

void addFloats(std::string &bytes, const std::vector<float> &values) {
    bytes.append(reinterpret_cast<const char *>(values.data()), values.size() * sizeof(float));
}
void addNumber(std::string &bytes, std::uint32_t value) {
    bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
}

// The square as a GLB file with the images inside. `texture` is the index of the image that the material uses.
// `colours` are the vertex colours, with alpha; empty for none.
std::string glbSquare(const std::vector<std::string> &images, int texture, const json &materialExtras,
                      const std::vector<float> &colours = {}) {
    std::string binary;
    addFloats(binary, {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0}); // positions
    addFloats(binary, {0, 1, 1, 1, 1, 0, 0, 0});                 // UV: v downwards
    for (const std::uint32_t corner : {0U, 1U, 2U, 0U, 2U, 3U}) addNumber(binary, corner);
    json document = {
        {"asset", {{"version", "2.0"}}},
        {"extensionsUsed", {"KHR_texture_transform"}},
        {"scene", 0},
        {"scenes", {{{"nodes", {0}}}}},
        {"nodes", {{{"mesh", 0}}}},
        {"meshes",
         {{{"primitives", {{{"attributes", {{"POSITION", 0}, {"TEXCOORD_0", 1}}}, {"indices", 2}, {"material", 0}}}}}}},
        {"accessors",
         {{{"bufferView", 0},
           {"componentType", 5126},
           {"count", 4},
           {"type", "VEC3"},
           {"min", {-1, -1, 0}},
           {"max", {1, 1, 0}}},
          {{"bufferView", 1}, {"componentType", 5126}, {"count", 4}, {"type", "VEC2"}},
          {{"bufferView", 2}, {"componentType", 5125}, {"count", 6}, {"type", "SCALAR"}}}},
        {"bufferViews",
         {{{"buffer", 0}, {"byteOffset", 0}, {"byteLength", 48}},
          {{"buffer", 0}, {"byteOffset", 48}, {"byteLength", 32}},
          {{"buffer", 0}, {"byteOffset", 80}, {"byteLength", 24}}}},
        {"textures", {{{"source", texture}}}},
        {"materials",
         {{{"name", "Paper"},
           {"pbrMetallicRoughness", {{"baseColorTexture", {{"index", 0}}}, {"metallicFactor", 0}}}}}}};
    document["materials"][0].update(materialExtras);
    if (!colours.empty()) {
        document["meshes"][0]["primitives"][0]["attributes"]["COLOR_0"] = 3;
        document["accessors"].push_back({{"bufferView", 3}, {"componentType", 5126}, {"count", 4}, {"type", "VEC4"}});
        document["bufferViews"].push_back(
            {{"buffer", 0}, {"byteOffset", binary.size()}, {"byteLength", colours.size() * sizeof(float)}});
        addFloats(binary, colours);
    }
    for (const std::string &image : images) {
        document["bufferViews"].push_back({{"buffer", 0}, {"byteOffset", binary.size()}, {"byteLength", image.size()}});
        document["images"].push_back({{"mimeType", "image/png"}, {"bufferView", document["bufferViews"].size() - 1}});
        binary += image;
        binary.resize((binary.size() + 3) / 4 * 4);
    }
    document["buffers"] = {{{"byteLength", binary.size()}}};
    std::string text = document.dump(), bytes = "glTF";
    text.resize((text.size() + 3) / 4 * 4, ' ');
    addNumber(bytes, 2);
    addNumber(bytes, static_cast<std::uint32_t>(28 + text.size() + binary.size()));
    addNumber(bytes, static_cast<std::uint32_t>(text.size()));
    bytes += "JSON" + text;
    addNumber(bytes, static_cast<std::uint32_t>(binary.size()));
    return bytes + std::string("BIN\0", 4) + binary;
}

class MeshMaterials : public testing::Test {
  protected:
    test::TemporaryDirectory directory_;

    std::string file(const std::string &name) const { return directory_ / name; }

    // A picture whose upper left quarter has one colour, the upper right, lower left and lower right ones others.
    // Gives its bytes, too.
    std::string writeQuarters(const std::string &name, const std::vector<std::vector<std::uint8_t>> &colours) const {
        constexpr int kSize = 16;
        std::vector<std::uint8_t> values;
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x) {
                const auto &colour =
                    colours[static_cast<std::size_t>((y < kSize / 2 ? 0 : 2) + (x < kSize / 2 ? 0 : 1))];
                values.insert(values.end(), colour.begin(), colour.end());
            }
        EXPECT_TRUE(test::writeImageFile(file(name), kSize, kSize, static_cast<int>(colours[0].size()), values));
        return readFile(file(name));
    }

    // Renders the square from the front.
    FilePixels render(const std::string &mesh, const std::string &size = "32x32") const {
        const Outcome outcome = test::velm({"render", mesh, "-o", file("a.exr"), "--size", size, "--samples", "4",
                                            "--view", "front", "--rig", "studio", "--quiet"});
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        return readFilePixels(file("a.exr"));
    }

    json converted(const std::string &mesh) const {
        const Outcome outcome =
            test::velm({"convert", mesh, file("scene.json"), "--view", "front", "--rig", "studio"}, false);
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        return json::parse(readFile(file("scene.json")));
    }

    void expectSamePictureConverted(const std::string &mesh) const {
        const FilePixels before = render(mesh, "32x18"); // the shape of the converted scene's pictures
        converted(mesh);
        const Outcome outcome = test::velm(
            {"render", file("scene.json"), "-o", file("b.exr"), "--size", "32x18", "--samples", "4", "--quiet"});
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        EXPECT_EQ(readFilePixels(file("b.exr")).values, before.values);
    }
};

constexpr int kRed = 0, kGreen = 1, kBlue = 2;

// The component that is largest at a pixel of the picture; -1 for grey.
int hueAt(const FilePixels &picture, int x, int y) {
    const float *pixel = picture.pixel(x, y);
    for (int i = 0; i < 3; ++i)
        if (pixel[i] > 2 * pixel[(i + 1) % 3] && pixel[i] > 2 * pixel[(i + 2) % 3]) return i;
    return -1;
}

const std::vector<std::vector<std::uint8_t>> kQuarters = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}};

void expectUpright(const FilePixels &picture) {
    EXPECT_EQ(hueAt(picture, 13, 12), kRed) << "upper left";
    EXPECT_EQ(hueAt(picture, 18, 12), kGreen) << "upper right";
    EXPECT_EQ(hueAt(picture, 13, 19), kBlue) << "lower left";
    EXPECT_EQ(hueAt(picture, 18, 19), -1) << "lower right";
}

TEST_F(MeshMaterials, ShowTexturesUpright) {
    writeQuarters("paper.png", kQuarters);
    directory_.write("square.mtl", "newmtl Paper\nKd 1 1 1\nmap_Kd paper.png\n");
    expectUpright(render(directory_.write("square.obj", kSquare)));
}

TEST_F(MeshMaterials, ShowImagesInsideOfAFile) {
    const std::string other = writeQuarters("a.png", {{9, 9, 9}, {9, 9, 9}, {9, 9, 9}, {9, 9, 9}});
    const std::string image = writeQuarters("b.png", kQuarters);
    const std::string mesh = directory_.write("square.glb", glbSquare({other, image}, 1, json::object()));
    expectUpright(render(mesh));
    expectSamePictureConverted(mesh);
    EXPECT_EQ(converted(mesh)["images"].begin().value()["file"], "square.glb#image/1");
}

// The transform shows the middle of the image twice as large, which keeps its quarters in place, and turns it by 90
// degrees clockwise about the middle: u' = 0.25 + v / 2, v' = 0.75 - u / 2, with v downwards.
TEST_F(MeshMaterials, PlaceTexturesAsTheFileSays) {
    const std::string image = writeQuarters("a.png", {{0, 255, 0}, {255, 255, 255}, {255, 0, 0}, {0, 0, 255}});
    const json placing = {{"offset", {0.25, 0.75}}, {"rotation", 1.5707963267948966}, {"scale", {0.5, 0.5}}};
    const json texture = {{"index", 0}, {"extensions", {{"KHR_texture_transform", placing}}}};
    const json extras = {{"pbrMetallicRoughness", {{"baseColorTexture", texture}, {"metallicFactor", 0}}}};
    expectUpright(render(directory_.write("square.glb", glbSquare({image}, 0, extras))));
}

TEST_F(MeshMaterials, AreConvertedAndArchived) {
    writeQuarters("paper.png", kQuarters);
    directory_.write("square.mtl", "newmtl Paper\nKd 1 0.5 0.5\nKe 0.1 0.1 0.1\n"
                                   "d 0.75\nmap_Kd paper.png\n");
    const std::string mesh = directory_.write("square.obj", kSquare);
    expectSamePictureConverted(mesh);
    EXPECT_EQ(test::velm({"files", mesh}, false).out,
              mesh + '\n' + file("square.mtl") + '\n' + file("paper.png") + '\n');
    ASSERT_EQ(test::velm({"archive", mesh, file("kept")}, false).status, kExitDone);
    EXPECT_EQ(readFile(file("kept/images/paper.png")), readFile(file("paper.png")));
    const std::string glb = directory_.write("inside.glb", glbSquare({readFile(file("paper.png"))}, 0, json::object()));
    ASSERT_EQ(test::velm({"archive", glb, file("whole")}, false).status, kExitDone);
    std::filesystem::remove(glb);
    const Outcome outcome = test::velm({"render", file("whole/scene.json"), "-o", file("c.exr"), "--size", "32x32",
                                        "--samples", "1", "--quiet", "--strict"});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
}

TEST_F(MeshMaterials, BecomeSurfaces) {
    directory_.write("square.mtl", "newmtl Paper\nKd 0.5 0.25 0.125\nKs 0.5 0.5 0.5\nNs 64\n"
                                   "d 0.75\nNi 1.5\n");
    const json surface = converted(directory_.write("square.obj", kSquare))["surfaces"]["Paper"];
    EXPECT_EQ(surface["settings"]["Color"], (std::vector<double>{0.5, 0.25, 0.125}));
    EXPECT_EQ(surface["settings"]["Specular"], 0.5);
    EXPECT_EQ(surface["settings"]["Glossiness"], 0.4) << "2^(10 x 0.4 + 2) = 64";
    EXPECT_EQ(surface["settings"]["Transparency"], 0.25);
    EXPECT_EQ(surface["settings"]["Refraction Index"], 1.5);
}

// Some programs write the transparency in place of the opacity.
TEST_F(MeshMaterials, WithAnOpacityOfZeroAreOpaque) {
    directory_.write("square.mtl", "newmtl Paper\nKd 1 1 1\n"
                                   "d 0\n");
    const json surface = converted(directory_.write("square.obj", kSquare))["surfaces"]["Paper"];
    EXPECT_EQ(surface["settings"].value("Transparency", 0.0), 0);
}

// By the formulas at the top of host/render/geometry/mesh_materials.cpp.
TEST_F(MeshMaterials, BecomeSurfacesOfMetal) {
    const std::string image = writeQuarters("a.png", kQuarters);
    const json extras = {{"doubleSided", true},
                         {"pbrMetallicRoughness",
                          {{"baseColorFactor", {0.5, 0.5, 0.5, 1}}, {"metallicFactor", 1}, {"roughnessFactor", 0.5}}}};
    const std::string mesh = directory_.write("square.glb", glbSquare({image}, 0, extras));
    const json settings = converted(mesh)["surfaces"]["Paper"]["settings"];
    EXPECT_NEAR(settings["Diffuse"], 0.75, 1e-6);
    EXPECT_NEAR(settings["Reflection"], 0.125, 1e-6);
    EXPECT_EQ(settings["Specular"], 1) << "0.5 / (4 x 0.25^2) = 2";
    EXPECT_NEAR(settings["Glossiness"], 0.290689, 1e-5) << "(log2(2 / 0.25^2 - 2) - 2) / 10";
}

// The lower half of the image has an alpha below the cutoff: the dark backdrop shows there.
TEST_F(MeshMaterials, AreCutOutByAlpha) {
    const std::string image =
        writeQuarters("a.png", {{255, 0, 0, 255}, {255, 0, 0, 160}, {255, 0, 0, 90}, {255, 0, 0, 0}});
    const auto shown = [&](const json &extras) {
        return render(directory_.write("square.glb", glbSquare({image}, 0, extras)));
    };
    const FilePixels mask = shown({{"alphaMode", "MASK"}, {"alphaCutoff", 0.5}}),
                     blend = shown({{"alphaMode", "BLEND"}}), opaque = shown(json::object());
    EXPECT_EQ(hueAt(mask, 13, 12), kRed);
    EXPECT_NEAR(mask.pixel(18, 12)[0], mask.pixel(13, 12)[0], 0.1) << "both are above the cutoff";
    EXPECT_EQ(hueAt(mask, 13, 19), -1);
    EXPECT_EQ(hueAt(mask, 18, 19), -1);
    EXPECT_EQ(hueAt(opaque, 18, 19), kRed);
    EXPECT_GT(blend.pixel(13, 12)[0], blend.pixel(18, 12)[0]);
    EXPECT_GT(blend.pixel(18, 12)[0], blend.pixel(13, 19)[0]);
    EXPECT_EQ(hueAt(blend, 18, 19), -1);
}

TEST_F(MeshMaterials, FindTexturesOfOtherSystems) {
    std::filesystem::create_directory(file("maps"));
    writeQuarters("maps/paper.png", kQuarters);
    directory_.write("square.mtl", "newmtl Paper\nKd 1 1 1\nmap_Kd D:\\work\\Maps\\PAPER.PNG\n");
    expectUpright(render(directory_.write("square.obj", kSquare)));
}

TEST_F(MeshMaterials, FindFilesByNamesWithEscapesAndBackslashes) {
    std::filesystem::create_directory(file("my maps"));
    writeQuarters("my maps/my paper.png", kQuarters);
    directory_.write("my maps/square.mtl", "newmtl Paper\nKd 1 1 1\nmap_Kd my%20maps\\my%20paper.png\n");
    std::string square = kSquare;
    square.replace(square.find("square.mtl"), 10, "my%20maps\\square.mtl");
    const std::string mesh = directory_.write("square.obj", square);
    expectUpright(render(mesh));
    EXPECT_EQ(test::velm({"files", mesh}, false).out,
              mesh + '\n' + file("my maps/square.mtl") + '\n' + file("my maps/my paper.png") + '\n');
}

// The square as a glTF text file. Its buffer and its first image are files of their own; its second image is in the
// buffer.
TEST_F(MeshMaterials, FindTheBuffersAndImagesOfGltf) {
    const std::string glb = glbSquare({writeQuarters("my paper.png", kQuarters)}, 0, json::object());
    const std::size_t jsonSize = static_cast<unsigned char>(glb[12]) + 256U * static_cast<unsigned char>(glb[13]);
    json document = json::parse(glb.substr(20, jsonSize));
    document["buffers"][0]["uri"] = "my%20square.bin";
    document["images"].push_back(document["images"][0]);
    document["images"][0] = {{"uri", "my%20paper.png"}};
    const std::string mesh = directory_.write("work/square.gltf", document.dump());
    directory_.write("work/my square.bin", glb.substr(20 + jsonSize + 8));
    std::filesystem::rename(file("my paper.png"), file("work/my paper.png"));
    const std::string listed = mesh + '\n' + file("work/my square.bin") + '\n';
    expectUpright(render(mesh));
    EXPECT_EQ(test::velm({"files", mesh}, false).out, listed + file("work/my paper.png") + '\n');
    const std::string scene = directory_.write("work/sky.json", R"({"cameras": {"Main": {}},
        "images": {"Sky": {"file": "square.gltf#image/1"}}, "backdrop": {"kind": "image", "image": "Sky"}})");
    EXPECT_EQ(test::velm({"files", scene}, false).out, scene + '\n' + listed);
    ASSERT_EQ(test::velm({"archive", mesh, file("kept")}, false).status, kExitDone);
    ASSERT_EQ(test::velm({"archive", scene, file("sky")}, false).status, kExitDone);
    std::filesystem::remove_all(file("work"));
    for (const std::string kept : {"kept", "sky"}) {
        const Outcome outcome = test::velm(
            {"render", file(kept + "/scene.json"), "-o", file("a.exr"), "--size", "8x8", "--quiet", "--strict"});
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    }
    directory_.write("broken/square.gltf", "{");
    directory_.write("broken/sky.json",
                     R"({"cameras": {"Main": {}}, "images": {"Sky": {"file": "square.gltf#image/1"}}})");
    const Outcome broken = test::velm({"files", file("broken/sky.json")}, false);
    EXPECT_EQ(broken.status, kExitDone);
    EXPECT_NE(broken.err.find("cannot read the images inside"), std::string::npos) << broken.err;
}

TEST_F(MeshMaterials, ShowImagesInsideOfFbx) {
    const std::string directory = "/usr/share/assimp/models/FBX/embedded_ascii/";
    if (!std::filesystem::exists(directory)) GTEST_SKIP() << "the package assimp-testmodels is not installed";
    for (const char *name : {"box.FBX", "box_embedded_texture_fragmented.fbx"}) {
        const json images = json::parse(test::velm({"info", directory + name, "--json"}).out)["images"];
        ASSERT_EQ(images.size(), 1U) << name;
        EXPECT_EQ(images[0]["found"], true);
        EXPECT_EQ(images[0]["file"], directory + name + "#image/0");
        EXPECT_GE(readFilePixels(images[0]["file"]).width, 64);
    }
}

TEST_F(MeshMaterials, WarnOnceOfMissingTextures) {
    directory_.write("square.mtl", "newmtl Paper\nKd 1 1 1\nmap_Kd gone.png\n");
    const std::string mesh = directory_.write("square.obj", kSquare);
    const std::vector<std::string> words = {"render", mesh, "-o", file("a.exr"), "--size", "8x8"};
    const Outcome outcome = test::velm(words);
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    const std::size_t first = outcome.err.find("there is no file \"gone.png\"; looked for");
    EXPECT_NE(first, std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.err.find("there is no file", first + 1), std::string::npos) << outcome.err;
    const json info = json::parse(test::velm({"info", mesh, "--json"}).out);
    EXPECT_EQ(info["images"][0]["found"], false);
    EXPECT_EQ(info["surfaces"][0]["name"], "Paper");
}

TEST_F(MeshMaterials, MayHaveNamesInLatin1) {
    directory_.write("square.mtl", "newmtl Gr\xfcn\nKd 0 1 0\n");
    std::string square = kSquare;
    square.replace(square.find("Paper"), 5, "Gr\xfcn");
    const std::string mesh = directory_.write("square.obj", square);
    EXPECT_TRUE(converted(mesh)["surfaces"].contains("Gr\xc3\xbcn"));
    expectSamePictureConverted(mesh);
}

// The file has no materials.
TEST_F(MeshMaterials, ShowVertexColours) {
    const std::string ply =
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
        "property uchar red\nproperty uchar green\nproperty uchar blue\nelement face 1\n"
        "property list uchar int vertex_indices\nend_header\n"
        "-1 -1 0 0 0 255\n1 -1 0 0 0 255\n0 1 0 0 0 255\n3 0 1 2\n";
    const std::string mesh = directory_.write("a.ply", ply);
    EXPECT_EQ(hueAt(render(mesh), 16, 16), kBlue);
    expectSamePictureConverted(mesh);
    const json info = json::parse(test::velm({"info", mesh, "--json"}).out);
    EXPECT_EQ(info["objects"][0]["colourMaps"], json::array({"Color"}));
    EXPECT_EQ(info["objects"][0]["weightMaps"], json::array());
    EXPECT_NE(test::velm({"info", mesh}).out.find("colour maps \"Color\""), std::string::npos);
}

// The same colour, with an alpha of 1, for each of the square's four vertices.
std::vector<float> sameColours(float red, float green, float blue) {
    std::vector<float> colours;
    for (int i = 0; i < 4; ++i) colours.insert(colours.end(), {red, green, blue, 1});
    return colours;
}

// Red vertex colours leave only the red of a grey material and of an image.
TEST_F(MeshMaterials, AreMultipliedByVertexColours) {
    const std::string image = writeQuarters("a.png", {{255, 0, 0}, {0, 255, 0}, {255, 255, 255}, {255, 255, 255}});
    const json grey = {{"pbrMetallicRoughness", {{"baseColorFactor", {0.5, 0.5, 0.5, 1}}, {"metallicFactor", 0}}}};
    const std::vector<float> red = sameColours(1, 0, 0);
    const json plain = converted(directory_.write("plain.glb", glbSquare({image}, 0, grey, red)))["surfaces"]["Paper"];
    EXPECT_EQ(plain["connections"],
              (json::array({"Vertex Colors.Color -> Color Factor.A", "Color Factor.Color -> Paper.Color"})));
    const std::string mesh = directory_.write("square.glb", glbSquare({image}, 0, json::object(), red));
    const FilePixels picture = render(mesh);
    EXPECT_EQ(hueAt(picture, 13, 12), kRed);
    EXPECT_EQ(hueAt(picture, 13, 19), kRed) << "the white quarter";
    EXPECT_LT(picture.pixel(18, 12)[1], picture.pixel(13, 12)[0] / 10) << "the green quarter";
    expectSamePictureConverted(mesh);
}

// The vertex colours have an alpha of 0 at the two lower corners, which counts only if the material has a mask.
TEST_F(MeshMaterials, WithAMaskUseTheAlphaOfVertices) {
    const auto coloured = [this](const json &extras) {
        const std::string image = writeQuarters("a.png", std::vector<std::vector<std::uint8_t>>(4, {255, 0, 0}));
        return directory_.write("square.glb",
                                glbSquare({image}, 0, extras, {1, 1, 1, 0, 1, 1, 1, 0, 1, 1, 1, 1, 1, 1, 1, 1}));
    };
    const json opaque = converted(coloured(json::object()))["surfaces"]["Paper"];
    EXPECT_EQ(opaque["connections"],
              (json::array({"Color Image.Color -> Tinted Image.A", "Vertex Colors.Color -> Tinted Image.B",
                            "Tinted Image.Color -> Paper.Color"})));
    const FilePixels picture = render(coloured({{"alphaMode", "MASK"}, {"alphaCutoff", 0.5}}));
    EXPECT_EQ(hueAt(picture, 16, 12), kRed);
    EXPECT_EQ(hueAt(picture, 16, 20), -1);
}

TEST_F(MeshMaterials, AreReplacedByOptions) {
    directory_.write("square.mtl", "newmtl Paper\nKd 1 0 0\n");
    const std::string mesh = directory_.write("square.obj", kSquare);
    EXPECT_EQ(hueAt(render(mesh), 16, 16), kRed);
    const Outcome outcome = test::velm({"render", mesh, "-o", file("a.exr"), "--size", "32x32", "--view", "front",
                                        "--samples", "1", "--set", "surfaces.Paper.settings.Color=[0,0,1]", "--quiet"});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(hueAt(readFilePixels(file("a.exr")), 16, 16), kBlue);
}

TEST_F(MeshMaterials, RefusesImagesThatAreNotInsideOfTheFile) {
    const std::string image = writeQuarters("a.png", kQuarters);
    const std::string mesh = directory_.write("square.glb", glbSquare({image}, 0, json::object()));
    EXPECT_NO_THROW(readFilePixels(mesh + "#image/0"));
    EXPECT_THROW(readFilePixels(mesh + "#image/1"), InputError);
    EXPECT_THROW(readFilePixels(file("a.png") + "#image/0"), InputError);
    const std::string cut = directory_.write("cut.glb", readFile(mesh).substr(0, readFile(mesh).size() - 9));
    EXPECT_THROW(readFilePixels(cut + "#image/0"), InputError);
}

} // namespace
} // namespace velm::host
