#pragma once

namespace kavio::test {

/// How deep this thread is in the library, and in what the library calls; 0 in the test's own code.
inline thread_local int libraryDepth = 0;

struct InLibrary {
    InLibrary() { ++libraryDepth; }
    ~InLibrary() { --libraryDepth; }
    InLibrary(const InLibrary&) = delete;
    InLibrary& operator=(const InLibrary&) = delete;
};

struct OutsideLibrary {
    OutsideLibrary() { libraryDepth = 0; }
    ~OutsideLibrary() { libraryDepth = mDepth; }
    OutsideLibrary(const OutsideLibrary&) = delete;
    OutsideLibrary& operator=(const OutsideLibrary&) = delete;

private:
    const int mDepth = libraryDepth;
};

}  // namespace kavio::test
