#pragma once

namespace kavio::test {

/// SQLite's view of the disk, broken on purpose: while this lives every database opened in the process goes through it.
class FailingDisk {
public:
    enum class Fault {
        REFUSED_ONCE,  ///< one operation fails, and did nothing
        DONE_ONCE,     ///< one operation reports a failure though it was carried out
        FULL,          ///< from that operation on everything fails as on a full disk
    };

    FailingDisk();
    ~FailingDisk();
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;

    /// The `n`th write, sync, truncation, creation or deletion of a file from now on meets the fault.
    void failAt(int n, Fault fault);
    /// The disk works again. Whether the fault had been met.
    bool repair();
};

}  // namespace kavio::test
