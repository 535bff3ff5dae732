#include "tools/kontodb/Signals.h"

#include <atomic>
#include <csignal>
#ifndef _WIN32
#include <poll.h>
#endif

namespace kontodb {
namespace {

std::atomic<int> noted = 0;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void note(int signal) {
    noted = signal;
}

#ifdef _WIN32
constexpr int kEnding[] = {SIGINT, SIGTERM, SIGBREAK};
#else
constexpr int kEnding[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
#endif

}  // namespace

Interruption::Interruption(std::initializer_list<int> further) {
    noted = 0;
    for (const int signal : kEnding)
        watch(signal);
    for (const int signal : further)
        watch(signal);
}

#ifdef _WIN32
void Interruption::watch(int signal) {
    const auto before = std::signal(signal, note);
    if (before == SIG_IGN) std::signal(signal, SIG_IGN);
    restore_[signal] = [signal, before] { std::signal(signal, before); };
}

void failBeyondLimits() {}
void failOnClosedPipes() {}
#else
void Interruption::watch(int signal) {
    struct sigaction before {};
    struct sigaction noting {};
    noting.sa_handler = note;
    sigaction(signal, nullptr, &before);
    if (before.sa_handler == SIG_IGN) return;
    sigaction(signal, &noting, nullptr);
    restore_[signal] = [signal, before] { sigaction(signal, &before, nullptr); };
}

/// The signals are blocked from the check until the wait begins, so that none is missed in between.
bool Interruption::waitForInput(int descriptor) const {
    sigset_t watched;
    sigset_t before;
    sigemptyset(&watched);
    for (const auto& [signal, restore] : restore_)
        sigaddset(&watched, signal);
    sigprocmask(SIG_BLOCK, &watched, &before);
    pollfd input{descriptor, POLLIN, 0};
    const bool hasInput = noted == 0 && ppoll(&input, 1, nullptr, &before) == 1;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return hasInput;
}

void failBeyondLimits() {
    std::signal(SIGXFSZ, SIG_IGN);
}

void failOnClosedPipes() {
    std::signal(SIGPIPE, SIG_IGN);
}
#endif

Interruption::~Interruption() {
    for (const auto& [signal, restore] : restore_)
        restore();
}

int Interruption::signal() {
    return noted;
}

void Interruption::check() {
    if (noted != 0) throw Interrupted{noted};
}

}  // namespace kontodb
