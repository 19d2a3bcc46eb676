// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

/// @file
/// What an import or export transfers.

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/Guid.h"

#include <cstdint>

/// How a file is written: container, picture and sound. 0 means "not said" in every field.
/// Its image is these fields in this order, 4 little-endian bytes each: 64 bytes, always.
struct tag_NQFileFormatEx {
    std::uint32_t fileType = 0;      ///< container, in the worker's numbering
    std::uint32_t codeType = 0;      ///< eCodeType of the video
    std::uint32_t width = 0;         ///< pixels
    std::uint32_t height = 0;        ///< pixels
    std::uint32_t rateScale = 0;     ///< frames a second are rate / rateScale: 1001 for 29.97
    std::uint32_t rate = 0;          ///< 30000 for 29.97
    std::uint32_t interlaced = 0;    ///< 1: two fields a frame
    std::uint32_t topFieldFirst = 0; ///< 1: the upper field comes first
    std::uint32_t aspectWidth = 0;   ///< of the picture as shown: 16 of 16:9
    std::uint32_t aspectHeight = 0;  ///< 9 of 16:9
    std::uint32_t videoBitRate = 0;  ///< bits a second
    std::uint32_t audioFormat = 0;   ///< format tag as in WAVEFORMATEX
    std::uint32_t audioChannels = 0; ///< in the file
    std::uint32_t audioRate = 0;     ///< samples a second
    std::uint32_t audioBits = 0;     ///< bits a sample
    std::uint32_t flags = 0;         ///< the worker's
};

/// Sets every field to its default.
NQP2_API void NQ_InitFileFormat(tag_NQFileFormatEx& format) noexcept;
/// Bytes of the record's image: 64 for every record.
NQP2_API std::int32_t NQ_GetFileFormatDataSize(const tag_NQFileFormatEx& format) noexcept;
/// Writes the image to `target`, which has room for it, and its length to `count`. Returns 1, or 0
/// with `count` 0 and nothing written when `target` is null. `count` may be null.
NQP2_API std::int32_t NQ_SaveFileFormatData(unsigned char* target, const tag_NQFileFormatEx& format,
                                            std::uint32_t* count) noexcept;
/// Reads the image at `source`, which holds a whole one, and stores the bytes read in `count`.
/// Returns 1, or 0 with `count` 0 and the record unchanged when `source` is null. `count` may be
/// null.
NQP2_API std::int32_t NQ_RestoreFileFormatData(const unsigned char* source,
                                               tag_NQFileFormatEx& format,
                                               std::uint32_t* count) noexcept;

/// A clip that belongs to the one that is transferred. What the fields mean is between the host
/// and the worker, here and in the records below.
struct stu_R8PRelationClipInfo {
    ///@{
    /// nqp2::RelationFields says what nqp2-worker makes of these; it does not use the others.
    std::uint32_t value1 = 0;
    std::uint32_t value2 = 0;
    std::uint32_t value3 = 0;
    GUID identifier1;
    GUID identifier2;
    CString text1;
    CString text2;
    CString text3;
    ///@}
};

namespace nqp2 {

/// Entry of the transfer record's tables.
struct TaggedText {
    ///@{
    /// Between the host and the worker; nqp2-worker does not use it.
    std::uint32_t value1 = 0;
    CString text;
    std::uint32_t value2 = 0;
    ///@}
};

/// A tagged text that describes an identifier.
struct DescribedIdentifier {
    TaggedText text; ///< nqp2-worker does not use this record

    ///@{
    /// See `text`.
    std::uint32_t value1 = 0;
    std::uint32_t value2 = 0;
    std::uint32_t value3 = 0;
    GUID identifier;
    ///@}
};

} // namespace nqp2

/// What an import or export transfers. Travels in another order: docs/wire.md.
struct stu_R8P2TransInfo {
    /// Entries of each table.
    static constexpr int kTaggedTexts = 9;

    ///@{
    /// nqp2::TransferFields says what nqp2-worker makes of these; it does not use the others.
    CString text1;
    CString text2;
    CString text3;
    std::uint32_t value1 = 0;
    std::uint32_t value2 = 0;
    std::uint32_t value3 = 0;
    std::uint32_t value4 = 0;
    std::uint32_t value5 = 0;
    std::uint32_t value6 = 0;
    std::uint32_t value7 = 0;
    std::uint32_t value8 = 0;
    std::uint32_t value9 = 0;
    std::uint32_t value10 = 0;
    std::uint32_t value11 = 0;
    std::uint64_t size1 = 0;
    std::uint32_t value12 = 0;
    std::uint32_t value13 = 0;
    std::uint64_t size2 = 0;
    std::uint32_t value14 = 0;
    std::uint32_t value15 = 1;
    nqp2::TaggedText taggedTexts1[kTaggedTexts];
    std::uint32_t value16 = 0;
    nqp2::DescribedIdentifier describedIdentifier;
    std::uint32_t value17 = 0;
    std::uint64_t size3 = 0;
    std::uint64_t size4 = 0;
    std::uint64_t size5 = 0;
    std::uint64_t size6 = 0;
    CArray<stu_R8PRelationClipInfo> relatedClips;
    std::uint32_t value18 = 0;
    CString text4;
    tag_NQFileFormatEx format1;
    tag_NQFileFormatEx format2;
    std::uint32_t value19 = 0;
    std::uint32_t value20 = 0;
    tag_NQFileFormatEx format3;
    tag_NQFileFormatEx format4;
    tag_NQFileFormatEx format5;
    tag_NQFileFormatEx format6;
    tag_NQFileFormatEx format7;
    nqp2::TaggedText taggedTexts2[kTaggedTexts];
    std::uint32_t value21 = 0;
    CString text5;
    std::uint32_t value22 = 0;
    ///@}
};
