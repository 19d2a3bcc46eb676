// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/CStringArray.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/MediaHeaders.h"

#include <cstdint>
#include <vector>

class CNQP2Parser;

namespace nqp2 {

/// A small picture of a file, or one sentence why there is none.
struct SmallPicture {
    std::vector<unsigned char> jpeg; ///< a whole file (ISO/IEC 10918); empty when there is none
    CString problem;                 ///< one sentence for a person; "" when there is a picture
};

/// What became of asking for pictures.
enum class PicturesStatus : std::int32_t {
    Made,     ///< one for each file, with or without a picture
    Refused,  ///< the worker's GetLastError says why; so it is without a worker proxy
    NoWorker, ///< the worker ended or the channel to it failed, perhaps for one of the files
};

/// Lets the worker make a JPEG of each picture or video file (interface paths, at most 256), of a
/// video its first picture. None is larger than `bounds` (sides of 16 to 1,024 pixels) or than the
/// original. Files are foreign: only the worker reads and decodes them.
NQP2_API PicturesStatus MakeSmallPictures(const CNQP2Parser& parser, const CStringArray& files,
                                          const SIZE& bounds,
                                          CArray<SmallPicture>& pictures) noexcept;

} // namespace nqp2
