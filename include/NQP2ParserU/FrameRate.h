// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace nqp2 {

/// A frame rate: so many frames in so many seconds. Files may have others than clips do; such a
/// rate has no text.
struct FrameRate {
    std::int32_t frames = 25;             ///< frames in `seconds` seconds; never 0
    std::int32_t seconds = 1;             ///< never 0
    const wchar_t* text = L"";            ///< as clips write it; "59.94i" counts the fields
    eP2_VIDEO_STANDARD standard = VS_50I; ///< the rate family

    /// Timecode numbers that drop frame leaves out each minute but every tenth; 0: it cannot.
    std::int32_t droppedNumbers = 0;

    /// Frames a second: 29.97 for 30000 in 1001 seconds.
    [[nodiscard]] constexpr double PerSecond() const {
        return static_cast<double>(frames) / seconds;
    }
    /// Timecode numbers a second: 30 for 29.97.
    [[nodiscard]] constexpr std::int32_t Nominal() const {
        return frames / seconds + (frames % seconds == 0 ? 0 : 1);
    }
    /// Whether its text says that each frame is two fields.
    [[nodiscard]] constexpr bool IsInterlaced() const {
        return std::wstring_view(text).ends_with(L'i');
    }
    /// Whether it belongs to the 50 Hz family.
    [[nodiscard]] constexpr bool Is50Hz() const { return seconds == 1 && frames % 25 == 0; }
};

/// The rates of clips by rate index (RateIndexFromText).
inline constexpr std::array<FrameRate, 11> kFrameRates = {{
    {25, 1, L"50i", VS_50I},
    {30000, 1001, L"59.94i", VS_5994I, 2},
    {24000, 1001, L"23.98p", VS_2398P},
    {60000, 1001, L"59.94p", VS_5994P, 4},
    {25, 1, L"25p", VS_50I},
    {30000, 1001, L"29.97p", VS_5994I, 2},
    {24, 1, L"24p", VS_50I},
    {50, 1, L"50p", VS_50P},
    {30, 1, L"60i", VS_60I},
    {30, 1, L"30p", VS_60I},
    {60, 1, L"60p", VS_60P},
}};

} // namespace nqp2
