// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>

/// Header of a device-independent bitmap (40 bytes, little-endian in files).
struct BITMAPINFOHEADER {
    std::uint32_t biSize = 40;
    std::int32_t biWidth = 0;
    std::int32_t biHeight = 0;
    std::uint16_t biPlanes = 1;
    std::uint16_t biBitCount = 0;
    std::uint32_t biCompression = 0;
    std::uint32_t biSizeImage = 0;
    std::int32_t biXPelsPerMeter = 0;
    std::int32_t biYPelsPerMeter = 0;
    std::uint32_t biClrUsed = 0;
    std::uint32_t biClrImportant = 0;
};
static_assert(sizeof(BITMAPINFOHEADER) == 40);

#pragma pack(push, 1)
/// Description of a wave audio stream (18 bytes, packed).
struct WAVEFORMATEX {
    std::uint16_t wFormatTag = 0;
    std::uint16_t nChannels = 0;
    std::uint32_t nSamplesPerSec = 0;
    std::uint32_t nAvgBytesPerSec = 0;
    std::uint16_t nBlockAlign = 0;
    std::uint16_t wBitsPerSample = 0;
    std::uint16_t cbSize = 0;
};
#pragma pack(pop)
static_assert(sizeof(WAVEFORMATEX) == 18);

/// Width and height in pixels.
struct tagSIZE {
    std::int32_t cx = 0;
    std::int32_t cy = 0;
};
using SIZE = tagSIZE;
