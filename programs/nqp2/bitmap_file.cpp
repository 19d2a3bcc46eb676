// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/bitmap_file.h"

#include "console/console.h"
#include "nqp2/input_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace nqp2::tool {
namespace {

constexpr std::size_t kHeadSize = 54; // file header and the shortest picture header in use
constexpr std::uint32_t kLargestHead = 4096;
constexpr std::int64_t kLargestSide = 4096;
constexpr std::int64_t kMostPixels = 15'000'000; // as many as a request to the worker has room for
constexpr std::size_t kBytesPerPixel = 3;

struct Layout {
    std::uint32_t pixelsAt = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
    bool isTopDown = false;
    bool isSound = false;
};

Layout LayoutOf(std::string_view head) {
    Layout layout;
    layout.pixelsAt = LittleEndian(head, 10, 4);
    layout.width = static_cast<std::int32_t>(LittleEndian(head, 18, 4));
    layout.height = static_cast<std::int32_t>(LittleEndian(head, 22, 4));
    layout.isTopDown = layout.height < 0;
    layout.height = std::abs(layout.height);
    const bool isPlain = LittleEndian(head, 28, 2) == 24 && LittleEndian(head, 30, 4) == 0;
    layout.isSound = head.size() == kHeadSize && head.substr(0, 2) == "BM" && isPlain &&
                     layout.pixelsAt >= kHeadSize && layout.pixelsAt <= kLargestHead &&
                     layout.width > 0 && layout.width <= kLargestSide && layout.height > 0 &&
                     layout.height <= kLargestSide && layout.width * layout.height <= kMostPixels;
    return layout;
}

/// Row by row: a picture of many rows would be moved as often when each went in front of the
/// others.
void TurnOver(std::string& pixels, std::size_t row) {
    const auto at = [&](std::size_t place) {
        return pixels.begin() + static_cast<std::ptrdiff_t>(place);
    };
    for (std::size_t low = 0, high = pixels.size(); low + row < high; low += row) {
        high -= row;
        std::swap_ranges(at(low), at(low + row), at(high));
    }
}

} // namespace

Bitmap ReadBitmap(const std::string& path) {
    InputFile file(path);
    const Layout layout = LayoutOf(file.Read(kHeadSize));
    if (!layout.isSound) {
        throw Failure(path, "is no bitmap file of 24 bits a pixel",
                      "sides up to 4096, 15 million pixels in all");
    }
    file.Read(layout.pixelsAt - kHeadSize);
    const std::size_t row = static_cast<std::size_t>(layout.width) * kBytesPerPixel;
    const std::size_t padded = (row + 3) / 4 * 4;
    Bitmap bitmap = {
        {static_cast<std::int32_t>(layout.width), static_cast<std::int32_t>(layout.height)}, {}};
    for (std::int64_t i = 0; i < layout.height; ++i) {
        const std::string bytes = file.Read(padded);
        if (bytes.size() < row) {
            throw Failure(path, "ends within the picture", "");
        }
        bitmap.pixels.append(bytes, 0, row);
    }
    if (layout.isTopDown) {
        TurnOver(bitmap.pixels, row);
    }
    return bitmap;
}

} // namespace nqp2::tool
