#pragma once

#include "models/json/key.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kavio {

/// The names of an object's members in their order, and where to find each. The objects of a reply have few shapes, so
/// those met last are remembered: to read another such object, its names only have to be compared.
class ObjectShape {
public:
    explicit ObjectShape(std::span<const std::string_view> names);

    std::size_t size() const { return mMembers.size(); }
    /// Whether it is small enough to be remembered, as the shapes of all our records are.
    bool isOrdinary() const { return mMembers.size() <= 256 && mNames.size() <= 4096; }
    /// Whether a member has that name. Compares without a call, unlike `==`, which matters as every member of every
    /// object is compared.
    bool isName(std::size_t position, std::string_view name) const {
        const auto& member = mMembers[position];
        const char* known = mNames.data() + member.begin;
        if (member.size != name.size()) return false;
        const auto isAlike = [&]<class Word>(Word, std::size_t at) {
            Word ours{};
            Word theirs{};
            std::memcpy(&ours, known + at, sizeof(Word));
            std::memcpy(&theirs, name.data() + at, sizeof(Word));
            return ours == theirs;
        };
        std::size_t at = 0;
        for (; at + 8 <= name.size(); at += 8)
            if (!isAlike(std::uint64_t{}, at)) return false;
        if (name.size() >= 8) return isAlike(std::uint64_t{}, name.size() - 8);
        for (; at < name.size(); ++at)
            if (known[at] != name[at]) return false;
        return true;
    }
    std::string_view name(std::size_t position) const {
        const auto& member = mMembers[position];
        return {mNames.data() + member.begin, member.size};
    }

    static constexpr std::size_t absent = std::numeric_limits<std::size_t>::max();

    /// The position of the last member of that name, or `absent`.
    std::size_t find(std::string_view name) const;
    /// The same for the `turn`th key that a record asks for. Mostly that is the key of the same turn as with the object
    /// before, which saves the search.
    std::size_t find(Key key, std::size_t turn) {
        if (turn < mAnswers.size() && mAnswers[turn].key == key.name().data()) return mAnswers[turn].position;
        return remember(key, turn);
    }

private:
    struct Member {
        std::uint32_t begin;
        std::uint32_t size;
    };
    struct Answer {
        const char* key;  // a literal, so the same address is the same name
        std::size_t position;
    };
    std::size_t remember(Key key, std::size_t turn);

    std::string mNames;
    std::vector<Member> mMembers;
    std::vector<std::uint32_t> mSorted;  // positions, by name
    std::vector<Answer> mAnswers;        // by turn
};

/// A place for a shape that this thread may meet again. Whoever uses the shape takes it out meanwhile.
struct KnownShape {
    std::unique_ptr<ObjectShape> shape;
    bool isTaken = false;
};

/// The place of the shape that an object with that many members and that first name probably has; what is there may be
/// another shape, or null.
KnownShape& knownShape(std::size_t size, std::string_view firstName);

}  // namespace kavio
