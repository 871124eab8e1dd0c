#pragma once

#include <kavio/platform/platform.h>
#include <kavio/platform/run_loop.h>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// A device that has nothing but a clock, memory and a main thread.

/// There is no network. The end of each task is reported on a separate thread.
template <class Session>
class NoNetwork : public Session {
public:
    ~NoNetwork() override {
        for (auto& thread : mThreads) thread.join();
    }

protected:
    void refuse(typename Session::Completion completion) {
        mThreads.emplace_back([completion = std::move(completion)] {
            completion(
                kavio::UrlError{kavio::UrlError::notConnectedToInternet, "There is no network.", std::nullopt, false});
        });
    }

private:
    std::vector<std::thread> mThreads;
};

class EmptyUrlSession final : public NoNetwork<kavio::UrlSession> {
public:
    void dataTask(kavio::UrlRequest, Completion completion) override { refuse(std::move(completion)); }
};

/// A task that was refused at once can no longer be given up.
struct RefusedTask final : kavio::DownloadTask {
    bool cancel() override { return false; }
};

class EmptyBackgroundUrlSession final : public NoNetwork<kavio::BackgroundUrlSession> {
public:
    std::shared_ptr<kavio::DownloadTask> downloadTask(kavio::UrlRequest, Completion completion) override {
        refuse(std::move(completion));
        return std::make_shared<RefusedTask>();
    }
    void onEventsDelivered(std::function<void()>) override {}
};

class MemoryStore final : public kavio::KeyValueStore {
public:
    std::optional<kavio::StoredValue> value(std::string_view key) const override {
        const auto found = mValues.find(key);
        return found == mValues.end() ? std::nullopt : found->second;
    }
    std::vector<std::string> keys() const override {
        std::vector<std::string> keys;
        for (const auto& [key, value] : mValues) {
            if (value) keys.push_back(key);
        }
        return keys;
    }
    bool write(const kavio::StoreChanges& changes) override {
        for (const auto& [key, value] : changes) mValues[key] = value;
        return true;
    }
    bool isKept() const override { return false; }

private:
    kavio::StoreChanges mValues;
};

class MemoryStores final : public kavio::KeyValueStores {
public:
    std::shared_ptr<kavio::KeyValueStore> suite(std::string_view) override { return nullptr; }
    std::shared_ptr<kavio::KeyValueStore> standard() override { return mStandard; }

private:
    const std::shared_ptr<MemoryStore> mStandard = std::make_shared<MemoryStore>();
};

struct NoBackground final : kavio::WorkQueue {
    void async(std::function<void()>) override {}
};

struct EmptyBundle final : kavio::Bundle {
    std::optional<Value> informationValue(std::string_view) const override { return std::nullopt; }
    std::string localizedString(std::string_view key) const override { return std::string(key); }
};

struct NoLocale final : kavio::Locale {
    std::optional<std::string> languageCode() const override { return std::nullopt; }
    std::optional<std::string> regionName(std::string_view) const override { return std::nullopt; }
};

struct NoDates final : kavio::DateFormatter {
    std::optional<kavio::Date> parse(const kavio::DateFormat&, std::string_view) const override { return std::nullopt; }
    std::string format(const kavio::DateFormat&, kavio::Date) const override { return {}; }
};

struct NoRegularExpressions final : kavio::RegularExpression {
    std::variant<std::vector<Match>, Invalid> matches(std::string_view, std::string_view) const override {
        return Invalid{"there are no regular expressions"};
    }
};

struct Ascii final : kavio::Characters {
    std::string_view prefix(std::string_view text, std::size_t count) const override { return text.substr(0, count); }
    std::string wellFormed(std::string_view text) const override { return std::string(text); }
};

struct NoDigest final : kavio::Digest {
    Sha1 sha1(std::string_view) const override { return {}; }
};

struct NoBase64 final : kavio::Base64 {
    std::string encode(std::string_view) const override { return {}; }
};

struct NoUuid final : kavio::Uuid {
    std::string make() const override { return "00000000-0000-4000-8000-000000000000"; }
};

struct StandardClock final : kavio::Clock {
    kavio::Date now() const override { return kavio::Date(std::chrono::system_clock::now().time_since_epoch()); }
    std::chrono::nanoseconds uptime() const override { return std::chrono::steady_clock::now().time_since_epoch(); }
};

inline kavio::Platform emptyPlatform(std::shared_ptr<kavio::MainQueue> mainQueue) {
    return {
        .urlSession = std::make_shared<EmptyUrlSession>(),
        .backgroundUrlSession = std::make_shared<EmptyBackgroundUrlSession>(),
        .keyValueStores = std::make_shared<MemoryStores>(),
        .mainQueue = std::move(mainQueue),
        .serialQueue = std::make_shared<NoBackground>(),
        .concurrentQueue = std::make_shared<NoBackground>(),
        .mainBundle = std::make_shared<EmptyBundle>(),
        .libraryBundle = std::make_shared<EmptyBundle>(),
        .locale = std::make_shared<NoLocale>(),
        .dateFormatter = std::make_shared<NoDates>(),
        .regularExpression = std::make_shared<NoRegularExpressions>(),
        .characters = std::make_shared<Ascii>(),
        .digest = std::make_shared<NoDigest>(),
        .base64 = std::make_shared<NoBase64>(),
        .uuid = std::make_shared<NoUuid>(),
        .clock = std::make_shared<StandardClock>(),
        .windows = nullptr,
    };
}
