#pragma once

#include "models/json/json_types.h"

#include <kavio/platform/ui.h>
#include <kavio/tdsecure.h>

#include <cstdint>
#include <optional>
#include <string>

#undef ERROR  // a macro in some devices' system headers; enumerators below have that name

/// What an enrolment sends. The enumerations' raw values are the service's; absent members are left out.
namespace kavio {

/// The step that an enrolment is in.
enum class TDSFlowType : std::uint8_t { UNKNOWN = 0, FRICTIONLESS, FINGERPRINT, CHALLENGE, ERROR };

/// What the issuer is told about the browser. The same for every device: nothing about the person is given away.
struct TDSBrowser {
    enum class DialogDimention : std::uint8_t { SMALL = 0, MEDIUM, LARGE, XLARGE, FULLSCREEN };
    enum class ColorDepth : std::uint8_t {
        ONE = 0,
        FOUR,
        EIGHT,
        FIFTEEN,
        SIXTEEN,
        TWENTY_FOUR,
        THIRTY_TWO,
        FORTY_EIGHT
    };

    std::string lang = "en";
    DialogDimention challengeWindow = DialogDimention::FULLSCREEN;
    std::string agent = "agent";
    std::string accept = "accept";
    ColorDepth color = ColorDepth::FOUR;
    std::int64_t width = 300;
    std::int64_t height = 300;
};

struct TDSDetails {
    TDSCardHolder holder;
    TDSBrowser browser = {};
    std::string redirect = loopbackUrl;
};

struct TDSAddCard {
    TDSPaymentCard card;
    /// A fresh random UUID for every attempt.
    std::string key;
    TDSDetails tdSecure;
};

struct TDSGetCard {
    TDSFlowType flow = TDSFlowType::UNKNOWN;
    TDSPaymentCard card;
    std::optional<std::string> token = std::nullopt;
    std::optional<std::string> result = std::nullopt;
    std::optional<std::string> description = std::nullopt;
    std::optional<std::string> transaction = std::nullopt;
};

struct TDSGetPage {
    std::string threeDSMethodData;
};

Parameters encode(const TDSAddCard& body);
Parameters encode(const TDSGetCard& body);
Parameters encode(const TDSGetPage& body);

}  // namespace kavio
