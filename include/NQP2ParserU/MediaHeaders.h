// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

/// @file
/// Headers of picture and sound.

#include <cstdint>

/// Header of a device-independent bitmap (40 bytes, little-endian in files).
struct BITMAPINFOHEADER {
    std::uint32_t biSize = 40;       ///< bytes of this header
    std::int32_t biWidth = 0;        ///< pixels
    std::int32_t biHeight = 0;       ///< pixels; positive: the bottom row comes first
    std::uint16_t biPlanes = 1;      ///< always 1
    std::uint16_t biBitCount = 0;    ///< bits a pixel
    std::uint32_t biCompression = 0; ///< 0: none
    std::uint32_t biSizeImage = 0; ///< bytes of the pixels; 0 may stand for an uncompressed bitmap
    std::int32_t biXPelsPerMeter = 0; ///< pixels a metre; 0 when not told
    std::int32_t biYPelsPerMeter = 0; ///< pixels a metre; 0 when not told
    std::uint32_t biClrUsed = 0;      ///< colours of the table; 0: as many as the bits allow
    std::uint32_t biClrImportant = 0; ///< of these, how many matter; 0: all
};
static_assert(sizeof(BITMAPINFOHEADER) == 40);

#pragma pack(push, 1)
/// Description of a wave audio stream (18 bytes, packed).
struct WAVEFORMATEX {
    std::uint16_t wFormatTag = 0;      ///< 1: PCM (RFC 2361 lists them)
    std::uint16_t nChannels = 0;       ///< channels
    std::uint32_t nSamplesPerSec = 0;  ///< sampling rate in Hz
    std::uint32_t nAvgBytesPerSec = 0; ///< bytes a second
    std::uint16_t nBlockAlign = 0;     ///< bytes of one sample of all channels
    std::uint16_t wBitsPerSample = 0;  ///< bits of one sample of one channel
    std::uint16_t cbSize = 0;          ///< bytes that follow this header; 0 for PCM
};
#pragma pack(pop)
static_assert(sizeof(WAVEFORMATEX) == 18);

/// Width and height in pixels.
struct tagSIZE {
    std::int32_t cx = 0; ///< width
    std::int32_t cy = 0; ///< height
};
/// The name that hosts use.
using SIZE = tagSIZE;
