#include "device/camera.h"

#include "main_thread.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

namespace kavio::device {
namespace {

using testing::ElementsAre;

struct Source {
    const char* name;
    std::string picture;  // a command that makes it
    std::string source;
    std::string told;
};

class CameraTest : public testing::TestWithParam<Source> {};

TEST_P(CameraTest, TellsWhatItSees) {
    const auto& given = GetParam();
    char folder[] = "/tmp/kavio-camera-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const auto inFolder = [&](const std::string& command) { return "cd " + std::string(folder) + " && " + command; };
    ASSERT_EQ(std::system(inFolder(given.picture).c_str()), 0);
    setenv("KAVIO_CAMERA", ("filesrc location=" + std::string(folder) + "/picture.png " + given.source).c_str(), 1);

    EXPECT_TRUE(Camera::isThere());
    Journal journal;
    int drawn = 0;
    std::optional<Camera> camera;
    const auto note = [&](std::string text) { journal.push_back(std::move(text)); };
    const auto draw = [&](GdkPaintable*) { ++drawn; };
    camera.emplace(draw, note, note);
    EXPECT_EQ(journal, Journal());
    runUntil([&] { return !journal.empty() && (drawn == 0 || drawn > 2); });
    EXPECT_THAT(journal, ElementsAre(given.told));  // of a code that stays in view only once

    journal.clear();
    const auto end = [&](const std::string& text) {
        journal.push_back(text);
        camera.reset();
    };
    camera.emplace(draw, end, end);
    runUntil([&] { return !camera; });
    EXPECT_THAT(journal, ElementsAre(given.told));
    unsetenv("KAVIO_CAMERA");
    std::filesystem::remove_all(folder);
}

const auto code = std::string("https://qr.kavio.example/m/42100107");
const auto qrCode = "qrencode -o picture.png " + code;
INSTANTIATE_TEST_SUITE_P(
    Sources, CameraTest,
    testing::Values(Source{"code", qrCode, "! pngdec ! imagefreeze", code},
                    Source{"twice", qrCode + " && convert picture.png picture.png +append picture.png",
                           "! pngdec ! imagefreeze", code},
                    Source{"compressed", qrCode, "! pngdec ! imagefreeze ! videoconvert ! jpegenc", code},
                    Source{"lost", "true", "! pngdec ! imagefreeze", "The camera cannot be used: Resource not found."},
                    Source{"unknown", "true", "! magic", "The camera cannot be used: no element \"magic\""}),
    [](const auto& given) { return given.param.name; });

}  // namespace
}  // namespace kavio::device
