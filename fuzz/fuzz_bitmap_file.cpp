// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any bytes as the picture that a user hands to nqp2 for an icon.

#include "fuzz/input_as_file.h"
#include "fuzz/measured_input.h"
#include "fuzz/require.h"
#include "nqp2/bitmap_file.h"
#include "nqp2/console.h"

#include <cstddef>
#include <cstdint>

int nqp2::fuzz::TestInput(const std::uint8_t* data, std::size_t size) {
    const InputAsFile file(data, size);
    try {
        const tool::Bitmap bitmap = tool::ReadBitmap(file.Path());
        Require(bitmap.size.cx > 0 && bitmap.size.cy > 0, "a picture has sides");
        Require(bitmap.pixels.size() == std::size_t{3} * static_cast<std::size_t>(bitmap.size.cx) *
                                            static_cast<std::size_t>(bitmap.size.cy),
                "every pixel is there");
        Require(bitmap.pixels.size() < size, "every pixel stands in the file");
    } catch (const tool::Failure&) {
        // no picture
    }
    return 0;
}
