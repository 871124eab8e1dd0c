#include "secrets.h"

#include "memory.h"
#include "platform/linux/url_session.h"
#include "support/world.h"

#include <gmock/gmock.h>

#include <future>

namespace kavio::test {
namespace {

template <class T>
void free(const T& value) {
    const auto* block = new T(value);
    asm volatile("" : : "g"(block) : "memory");  // otherwise the compiler leaves out what nobody reads
    delete block;
}

TEST(Secrets, AreSoughtByTheWatch) {
    const Watch watch;
    free(std::string(shortSecretText));
    free(std::string(secretText));
    free(std::int64_t(secret));
    EXPECT_GE(watch.found(), 3);  // the texts that were copied may have been freed, too
}

TEST(Secrets, LeaveNothingOfAPlainCardInMemory) {
    World world;
    const Watch watch;
    world.kavio().addCreditCard(std::make_shared<Card>(
        Card{.pan = secretText, .month = "12", .year = "2039", .cvv = shortSecretText, .email = "a@b"}));
    world.answer({200, "{}"});
    world.destroyFacade();
    EXPECT_EQ(watch.found(), 0);
    const auto body = world.sent().at(0).body.value();
    EXPECT_THAT(body, testing::AllOf(testing::HasSubstr(secretText), testing::HasSubstr(shortSecretText)));
}

TEST(Secrets, LeaveNothingOfAnEnrolledCardInMemory) {
    World world;
    const Watch watch;
    {
        const TDSPaymentCard card{.number = secretText, .month = 12, .year = 2039, .securityCode = secret};
        world.kavio().addCreditCardTDSecure(card, {.name = "n", .email = "e"});
    }
    world.answer({200, R"({"type":1})"});
    world.destroyFacade();
    EXPECT_EQ(watch.found(), 0);
    EXPECT_THAT(world.sent().at(0).body.value(), testing::HasSubstr(secretText));
}

TEST(Secrets, LeaveNothingOfARequestThatFailed) {
    auto session = makeUrlSession({.certificateAuthorities = {}, .connectTo = "127.0.0.1:1"});
    const Watch watch;
    std::promise<bool> isError;
    UrlRequest request;
    request.url = "https://service.test/";
    request.body.emplace(100, 'x') += secretText;
    session->dataTask(std::move(request), [&](std::variant<UrlReply, UrlError> outcome) {
        isError.set_value(std::holds_alternative<UrlError>(outcome));
    });
    EXPECT_TRUE(isError.get_future().get());
    session.reset();  // and the request with it
    EXPECT_EQ(watch.found(), 0);
}

}  // namespace
}  // namespace kavio::test
