#include "host/scene/convert/mesh_surfaces.h"

#include "host/scene/format/shortest.h"

#include <array>
#include <fmt/format.h>
#include <string_view>
#include <utility>

namespace velm::host {

namespace {

using Use = MeshTexture::Use;

constexpr const char *kMaterialWraps[] = {"Reset", "Repeat", "Mirror", "Edge"}; // by MeshTexture::Wrap
constexpr std::size_t kLongestMapName = 255;                                    // that a node's text holds

bool isWhite(const Double3 &colour) { return colour == Double3{1, 1, 1}; }

// Builds the network of one surface.
class MaterialNetwork {
  public:
    MaterialNetwork(const MeshMaterial &material, SurfaceDescription &surface,
                    const std::function<std::string(const MeshTexture &)> &imageName)
        : material_(material), surface_(surface), imageName_(imageName) {}

    void build() {
        if (const MeshTexture *texture = shown(Use::colour)) addColour(*texture);
        if (const MeshTexture *texture = shown(Use::luminosity)) addLuminosity(*texture);
        if (const MeshTexture *texture = shown(Use::opacity)) addOpacity(*texture);
    }

  private:
    static constexpr int kWide = 240, kHigh = 200; // of a node in an editor, with the space around it

    const MeshTexture *shown(Use use) const {
        const MeshTexture *texture = material_.texture(use);
        return texture && !imageName_(*texture).empty() ? texture : nullptr;
    }

    // `column` counts from the root to the left.
    NodeDescription &addNode(const char *name, const char *server, int column) {
        NodeDescription &node = surface_.network.nodes.emplace_back();
        node.name = name;
        if (node.name == surface_.name) node.name += " (2)"; // a network's owner has its name in it
        node.server = server;
        node.location = surface_.location;
        node.look.at = {-column * kWide, row_ * kHigh};
        return node;
    }

    void set(NodeDescription &node, const char *label, SettingValue value) const {
        node.settings.push_back({.label = label, .value = std::move(value), .location = surface_.location});
    }

    void connect(const std::string &from, const char *output, const std::string &to, const char *input) {
        surface_.network.connections.push_back(
            {.fromNode = from, .output = output, .toNode = to, .input = input, .location = surface_.location});
    }

    // Gives the name of the node for an image, which is a new one unless the colour has the same.
    std::string addImage(const MeshTexture &texture, const char *name) {
        const MeshTexture *colour = material_.texture(Use::colour);
        if (!colourImage_.empty() && colour->file == texture.file && colour->uvMap == texture.uvMap &&
            colour->wrap == texture.wrap && colour->isNegative == texture.isNegative)
            return colourImage_;
        NodeDescription &node = addNode(name, "Image Projection", 2);
        ++row_;
        set(node, "Image", imageName_(texture));
        set(node, "Projection", std::string("UV"));
        set(node, "UV Map", texture.uvMap.substr(0, kLongestMapName));
        set(node, "Wrap U", std::string(kMaterialWraps[static_cast<int>(texture.wrap[0])]));
        set(node, "Wrap V", std::string(kMaterialWraps[static_cast<int>(texture.wrap[1])]));
        if (texture.isNegative) set(node, "Negative", std::string("On"));
        return node.name;
    }

    void addColour(const MeshTexture &texture) {
        colourImage_ = addImage(texture, "Color Image");
        if (isWhite(material_.colour)) return connect(colourImage_, "Color", surface_.name, "Color");
        --row_;
        NodeDescription &node = addNode("Color Factor", "Multiply Color", 1);
        ++row_;
        set(node, "B", shortest(SettingValue(material_.colour), 1));
        const std::string factor = node.name;
        connect(colourImage_, "Color", factor, "A");
        connect(factor, "Color", surface_.name, "Color");
    }

    void addLuminosity(const MeshTexture &texture) {
        const std::string image = addImage(texture, "Luminosity Image");
        if (material_.luminosity == 1) return connect(image, "Luminance", surface_.name, "Luminosity");
        --row_;
        NodeDescription &node = addNode("Luminosity Factor", "Multiply Scalar", 1);
        ++row_;
        set(node, "B", shortest(material_.luminosity, 1));
        const std::string factor = node.name;
        connect(image, "Luminance", factor, "A");
        connect(factor, "Out", surface_.name, "Luminosity");
    }

    // The surface's transparency is 1 - opacity, or a step of it.
    void addOpacity(const MeshTexture &texture) {
        const std::string image = addImage(texture, "Opacity Image");
        const char *output = texture.isAlpha ? "Alpha" : "Luminance";
        if (material_.alphaCutoff > 0 && material_.opacity > 0) {
            NodeDescription &node = addNode("Cutoff", "Color Ramp", 1);
            ++row_;
            set(node, "Source", std::string("Input"));
            set(node, "Keys", 2.0);
            set(node, "Position 1", 0.0);
            set(node, "Alpha 1", 100.0);
            set(node, "Position 2", shortest(material_.alphaCutoff / material_.opacity, 1));
            set(node, "Alpha 2", 0.0);
            set(node, "Shape 2", std::string("Step"));
            const std::string ramp = node.name;
            connect(image, output, ramp, "Input");
            return connect(ramp, "Alpha", surface_.name, "Transparency");
        }
        NodeDescription &node = addNode("Transparency", "Mix Scalar", 1);
        ++row_;
        set(node, "A", 1.0);
        set(node, "B", shortest(1 - material_.opacity, 1));
        const std::string mix = node.name;
        connect(image, output, mix, "Mix");
        connect(mix, "Out", surface_.name, "Transparency");
    }

    const MeshMaterial &material_;
    SurfaceDescription &surface_;
    const std::function<std::string(const MeshTexture &)> &imageName_;
    std::string colourImage_; // the node for the image of the colour; empty: none yet
    int row_ = 0;             // of the next node in an editor
};

// The transparency without a texture.
double transparencyOf(const MeshMaterial &material) {
    if (material.alphaCutoff > 0) return material.opacity < material.alphaCutoff ? 1 : 0;
    return 1 - material.opacity;
}

} // namespace

SurfaceDescription surfaceOfMaterial(const MeshMaterial &material, const std::string &name, const std::string &file,
                                     const std::function<std::string(const MeshTexture &)> &imageName) {
    SurfaceDescription surface;
    surface.name = name;
    surface.location.file = file;
    surface.doubleSided = material.doubleSided;
    const std::pair<const char *, double> numbers[] = {{"Luminosity", material.luminosity},
                                                       {"Diffuse", material.diffuse},
                                                       {"Specular", material.specular},
                                                       {"Glossiness", material.glossiness},
                                                       {"Reflection", material.reflection},
                                                       {"Transparency", transparencyOf(material)},
                                                       {"Refraction Index", material.refractionIndex}};
    const auto set = [&](const char *label, SettingValue value) {
        surface.settings.push_back(
            {.label = label, .value = shortest(std::move(value), 1), .location = surface.location});
    };
    set("Color", material.colour);
    for (const auto &[label, value] : numbers) set(label, value);
    MaterialNetwork(material, surface, imageName).build();
    return surface;
}

} // namespace velm::host
