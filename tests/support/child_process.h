// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <fstream>
#include <functional>
#include <grp.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

// Limits on memory mean nothing where a sanitizer keeps its own beside it.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define NQP2_MEMORY_IS_INSTRUMENTED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define NQP2_MEMORY_IS_INSTRUMENTED 1
#endif
#endif

namespace nqp2::test {

/// Runs `body` in a process of its own, where it may give up rights or set limits. The result is
/// the number that it returned (0 to 255), or -1 when the process ended in any other way.
inline int RunInChild(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(body());
    }
    int status = 0;
    const bool ended = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
    return ended ? WEXITSTATUS(status) : -1;
}

/// The process that this one started last and that runs as `name`, 0 when there is none.
inline pid_t ChildNamed(const std::string& name) {
    constexpr std::size_t kLongest = 15; // the system cuts names
    std::ifstream list("/proc/self/task/" + std::to_string(getpid()) + "/children");
    pid_t found = 0;
    for (pid_t child = 0; list >> child;) {
        std::ifstream file("/proc/" + std::to_string(child) + "/comm");
        std::string running;
        std::getline(file, running);
        found = running == name.substr(0, kLongest) ? child : found;
    }
    return found;
}

/// False for one that has ended, waited for or not.
inline bool IsRunning(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text);
    const std::size_t name = text.rfind(')');
    return name != std::string::npos && text.compare(name, 3, ") Z") != 0;
}

/// Gives up the rights of the superuser, whom no permission bit stops. Only in a child process.
inline bool BecomeOrdinaryUser() {
    constexpr uid_t kNobody = 65534;
    return geteuid() != 0 ||
           (setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0);
}

} // namespace nqp2::test
