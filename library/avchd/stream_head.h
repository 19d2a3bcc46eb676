// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"
#include "avchd/recorded_moment.h"
#include "avchd/sequence_parameters.h"

#include <cstdint>
#include <optional>

namespace nqp2::avchd {

/// What the beginning of an H.264 stream tells, up to its first picture.
struct StreamHead {
    std::optional<SequenceParameters> parameters;
    std::optional<RecordedDate> date;
    std::optional<RecordedTimecode> timecode;
    /// The first picture has begun behind its parameters: more bytes would tell nothing more.
    bool complete = false;
};

/// Decodes the beginning of a .MTS or .m2ts file, as much of it as there is. Recorders leave date
/// and timecode in the first picture's user data, as packs like those of DV tapes (IEC 61834-4).
StreamHead DecodeStreamHead(Bytes file, std::uint16_t videoPid);

/// The same of a bare H.264 stream (Annex B).
StreamHead DecodeVideoHead(Bytes video);

} // namespace nqp2::avchd
