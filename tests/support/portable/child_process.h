// Work that needs a process of its own: other rights, other limits, or an early death.
#pragma once

#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace kxstr::test {

inline pid_t start_child(const std::function<int()> &work) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(work());
    return child;
}

// The exit status, or the negative number of the signal that ended it.
inline int wait_for_child(pid_t child) {
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) return -1000;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

inline int in_child(const std::function<int()> &work) {
    return wait_for_child(start_child(work));
}

// Root may write anywhere; nobody may not.
inline bool become_nobody() {
    constexpr unsigned kNobody = 65534;
    return ::geteuid() != 0 || (::setgid(kNobody) == 0 && ::setuid(kNobody) == 0);
}

} // namespace kxstr::test
