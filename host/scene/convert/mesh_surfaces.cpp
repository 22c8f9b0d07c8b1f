#include "host/scene/convert/mesh_surfaces.h"

#include "host/scene/convert/network_writer.h"
#include "host/scene/format/shortest.h"

#include <optional>
#include <utility>

namespace velm::host {

namespace {

using Use = MeshTexture::Use;

// Builds the network of one surface.
class MaterialNetwork {
  public:
    MaterialNetwork(const MeshMaterial &material, SurfaceDescription &surface,
                    const std::function<std::string(const MeshTexture &)> &imageName)
        : material_(material), imageName_(imageName), writer_(surface) {}

    void build() {
        addColour();
        if (const MeshTexture *texture = shown(Use::luminosity)) addLuminosity(*texture);
        addOpacity();
    }

  private:
    const MeshTexture *shown(Use use) const {
        const MeshTexture *texture = material_.texture(use);
        return texture && !imageName_(*texture).empty() ? texture : nullptr;
    }

    // Returns the name of the node for an image: a new node, unless the colour has the same image.
    std::string addImage(const MeshTexture &texture, const char *name) {
        const MeshTexture *colour = material_.texture(Use::colour);
        if (!colourImage_.empty() && colour->file == texture.file && colour->uvMap == texture.uvMap &&
            colour->wrap == texture.wrap && colour->isNegative == texture.isNegative)
            return colourImage_;
        NetworkWriter::Node node = writer_.add(name, "Image Projection", NetworkWriter::kLayerColumn);
        node.set("Image", imageName_(texture));
        node.set("Projection", std::string("UV"));
        node.set("UV Map", texture.uvMap.substr(0, kLongestNodeText));
        node.set("Wrap U", std::string(kImageWraps[static_cast<int>(texture.wrap[0])]));
        node.set("Wrap V", std::string(kImageWraps[static_cast<int>(texture.wrap[1])]));
        if (texture.isNegative) node.set("Negative", std::string("On"));
        return node.name();
    }

    // The product of a value and a constant.
    NodeOutput addFactor(const NodeOutput &value, const char *name, const char *server, SettingValue factor,
                         const char *output) {
        NetworkWriter::Node node = writer_.add(name, server, NetworkWriter::kBlendColumn);
        node.set("B", std::move(factor));
        node.connect(value, "A");
        return {.node = node.name(), .output = output};
    }

    // The product of two values of the same type.
    NodeOutput addProduct(const NodeOutput &a, const NodeOutput &b, const char *name, const char *server,
                          const char *output) {
        NetworkWriter::Node node = writer_.add(name, server, NetworkWriter::kBlendColumn);
        node.connect(a, "A");
        node.connect(b, "B");
        return {.node = node.name(), .output = output};
    }

    // An output of the node for the colours of vertices, which is added when it is first needed.
    NodeOutput ofVertices(const char *output) {
        if (vertexColours_.empty()) {
            NetworkWriter::Node node = writer_.add("Vertex Colors", "Vertex Color", NetworkWriter::kLayerColumn);
            node.set("Color Map", material_.colourMap.substr(0, kLongestNodeText));
            vertexColours_ = node.name();
        }
        return {.node = vertexColours_, .output = output};
    }

    // The product of the image, the material's colour and that of the vertices, as far as the material has them.
    void addColour() {
        std::optional<NodeOutput> colour;
        if (const MeshTexture *texture = shown(Use::colour)) {
            colourImage_ = addImage(*texture, "Color Image");
            colour = {.node = colourImage_, .output = "Color"};
        }
        if (!material_.colourMap.empty()) {
            const NodeOutput ofVertex = ofVertices("Color");
            colour = colour ? addProduct(*colour, ofVertex, "Tinted Image", "Multiply Color", "Color") : ofVertex;
        }
        if (!colour) return;
        if (material_.colour != Double3{1, 1, 1})
            colour = addFactor(*colour, "Color Factor", "Multiply Color", shortest(SettingValue(material_.colour), 1),
                               "Color");
        writer_.connectToSurface(*colour, "Color");
    }

    void addLuminosity(const MeshTexture &texture) {
        NodeOutput luminosity{.node = addImage(texture, "Luminosity Image"), .output = "Luminance"};
        if (material_.luminosity != 1)
            luminosity =
                addFactor(luminosity, "Luminosity Factor", "Multiply Scalar", shortest(material_.luminosity, 1), "Out");
        writer_.connectToSurface(luminosity, "Luminosity");
    }

    // The surface's transparency is 1 - opacity, or a step of it.
    void addOpacity() {
        std::optional<NodeOutput> found;
        if (const MeshTexture *texture = shown(Use::opacity))
            found = {.node = addImage(*texture, "Opacity Image"), .output = texture->isAlpha ? "Alpha" : "Luminance"};
        if (material_.hasColourAlpha) {
            const NodeOutput ofVertex = ofVertices("Alpha");
            found = found ? addProduct(*found, ofVertex, "Image and Vertex Alpha", "Multiply Scalar", "Out") : ofVertex;
        }
        if (!found) return;
        const NodeOutput &opacity = *found;
        const bool isStep = material_.alphaCutoff > 0 && material_.opacity > 0;
        writer_.startRow();
        writer_.connectToSurface(isStep ? addStep(opacity) : addInverse(opacity), "Transparency");
    }

    NodeOutput addStep(const NodeOutput &opacity) {
        NetworkWriter::Node node = writer_.add("Cutoff", "Color Ramp", NetworkWriter::kBlendColumn);
        node.set("Source", std::string("Input"));
        node.set("Keys", 2.0);
        node.set("Position 1", 0.0);
        node.set("Alpha 1", kPercentPerFraction);
        node.set("Position 2", shortest(material_.alphaCutoff / material_.opacity, 1));
        node.set("Alpha 2", 0.0);
        node.set("Shape 2", std::string("Step"));
        node.connect(opacity, "Input");
        return {.node = node.name(), .output = "Alpha"};
    }

    NodeOutput addInverse(const NodeOutput &opacity) {
        NetworkWriter::Node node = writer_.add("Transparency", "Mix Scalar", NetworkWriter::kBlendColumn);
        node.set("A", 1.0);
        node.set("B", shortest(1 - material_.opacity, 1));
        node.connect(opacity, "Mix");
        return {.node = node.name(), .output = "Out"};
    }

    const MeshMaterial &material_;
    const std::function<std::string(const MeshTexture &)> &imageName_;
    NetworkWriter writer_;
    std::string colourImage_;   // the node for the image of the colour; empty: none yet
    std::string vertexColours_; // the same for the colours of vertices
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
