#include "support/fakes/fake_device.h"

#include <kavio/platform/linux.h>
#include <kavio/platform/run_loop.h>
#include <kavio/testing/eventually.h>
#include <kavio/testing/temporary_folder.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <latch>
#include <limits>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace kavio::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

/// An implementation of the seam, and how a test lets its main thread run until `done`.
struct Subject {
    std::string name;
    std::function<Platform(const std::filesystem::path& folder)> make;
    std::function<bool(MainQueue& queue, const std::function<bool()>& done)> runMainThread;
};

std::ostream& operator<<(std::ostream& out, const Subject& subject) { return out << subject.name; }

/// The implementations that must keep the promises of include/kavio/platform; a port adds itself.
std::vector<Subject> subjects() {
    return {
        {"Linux",
         [](const std::filesystem::path& folder) {
             LinuxPlatformOptions options;
             options.storeDirectory = folder / "store";
             options.information = {{"text", std::string("t")}, {"number", std::int64_t{7}}};
             options.localizedStrings = {{"hello", "hallo"}};
             return makeLinuxPlatform(std::move(options));
         },
         [](MainQueue& queue, const std::function<bool()>& done) {
             return dynamic_cast<RunLoop&>(queue).runUntil(done, patience);
         }},
        {"Scripted",
         [](const std::filesystem::path&) {
             const FakeDevice device{};
             device.mainBundle->information = {{"text", std::string("t")}, {"number", std::int64_t{7}}};
             device.mainBundle->strings = {{"hello", "hallo"}};
             device.libraryBundle->information = {{"CFBundleShortVersionString", std::string("1.2.3")},
                                                  {"CFBundleVersion", std::string("45")}};
             return device.platform();
         },
         [](MainQueue& queue, const std::function<bool()>& done) {
             for (int steps = 0; !done() && steps < 20'000; ++steps) {
                 dynamic_cast<FakeMainQueue&>(queue).advance(std::chrono::milliseconds(1));
             }
             return done();
         }},
    };
}

/// Each test runs on every implementation.
class Conformance : public testing::TestWithParam<Subject> {
protected:
    bool runMainThread(const std::function<bool()>& done) {
        return GetParam().runMainThread(*platform.mainQueue, done);
    }

    const TemporaryFolder folder;
    Platform platform = GetParam().make(folder.path());
};

class Device : public Conformance {};
INSTANTIATE_TEST_SUITE_P(, Device, testing::ValuesIn(subjects()), testing::PrintToStringParamName());

const DateFormat wholeDate{"yyyy-MM-dd'T'HH:mm:ss.SSS", "en_US_POSIX", "UTC"};
const DateFormat withZone{"yyyy-MM-dd'T'HH:mm:ss.SSSZ", std::nullopt, std::nullopt};
const DateFormat wholeSeconds{"yyyy-MM-dd'T'HH:mm:ss", "en_US_POSIX", "UTC"};
const DateFormat stamp{"yyyyMMddHHmmss", "en_US_POSIX", "UTC"};
const DateFormat debugDate{"yyyy-MM-dd HH:mm:ss xx", "en_US_POSIX", "UTC"};

TEST_P(Device, ParsesDatesStrictlyAndWhole) {
    for (const auto& [format, text, seconds] : std::vector<std::tuple<DateFormat, std::string, std::optional<double>>>{
             {wholeDate, "2020-02-29T10:00:00.125", 1582970400.125},
             {withZone, "2020-02-29T12:00:00.000+0200", 1582970400},
             {wholeSeconds, "2020-02-29T10:00:00", 1582970400},
             {wholeDate, "2021-02-29T10:00:00.000", std::nullopt},
             {wholeDate, "2020-02-29T10:00:00.125Z", std::nullopt},
             {wholeDate, "", std::nullopt},
             {wholeDate, "2020-02-29T10:00:00.\xFF", std::nullopt},
             {wholeDate, std::string(5'000'000, '1'), std::nullopt},
             {wholeDate, "2020-02-29T10:00:00.5", 1582970400.5},
             {wholeDate, "2020-02-29T10:00:00.987654321", 1582970400.987},
         }) {
        const auto date = platform.dateFormatter->parse(format, text);
        EXPECT_EQ(date ? std::optional(date->time_since_epoch().count()) : std::nullopt, seconds) << text.substr(0, 30);
    }
    for (const std::string nine : {"9", "٩"}) {
        for (int digits = 10; digits < 70; ++digits) {
            std::string text = "2020-02-29T10:00:00.";
            for (int i = 0; i < digits; ++i) text += nine;
            EXPECT_EQ(platform.dateFormatter->parse(wholeDate, text), std::nullopt) << digits;
            EXPECT_EQ(platform.dateFormatter->parse(withZone, text + "+0000"), std::nullopt) << digits;
        }
    }
}

TEST_P(Device, FormatsDates) {
    for (const auto& [format, seconds, text] : std::vector<std::tuple<DateFormat, double, const char*>>{
             {wholeDate, 1582970400.125, "2020-02-29T10:00:00.125"},
             {stamp, 1582970400.999, "20200229100000"},
             {debugDate, 253402300800, "10000-01-01 00:00:00 +0000"},
             {stamp, 1e300, ""},
             {stamp, std::numeric_limits<double>::quiet_NaN(), ""},
         }) {
        EXPECT_EQ(platform.dateFormatter->format(format, Date(std::chrono::duration<double>(seconds))), text);
    }
}

TEST_P(Device, FindsAllMatchesOfAPattern) {
    using Matches = std::vector<RegularExpression::Match>;
    for (const auto& [pattern, text, matches] : std::vector<std::tuple<std::string, std::string, Matches>>{
             {"NDS=(\\d+)", "NDS=x&nds=1", {}},
             {"NDS=(\\d+)", "NDS=\u0663&NDS=12", {{"NDS=\u0663", "\u0663"}, {"NDS=12", "12"}}},
             {"Kavio ID: (\\d+)", std::string(1'000'000, '1') + "\nKavio ID: 1", {{"Kavio ID: 1", "1"}}},
         }) {
        const auto found = platform.regularExpression->matches(pattern, text);
        ASSERT_TRUE(std::holds_alternative<Matches>(found)) << pattern;
        EXPECT_EQ(std::get<Matches>(found), matches) << pattern;
    }
    const auto invalid = platform.regularExpression->matches("(", "(");
    ASSERT_TRUE(std::holds_alternative<RegularExpression::Invalid>(invalid));
    EXPECT_FALSE(std::get<RegularExpression::Invalid>(invalid).description.empty());
}

TEST_P(Device, CutsTextBetweenCharactersAndReplacesWhatIsNoText) {
    const std::string accent = "e\u0301";                                     // two code points
    const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";  // five
    const std::string flags = "\U0001F1E9\U0001F1EA\U0001F1EE\U0001F1F1";     // two characters
    for (const auto& [text, count, prefix] : std::vector<std::tuple<std::string, std::size_t, std::string>>{
             {"abc", 0, ""},
             {"abc", std::numeric_limits<std::size_t>::max(), "abc"},
             {"a\r\nb", 2, "a\r\n"},
             {"a" + accent + "b", 2, "a" + accent},
             {family + "x", 1, family},
             {flags, 1, flags.substr(0, 8)},
         }) {
        EXPECT_EQ(platform.characters->prefix(text, count), prefix) << text;
    }
    EXPECT_EQ(platform.characters->wellFormed({"\0\xFF.\xE2\x82", 5}), std::string("\0\uFFFD.\uFFFD", 8));
}

TEST_P(Device, DigestsEncodesAndMakesUuids) {
    const auto digest = platform.digest->sha1("abc");
    EXPECT_EQ(platform.base64->encode(std::string(digest.begin(), digest.end())), "qZk+NkcGgWq6PiVxeFDCbJzQ2J0=");
    EXPECT_EQ(platform.base64->encode(std::string(99, 'a')).size(), 132U);

    std::set<std::string> made;
    for (int i = 0; i < 1000; ++i) made.insert(platform.uuid->make());
    EXPECT_EQ(made.size(), 1000U);
    const auto* form = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";
    EXPECT_THAT(made, testing::Each(testing::MatchesRegex(form)));
}

TEST_P(Device, ReadsItsBundlesAndNamesRegions) {
    EXPECT_EQ(platform.mainBundle->informationText("text"), "t");
    EXPECT_EQ(platform.mainBundle->informationText("number"), std::nullopt);
    EXPECT_EQ(platform.mainBundle->informationValue("number"), Bundle::Value(std::int64_t{7}));
    EXPECT_EQ(platform.mainBundle->localizedString("hello"), "hallo");
    EXPECT_EQ(platform.mainBundle->localizedString("not translated"), "not translated");
    for (const char* key : {"CFBundleShortVersionString", "CFBundleVersion"})
        EXPECT_TRUE(platform.libraryBundle->informationText(key));
    EXPECT_NE(platform.locale->regionName("DE").value_or("DE"), "DE");
    for (const char* code : {"", "ZZ", "419", "DEU", "D_"})
        EXPECT_EQ(platform.locale->regionName(code), std::nullopt) << code;
}

class Queues : public Conformance {};
INSTANTIATE_TEST_SUITE_P(, Queues, testing::ValuesIn(subjects()), testing::PrintToStringParamName());

TEST_P(Queues, MainThreadRunsWorkInOrderAfterItsDelayAndNeverInsideThePost) {
    std::vector<std::string> ran;
    auto& queue = *platform.mainQueue;
    const auto start = platform.clock->uptime();
    auto timer40 = start;
    const auto note = [&](const char* what) { return [&ran, what] { ran.emplace_back(what); }; };
    queue.postAfter(milliseconds(40), [&] { timer40 = platform.clock->uptime(); });
    queue.postAfter(milliseconds(-5), note("overdue"));
    queue.post([&] {
        ran.emplace_back("first");
        queue.post(note("posted by work"));
    });
    queue.post(note("second"));
    EXPECT_THAT(ran, IsEmpty());
    EXPECT_TRUE(runMainThread([&] { return timer40 != start && ran.size() == 4; }));
    EXPECT_THAT(ran, ElementsAre("overdue", "first", "second", "posted by work"));
    EXPECT_GE(timer40 - start, milliseconds(40));
}

TEST_P(Queues, SerialQueueRunsOneAtATimeInOrderOnAnotherThread) {
    std::vector<int> ran;  // without a lock: two at once would be a race
    std::atomic<std::thread::id> thread;
    for (int i = 0; i < 100; ++i) platform.serialQueue->async([&, i] { ran.push_back(i); });
    platform.serialQueue->async([] { throw std::runtime_error("a block's own fault"); });
    platform.serialQueue->async([&] { thread = std::this_thread::get_id(); });
    ASSERT_TRUE(eventually([&] { return thread.load() != std::thread::id(); }));
    EXPECT_NE(thread.load(), std::this_thread::get_id());
    EXPECT_EQ(ran.size(), 100U);
    EXPECT_TRUE(std::ranges::is_sorted(ran));
}

TEST_P(Queues, ConcurrentQueueRunsBlocksSideBySide) {
    const auto together = std::make_shared<std::latch>(5);
    for (int i = 0; i < 4; ++i) platform.concurrentQueue->async([together] { together->arrive_and_wait(); });
    together->arrive_and_wait();
}

TEST_P(Queues, DestroyingAWorkQueueWaitsForWorkUnderWayAndDropsTheRest) {
    std::latch started(1);
    std::latch mayEnd(1);
    std::vector<std::string> ran;
    auto queue = std::move(platform.serialQueue);
    queue->async([&] {
        started.count_down();
        mayEnd.wait();
        ran.emplace_back("under way");
    });
    queue->async([&] { ran.emplace_back("dropped"); });
    // The next block is dropped as soon as the queue is being destroyed, and the first may then end.
    queue->async([end = std::shared_ptr<void>(nullptr, [&](void*) { mayEnd.count_down(); })] {});
    started.wait();
    queue.reset();
    EXPECT_THAT(ran, ElementsAre("under way"));
}

TEST_P(Queues, ABlockMayDropTheLastReferenceToItsQueue) {
    std::latch handedOver(1);
    std::atomic<bool> isDropped = false;
    platform.serialQueue->async([&] {
        handedOver.wait();
        platform.serialQueue.reset();
        isDropped = true;
    });
    handedOver.count_down();
    EXPECT_TRUE(eventually([&] { return isDropped.load(); }));
}

class Stores : public Conformance {
protected:
    std::shared_ptr<KeyValueStore> suite(std::string_view name = "suite") {
        return platform.keyValueStores->suite(name);
    }
};
INSTANTIATE_TEST_SUITE_P(, Stores, testing::ValuesIn(subjects()), testing::PrintToStringParamName());

Date date(double seconds) { return Date(std::chrono::duration<double>(seconds)); }

TEST_P(Stores, KeepEveryValueAsItIsAndReadItAsNoOtherType) {
    const auto store = suite();
    for (const auto& value : std::vector<StoredValue>{
             std::string(),
             std::string("nul\0inside", 10),
             std::string("\xC3\x28 ill-formed"),
             std::string(300'000, 'x'),
             Bytes{},
             Bytes{0, 1, 255},
             date(-1.25),
             date(1e300),
         }) {
        EXPECT_TRUE(store->set("key", value));
        EXPECT_EQ(store->value("key"), value);
        EXPECT_EQ(store->string("key").has_value(), std::holds_alternative<std::string>(value));
        EXPECT_EQ(store->data("key").has_value(), std::holds_alternative<Bytes>(value));
        EXPECT_EQ(store->date("key").has_value(), std::holds_alternative<Date>(value));
    }
    for (int times = 0; times < 2; ++times) EXPECT_TRUE(store->remove("key"));
    EXPECT_EQ(store->value("key"), std::nullopt);
}

TEST_P(Stores, TellAnyTwoNamesApart) {
    const std::string cut(127, 'n');
    std::vector<std::string> names{"", "standard", "..", "../up", "a/b", "a%2Fb", "a:b", "A:b"};
    names.emplace_back("nul\0inside", 10);
    for (const auto* end : {"en", "n%~00", "much longer 1", "much longer 2"}) names.push_back(cut + end);
    for (const auto& name : names) suite(name)->set("name", name);
    platform.keyValueStores->standard()->set("name", "the standard store");
    for (const auto& name : names) EXPECT_EQ(suite(name)->string("name"), name);
    EXPECT_EQ(suite("never written")->string("name"), std::nullopt);
    EXPECT_EQ(platform.keyValueStores->standard()->string("name"), "the standard store");
}

TEST_P(Stores, MayBeUsedFromSeveralThreads) {
    const auto store = suite();
    std::vector<std::thread> threads;
    for (const auto* key : {"1", "2", "3"}) {
        threads.emplace_back([=] {
            for (int i = 0; i < 20; ++i) store->set(key, store->string(key).value_or("") + "x");
        });
    }
    for (auto& thread : threads) thread.join();
    for (const auto* key : {"1", "2", "3"}) EXPECT_EQ(store->string(key), std::string(20, 'x'));
}

}  // namespace
}  // namespace kavio::test
