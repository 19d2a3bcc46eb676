// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any bytes as the picture that a user hands to nqp2 for an icon.

#include "console/console.h"
#include "fuzz/fuzz_target.h"
#include "nqp2/bitmap_file.h"

namespace nqp2::fuzz {

void TestInput(Input input) {
    const InputAsFile file(input);
    try {
        const tool::Bitmap bitmap = tool::ReadBitmap(file.Path());
        Require(bitmap.pixels.size() == std::size_t{3} * static_cast<std::size_t>(bitmap.size.cx) *
                                            static_cast<std::size_t>(bitmap.size.cy),
                "every pixel is there");
        Require(bitmap.pixels.size() < input.size(), "every pixel stands in the file");
    } catch (const tool::Failure&) {
        // no picture
    }
}

} // namespace nqp2::fuzz
