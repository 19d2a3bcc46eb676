// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/measure.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>

/// What programs share that measure this process together with another one.
namespace nqp2::bench {

/// Bytes of what is sent: a frame, and nearly what a channel holds, with room for the message that
/// a frame comes with.
inline constexpr std::uint32_t kFrames[] = {576'000, 45'300'000};

/// Lets this process, and those that RunBeside makes, have that many processors: 1 or 2.
void UseProcessors(int count);

/// Where a process stays: it begins on its own processor and may leave it, or is held there.
enum class Stay { Begins, Held };

/// Runs `body` in a process that ends with this one, with two processors on the other one.
pid_t RunBeside(const std::function<void()>& body, Stay stay = Stay::Begins);
void End(pid_t child);

/// Reads every byte, as a consumer does that writes a message to a medium.
std::uint64_t Sum(const void* bytes, std::size_t length);

/// Makes a folder for the files of one conversation, and removes it with them at its end.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    [[nodiscard]] std::string Path(const std::string& name) const { return m_path + '/' + name; }

private:
    std::string m_path;
};

/// The bare minimum of a conversation: a second process that reads the bytes which this one has
/// copied into memory of both; a futex says whose turn it is.
class BareTalk {
public:
    explicit BareTalk(std::size_t length);
    ~BareTalk();
    BareTalk(const BareTalk&) = delete;
    BareTalk& operator=(const BareTalk&) = delete;

    /// Copies the bytes, as many as the length, and returns when the other process has read them.
    void Tell(const void* bytes);
    /// Tell, with each process held on its own processor where there are two: nobody but the two
    /// runs, and the system would put them on one.
    Subject Measured(std::string name, const void* bytes);

private:
    struct Shared;
    Shared* m_shared;
    std::size_t m_length;
    pid_t m_reader;
};

} // namespace nqp2::bench
