// Writing pictures to files, and reading them back.
#include "host/base/error.h"
#include "host/image/file_pixels.h"
#include "host/image/image.h"
#include "host/image/picture.h"
#include "tests/temporary_directory.h"

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <limits>

namespace velm::host::test {
namespace {

using Names = std::vector<std::string>;

// Values that change slowly, so that JPEG keeps them, too.
Picture ramp() {
    Picture picture(32, 16);
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 32; ++x) {
            float *pixel = picture.pixel(x, y);
            pixel[0] = static_cast<float>(x + 1) / 32;
            pixel[1] = static_cast<float>(y + 1) / 16;
            pixel[2] = 0.5f;
            pixel[3] = x < 16 ? 1.0f : 0.25f;
        }
    }
    return picture;
}

struct RoundTripCase {
    const char *ending;
    double tolerance; // of a component up to 1
    bool hasAlpha;
};
// Where the sRGB curve is steepest, half a step of 8 bits is 0.0045 of linear light. JPEG may be several steps off. HDR
// keeps 8 bits of the largest component.
constexpr RoundTripCase kRoundTrips[] = {{".png", 0.0046, false}, {".PNG", 0.0046, false}, {".jpg", 0.04, false},
                                         {".jpeg", 0.04, false},  {".tif", 0.0046, false}, {".tiff", 0.0046, false},
                                         {".exr", 0, true},       {".hdr", 0.0040, false}};

TEST(Picture, ReadsBackFromItsFile) {
    const Picture picture = ramp();
    for (const RoundTripCase &each : kRoundTrips) {
        const TemporaryDirectory directory;
        const std::string name = std::string("picture") + each.ending;
        writePicture(picture, directory / name);
        EXPECT_EQ(directory.names(), Names{name});
        const auto image = readImage(directory / name, "picture");
        ASSERT_EQ(image->width, 32);
        ASSERT_EQ(image->height, 16);
        EXPECT_EQ(image->hasAlpha, each.hasAlpha) << each.ending;
        double worst = 0;
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 32; ++x) {
                float colour[3];
                pixel(image.get(), x, y, colour);
                for (int i = 0; i < 3; ++i)
                    worst = std::max<double>(worst, std::abs(colour[i] - picture.pixel(x, y)[i]));
                EXPECT_EQ(pixelAlpha(image.get(), x, y), each.hasAlpha ? picture.pixel(x, y)[3] : 1);
            }
        }
        EXPECT_LE(worst, each.tolerance) << each.ending;
    }
}

TEST(Picture, FloatFilesKeepBrightAndNegativeLight) {
    const TemporaryDirectory directory;
    Picture picture(1, 1);
    picture.pixel(0, 0)[0] = 1000;
    picture.pixel(0, 0)[1] = -0.5f;
    writePicture(picture, directory / "a.exr");
    float colour[3];
    pixel(readImage(directory / "a.exr", "a").get(), 0, 0, colour);
    EXPECT_EQ(colour[0], 1000);
    EXPECT_EQ(colour[1], -0.5f);
}

TEST(Picture, EightBitsAreClamped) {
    const TemporaryDirectory directory;
    Picture picture(1, 1);
    picture.pixel(0, 0)[0] = 1000;
    picture.pixel(0, 0)[1] = -0.5f;
    picture.pixel(0, 0)[2] = std::numeric_limits<float>::quiet_NaN();
    writePicture(picture, directory / "a.png");
    float colour[3];
    pixel(readImage(directory / "a.png", "a").get(), 0, 0, colour);
    EXPECT_EQ(colour[0], 1);
    EXPECT_EQ(colour[1], 0);
    EXPECT_EQ(colour[2], 0);
}

TEST(Picture, EightBitsAreEncodedAsSrgb) {
    const TemporaryDirectory directory;
    Picture picture(1, 1);
    picture.pixel(0, 0)[0] = 0.2158605f; // 128 of 255
    picture.pixel(0, 0)[1] = 0.001f;     // 0.01292, in the linear part: 3.29 of 255
    picture.pixel(0, 0)[2] = 1;
    writePicture(picture, directory / "a.png");
    const auto input = OIIO::ImageInput::open(directory / "a.png");
    ASSERT_TRUE(input);
    unsigned char bytes[3];
    ASSERT_TRUE(input->read_image(0, 0, 0, 3, OIIO::TypeDesc::UINT8, bytes));
    EXPECT_EQ(bytes[0], 128);
    EXPECT_EQ(bytes[1], 3);
    EXPECT_EQ(bytes[2], 255);
}

TEST(Picture, ExrHeaderStatesHowItWasMade) {
    const TemporaryDirectory directory;
    const PictureMetadata metadata = {.scene = "scenes/clay.json",
                                      .module = "velm.p",
                                      .version = "1.2",
                                      .command = "velm render \"a b\"",
                                      .digest = {},
                                      .part = {},
                                      .samples = {},
                                      .seed = {},
                                      .workflow = {},
                                      .backdrop = {},
                                      .objects = {},
                                      .surfaces = {}};
    writePicture(ramp(), directory / "a.exr", metadata);
    const auto input = OIIO::ImageInput::open(directory / "a.exr");
    ASSERT_TRUE(input);
    EXPECT_EQ(input->spec().get_string_attribute("scene"), metadata.scene);
    EXPECT_EQ(input->spec().get_string_attribute("module"), metadata.module);
    EXPECT_EQ(input->spec().get_string_attribute("version"), metadata.version);
    EXPECT_EQ(input->spec().get_string_attribute("command"), metadata.command);
    EXPECT_EQ(input->spec().format, OIIO::TypeDesc::FLOAT);
}

// By definition of the sRGB curve, light of 0.5 is 188 of 255.
TEST(Picture, DisplayValuesAreWrittenWithoutACurve) {
    const TemporaryDirectory directory;
    Picture picture(3, 1);
    for (const auto &[x, value] : {std::pair{0, 0.5F}, {1, 2.0F}, {2, std::numeric_limits<float>::quiet_NaN()}})
        std::fill_n(picture.pixel(x, 0), 3, value);
    const auto bytes = [&](Workflow workflow) {
        PictureMetadata metadata;
        metadata.workflow = workflowText(workflow);
        writePicture(picture, directory / "a.png", metadata);
        const FilePixels read = readFilePixels(directory / "a.png");
        std::vector<int> values;
        for (int x = 0; x < 3; ++x) values.push_back(static_cast<int>(std::lround(read.pixel(x, 0)[1] * 255)));
        return values;
    };
    EXPECT_EQ(bytes(Workflow::classic), (std::vector<int>{128, 255, 0}));
    EXPECT_EQ(bytes(Workflow::linear), (std::vector<int>{188, 255, 0}));
}

TEST(Picture, NoFileHoldsADate) {
    const TemporaryDirectory directory;
    for (const char *ending : {"exr", "hdr", "jpg", "png", "tif"}) {
        const std::string file = directory / (std::string("a.") + ending);
        writePicture(ramp(), file, {});
        const auto input = OIIO::ImageInput::open(file);
        ASSERT_TRUE(input) << OIIO::geterror();
        for (const auto &attribute : input->spec().extra_attribs) {
            if (OIIO::Strutil::icontains(attribute.name(), "date")) {
                EXPECT_EQ(attribute.get_string(), "") << ending << ": " << attribute.name();
            }
        }
    }
}

TEST(Picture, ErrorForAnUnknownEndingNamesTheKnownOnes) {
    const TemporaryDirectory directory;
    for (const char *name : {"a.gif", "a", "a.pngx", ".png"}) {
        try {
            writePicture(ramp(), directory / name);
            ADD_FAILURE() << name;
        } catch (const InputError &error) {
            const std::string message = error.what();
            for (const char *known : {name, ".png", ".jpg", ".exr", ".tif", ".hdr"})
                EXPECT_NE(message.find(known), std::string::npos) << message;
        }
        EXPECT_THROW(checkPictureEnding(directory / name), InputError);
    }
    EXPECT_NO_THROW(checkPictureEnding("some/where.EXR"));
    EXPECT_TRUE(directory.names().empty());
}

TEST(Picture, MissingDirectoryIsAMachineError) {
    const TemporaryDirectory directory;
    EXPECT_THROW(writePicture(ramp(), directory / "none/a.png"), MachineError);
}

TEST(Picture, FailureToReplaceAFileLeavesNoOtherFile) {
    const TemporaryDirectory directory;
    std::filesystem::create_directories(directory / "a.png/occupied");
    EXPECT_THROW(writePicture(ramp(), directory / "a.png"), MachineError);
    EXPECT_EQ(directory.names(), Names{"a.png"});
}

// Limits the size of files while it lives. Writing beyond the limit fails as on a full disk.
class SizeLimit {
  public:
    explicit SizeLimit(rlim_t bytes) : previousHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &previous_);
        const rlimit limit = {.rlim_cur = bytes, .rlim_max = previous_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit() {
        setrlimit(RLIMIT_FSIZE, &previous_);
        std::signal(SIGXFSZ, previousHandler_);
    }
    SizeLimit(const SizeLimit &) = delete;
    SizeLimit &operator=(const SizeLimit &) = delete;

  private:
    void (*previousHandler_)(int);
    rlimit previous_{};
};

TEST(Picture, FullDiskLeavesTheOldFileAndNothingElse) {
    Picture noise(64, 64);
    unsigned state = 1;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            for (int i = 0; i < 3; ++i) {
                state = state * 1664525 + 1013904223;
                noise.pixel(x, y)[i] = static_cast<float>(state >> 8) / 16777216.0f;
            }
        }
    }
    for (const RoundTripCase &each : kRoundTrips) {
        const TemporaryDirectory directory;
        const std::string name = std::string("a") + each.ending;
        writeText(directory / name, "old");
        {
            const SizeLimit limit(1000);
            EXPECT_THROW(writePicture(noise, directory / name), MachineError) << each.ending;
        }
        EXPECT_EQ(directory.names(), Names{name});
        EXPECT_EQ(std::filesystem::file_size(directory / name), 3u) << each.ending;
    }
}

} // namespace
} // namespace velm::host::test
