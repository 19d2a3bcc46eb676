// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/worker_process.h"

#include "channel/peer.h"
#include "channel/rendezvous.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace nqp2::channel {
namespace {

/// Milliseconds that a worker has to end by itself, and to be gone when it is killed: one that the
/// system holds, at a medium that does not answer, is not waited for any longer.
constexpr int kEndTime = 2000;

/// The number of the line in the program.
constexpr int kProgramsLine = STDERR_FILENO + 1;

/// What the host ignores or handles is no business of the program. Ctrl-C at a terminal is for the
/// host, which may have a request to cancel.
class Attributes {
public:
    Attributes() {
        posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&m_attributes, &signals);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&m_attributes, &signals);
        posix_spawnattr_setpgroup(&m_attributes, 0);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK |
                                                    POSIX_SPAWN_SETPGROUP);
    }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    ~Attributes() { posix_spawnattr_destroy(&m_attributes); }

    [[nodiscard]] const posix_spawnattr_t* Get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes{};
};

/// Leaves nothing but the standard files and the line to the program.
class FileActions {
public:
    FileActions(int line, int nothing) {
        posix_spawn_file_actions_init(&m_actions);
        // A pipe that the host writes to must end with the host.
        Put(nothing, STDIN_FILENO);
        Put(nothing, STDOUT_FILENO);
        // Not open, or a descriptor of the host's that took the free number.
        const int flags = fcntl(STDERR_FILENO, F_GETFD);
        if (flags < 0 || (flags & FD_CLOEXEC) != 0) {
            Put(nothing, STDERR_FILENO);
        }
        Put(line, kProgramsLine);
        Note(posix_spawn_file_actions_addclosefrom_np(&m_actions, kProgramsLine + 1));
    }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    ~FileActions() { posix_spawn_file_actions_destroy(&m_actions); }

    /// 0, or why it could not be written down.
    [[nodiscard]] int Error() const { return m_error; }
    [[nodiscard]] const posix_spawn_file_actions_t* Get() const { return &m_actions; }

private:
    void Put(int descriptor, int number) {
        Note(posix_spawn_file_actions_adddup2(&m_actions, descriptor, number));
    }
    void Note(int error) { m_error = m_error == 0 ? error : m_error; }

    posix_spawn_file_actions_t m_actions{};
    int m_error = 0;
};

std::vector<char*> PointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// The number of the process that runs the program; 0 with errno when it cannot be run. The C
/// library borrows this process's memory for the child instead of copying what is mapped here: for
/// a large host that would take longer than all else until the first answer.
pid_t Spawn(std::vector<std::string>& arguments, int line, int nothing) {
    const FileActions files(line, nothing);
    const Attributes attributes;
    pid_t child = 0;
    errno = files.Error() != 0
                ? files.Error()
                : posix_spawn(&child, arguments.front().c_str(), files.Get(), attributes.Get(),
                              PointersTo(arguments).data(), environ);
    return errno == 0 ? child : 0;
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

WorkerStatus EndedEarly(const std::string& program) {
    return {false, program + ": ended before it listened"};
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
    arguments.insert(arguments.end(), {"--host", std::to_string(kProgramsLine)});
    process.m_number = Spawn(arguments, line->child.Get(), nothing.Get());
    if (process.m_number == 0) {
        return Failure(program);
    }
    process.m_peer = PeerWithNumber(process.m_number);
    if (process.m_peer == nullptr) {
        // A host that waits for all its children, or for none, may have been quicker.
        return errno == ESRCH ? EndedEarly(program) : Failure(program);
    }
    line->child = {};
    process.m_line = std::make_shared<const Line>(std::move(line->host), process.m_peer);
    return process.Await(program, deadline);
}

/// The program answers with a packet.
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
        if (hasEnded || count == 0) {
            return EndedEarly(program);
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
