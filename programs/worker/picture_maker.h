// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/MediaHeaders.h"

#include <functional>
#include <memory>
#include <string>

namespace nqp2::worker {

/// Makes small JPEG pictures of foreign files, one after the other.
class PictureMaker {
public:
    /// No picture is larger than `bounds`; throws a Failure unless they are ones that pictures are
    /// made for. Files are given up when `goesOn` returns false.
    PictureMaker(const SIZE& bounds, std::function<bool()> goesOn);

    /// The JPEG of a picture file or of the first picture of a video. Throws a Failure when there
    /// is none in the file, or more bytes and time would be needed than it may take.
    std::string Make(const CString& path);

private:
    struct EndEncoder {
        void operator()(void* encoder) const;
    };

    /// Pixels of 24 or 32 bits, as they lie in a file or come from the media module.
    struct Pixels;
    static bool IsPlainBitmap(const std::string& bytes, const SIZE& bounds, Pixels& pixels);
    std::string Encode(const Pixels& pixels);

    SIZE m_bounds;
    std::function<bool()> m_goesOn;
    std::unique_ptr<void, EndEncoder> m_encoder;
    std::string m_room; ///< for the largest JPEG so far; what is given out is much smaller
};

} // namespace nqp2::worker
