#include "host/base/names.h"
#include "host/base/one_line.h"
#include "host/cli/file_info.h"
#include "host/render/motion/pose.h"
#include "host/render/motion/values.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <ostream>

namespace velm::host {

namespace {

// Indexed by LightDescription::Kind.
constexpr const char *kLightKinds[] = {"point", "distant", "area", "spot", "linear", "dome"};

const char *nameOfLight(LightDescription::Kind kind) { return kLightKinds[static_cast<std::size_t>(kind)]; }

const char *unitOf(const FileReader &reader) {
    return reader.isMetric ? "metres" : "not given by the format; taken as metres";
}

// "x -1 to 1, y 0 to 2, z -1 to 1"
std::string boundsText(const Bounds &bounds) {
    std::string text;
    for (std::size_t axis = 0; axis < 3; ++axis)
        text += fmt::format("{}{} {:.6g} to {:.6g}", axis > 0 ? ", " : "", "xyz"[axis], bounds.sides[axis][0],
                            bounds.sides[axis][1]);
    return text;
}

std::string quoted(const std::vector<std::string> &names) {
    std::vector<std::string> all;
    for (const std::string &name : names) all.push_back(inQuotes(name));
    return fmt::format("{}", fmt::join(all, ", "));
}

Double3 positionOf(const Transform &transform) {
    return {transform.position.x, transform.position.y, transform.position.z};
}

std::string vectorText(const Double3 &vector) { return fmt::format("{:.6g}", fmt::join(vector, " ")); }

// Lines of a label and a text.
class Lines {
  public:
    explicit Lines(std::ostream &out) : out_(out) {}
    void add(const char *label, const std::string &text) { out_ << fmt::format("{:<9} {}\n", label, onOneLine(text)); }

  private:
    std::ostream &out_;
};

void addObjects(const FileInfo &info, Lines &lines) {
    for (const ObjectInfo &object : info.objects) {
        lines.add("object", fmt::format("{}: {}{}{}, {} points, {} polygons, {} triangles", inQuotes(object.name),
                                        object.shape, object.file.empty() ? "" : " ", object.file, object.points,
                                        object.polygons, object.triangles));
        if (!object.materials.empty()) lines.add("", "materials " + quoted(object.materials));
        if (!object.uvMaps.empty()) lines.add("", "UV maps " + quoted(object.uvMaps));
        if (!object.colourMaps.empty()) lines.add("", "colour maps " + quoted(object.colourMaps));
        if (!object.weightMaps.empty()) lines.add("", "weight maps " + quoted(object.weightMaps));
        for (const LayerInfo &layer : object.parts.layers) lines.add("", "layer " + layerText(layer));
        if (!object.parts.parts.empty()) lines.add("", "parts " + quoted(object.parts.parts));
        for (const std::string &note : object.notes) lines.add("", "note: " + note);
    }
}

void addSurfaces(const FileInfo &info, Lines &lines) {
    for (const SurfaceInfo &surface : info.surfaces) {
        lines.add("surface", inQuotes(surface.name) + (surface.file.empty() ? "" : " of " + surface.file));
        for (const NodeInfo &node : surface.nodes)
            lines.add("",
                      fmt::format("node {}: {}{}", node.path, node.server, node.isKnown ? "" : " (an unknown server)"));
    }
}

std::string fileText(const ImageDescription &image) {
    if (!image.sequence) return image.file;
    return fmt::format("{}, files {} to {}", image.file, image.sequence->first, image.sequence->last);
}

void addRest(const SceneDescription &scene, bool isScene, Lines &lines) {
    for (const ImageDescription &image : scene.images)
        lines.add("image", fmt::format("{}: {}", inQuotes(image.name),
                                       image.notFound.empty() ? fileText(image) : "missing: " + image.notFound));
    const double start = startTime(scene.render);
    const ScenePose pose = poseAt(scene, start);
    for (std::size_t i = 0; i < scene.cameras.size(); ++i)
        lines.add("camera",
                  fmt::format("{}: at {}, field of view {:.6g} degrees", inQuotes(scene.cameras[i].name),
                              vectorText(positionOf(pose.cameras[i])), valuesAt(scene.cameras[i], start).fieldOfView));
    for (const LightDescription &light : scene.lights)
        lines.add("light", fmt::format("{}: {}, intensity {:.6g}", inQuotes(light.name), nameOfLight(light.kind),
                                       valuesAt(light, start).intensity));
    for (const NullDescription &item : scene.nulls)
        lines.add("null", fmt::format("{}: at {}", inQuotes(item.name), vectorText(placeAt(item, start).position)));
    if (!isScene) return;
    const RenderDescription &render = scene.render;
    lines.add("frames", fmt::format("{} to {}, step {}, {:.6g} a second", render.firstFrame, render.lastFrame,
                                    render.frameStep, render.framesPerSecond));
    lines.add("picture",
              fmt::format("{} x {} pixels, {} samples a pixel", render.width, render.height, render.samples));
}

Json objectsJson(const FileInfo &info) {
    Json all = Json::array();
    for (const ObjectInfo &object : info.objects) {
        Json one = {{"name", object.name}, {"shape", object.shape}};
        if (!object.file.empty()) one["file"] = object.file;
        one["points"] = object.points;
        one["polygons"] = object.polygons;
        one["triangles"] = object.triangles;
        one["materials"] = object.materials;
        one["uvMaps"] = object.uvMaps;
        one["colourMaps"] = object.colourMaps;
        one["weightMaps"] = object.weightMaps;
        one["layers"] = layersJson(object.parts);
        one["parts"] = object.parts.parts;
        one["notes"] = object.notes;
        all.push_back(one);
    }
    return all;
}

Json surfacesJson(const FileInfo &info) {
    Json all = Json::array();
    for (const SurfaceInfo &surface : info.surfaces) {
        Json one = {{"name", surface.name}};
        if (!surface.file.empty()) one["file"] = surface.file;
        one["nodes"] = Json::array();
        for (const NodeInfo &node : surface.nodes)
            one["nodes"].push_back({{"name", node.path}, {"server", node.server}, {"known", node.isKnown}});
        all.push_back(one);
    }
    return all;
}

Json imagesJson(const SceneDescription &scene) {
    Json all = Json::array();
    for (const ImageDescription &image : scene.images) {
        Json one = {{"name", image.name}, {"file", image.file}, {"found", image.notFound.empty()}};
        if (image.sequence) one["sequence"] = {{"first", image.sequence->first}, {"last", image.sequence->last}};
        all.push_back(one);
    }
    return all;
}

Json camerasJson(const SceneDescription &scene) {
    Json all = Json::array();
    const double start = startTime(scene.render);
    const ScenePose pose = poseAt(scene, start);
    for (std::size_t i = 0; i < scene.cameras.size(); ++i)
        all.push_back({{"name", scene.cameras[i].name},
                       {"position", positionOf(pose.cameras[i])},
                       {"fieldOfView", valuesAt(scene.cameras[i], start).fieldOfView}});
    return all;
}

Json nullsJson(const SceneDescription &scene) {
    Json all = Json::array();
    for (const NullDescription &item : scene.nulls)
        all.push_back({{"name", item.name}, {"position", placeAt(item, startTime(scene.render)).position}});
    return all;
}

Json lightsJson(const SceneDescription &scene) {
    Json all = Json::array();
    for (const LightDescription &light : scene.lights)
        all.push_back({{"name", light.name},
                       {"kind", nameOfLight(light.kind)},
                       {"intensity", valuesAt(light, startTime(scene.render)).intensity}});
    return all;
}

} // namespace

void printInfo(const FileInfo &info, std::ostream &out) {
    const SceneDescription &scene = info.scene;
    const FileReader &reader = *info.reader;
    Lines lines(out);
    lines.add("file", scene.file);
    lines.add("kind", reader.name);
    lines.add("units", unitOf(reader));
    lines.add("up", reader.isZUp ? "+Z in the file, turned to +Y" : "+Y");
    if (!info.objects.empty()) lines.add("bounds", boundsText(info.bounds));
    addObjects(info, lines);
    addSurfaces(info, lines);
    addRest(scene, reader.isScene, lines);
    for (const Warning &warning : info.warnings) lines.add("note", warning.text());
}

Json infoJson(const FileInfo &info) {
    const SceneDescription &scene = info.scene;
    const FileReader &reader = *info.reader;
    Json json = {{"file", scene.file}, {"kind", reader.name}, {"units", unitOf(reader)}};
    json["up"] = reader.isZUp ? "+Z" : "+Y";
    if (!info.objects.empty()) {
        const auto &side = info.bounds.sides;
        json["bounds"] = {{"low", {side[0][0], side[1][0], side[2][0]}},
                          {"high", {side[0][1], side[1][1], side[2][1]}}};
    }
    json["objects"] = objectsJson(info);
    json["surfaces"] = surfacesJson(info);
    json["images"] = imagesJson(scene);
    json["cameras"] = camerasJson(scene);
    json["lights"] = lightsJson(scene);
    json["nulls"] = nullsJson(scene);
    json["notes"] = Json::array();
    for (const Warning &warning : info.warnings) json["notes"].push_back(warning.text());
    if (!reader.isScene) return json;
    const RenderDescription &render = scene.render;
    json["frames"] = {{"first", render.firstFrame},
                      {"last", render.lastFrame},
                      {"step", render.frameStep},
                      {"perSecond", render.framesPerSecond}};
    json["picture"] = {{"width", render.width}, {"height", render.height}, {"samples", render.samples}};
    return json;
}

} // namespace velm::host
