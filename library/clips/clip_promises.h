// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "clips/clip_content.h"
#include "platform/place.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace nqp2::clips {

/// What the metadata of a card's clips promise of their files, as a scan has read them, so that
/// nobody reads them again for that; and the card's folders, so that nobody lists them again.
class ClipPromises {
public:
    void Clear();
    /// By the name of the metadata's file. Without memory for it, it stays unknown.
    void Add(std::string_view name, const dom::FieldValues& values) noexcept;
    /// False, with nothing changed, where it is not known. Fast for who asks in the scan's order.
    bool Tell(std::string_view name, std::vector<ClipEssence>& promises);

    /// The folder CONTENTS with those below it, as far as the scan has listed them.
    void KeepContents(const platform::Place& contents) { m_contents = contents; }
    [[nodiscard]] const std::optional<platform::Place>& Contents() const { return m_contents; }

private:
    struct OfClip {
        std::string name;
        std::size_t first; ///< in all
        std::size_t count;
    };
    const OfClip* Find(std::string_view name);

    std::vector<OfClip> m_clips; ///< in the scan's order
    std::vector<ClipEssence> m_all;
    std::size_t m_next = 0;                                   ///< behind the one told last
    std::unordered_map<std::string_view, std::size_t> m_find; ///< made for who asks otherwise
    std::optional<platform::Place> m_contents;
};

} // namespace nqp2::clips
