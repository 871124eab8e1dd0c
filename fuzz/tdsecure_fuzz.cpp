// An enrolment with 3-D Secure. The first line is the card holder's name, the second the card's number; each of the
// others is the service's reply if one is due, with its status before a space, or else where the issuer's page goes.

#include "fuzz.h"
#include "network/environments.h"
#include "network/url_request.h"
#include "support/world.h"

namespace kavio::fuzz {
namespace {

constexpr int mostSteps = 20;

/// The issuer's page is wherever the service says; anything else, and all that proves who somebody is, goes to the
/// service.
void checkRequest(const UrlRequest& request) {
    const bool isForService = request.url.starts_with(std::string(urlString(currentApiType())) + "/");
    must(isUrl(request.url), "a request goes to a URL");
    must(isForService || test::header(request, "X-Zelto-Wallet-Api-Key") == "none", "others do not get the key");
    must(isForService || test::header(request, "X-Zelto-Wallet-Session-Token") == "none",
         "others do not get the token");
    if (request.body) must(!JsonValue::parse(*request.body, nullptr, false).is_discarded(), "a request's body is JSON");
}

test::Answer replyIn(Input line) {
    const int status = std::atoi(line.line(" ").c_str());
    return {std::clamp(status, 200, 599), line.rest()};
}

/// False once nothing is left to happen.
bool step(test::World& world, const std::string& line) {
    auto& device = world.device();
    if (device.network().open() > 0) {
        world.answer(replyIn(Input(line)));
        return true;
    }
    if (!device.screen().hasScene()) return false;
    device.screen().navigate(line);
    world.run();
    return true;
}

}  // namespace

void tryInput(Input input) {
    test::World world;
    auto& screen = world.device().screen();
    screen.browse = nullptr;
    const TDSCardHolder holder{.name = input.line(), .email = "robin@example.com"};
    world.kavio().addCreditCardTDSecure({.number = input.line(), .month = 12, .year = 2039, .securityCode = 123},
                                        holder);
    world.run();
    for (int i = 0; i < mostSteps && !input.isEmpty() && step(world, input.line()); ++i) {
    }
    // The person closes what is left, and the service fails from now on.
    for (int i = 0; i < mostSteps && world.reports().empty(); ++i) {
        if (world.device().network().open() > 0) {
            world.answer({500, ""});
        } else {
            screen.pressClose();
            world.run();
        }
    }
    must(world.reports().size() == 1, "an enrolment is reported once");
    must(!world.kavio().isBusy() && !screen.hasScene(), "and is over then");
    for (const auto& request : world.sent()) checkRequest(request);
}

}  // namespace kavio::fuzz
