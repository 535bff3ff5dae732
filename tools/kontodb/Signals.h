#pragma once

#include <functional>
#include <initializer_list>
#include <map>

namespace kontodb {

/// The program has been told to end by a signal. It is thrown so that unfinished work is removed; the function that
/// catches it raises the signal again.
struct Interrupted {
    int signal;
};

/// While this lives, Ctrl-C and the other signals that end the program are only recorded, and waiting system calls
/// return. Signals that the program was started to ignore stay ignored.
class Interruption {
public:
    /// @param further  signals besides those that end the program
    Interruption(std::initializer_list<int> further = {});
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// @return the signal that came last; 0 if none has come
    static int signal();

#ifndef _WIN32
    /// Waits until the descriptor has input or a signal comes. A signal just before the wait ends it, too.
    /// @return false if a signal has come
    bool waitForInput(int descriptor) const;
#endif

    /// @throws Interrupted if a signal has come
    static void check();

private:
    void watch(int signal);

    std::map<int, std::function<void()>> restore_;
};

/// From now on a write beyond a limit, or into a pipe without a reader, fails and does not end the program.
void failBeyondLimits();
void failOnClosedPipes();

}  // namespace kontodb
