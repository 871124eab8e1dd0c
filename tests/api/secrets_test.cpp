#include "platform/linux/url_session.h"
#include "support/world.h"

#include <gmock/gmock.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <future>
#include <new>

/// A test here looks into all memory that is freed, even if a shared library allocated it.
extern "C" __attribute__((visibility("default"))) const char*
__asan_default_options() {  // NOLINT(bugprone-reserved-identifier)
    return "alloc_dealloc_mismatch=0";
}

namespace kavio::test {
namespace {

constexpr std::int64_t secret = 4000001234567899;
constexpr const char* secretText = "4000001234567899";
constexpr const char* shortSecretText = "73917391";  // fits inside the string object

std::atomic<bool> isWatching = false;
std::atomic<int> secretsFreed = 0;

/// While this lives, every freed block of memory is searched for the secrets.
struct Watch {
    Watch() { secretsFreed = 0, isWatching = true; }
    ~Watch() { isWatching = false; }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    int found() const { return secretsFreed; }
};

void search(const void* block) {
    const auto has = [block, size = malloc_usable_size(const_cast<void*>(block))](
                         const void* bytes, std::size_t count) { return memmem(block, size, bytes, count) != nullptr; };
    if (has(&secret, sizeof secret) || has(secretText, std::strlen(secretText)) ||
        has(shortSecretText, std::strlen(shortSecretText)))
        ++secretsFreed;
}

TEST(Secrets, AreSoughtByTheWatch) {
    const Watch watch;
    delete new std::string(shortSecretText);
    delete new std::string(secretText);
    std::int64_t* volatile number = new std::int64_t(secret);  // otherwise the compiler leaves both out
    delete number;
    EXPECT_EQ(watch.found(), 3);
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
    request.body = std::string(100, 'x') + secretText;
    session->dataTask(std::move(request), [&](std::variant<UrlReply, UrlError> outcome) {
        isError.set_value(std::holds_alternative<UrlError>(outcome));
    });
    EXPECT_TRUE(isError.get_future().get());
    session.reset();  // and the request with it
    EXPECT_EQ(watch.found(), 0);
}

}  // namespace
}  // namespace kavio::test

// For the whole program. Zeroed, so that no block shows what an earlier one left behind.
void* operator new(std::size_t size) {
    if (void* block = std::calloc(1, size)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
    if (block != nullptr && kavio::test::isWatching) kavio::test::search(block);
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
