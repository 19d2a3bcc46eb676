// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card_scan.h"
#include "nqp2/timeline/model.h"
#include "NQP2ParserU/ClipMetadata.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/CStringArray.h"
#include "NQP2ParserU/FrameRate.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/RewrapEssence.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::rewrap {

/// What a clip is made of, as one file of it needs to know.
struct Essence {
    CString name;
    CString video;       ///< interface path as the worker takes it
    CStringArray sounds; ///< the same, by channel; none where the video's file holds them
    std::uint64_t bytes = 0;
    bool isStream = false;                ///< whose parts are joined byte by byte
    bool isIntra = false;                 ///< whether each picture stands alone
    std::optional<RewrapEssence> picture; ///< what it is made of, as far as the cards tell
    CString codec;                        ///< with its class
    FrameRate rate;                       ///< of the pictures in the file; 0 frames when unknown
    bool isInterlaced = false;
    std::uint32_t aspectWidth = 0;
    std::uint32_t aspectHeight = 0;
    std::uint32_t frames = 0; ///< that the metadata promise, at that rate
    std::int64_t start = -1;  ///< timecode of the first frame as a count at that rate
    bool dropFrame = false;
    std::string title;
    std::string date;                    ///< ISO 8601
    std::vector<std::string> soundTexts; ///< for people: what each track of sound is
    std::vector<timeline::Memo> memos;   ///< by their frames
    std::string remark;                  ///< what could not be read of all that

    [[nodiscard]] CString StartText() const;
};

/// Looks what clips are made of. For all cards of a scan, which outlives it.
class EssenceReader {
public:
    explicit EssenceReader(const tool::CardScans& scans) : m_scans(scans) {}

    /// Throws the failure to report for a clip that lacks something; it names the file.
    Essence Of(const _tag_P2Clip& clip);

private:
    ClipMetadataReader& MetadataOf(const tool::CardScan& card);

    const tool::CardScans& m_scans;
    std::map<const tool::CardScan*, std::unique_ptr<ClipMetadataReader>> m_readers;
};

} // namespace nqp2::rewrap
