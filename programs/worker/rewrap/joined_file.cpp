// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/rewrap/joined_file.h"

#include "copy/failure.h"
#include "worker/rewrap/stream_file.h"

#include <algorithm>

namespace nqp2::worker::rewrap {

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
    const std::uint64_t start = part == 0 ? 0 : m_ends[part - 1];
    const std::int64_t count = m_file->ReadAt(
        position - start, buffer, std::min<std::uint64_t>(capacity, m_ends[part] - position));
    if (count == 0) {
        m_fault = copy::ChangedInReading(m_parts[part].video);
    }
    return count == 0 ? -1 : count;
}

void JoinedFile::RequireNotStopped() const {
    if (!m_fault.empty()) {
        throw copy::Failure(m_fault);
    }
    m_file->RequireNotStopped();
}

} // namespace nqp2::worker::rewrap
