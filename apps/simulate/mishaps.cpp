#include "mishaps.h"

#include <array>

namespace kavio::simulate {

using namespace std::chrono_literals;
using test::Fate;
using test::ServiceFault;

Fate fate(std::int64_t number) {
    const std::array fates{
        test::fate::noHost,
        test::fate::noConnection,
        test::fate::untrusted,
        test::fate::notSecure,
        test::fate::requestLost,
        test::fate::replyLost,
        +[] { return test::fate::timesOut(true); },
        +[] { return test::fate::timesOut(false); },
        test::fate::unreadable,
        +[] { return Fate{.isRepeated = true}; },
        +[] { return Fate{.isCut = true}; },
        +[] { return Fate{.there = 90s}; },
    };
    return fates[std::size_t(number)]();
}

ServiceFault fault(std::int64_t number) {
    const std::array faults{
        ServiceFault{.path = "*", .status = 500},
        ServiceFault{.path = "*", .status = 503, .takesEffect = true},
        ServiceFault{.path = "*", .status = 400},
        ServiceFault{.path = "*", .status = 404, .body = R"({"message":null})"},
        ServiceFault{.path = "*", .status = 401},
        ServiceFault{.path = "*", .status = 406, .body = "<html>"},
        ServiceFault{.path = "*", .status = 417},
        ServiceFault{.path = "*", .status = 426},
        ServiceFault{.path = "*", .delay = 10s, .times = 3},
        ServiceFault{.path = "*", .isLost = true, .takesEffect = true},
        ServiceFault{.path = "/orders/*", .body = R"({"id":1,"status":"somethingNew","amount":99999999999999})"},
        ServiceFault{.path = "/time", .body = "{}"},
        ServiceFault{.path = "*", .body = "null", .takesEffect = true},
    };
    return faults[std::size_t(number)];
}

}  // namespace kavio::simulate
