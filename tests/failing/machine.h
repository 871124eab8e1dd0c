#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace kavio::test {

/// What the machine is asked for and may refuse.
enum class Call { ALLOCATION, OPEN, READ, WRITE, SYNC, REMOVAL };
inline constexpr std::array<std::string_view, 6> callNames{"allocation", "open", "read", "write", "sync", "removal"};
using CallCounts = std::array<long, callNames.size()>;

/// From now on calls are counted, and the one of that number fails, from 1; 0 for none. If that `lasts`, so does every
/// later one of that kind: until the machine is sound again, or for 30 milliseconds if it is memory that is missing.
/// Only calls of the library and of what it is built on count: those made on this thread within the library, and all on
/// other threads.
void beginToFail(Call call, long number, bool lasts);
/// The machine is sound again. Returns the calls that were counted.
CallCounts stopFailing();
/// How often a call has failed.
long failures();

/// The bytes of the heap that are in use.
std::size_t bytesInUse();

}  // namespace kavio::test
