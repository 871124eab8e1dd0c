#pragma once

#include <new>
#include <utility>

namespace kavio {

/// Does work of the library's own where nothing may be thrown. When memory runs out the work is left where it was; with
/// that the operation that it was done for is let go, and reports it.
template <class Work>
void contained(Work&& work) {
    try {
        std::forward<Work>(work)();
    } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch)
    }
}

}  // namespace kavio
