// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/card.h"
#include "avchd/clip_information.h"
#include "avchd/clip_source.h"
#include "avchd/shot_marks.h"
#include "NQP2ParserU/ClipMetadataRecords.h"
#include "NQP2ParserU/CString.h"
#include "platform/io_status.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace nqp2::avchd {

/// Reads what the files of the clips below one BDMV folder tell beside their records. Playlists are
/// read when the first clip of their kind is asked for, once.
class MetadataSource {
public:
    explicit MetadataSource(const platform::Place& folder) : m_clips(folder) {}

    /// A clip by its name. `metadata` comes empty. NotFound when it has no clip information.
    platform::IoStatus Read(const CardKind& kind, const CString& name, ClipMetadata& metadata);

private:
    /// The marks of one kind's playlists, by clip name.
    struct Marks {
        std::map<std::string, std::vector<ShotMark>, std::less<>> byClip;
        std::map<std::string, std::vector<CString>, std::less<>> playlists; ///< their names
        std::size_t count = 0;
        bool isCut = false;
    };
    const Marks& MarksOf(const CardKind& kind);

    ClipSource m_clips;
    std::map<std::wstring, Marks> m_marks; ///< by the playlists' extension
};

} // namespace nqp2::avchd
