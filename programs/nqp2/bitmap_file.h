// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/MediaHeaders.h"

#include <string>

namespace nqp2::tool {

/// A picture as the worker takes icons: blue, green, red; rows not padded, the bottom one first.
struct Bitmap {
    SIZE size;
    std::string pixels;
};

/// Reads a bitmap file of 24 bits a pixel, not compressed, with sides up to 4096 and 15 million
/// pixels in all. Throws Failure.
Bitmap ReadBitmap(const std::string& path);

} // namespace nqp2::tool
