// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/joined_file.h"

#include "copy/failure.h"
#include "worker/rewrap/stream_file.h"

#include <algorithm>
#include <initializer_list>

namespace nqp2::worker::rewrap {
namespace {

constexpr char kSync = 0x47;     ///< the first byte of each packet
constexpr unsigned kLost = 0x80; ///< in the second

} // namespace

JoinedFile::JoinedFile(const std::vector<Part>& parts, const std::function<bool()>& goesOn)
    : m_parts(parts), m_goesOn(goesOn) {
    std::uint64_t end = 0;
    for (const Part& part : parts) {
        const BoundedFile file(part.video, goesOn, {});
        if (file.Size() == 0) {
            throw copy::Failure(part.video + " is empty.");
        }
        m_ends.push_back(end += file.Size());
    }
    Open(0);
    LearnPackets();
}

/// Packets have 188 bytes, or 192 with a time before them.
void JoinedFile::LearnPackets() {
    constexpr std::uint64_t kTime = 4;
    constexpr std::uint64_t kPlain = 188;
    char head[kTime + 1] = {};
    if (ReadAt(0, head, sizeof head) != sizeof head) {
        RequireNotStopped();
    }
    m_mark = head[kTime] == kSync ? kTime : 0;
    m_packet = kPlain + m_mark;
    if (Size() % m_packet != 0) {
        throw copy::Failure(m_parts.back().name + " is cut off in the middle of a packet.");
    }
}

/// Looks at the two bytes of each packet that tell whether it is one.
void JoinedFile::CheckPackets(std::uint64_t position, std::string_view bytes) {
    for (const std::uint64_t mark : {m_mark, m_mark + 1}) {
        const std::uint64_t into = (position + m_packet - mark) % m_packet;
        for (std::uint64_t at = into == 0 ? 0 : m_packet - into; at < bytes.size();
             at += m_packet) {
            const bool isGood = mark == m_mark
                                    ? bytes[at] == kSync
                                    : (static_cast<unsigned char>(bytes[at]) & kLost) == 0;
            if (!isGood) {
                const std::size_t part = PartAt(position + at);
                m_fault = m_parts[part].name + " is damaged at byte " +
                          std::to_string(position + at - StartOf(part)) +
                          (mark == m_mark ? ": no packet is there."
                                          : ": the camera has marked a packet as lost.");
                return;
            }
        }
    }
}

void JoinedFile::Open(std::size_t part) {
    // The limits are those of all: one part may be read again for each other one.
    m_file = std::make_unique<BoundedFile>(m_parts[part].video, m_goesOn, LimitsFor(Size()));
    m_open = part;
}

std::size_t JoinedFile::PartAt(std::uint64_t position) const {
    const auto found = std::upper_bound(m_ends.begin(), m_ends.end(), position);
    return std::min(static_cast<std::size_t>(found - m_ends.begin()), m_ends.size() - 1);
}

std::int64_t JoinedFile::ReadAt(std::uint64_t position, char* buffer,
                                std::size_t capacity) noexcept {
    if (position >= Size()) {
        return 0;
    }
    const std::size_t part = PartAt(position);
    try {
        if (part != m_open) {
            m_file->RequireNotStopped();
            Open(part);
        }
    } catch (const std::exception& failure) {
        m_fault = failure.what();
        return -1;
    }
    const std::int64_t count =
        m_file->ReadAt(position - StartOf(part), buffer,
                       std::min<std::uint64_t>(capacity, m_ends[part] - position));
    if (count == 0) {
        m_fault = copy::ChangedInReading(m_parts[part].video);
    } else if (count > 0 && m_packet != 0) {
        CheckPackets(position, {buffer, static_cast<std::size_t>(count)});
    }
    return m_fault.empty() ? count : -1;
}

void JoinedFile::RequireNotStopped() const {
    if (!m_fault.empty()) {
        throw copy::Failure(m_fault);
    }
    m_file->RequireNotStopped();
}

} // namespace nqp2::worker::rewrap
