// glTF files for tests.
#pragma once

#include <string>
#include <vector>

namespace velm::host::test {

// The member of a glTF node that makes it a light.
inline std::string gltfLight(int number) {
    return R"("extensions": {"KHR_lights_punctual": {"light": )" + std::to_string(number) + "}}";
}

// A file with a square in the plane of X and Y, from -1 to 1, that faces +Z and has no material. The nodes are added to
// that of the square; `cameras` and `lights` are the lists that the nodes number.
inline std::string gltfSquare(const std::vector<std::string> &nodes, const std::string &cameras,
                              const std::string &lights) {
    std::string numbers = "0", all = R"({"name": "Square", "mesh": 0})";
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        numbers += ", " + std::to_string(i + 1);
        all += ", " + nodes[i];
    }
    std::string text = R"({"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [)" + numbers + "]}]";
    text += R"(, "nodes": [)" + all + "]";
    if (!cameras.empty()) text += R"(, "cameras": [)" + cameras + "]";
    if (!lights.empty())
        text += R"(, "extensionsUsed": ["KHR_lights_punctual"],
            "extensions": {"KHR_lights_punctual": {"lights": [)" +
                lights + "]}}";
    return text + R"(, "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "indices": 1}]}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 4, "type": "VEC3",
                       "min": [-1, -1, 0], "max": [1, 1, 0]},
                      {"bufferView": 1, "componentType": 5125, "count": 6, "type": "SCALAR"}],
        "bufferViews": [{"buffer": 0, "byteLength": 48}, {"buffer": 0, "byteOffset": 48, "byteLength": 24}],
        "buffers": [{"byteLength": 72, "uri": "data:application/octet-stream;base64,)"
                  "AACAvwAAgL8AAAAAAACAPwAAgL8AAAAAAACAPwAAgD8AAAAAAACAvwAAgD8AAAAA"
                  R"(AAAAAAEAAAACAAAAAAAAAAIAAAADAAAA"}]})";
}

} // namespace velm::host::test
