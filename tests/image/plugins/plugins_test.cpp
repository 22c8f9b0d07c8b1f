// Environment variables do not make the image library load other libraries. A program of its own, since OpenImageIO
// looks for them once.
#include "host/image/image.h"
#include "host/image/picture.h"
#include "tests/temporary_directory.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace velm::host::test {
namespace {

TEST(ImagePlugins, AreNotLoaded) {
    const TemporaryDirectory directory;
    const std::string mark = directory / "loaded";
    setenv("VELM_PLANTED", mark.c_str(), 1);
    for (const char *name : {"OIIO_LIBRARY_PATH", "LD_LIBRARY_PATH"}) setenv(name, PLANTED_DIRECTORY, 1);
    writePicture(Picture(2, 2), directory / "a.png");
    EXPECT_EQ(readImage(directory / "a.png", "a")->width, 2);
    EXPECT_FALSE(std::filesystem::exists(mark));
    for (const char *name : {"OIIO_LIBRARY_PATH", "LD_LIBRARY_PATH"}) // modules may use them
        EXPECT_STREQ(std::getenv(name), PLANTED_DIRECTORY);

    void *planted = dlopen(PLANTED_DIRECTORY "/planted.imageio.so", RTLD_NOW);
    ASSERT_TRUE(planted) << dlerror();
    EXPECT_TRUE(std::filesystem::exists(mark)) << "it would have been noticed";
    dlclose(planted);
}

} // namespace
} // namespace velm::host::test
