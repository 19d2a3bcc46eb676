// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/worker_process.h"

#include "channel/peer.h"
#include "channel/rendezvous.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <linux/close_range.h>
#include <optional>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace nqp2::channel {
namespace {

/// Milliseconds that a worker has to end by itself, and to be gone when it is killed: one that the
/// system holds, at a medium that does not answer, is not waited for any longer.
constexpr int kEndTime = 2000;

/// What the child is told by one byte: it waits for that, so that its number is its own until this
/// process has its descriptor.
constexpr char kGo = 'g';
constexpr char kLeave = 'l';

/// Everything that the child needs: between fork and exec it may only make system calls, for
/// another thread of the host may have held any lock.
struct Launch {
    const char* program;
    char* const* arguments;
    int line;    ///< takes errno when the program cannot be run
    int hostEnd; ///< of the line
    int nothing; ///< /dev/null
};

/// What the host ignores or handles is no business of the program.
void ResetSignals() {
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal) {
        sigaction(signal, &standard, nullptr);
    }
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
}

bool OpenStandardFiles(int nothing) {
    // A pipe that the host writes to must end with the host.
    bool areOpen = dup2(nothing, STDIN_FILENO) >= 0 && dup2(nothing, STDOUT_FILENO) >= 0;
    // Not open, or a descriptor of the host's that took the free number.
    const int flags = fcntl(STDERR_FILENO, F_GETFD);
    if (flags < 0 || (flags & FD_CLOEXEC) != 0) {
        areOpen = areOpen && dup2(nothing, STDERR_FILENO) >= 0;
    }
    return areOpen;
}

/// Leaves nothing but the standard files and the line to the program.
void CloseOthersOnExec(int line) {
    if (close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC) != 0) { // an older kernel
        constexpr rlim_t kMost = 65536;
        rlimit limit{};
        getrlimit(RLIMIT_NOFILE, &limit);
        const auto end = static_cast<int>(std::min(limit.rlim_cur, kMost));
        for (int number = STDERR_FILENO + 1; number < end; ++number) {
            fcntl(number, F_SETFD, FD_CLOEXEC);
        }
    }
    fcntl(line, F_SETFD, 0);
}

[[noreturn]] void RunProgram(const Launch& launch) {
    ResetSignals();
    close(launch.hostEnd);
    char word = kLeave;
    if (platform::Restarted([&] { return read(launch.line, &word, 1); }) == 1 && word == kGo) {
        // Ctrl-C at a terminal is for the host, which may have a request to cancel.
        setpgid(0, 0);
        if (OpenStandardFiles(launch.nothing)) {
            CloseOthersOnExec(launch.line);
            execv(launch.program, launch.arguments);
        }
        const int error = errno;
        [[maybe_unused]] const ssize_t told = write(launch.line, &error, sizeof(error));
    }
    _exit(127);
}

/// Forks with all signals blocked: a handler of the host must not run in the child, and a timer
/// that fires faster than a large process is copied would make fork begin again without end.
pid_t ForkChild(const Launch& launch) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = fork();
    if (child == 0) {
        RunProgram(launch);
    }
    const int error = errno;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return child;
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

/// Out of the way of the standard files, which the host may have closed.
platform::Descriptor AboveStandard(platform::Descriptor descriptor) {
    if (!descriptor || descriptor.Get() > STDERR_FILENO) {
        return descriptor;
    }
    return platform::Descriptor(fcntl(descriptor.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

struct Ends {
    platform::Descriptor host;
    platform::Descriptor child;
};

std::optional<Ends> MakeLine() {
    auto pair = MakeSocketPair();
    if (!pair) {
        return std::nullopt;
    }
    Ends ends{AboveStandard(std::move(pair->first)), AboveStandard(std::move(pair->second))};
    return ends.host && ends.child ? std::optional(std::move(ends)) : std::nullopt;
}

} // namespace

WorkerStatus WorkerProcess::Start(const std::string& program, std::vector<std::string> arguments,
                                  std::uint32_t patience, WorkerProcess& process) {
    const platform::Deadline deadline(patience);
    std::optional<Ends> line = MakeLine();
    const platform::Descriptor nothing =
        AboveStandard(platform::Descriptor(open("/dev/null", O_RDWR | O_CLOEXEC)));
    if (!line || !nothing) {
        return Failure(program);
    }
    arguments.insert(arguments.begin(), program);
    arguments.insert(arguments.end(), {"--host", std::to_string(line->child.Get())});
    const std::vector<char*> pointers = PointersTo(arguments);
    const pid_t child = ForkChild(
        {program.c_str(), pointers.data(), line->child.Get(), line->host.Get(), nothing.Get()});
    if (child < 0) {
        return Failure(program);
    }
    process.m_number = child;
    process.m_peer = PeerWithNumber(child);
    WorkerStatus status = process.m_peer != nullptr ? WorkerStatus{true, {}} : Failure(program);
    const char word = status ? kGo : kLeave;
    const bool isTold = send(line->host.Get(), &word, 1, MSG_NOSIGNAL) == 1;
    line->child = {};
    process.m_line = std::make_shared<const Line>(std::move(line->host), process.m_peer);
    return status && isTold ? process.Await(program, deadline) : status;
}

/// The program answers with a packet, a child that could not run it with an error number.
WorkerStatus WorkerProcess::Await(const std::string& program,
                                  const platform::Deadline& deadline) const {
    constexpr int kPause = 50; // milliseconds; where nothing tells of the end it is looked for
    while (true) {
        // Asked first: what was said before the end is still read.
        const bool hasEnded = HasEnded(0);
        std::byte answer[sizeof(Packet) + 1];
        const ssize_t count = platform::Restarted(
            [&] { return recv(m_line->Socket(), answer, sizeof(answer), MSG_DONTWAIT); });
        if (count == sizeof(Packet)) {
            return {true, {}};
        }
        if (int error = 0; count == sizeof(error)) {
            std::memcpy(&error, answer, sizeof(error));
            errno = error;
            return Failure(program);
        }
        if (hasEnded || count == 0) {
            return {false, program + ": ended before it listened"};
        }
        if (deadline.HasPassed()) {
            return {false, program + ": did not listen in time"};
        }
        pollfd watched[] = {{m_line->Socket(), POLLIN, 0}, {m_peer->Watch(), POLLIN, 0}};
        platform::Wait(watched, deadline.Left(kPause));
    }
}

bool WorkerProcess::HasEnded(int milliseconds) const {
    if (m_peer != nullptr && m_peer->Watch() >= 0) {
        return platform::HasNews(m_peer->Watch(), POLLIN, milliseconds);
    }
    constexpr int kPause = 5;
    const platform::Deadline deadline(static_cast<std::uint32_t>(milliseconds));
    while (IsRunningChild()) {
        if (deadline.HasPassed()) {
            return false;
        }
        platform::Wait({}, deadline.Left(kPause));
    }
    return true;
}

bool WorkerProcess::IsRunningChild() const {
    siginfo_t ended{};
    return waitid(P_PID, static_cast<id_t>(m_number), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           ended.si_pid == 0;
}

void WorkerProcess::Signal(int signal) const {
    if (m_peer != nullptr && m_peer->Watch() >= 0 &&
        (SignalProcess(m_peer->Watch(), signal) || errno == ESRCH)) {
        return;
    }
    // Not to the number of a child that may have been waited for: that could be another's by now.
    if (IsRunningChild()) {
        kill(m_number, signal);
    }
}

bool WorkerProcess::HasLeft() const {
    if (!HasEnded(0)) {
        return false;
    }
    // A host that waits for all its children, or for none, may have been quicker: no matter.
    const bool isWatched = m_peer != nullptr && m_peer->Watch() >= 0;
    siginfo_t ignored{};
    waitid(isWatched ? P_PIDFD : P_PID, static_cast<id_t>(isWatched ? m_peer->Watch() : m_number),
           &ignored, WEXITED | WNOHANG);
    return true;
}

bool WorkerProcess::End() {
    m_line.reset();
    if (m_number == 0 || !m_owner.IsThisProcess()) {
        return true;
    }
    for (const int signal : {SIGTERM, SIGKILL}) {
        if (!HasEnded(0)) {
            Signal(signal);
        }
        if (HasEnded(kEndTime)) {
            break;
        }
    }
    return HasLeft();
}

} // namespace nqp2::channel
