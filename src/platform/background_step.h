#pragma once

namespace kavio {

/// What one of the library's own threads does between two waits. The process does not wait for these threads when it
/// ends, but its exit would destroy what they are using, such as the tables of a library. So it waits for the steps
/// under way, for a second at most, and lets no other begin: their threads sleep until the process is gone.
class BackgroundStep {
public:
    BackgroundStep();
    ~BackgroundStep();
    BackgroundStep(const BackgroundStep&) = delete;
    BackgroundStep& operator=(const BackgroundStep&) = delete;

    /// To be called once what the steps use is there: exit destroys what was made last first.
    static void endAtExit();
    /// Whether the process is ending and no further step begins. A thread that takes steps will not end, then.
    static bool haveEnded();
};

}  // namespace kavio
