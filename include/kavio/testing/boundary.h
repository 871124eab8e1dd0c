#pragma once

namespace kavio::test {

/// How deep this thread is in the library, and in what the library calls; 0 in the test's own code.
inline thread_local int libraryDepth = 0;

/// While it lives, this thread is one step deeper in the library.
struct InLibrary {
    InLibrary() { ++libraryDepth; }
    ~InLibrary() { --libraryDepth; }
    InLibrary(const InLibrary&) = delete;
    InLibrary& operator=(const InLibrary&) = delete;
};

/// While it lives, this thread is in the test's own code, for example in a callback.
struct OutsideLibrary {
    OutsideLibrary() { libraryDepth = 0; }
    ~OutsideLibrary() { libraryDepth = mDepth; }
    OutsideLibrary(const OutsideLibrary&) = delete;
    OutsideLibrary& operator=(const OutsideLibrary&) = delete;

private:
    const int mDepth = libraryDepth;
};

}  // namespace kavio::test
