// The JSON Schema and the reader say the same.
#include "tests/scene/scene_text.h"

#include "host/io/files.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace velm::host {
namespace {

using Json = nlohmann::ordered_json;

Json publishedSchema() { return Json::parse(readFile(VELM_SOURCE_DIR "/docs/scene.schema.json")); }

TEST(Schema, InTheDocumentsIsTheOneOfTheReadersTables) {
    EXPECT_EQ(readFile(VELM_SOURCE_DIR "/docs/scene.schema.json"), sceneSchema()) << "build the target \"schema\"";
}

// Makes a value that a schema describes, with every key that it knows. Where there are alternatives, `turn` picks one.
class Maker {
  public:
    Maker(const Json &root, std::size_t turn) : root_(root), turn_(turn) {}

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
    // Nodes hold networks of nodes: one inside a node is enough. Names must not be those of what holds them.
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
            const std::string name = key == "nodes" ? nodeName() : "Name";
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
            // A camera has one or the other, which a schema tells less well than the reader.
            if (name == "rotation" && result.contains("target")) continue;
            if (name == "network") {
                if (depth_ == 0) result[name] = network(property);
                continue;
            }
            if (!rival) result[name] = make(property, name);
        }
        // The same for a light or camera that would stand in its own target.
        if (result.contains("target")) result["target"] = {7, 8, 9};
        return result;
    }

    const Json &root_;
    std::size_t turn_, alternatives_ = 1;
    int depth_ = 0; // of networks in nodes
};

TEST(Schema, EveryKeyAndAlternativeIsTakenByTheReader) {
    const test::TemporaryDirectory directory;
    directory.write("Name", "");
    const Json schema = publishedSchema();
    std::size_t turns = 1;
    for (std::size_t turn = 0; turn < turns; ++turn) {
        Maker maker(schema, turn);
        const std::string text = maker.make(schema, "").dump(2);
        turns = std::max(turns, maker.alternatives());
        EXPECT_NO_THROW(readSceneText(text, directory.file("scene.json"), {})) << text;
    }
    EXPECT_GE(turns, 6u) << "the shapes of keys are six";
}

// Calls `see` for every object schema that lists its keys.
template <class See>
void walk(const Json &schema, See see) {
    if (schema.is_object() && schema.contains("properties")) see(schema);
    if (schema.is_structured())
        for (const Json &child : schema) walk(child, see);
}

TEST(Schema, TellsPeopleOfEveryKeyAndAllowsNoOther) {
    int objects = 0;
    walk(publishedSchema(), [&objects](const Json &object) {
        ++objects;
        // Surfaces have names that people give them, beside the one key that they come by from a file.
        const Json &others = object.at("additionalProperties");
        EXPECT_TRUE(others == false || (object["properties"].contains("from") && others.is_object())) << object;
        for (const auto &[key, property] : object["properties"].items())
            EXPECT_TRUE(property.value("description", "").ends_with('.')) << key;
    });
    EXPECT_GT(objects, 12);
}

} // namespace
} // namespace velm::host
