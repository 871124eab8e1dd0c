#pragma once

#include <kavio/date.h>
#include <kavio/export.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace kavio {

/// Any bytes, zeros included.
using Bytes = std::vector<std::uint8_t>;
/// A text, a date or bytes. When memory runs out while it is copied or assigned nothing changes, which a variant alone
/// does not promise, nor every standard library survive.
class StoredValue : public std::variant<std::string, Date, Bytes> {
public:
    /// What a value can be.
    using Alternatives = std::variant<std::string, Date, Bytes>;
    using Alternatives::Alternatives;
    ///@{
    /// When memory runs out, nothing has changed.
    StoredValue(const StoredValue& other)
        : Alternatives(std::visit([](const auto& value) { return Alternatives(value); },
                                  static_cast<const Alternatives&>(other))) {}
    StoredValue(StoredValue&&) noexcept = default;
    StoredValue& operator=(const StoredValue& other) { return *this = StoredValue(other); }
    ///@}
    StoredValue& operator=(StoredValue&&) noexcept = default;
    ~StoredValue() = default;
};
/// Keys with their new values; a key without one is removed.
using StoreChanges = std::map<std::string, std::optional<StoredValue>, std::less<>>;

/// A named suite of values that outlasts the process.
///
/// - A write that has returned true is kept, whatever happens to the process afterwards; one that returned false
///   changed nothing. The changes of one write take effect together. A date that is not a number may be refused.
/// - A read sees the last completed write of any process that shares the suite; while the suite cannot be read, it
///   gives the values last seen in it.
/// - Safe from any thread. No call throws, except `std::bad_alloc`.
class KAVIO_API KeyValueStore {
public:
    virtual ~KeyValueStore() = default;
    /// The value of `key`; absent if it has none.
    virtual std::optional<StoredValue> value(std::string_view key) const = 0;
    /// The values of several keys, in their order. A store that has to look for other processes' writes looks only
    /// once, so all the values are of the same moment.
    virtual std::vector<std::optional<StoredValue>> values(std::initializer_list<std::string_view> keys) const {
        std::vector<std::optional<StoredValue>> found;
        for (const auto key : keys) found.push_back(value(key));
        return found;
    }
    /// The keys that have a value, in no particular order.
    virtual std::vector<std::string> keys() const = 0;
    /// Makes all of `changes`, or none of them; false for none.
    virtual bool write(const StoreChanges& changes) = 0;
    /// Whether what was written outlasts the process. False where values live in memory for want of a better place.
    virtual bool isKept() const { return true; }

    /// Writes one value; returns what `write` does.
    bool set(std::string_view key, StoredValue value) { return write({{std::string(key), std::move(value)}}); }
    /// Removes one value, if there is one; returns what `write` does.
    bool remove(std::string_view key) { return write({{std::string(key), std::nullopt}}); }
    ///@{
    /// The value when it is of that type; a value of another type reads as missing.
    std::optional<std::string> string(std::string_view key) const { return typed<std::string>(value(key)); }
    std::optional<Date> date(std::string_view key) const { return typed<Date>(value(key)); }
    std::optional<Bytes> data(std::string_view key) const { return typed<Bytes>(value(key)); }
    ///@}

    /// `found` if it is a `T`.
    template <class T>
    static std::optional<T> typed(std::optional<StoredValue> found) {
        if (!found || !std::holds_alternative<T>(*found)) return std::nullopt;
        return std::get<T>(std::move(*found));
    }
};

/// The device's suites. Opening the same name twice gives the same store.
class KAVIO_API KeyValueStores {
public:
    virtual ~KeyValueStores() = default;
    /// Null when the platform refuses to create a suite of that name.
    virtual std::shared_ptr<KeyValueStore> suite(std::string_view name) = 0;
    /// The store that stands in for a suite that is refused; never null. No other application shares it. It may live
    /// in memory.
    virtual std::shared_ptr<KeyValueStore> standard() = 0;
};

}  // namespace kavio
