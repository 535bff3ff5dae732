#pragma once

#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace kontodb {

/// A copy of this process.
/// @param work  returns its exit code
inline pid_t start(const std::function<int()>& work) {
    const pid_t child = ::fork();
    if (child != 0) return child;
    try {
        ::_exit(work());
    } catch (...) {
        ::_exit(2);
    }
}

/// @return as waitpid() gives it
inline int statusOf(pid_t process) {
    int status = 0;
    return ::waitpid(process, &status, 0) == process ? status : -1;
}

}  // namespace kontodb
