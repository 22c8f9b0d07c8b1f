// A library with the name of an image format of OpenImageIO's. It makes a file when it is loaded.
#include <cstdio>
#include <cstdlib>

namespace {

const bool loaded = [] {
    if (const char *name = std::getenv("VELM_PLANTED"))
        if (std::FILE *file = std::fopen(name, "w")) std::fclose(file);
    return true;
}();

} // namespace
