// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/worker_process.h"

#include "channel/process_descriptor.h"
#include "channel/rendezvous.h"
#include "platform/wait.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace nqp2::channel {
namespace {

constexpr int kEndTime = 2000; ///< milliseconds that a worker has to end by itself

/// Everything that the child needs: between fork and exec it may only make system calls, for
/// another thread of the host may have held any lock.
struct Launch {
    const char* program;
    char* const* arguments;
    pid_t host;
    bool endsWithThread;
    int report;  ///< takes errno when the program cannot be run
    int nothing; ///< /dev/null
};

[[noreturn]] void RunProgram(const Launch& launch) {
    const bool bound = !launch.endsWithThread ||
                       (prctl(PR_SET_PDEATHSIG, SIGTERM) == 0 && getppid() == launch.host);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    // Ctrl-C at a terminal is for the host, which may have a request to cancel.
    setpgid(0, 0);
    // A pipe that the host writes to must end with the host.
    if (bound && dup2(launch.nothing, STDIN_FILENO) >= 0 &&
        dup2(launch.nothing, STDOUT_FILENO) >= 0) {
        close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
        execv(launch.program, launch.arguments);
    }
    const int error = errno;
    [[maybe_unused]] const ssize_t told = write(launch.report, &error, sizeof(error));
    _exit(127);
}

std::vector<char*> PointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// The error with which the child could not run the program; 0 when the pipe closed on success.
int ReadReport(int report) {
    int error = 0;
    const ssize_t count = platform::Restarted([&] { return read(report, &error, sizeof(error)); });
    return count == sizeof(error) ? error : 0;
}

} // namespace

WorkerStatus WorkerProcess::Start(const std::string& program,
                                  const std::vector<std::string>& arguments, bool endsWithThread,
                                  WorkerProcess& process) {
    std::vector<std::string> texts = {program};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    const std::vector<char*> pointers = PointersTo(texts);
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return Failure(program);
    }
    const platform::Descriptor report(ends[0]);
    platform::Descriptor reportEnd(ends[1]);
    const platform::Descriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
    const Launch launch{program.c_str(), pointers.data(), getpid(),
                        endsWithThread,  reportEnd.Get(), nothing.Get()};
    const pid_t child = nothing ? fork() : -1;
    if (child == 0) {
        RunProgram(launch);
    }
    process = WorkerProcess(child > 0 ? OpenProcess(child) : platform::Descriptor());
    if (!process.m_process) {
        WorkerStatus failure = Failure(program);
        if (child > 0) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
        return failure;
    }
    reportEnd = {};
    if (const int error = ReadReport(report.Get()); error != 0) {
        process.End();
        errno = error;
        return Failure(program);
    }
    return {true, {}};
}

WorkerProcess::WorkerProcess(platform::Descriptor process)
    : m_process(std::move(process)), m_starter(getpid()) {}

bool WorkerProcess::IsOurs() const {
    return m_process && m_starter == getpid();
}

bool WorkerProcess::HasEnded(int milliseconds) const {
    return platform::HasNews(m_process.Get(), POLLIN, milliseconds);
}

void WorkerProcess::End() {
    if (!IsOurs()) {
        return;
    }
    if (SignalProcess(m_process, SIGTERM) && !HasEnded(kEndTime)) {
        SignalProcess(m_process, SIGKILL);
    }
    // A host that waits for all its children, or for none, may have been quicker: no matter.
    siginfo_t ignored{};
    platform::Restarted(
        [&] { return waitid(P_PIDFD, static_cast<id_t>(m_process.Get()), &ignored, WEXITED); });
    m_process = {};
}

} // namespace nqp2::channel
