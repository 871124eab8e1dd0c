#pragma once

#include <csignal>

namespace kavio::wallet {

/// Thrown where the program would go on waiting, or start something new, although the person has pressed Ctrl-C.
struct Interrupted {};

/// While one exists, Ctrl-C is noted instead of ending the program, so that a payment can be left in order. Pressed
/// once more, it ends the program as usual. A program started with Ctrl-C turned off keeps it turned off.
class Interruption {
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Throws `Interrupted` once Ctrl-C has been noted.
    static void check();

private:
    struct sigaction mBefore {};
};

/// Ends the program the way Ctrl-C does, for the shell or the script that started it.
void endInterrupted();

}  // namespace kavio::wallet
