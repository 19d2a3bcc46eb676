// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace nqp2::test {

/// The n-th system call of that name that a thread makes from some moment on.
struct SystemCall {
    std::string name;
    int number = 0;
    auto operator<=>(const SystemCall&) const = default;
};

/// Which tasks of a process a tracer looks at.
enum class Traced { All, FirstThread };

/// strace on a process that runs already, for its own lifetime.
class Tracer {
public:
    /// Attached when the constructor returns, or not at all: see IsAttached.
    Tracer(pid_t process, const std::vector<std::string>& options, Traced traced = Traced::All) {
        int ends[2] = {-1, -1};
        if (pipe2(ends, O_CLOEXEC) != 0) {
            return;
        }
        const std::string task = std::to_string(process);
        std::vector<const char*> arguments = {"strace", "-p", task.c_str()};
        if (traced == Traced::All) {
            arguments.push_back("-f");
        }
        for (const std::string& option : options) {
            arguments.push_back(option.c_str());
        }
        arguments.push_back(nullptr);
        m_strace = fork();
        if (m_strace == 0) {
            dup2(ends[1], STDERR_FILENO);
            execvp(arguments[0], const_cast<char**>(arguments.data()));
            _exit(127);
        }
        close(ends[1]);
        m_said = ends[0];
        AwaitAttachment();
    }
    ~Tracer() {
        if (m_strace > 0) {
            End();
        }
        if (m_said >= 0) {
            close(m_said);
        }
    }
    Tracer(const Tracer&) = delete;
    Tracer& operator=(const Tracer&) = delete;

    [[nodiscard]] bool IsAttached() const { return m_isAttached; }

private:
    /// Lets go of the process, which runs on. A strace that lets go of a process that is about to
    /// end may wait for it without end: the system does it in its place then.
    void End() const {
        kill(m_strace, SIGTERM);
        for (int waited = 0; waited < 300; ++waited) {
            if (waitpid(m_strace, nullptr, WNOHANG) != 0) {
                return;
            }
            usleep(1000);
        }
        kill(m_strace, SIGKILL);
        waitpid(m_strace, nullptr, 0);
    }
    void AwaitAttachment() {
        std::string words;
        char letter = 0;
        while (!m_isAttached && read(m_said, &letter, 1) == 1) {
            words.push_back(letter);
            m_isAttached = letter == '\n' && words.find("attached") != std::string::npos;
        }
    }

    pid_t m_strace = -1;
    int m_said = -1;
    bool m_isAttached = false;
};

/// Whether strace is there and may look into other processes.
inline bool CanTrace() {
    const pid_t child = fork();
    if (child == 0) {
        pause();
        _exit(0);
    }
    const bool can =
        Tracer(child, {"-o", "/dev/null", "-e", "inject=getpid:signal=KILL:when=99"}).IsAttached();
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return can;
}

/// The option that lets one call end in `fate`: "signal=KILL", "error=EIO".
inline std::string Inject(const SystemCall& call, const std::string& fate) {
    return "inject=" + call.name + ":" + fate + ":when=" + std::to_string(call.number);
}

/// Each call that strace wrote down, once, however many threads made it.
inline std::vector<SystemCall> CallsIn(const std::string& trace) {
    static const std::regex line("^([0-9]*) *([a-z_0-9]+)\\(.*");
    std::map<std::pair<std::string, std::string>, int> counts; // name, thread
    std::set<SystemCall> calls;
    std::ifstream file(trace);
    std::smatch match;
    for (std::string text; std::getline(file, text);) {
        text.resize(std::min<std::size_t>(text.size(), 100)); // the rest is of no interest
        if (std::regex_match(text, match, line)) {
            calls.insert({match[2], ++counts[{match[2], match[1]}]});
        }
    }
    return {calls.begin(), calls.end()};
}

/// About `count` of the calls, spread over all of them.
inline std::vector<SystemCall> SomeOf(const std::vector<SystemCall>& calls, std::size_t count) {
    std::vector<SystemCall> some;
    const std::size_t taken = std::min(count, calls.size());
    for (std::size_t i = 0; i < taken; ++i) {
        some.push_back(calls[i * calls.size() / taken]);
    }
    return some;
}

} // namespace nqp2::test
