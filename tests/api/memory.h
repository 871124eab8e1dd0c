#pragma once

namespace kavio::test {

/// While this lives, every block of memory that is given back is searched for the secrets of the tests.
struct Watch {
    Watch();
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    int found() const;
};

/// Lets the library's allocation of that number fail, once, from 1.
void failAllocation(long number);
/// Lets none fail any more. Whether one has.
bool stopFailing();

}  // namespace kavio::test
