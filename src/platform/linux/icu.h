#pragma once

#include <kavio/platform/device.h>

#include <memory>

namespace kavio {

std::shared_ptr<Locale> makeIcuLocale();
std::shared_ptr<DateFormatter> makeIcuDateFormatter();
std::shared_ptr<RegularExpression> makeIcuRegularExpression();
std::shared_ptr<Characters> makeIcuCharacters();

}  // namespace kavio
