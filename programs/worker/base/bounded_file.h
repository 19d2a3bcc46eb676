// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/descriptor.h"
#include "worker/base/media_file.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace nqp2::worker {

/// A regular file that is read up to limits and as long as somebody wants it.
class BoundedFile final : public MediaInput {
public:
    /// Fails when there is no such file. Never waits on a pipe or device. `goesOn` outlives it.
    BoundedFile(std::string path, const std::function<bool()>& goesOn, const MediaLimits& limits);

    [[nodiscard]] const std::string& Name() const override { return m_path; }
    [[nodiscard]] std::uint64_t Size() const override { return m_size; }
    std::int64_t ReadAt(std::uint64_t position, char* buffer,
                        std::size_t capacity) noexcept override;
    [[nodiscard]] bool GoesOn() noexcept override;

    /// Fails when reading had to end before all was read that was asked for.
    void RequireNotStopped() const;

private:
    enum class Stop { None, Cancelled, Error, Limit };

    void Open();

    std::string m_path;
    const std::function<bool()>& m_goesOn;
    std::uint64_t m_bytesLeft;
    std::chrono::nanoseconds m_end;
    std::uint64_t m_size = 0;
    platform::Descriptor m_file;
    Stop m_stop = Stop::None;
    int m_error = 0; ///< the system's number
};

} // namespace nqp2::worker
