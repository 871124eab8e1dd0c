#pragma once

#include <string>

namespace kavio::wallet {

/// Along the ground, from degrees.
double metresBetween(double latitude, double longitude, double otherLatitude, double otherLongitude);

/// Such as "120 m" or "1.2 km", as people write it.
std::string distanceText(double metres);

}  // namespace kavio::wallet
