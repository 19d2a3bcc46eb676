// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "clips/clip_content.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace nqp2::clips {

/// What the metadata of a card's clips promise of their files, as a scan has read them, so that
/// nobody reads them again for that.
class ClipPromises {
public:
    void Clear();
    /// By the path of the metadata on disk. Without memory for it, it stays unknown.
    void Add(const std::string& path, const dom::FieldValues& values) noexcept;
    /// False, with nothing changed, where it is not known.
    bool Tell(const std::string& path, std::vector<ClipEssence>& promises) const;

private:
    struct Range {
        std::size_t first;
        std::size_t count;
    };
    std::unordered_map<std::string, Range> m_byPath;
    std::vector<ClipEssence> m_all; ///< one clip's after another's
};

} // namespace nqp2::clips
