// Writes the JSON Schema of the scene format to a file: the target "schema" updates docs/scene.schema.json by it.
#include "host/io/files.h"
#include "host/scene/read_scene.h"

#include <exception>
#include <iostream>

int main(int argc, char **argv) {
    if (argc != 2) {
        std::cerr << "usage: velm_schema FILE\n";
        return 2;
    }
    try {
        velm::host::writeFileAtomically(argv[1], velm::host::sceneSchema());
    } catch (const std::exception &error) {
        std::cerr << "velm_schema: " << error.what() << '\n';
        return 3;
    }
    return 0;
}
