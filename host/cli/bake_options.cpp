#include "host/cli/bake_options.h"

#include "host/bake/bake_texture.h"
#include "host/base/limits.h"

#include <fmt/format.h>
#include <utility>

namespace velm::host {

namespace {

NormalSpace parseSpace(const std::string &text) {
    constexpr std::pair<const char *, NormalSpace> kSpaces[] = {
        {"tangent", NormalSpace::tangent}, {"object", NormalSpace::object}, {"world", NormalSpace::world}};
    return parseWord("--space", text, kSpaces);
}

// What is baked, and from where it is seen.
void declareSubject(CLI::App &command, BakeOptions &options) {
    command
        .add_option("--output", options.output,
                    "What is baked: an output of a node, such as AO.Color; a value of the surface,\n"
                    "such as Color or Normal; or lit, the colour with the scene's lights")
        ->required()
        ->type_name("NAME");
    command.add_option("--object", options.object, "The object; needed if the file has several")->type_name("NAME");
    command
        .add_option("--surface", options.surfaces,
                    "Only the polygons with this surface; may be given several times. All surfaces\n"
                    "by default")
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name("NAME");
    command
        .add_option("--from-direction", options.viewer,
                    "From where points are seen: normal, the default, against the surface's smooth\n"
                    "normal; camera; or the name of a camera or light")
        ->type_name("NAME");
    addParsed(command, "--space", options.space, parseSpace, "SPACE",
              "The coordinates of normals: tangent, the default, object or world");
}

VertexMapKind parseMapKind(const std::string &text) {
    constexpr std::pair<const char *, VertexMapKind> kKinds[] = {
        {"RGB", VertexMapKind::colours}, {"RGBA", VertexMapKind::coloursWithAlpha}, {"WGHT", VertexMapKind::weights}};
    return parseWord("--as", text, kKinds);
}

void declareVertices(CLI::App &command, BakeOptions &options) {
    auto *const vertices =
        command
            .add_option("--vertices", options.vertexMap,
                        "Bake into the vertices of the mesh, as a map of this name, instead of a picture:\n"
                        "the file is a copy of the mesh's (.lwo, .glb) or made of any mesh (.ply)")
            ->check(
                CLI::Validator([](const std::string &name) { return name.empty() ? "the map has no name" : ""; }, ""))
            ->type_name("MAP");
    for (const char *option : {"--size", "--uv", "--margin", "--space"}) vertices->excludes(command.get_option(option));
    addParsed(command, "--as", options.mapKind, parseMapKind, "KIND",
              "The kind of vertex map: RGB, the default for colours, RGBA, or WGHT, the default\n"
              "for numbers")
        ->needs(vertices);
}

void declarePicture(CLI::App &command, BakeOptions &options) {
    command
        .add_option("-o", options.file,
                    "The file: .png, .jpg, .exr, .tif or .hdr for a picture. #### or %04d in the name\n"
                    "is replaced by the frame's number; without it, the number of each of several\n"
                    "frames goes before the extension")
        ->required()
        ->type_name("FILE");
    addParsed(command, "--size", options.size, parseBakeSize, "N",
              "The size of the picture in texels: N for a square or WxH; 1024 by default");
    command.add_option("--uv", options.uvMap, "The UV map; the first one of the object's mesh by default")
        ->type_name("MAP");
    command
        .add_option("--samples", options.samples,
                    "Points per texel, of which 1 is its middle, or per vertex. 4 by default")
        ->check(CLI::Range(1, kMostSamples))
        ->type_name("N");
    command
        .add_option("--margin", options.margin,
                    "Texels around the polygons that get colours, too, so that filters of textures\n"
                    "show no seams; 16 by default, 0 for none")
        ->check(CLI::Range(0, kMostMargin))
        ->type_name("N");
    addParsed(command, "--frames", options.frames, FrameList::parse, "LIST",
              "The frames to bake, in this order: frames and ranges such as 1-10x3,15; the\n"
              "scene's first frame by default");
}

} // namespace

PictureSize parseBakeSize(const std::string &text) {
    const auto side = parseIntegers<1>(text, 'x');
    if (!side) {
        if (!parseIntegers<2>(text, 'x'))
            throw UsageError(fmt::format("--size: \"{}\" is no size such as 2048 or 2048x1024", text));
        return parseSize(text);
    }
    return parseSize(fmt::format("{0}x{0}", (*side)[0]));
}

void declareBakeOptions(CLI::App &command, ProgramOptions &program, BakeOptions &options) {
    declareSceneOptions(command, options);
    declareSubject(command, options);
    declarePicture(command, options);
    declareVertices(command, options);
    command
        .add_option("--threads", options.threads,
                    "Workers that bake; one for each core that this process may use by default")
        ->check(CLI::Range(1, kMostWorkers))
        ->type_name("N");
    command.add_option("--seed", options.seed, "Chooses another pattern of noise; 0 by default")->type_name("N");
    addReadLimits(command, program.reading);
    declareReports(command, options);
}

} // namespace velm::host
