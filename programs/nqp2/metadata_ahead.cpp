// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/metadata_ahead.h"

#include <new>
#include <system_error>

namespace nqp2::tool {
namespace {

/// Of fewer clips a thread is not worth its start.
constexpr std::size_t kLeastClips = 32;

/// Waking takes as long as reading some clips: so many come at once.
constexpr std::size_t kToWake = 8;

/// What may be held ahead, the last that was read not counted, and of one clip once it was shown.
constexpr std::size_t kMostHeld = std::size_t{4} << 20U;
constexpr std::size_t kMostKept = std::size_t{64} << 10U;

} // namespace

void MetadataAhead::Begin(ClipOrder clips) {
    if (clips.size() < kLeastClips || std::thread::hardware_concurrency() == 1) {
        return;
    }
    m_clips = std::move(clips);
    try {
        m_thread = std::thread([this] { Work(); });
    } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch): this thread will do
    } catch (const std::bad_alloc&) {    // NOLINT(bugprone-empty-catch)
    }
}

ReadMetadata& MetadataAhead::Of(const _tag_P2Clip& clip) {
    if (m_thread.joinable() && (m_next == m_clips.size() || m_clips[m_next] != &clip)) {
        End();
    }
    if (!m_thread.joinable()) {
        m_read(clip, m_here);
        return m_here;
    }
    const std::size_t index = m_next++;
    if (index > 0) {
        Release();
    }
    std::unique_lock lock(m_mutex);
    m_filled.wait(lock, [&] { return m_made > index; });
    return SlotOf(index).read;
}

/// The clip that was shown before the next one.
void MetadataAhead::Release() {
    Slot& slot = SlotOf(m_shown);
    if (slot.bytes > kMostKept) {
        slot.read.metadata = {};
    }
    std::unique_lock lock(m_mutex);
    ++m_shown;
    m_bytes -= slot.bytes;
    const bool isWorthWaking = m_made - m_shown <= kWindow / 2;
    lock.unlock();
    if (isWorthWaking) {
        m_room.notify_one();
    }
}

bool MetadataAhead::HasRoom() const {
    return m_made - m_shown < kWindow && m_bytes <= kMostHeld;
}

void MetadataAhead::Work() noexcept {
    for (std::size_t index = 0; index < m_clips.size(); ++index) {
        {
            std::unique_lock lock(m_mutex);
            if (!HasRoom()) {
                m_filled.notify_one();
            }
            m_room.wait(lock, [&] { return m_isOver || HasRoom(); });
            if (m_isOver) {
                return;
            }
        }
        Fill(index);
    }
}

void MetadataAhead::Fill(std::size_t index) noexcept {
    Slot& slot = SlotOf(index);
    slot.bytes = m_read(*m_clips[index], slot.read);
    std::unique_lock lock(m_mutex);
    ++m_made;
    m_bytes += slot.bytes;
    const bool isWorthWaking = m_made == m_clips.size() || m_made - m_shown > kToWake;
    lock.unlock();
    if (isWorthWaking) {
        m_filled.notify_one();
    }
}

void MetadataAhead::End() {
    {
        const std::lock_guard lock(m_mutex);
        m_isOver = true;
    }
    m_room.notify_one();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

} // namespace nqp2::tool
