#pragma once

#include <gdk/gdk.h>

#include <functional>
#include <memory>
#include <string>

namespace kavio::device {

/// Looks for QR codes with the device's camera until it is destroyed. Calls the functions on the main thread, and not
/// before the constructor has returned; the last two may destroy the camera.
class Camera {
public:
    /// Whether there is a camera. Where KAVIO_CAMERA describes a source of pictures, in GStreamer's notation, that is
    /// it.
    static bool isThere();

    /// What the camera sees is shown frame by frame. A code is told when it comes into view, and a problem once: then
    /// there is nothing more to come.
    Camera(std::function<void(GdkPaintable* frame)> onPicture, std::function<void(std::string text)> onCode,
           std::function<void(std::string problem)> onProblem);
    ~Camera();
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

private:
    class Parts;
    const std::shared_ptr<Parts> mParts;
};

}  // namespace kavio::device
