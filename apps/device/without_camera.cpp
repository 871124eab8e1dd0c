#include "camera.h"

namespace kavio::device {

class Camera::Parts {};

bool Camera::isThere() { return false; }
Camera::Camera(std::function<void(GdkPaintable*)>, std::function<void(std::string)>, std::function<void(std::string)>) {
}
Camera::~Camera() = default;

}  // namespace kavio::device
