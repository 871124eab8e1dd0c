#pragma once

#include "models/json/keyed_container.h"

#include <kavio/campaign.h>

namespace kavio {

// These public objects have exactly the reply's members, so the reply is read straight into them.

using ImageMetaModel = Image;
template <>
struct Decoder<Image> {
    static Image decode(const KeyedContainer& in);
};

using LookAndFeelModel = LookAndFeel;
template <>
struct Decoder<LookAndFeel> {
    static LookAndFeel decode(const KeyedContainer& in);
};

/// A campaign: an object, or such an object wrapped as "voucher".
template <>
struct Decoder<Campaign> {
    static Campaign decode(const DecodedValue& value);
};

}  // namespace kavio
