// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/CStringArray.h"
#include "NQP2ParserU/Guid.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "NQP2ParserU/R8P2TransInfo.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>

/// @file
/// What nqp2-worker makes of the numbered fields of a record: views, whose members refer to the
/// fields of the record that they are made for. A const record is only read:
///
///     stu_R8P2TransInfo info;
///     nqp2::TransferFields(info).clipName = L"0001AB";

namespace nqp2 {

/// A reference to a field of a record; const if the record is.
template <class Record, class Field>
using FieldOf = std::conditional_t<std::is_const_v<Record>, const Field, Field>&;

/// Bits of TransferFields::flags.
inline constexpr std::uint32_t kTakeIncomplete = 1; ///< request: take clips that are not whole
inline constexpr std::uint32_t kWasIncomplete = 2;  ///< reply: a clip was not whole

/// The request of an import or export, and what the worker answers.
template <class Record>
struct TransferFields {
    static_assert(std::is_same_v<std::remove_const_t<Record>, stu_R8P2TransInfo>);
    /// A view of `info`, which must outlive it.
    explicit TransferFields(Record& info) : record(info) {}

    Record& record; ///< what it is a view of
    // Of the request.
    FieldOf<Record, CString> cardRoot = record.text1; ///< interface path of the card's root
    FieldOf<Record, CString> clipName = record.text2; ///< not used by an export
    FieldOf<Record, CString> folder = record.text3;   ///< gets or holds a CONTENTS tree

    /// kTakeIncomplete in a request, kWasIncomplete in a reply.
    FieldOf<Record, std::uint32_t> flags = record.value2;
    // Of the reply.
    FieldOf<Record, std::uint32_t> files = record.value1;        ///< of the clip
    FieldOf<Record, std::uint64_t> bytes = record.size1;         ///< of all files
    FieldOf<Record, std::uint64_t> writtenBytes = record.size2;  ///< the rest existed already
    FieldOf<Record, std::uint64_t> videoBytes = record.size3;    ///< of the picture
    FieldOf<Record, std::uint64_t> audioBytes = record.size4;    ///< of the sound
    FieldOf<Record, std::uint64_t> metadataBytes = record.size5; ///< of metadata files
    FieldOf<Record, std::uint64_t> otherBytes = record.size6;    ///< of all others
};

/// Values of RelationFields::kind; others are not used.
enum class RelationKind : std::uint32_t { Top, Previous, Next };

/// A related clip of a recording.
template <class Record>
struct RelationFields {
    static_assert(std::is_same_v<std::remove_const_t<Record>, stu_R8PRelationClipInfo>);
    /// A view of `info`, which must outlive it.
    explicit RelationFields(Record& info) : record(info) {}

    Record& record;                                      ///< what it is a view of
    FieldOf<Record, std::uint32_t> kind = record.value1; ///< a RelationKind

    /// Last 16 bytes of the UMID (SMPTE ST 330) of the related clip.
    FieldOf<Record, GUID> identifier = record.identifier1;
    FieldOf<Record, CString> clipName = record.text1;         ///< of the related clip
    FieldOf<Record, CString> cardSerialNumber = record.text2; ///< of the card that holds it
};

/// What the worker tells of a camera file.
template <class Record>
struct BaseClipFields {
    static_assert(std::is_same_v<std::remove_const_t<Record>, NQP2BaseClipInfo>);
    /// A view of `info`, which must outlive it.
    explicit BaseClipFields(Record& info) : record(info) {}

    /// Pixels, 0 to 32767.
    [[nodiscard]] std::int32_t Width() const { return packedSize & 0xFFFF; }
    /// Pixels, 0 to 32767.
    [[nodiscard]] std::int32_t Height() const { return packedSize >> 16; }
    /// Sizes that have no room become the nearest that do.
    void SetSize(std::int32_t width, std::int32_t height) const {
        constexpr std::int32_t kLargest = 0x7FFF;
        packedSize = std::clamp(height, 0, kLargest) << 16 | std::clamp(width, 0, kLargest);
    }

    Record& record;                                       ///< what it is a view of
    FieldOf<Record, CString> clipName = record.clipText1; ///< file title, or what the metadata say
    FieldOf<Record, CString> userClipName = record.clipText3; ///< title tag of the file

    /// Of the material, or made from the file's content.
    FieldOf<Record, GUID> identifier = record.identifier;
    FieldOf<Record, CString> date = record.clipText2; ///< recording date as the file tells it
    FieldOf<Record, std::int64_t> framesIn1000Seconds = record.value1; ///< 29970
    FieldOf<Record, std::int64_t> duration = record.value2;            ///< frames
    FieldOf<Record, std::int64_t> startFrame = record.value3; ///< start timecode as a frame count
    FieldOf<Record, CString> codec = record.codec;            ///< four-character code, "DVSD"
    FieldOf<Record, CString> frameRate = record.text1;        ///< "59.94i"
    FieldOf<Record, CString> aspectRatio = record.text2;      ///< "16:9"

    /// Interface path of the file with the picture.
    FieldOf<Record, CString> videoPath = record.text3;
    /// Interface paths of the files of the sound channels, at most eight.
    FieldOf<Record, CStringArray> audioPaths = record.texts;
    FieldOf<Record, std::int32_t> packedSize = record.value4; ///< height << 16 | width, in pixels
};

} // namespace nqp2
