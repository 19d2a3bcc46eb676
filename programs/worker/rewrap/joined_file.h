// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/base/bounded_file.h"
#include "worker/rewrap/request.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::worker::rewrap {

/// The files of all parts, one behind the other, as one transport stream. Reading ends where no
/// packet begins though one should, and at one that is marked as damaged.
class JoinedFile final : public MediaInput {
public:
    /// Both outlive it. Fails for a stream that ends in the middle of a packet.
    JoinedFile(const std::vector<Part>& parts, const std::function<bool()>& goesOn);

    [[nodiscard]] const std::string& Name() const override { return m_parts.front().video; }
    [[nodiscard]] std::uint64_t Size() const override { return m_ends.back(); }
    std::int64_t ReadAt(std::uint64_t position, char* buffer,
                        std::size_t capacity) noexcept override;
    [[nodiscard]] bool GoesOn() noexcept override { return m_file->GoesOn(); }

    /// The part that has the byte.
    [[nodiscard]] std::size_t PartAt(std::uint64_t position) const;
    /// Fails when reading had to end before all was read that was asked for.
    void RequireNotStopped() const;

private:
    void Open(std::size_t part);
    [[nodiscard]] std::uint64_t StartOf(std::size_t part) const {
        return part == 0 ? 0 : m_ends[part - 1];
    }
    void LearnPackets();
    void CheckPackets(std::uint64_t position, std::string_view bytes);

    const std::vector<Part>& m_parts;
    const std::function<bool()>& m_goesOn;
    std::vector<std::uint64_t> m_ends; ///< of the parts
    std::size_t m_open = 0;            ///< part
    std::unique_ptr<BoundedFile> m_file;
    std::uint64_t m_packet = 0; ///< bytes of one
    std::uint64_t m_mark = 0;   ///< of them before its first mark
    std::string m_fault;        ///< why reading had to end
};

} // namespace nqp2::worker::rewrap
