// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "clips/clip_content.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace nqp2::clips {

/// What the metadata of a card's clips promise of their files, as a scan has read them, so that
/// nobody reads them again for that.
class ClipPromises {
public:
    void Clear() { m_byPath.clear(); }
    /// By the path of the metadata on disk. Without memory for it, it stays unknown.
    void Add(const std::string& path, const dom::FieldValues& values) noexcept;
    /// Null where it is not known.
    [[nodiscard]] const std::vector<ClipEssence>* Of(const std::string& path) const;

private:
    std::unordered_map<std::string, std::vector<ClipEssence>> m_byPath;
};

} // namespace nqp2::clips
