// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/base/media_streams.h"
#include "worker/rewrap/output_file.h"

#include <string>

namespace nqp2::worker::rewrap {

/// Tells the field order in the index of a QuickTime file that lies before its media, with room
/// behind it: libavformat does so for all but H.264. Throws a Failure for a file that is none.
void TellFieldOrder(OutputFile& file, FieldOrder order);

/// The same in the index itself, an atom "moov" with all that is in it; false when it has no track
/// of pictures.
bool AddFieldOrder(std::string& index, FieldOrder order);

} // namespace nqp2::worker::rewrap
