// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/FrameRate.h"
#include "worker/essence_file.h"

#include <cstddef>
#include <string_view>

namespace nqp2::worker {

/// How a code type is recorded and what the metadata call it.
struct RecordingFormat {
    eCodeType type;
    const wchar_t* codec;
    const wchar_t* codecClass; ///< "" for codecs without
    const wchar_t* rate;
    VideoCodec essence;
    std::int32_t width;
    std::int32_t height;
    std::size_t unitSize; ///< bytes of every access unit; 0: as the first one
    bool isWide;          ///< always 16:9
};

/// Null for a code type that cannot be recorded.
const RecordingFormat* FindRecordingFormat(eCodeType type);

/// The rate that its text names.
const FrameRate& RateOf(const RecordingFormat& format);

/// Fails unless the bytes can be an access unit of that format: system, raster, rate and class as
/// far as they tell. AVC-Intra tells in the parameter sets, which `first` asks for.
void CheckAccessUnit(const RecordingFormat& format, std::string_view unit, bool first);

/// The codec's name in the metadata, which for DV of 625 lines depends on the sampling.
CString CodecName(const RecordingFormat& format, std::string_view unit);

} // namespace nqp2::worker
