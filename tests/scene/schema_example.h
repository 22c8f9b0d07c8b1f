// Scenes that hold every key of the format, made from the JSON Schema.
#pragma once

#include "host/io/files.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace velm::host::test {

inline nlohmann::ordered_json publishedSchema() {
    return nlohmann::ordered_json::parse(readFile(VELM_SOURCE_DIR "/docs/scene.schema.json"));
}

// Makes values that a schema describes, with every key that it has. Where there are alternatives, `turn` selects one.
class SchemaExample {
  public:
    using Json = nlohmann::ordered_json;

    SchemaExample(const Json &root, std::size_t turn) : root_(root), turn_(turn) {}

    Json make(const Json &schema, const std::string &key) {
        if (schema.contains("$ref"))
            return make(root_.at(Json::json_pointer(schema["$ref"].get<std::string>().substr(1))), key);
        if (schema.contains("const")) return schema["const"];
        if (schema.contains("enum")) return schema["enum"][0];
        if (schema.contains("anyOf")) return make(pick(schema["anyOf"]), key);
        if (schema.contains("oneOf") && !schema.contains("type")) return make(pick(schema["oneOf"]), key);
        const std::string type = schema.at("type");
        if (type == "boolean") return true;
        if (type == "string" && key == "data") return "00ff";
        if (type == "string") return schema.contains("pattern") ? connection() : "Name";
        if (type == "integer") return schema.at("minimum");
        if (type == "number") return number(schema);
        return type == "array" ? array(schema, key) : object(schema, key);
    }
    std::size_t alternatives() const { return alternatives_; }

  private:
    const Json &pick(const Json &choices) {
        alternatives_ = std::max(alternatives_, choices.size());
        return choices[turn_ % choices.size()];
    }
    static Json number(const Json &schema) {
        if (schema.contains("exclusiveMinimum")) return schema["exclusiveMinimum"].get<double>() + 0.5;
        return schema.contains("minimum") ? schema["minimum"].get<double>() : 0.25;
    }
    // Nodes hold networks of nodes; one level of them is enough. A node must not have the name of its network's owner.
    const char *nodeName() const { return depth_ == 0 ? "Node" : "Inner"; }
    std::string connection() const { return depth_ == 0 ? "Node.Out -> Name.In" : "Inner.Out -> Node.In"; }
    Json network(const Json &schema) {
        ++depth_;
        Json made = make(schema, "network");
        --depth_;
        return made;
    }
    Json array(const Json &schema, const std::string &key) {
        Json list = Json::array();
        for (int i = 0; i < schema.value("minItems", 1); ++i) list.push_back(make(schema["items"], key));
        return list;
    }
    Json object(const Json &schema, const std::string &key) {
        Json result = Json::object();
        if (schema.at("additionalProperties").is_object()) {
            const std::string name = key == "nodes" ? nodeName() : key == "nulls" ? kRoot : "Name";
            result[name] = make(schema["additionalProperties"], name);
            return result;
        }
        std::string onlyOne;
        if (schema.contains("oneOf")) onlyOne = pick(schema["oneOf"])["required"][0];
        for (const auto &[name, property] : schema.at("properties").items()) {
            bool rival = false;
            if (!onlyOne.empty())
                for (const Json &one : schema["oneOf"])
                    rival = rival || (one["required"][0] == name && name != onlyOne);
            // An item has one or the other. The schema does not say so; the reader does.
            if (name == "rotation" && result.contains("target")) continue;
            if (name == "target" && turn_ % 2 == 1) continue;
            if (name == "parent") { // the null's own would be a circle
                if (key != kRoot) result[name] = kRoot;
                continue;
            }
            if (name == "network") {
                if (depth_ == 0) result[name] = network(property);
                continue;
            }
            if (!rival) result[name] = make(property, name);
            if (name == "region" || name == "mask") result[name] = {0.25, 0.25, 0.75, 0.5}; // not empty
        }
        if (result.contains("sequence")) result["file"] = "Name #";    // a sequence needs a place for the number
        if (result.contains("maxDistance")) result["maxDistance"] = 7; // above the other one
        // The position of a light or camera must not be its target.
        if (result.contains("target")) result["target"] = {7, 8, 9};
        return result;
    }

    static constexpr const char *kRoot = "Root"; // the null

    const Json &root_;
    std::size_t turn_, alternatives_ = 1;
    int depth_ = 0; // of networks in nodes
};

// Scenes that together hold every key and every alternative of the schema. Files are called "Name".
inline std::vector<std::string> schemaExamples() {
    const nlohmann::ordered_json schema = publishedSchema();
    std::vector<std::string> scenes;
    for (std::size_t turn = 0, turns = 1; turn < turns; ++turn) {
        SchemaExample example(schema, turn);
        scenes.push_back(example.make(schema, "").dump(2));
        turns = std::max(turns, example.alternatives());
    }
    return scenes;
}

} // namespace velm::host::test
