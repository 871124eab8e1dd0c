#pragma once

#include "models/json/key.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
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
    bool isOrdinary() const { return mMembers.size() <= 256 && mNames.size() <= 5120; }
    /// Whether a member has that name, which stands behind its size, as on a tape. Compares without a call, eight bytes
    /// at a time, which matters as every member of every object is compared.
    bool isName(std::size_t position, const char* sized) const {
        const auto& member = mMembers[position];
        const char* known = mNames.data() + member.begin;
        const auto isAlike = [&]<class Word>(Word, std::size_t at) {
            Word ours{};
            Word theirs{};
            std::memcpy(&ours, known + at, sizeof(Word));
            std::memcpy(&theirs, sized + at, sizeof(Word));
            return ours == theirs;
        };
        if (member.size < 8) {
            std::size_t at = 4;
            if (!isAlike(std::uint32_t{}, 0)) return false;
            while (at < member.size && known[at] == sized[at]) ++at;
            return at == member.size;
        }
        if (!isAlike(std::uint64_t{}, 0)) return false;  // of another size, or begins otherwise
        for (std::size_t at = 8; at + 8 < member.size; at += 8)
            if (!isAlike(std::uint64_t{}, at)) return false;
        return isAlike(std::uint64_t{}, member.size - 8);
    }
    std::string_view name(std::size_t position) const {
        const auto& member = mMembers[position];
        return {mNames.data() + member.begin + sizeof member.size, member.size - sizeof member.size};
    }

    /// Whether the member is the last of its name, which is the one that counts.
    bool counts(std::size_t position) const { return mCounts[position]; }

    /// Where a key was found with the object before.
    struct Answer {
        const char* key;  // a literal, so the same address is the same name
        std::size_t position;
    };
    /// One per turn: a record mostly asks for the same keys in the same order.
    std::span<const Answer> answers() const { return mAnswers; }
    /// The position of the last member of that name, or `size()` if there is none. It becomes the answer for that turn.
    std::size_t find(Key key, std::size_t turn);

private:
    struct Member {
        std::uint32_t begin;
        std::uint32_t size;  // with its own four bytes
    };
    std::size_t find(std::string_view name) const;

    std::string mNames;
    std::vector<Member> mMembers;
    std::vector<bool> mCounts;
    std::vector<std::uint32_t> mSorted;  // positions, by name
    std::vector<Answer> mAnswers;        // by turn
};

/// A place for a shape that this thread may meet again. Whoever uses the shape takes it out meanwhile.
struct KnownShape {
    std::unique_ptr<ObjectShape> shape;
    bool isTaken = false;
};

/// The place of the shape that an object with that many members probably has; what is there may be another shape, or
/// null. `firstName` stands behind its size.
KnownShape& knownShape(std::size_t size, const char* firstName);

}  // namespace kavio
