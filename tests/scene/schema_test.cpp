// The published JSON Schema is that of the reader's tables, and the reader accepts what it describes.
#include "tests/scene/scene_text.h"
#include "tests/scene/schema_example.h"
#include "tests/temporary_directory.h"

#include "host/io/files.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace velm::host {
namespace {

using Json = nlohmann::ordered_json;

TEST(Schema, ThePublishedOneIsThatOfTheReadersTables) {
    EXPECT_EQ(readFile(VELM_SOURCE_DIR "/docs/scene.schema.json"), sceneSchema()) << "build the target \"schema\"";
}

TEST(Schema, TheReaderAcceptsEveryKeyAndAlternative) {
    const test::TemporaryDirectory directory;
    directory.write("Name", "");
    const std::vector<std::string> scenes = test::schemaExamples();
    for (const std::string &text : scenes) EXPECT_NO_THROW(readSceneText(text, directory / "scene.json", {})) << text;
    EXPECT_GE(scenes.size(), 6u) << "keys have six shapes";
}

// Calls `see` for every object schema that lists its keys.
template <class See>
void forEachObject(const Json &schema, See see) {
    if (schema.is_object() && schema.contains("properties")) see(schema);
    if (schema.is_structured())
        for (const Json &child : schema) forEachObject(child, see);
}

TEST(Schema, DescribesEveryKeyAndAllowsNoOther) {
    int objects = 0;
    forEachObject(test::publishedSchema(), [&objects](const Json &object) {
        ++objects;
        // The names of surfaces are free; besides them there is "from".
        const Json &others = object.at("additionalProperties");
        EXPECT_TRUE(others == false || (object["properties"].contains("from") && others.is_object())) << object;
        for (const auto &[key, property] : object["properties"].items())
            EXPECT_TRUE(property.value("description", "").ends_with('.')) << key;
    });
    EXPECT_GT(objects, 12);
}

} // namespace
} // namespace velm::host
