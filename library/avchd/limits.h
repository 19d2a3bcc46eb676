// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>

/// What one file of an AVCHD card may cost, whatever it claims: less than 16 MB at any time, its
/// bytes included.
namespace nqp2::avchd {

/// Whole playlist and clip information files. The largest playlist that is read has 1.3 MiB of
/// items; the time map of a clip of 26 hours has less than 1 MiB.
inline constexpr std::uint64_t kMaxPlaylistFile = std::uint64_t{4} << 20;
inline constexpr std::uint64_t kMaxClipInformationFile = std::uint64_t{8} << 20;

/// Items of a playlist. Cameras write some hundred; each becomes an edit event of nearly a
/// kilobyte.
inline constexpr std::size_t kMaxPlayItems = 16'000;

/// What is read of a stream, step by step until its first picture has begun. The first step is
/// enough for every stream that begins with its parameter sets.
inline constexpr std::uint64_t kStreamSteps[] = {std::uint64_t{32} << 10, std::uint64_t{256} << 10,
                                                 std::uint64_t{2} << 20};

/// Stream units that are decoded; larger ones are left alone.
inline constexpr std::size_t kMaxStreamUnit = 64 * 1024;

/// Bits in front of a number of variable length; more make no 32-bit number.
inline constexpr int kMaxLeadingZeros = 31;

/// Macroblocks (16 picture elements) along a side of the picture: four times the largest raster
/// that cameras record.
inline constexpr std::uint32_t kMaxMacroblocks = 1024;

/// Video bit depth above 8 that the coding allows.
inline constexpr std::uint32_t kMaxExtraBitDepth = 6;

} // namespace nqp2::avchd
