// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/clip_order.h"
#include "NQP2ParserU/ClipMetadata.h"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace nqp2::tool {

/// What came of reading a clip's metadata.
struct ReadMetadata {
    MetadataStatus status = MetadataStatus::NoFile;
    ClipMetadata metadata;
    CString problem;
};

/// Reads the metadata of clips while those before are shown, on a thread of its own where there is
/// one to be had. Little is held: what is large waits until it is shown.
class MetadataAhead {
public:
    /// Reads those of a clip, by one thread at a time, and tells how many bytes they take. Does not
    /// throw.
    using Read = std::function<std::size_t(const _tag_P2Clip& clip, ReadMetadata& read)>;

    explicit MetadataAhead(Read read) : m_read(std::move(read)) {}
    ~MetadataAhead() { End(); }
    MetadataAhead(const MetadataAhead&) = delete;
    MetadataAhead& operator=(const MetadataAhead&) = delete;

    /// The clips will be asked for in that order, once.
    void Begin(ClipOrder clips);
    /// Of the clip, which may be another than the next one. Holds until the next call.
    ReadMetadata& Of(const _tag_P2Clip& clip);

private:
    struct Slot {
        ReadMetadata read;
        std::size_t bytes = 0;
    };
    static constexpr std::size_t kWindow = 32;

    [[nodiscard]] Slot& SlotOf(std::size_t index) { return m_slots[index % kWindow]; }
    [[nodiscard]] bool HasRoom() const;
    void Work() noexcept;
    void Fill(std::size_t index) noexcept;
    void Release();
    void End();

    Read m_read;
    ReadMetadata m_here; ///< without the thread
    ClipOrder m_clips;
    std::array<Slot, kWindow> m_slots;
    std::mutex m_mutex;
    std::condition_variable m_filled;
    std::condition_variable m_room;
    std::size_t m_made = 0;  ///< so many clips have been read,
    std::size_t m_shown = 0; ///< so many of them are no longer needed,
    std::size_t m_bytes = 0; ///< and so much is held of the others
    bool m_isOver = false;
    std::size_t m_next = 0; ///< that will be asked for
    std::thread m_thread;   ///< last: it uses all others
};

} // namespace nqp2::tool
