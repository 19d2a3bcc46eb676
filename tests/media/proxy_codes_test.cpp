// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/proxy_codes.h"

#include <gtest/gtest.h>

namespace nqp2::media {
namespace {

TEST(ProxyCodes, AreToldByTheDescriptionTexts) {
    constexpr struct {
        std::int32_t (*codeOf)(std::wstring_view);
        const wchar_t* text;
        std::int32_t code;
    } kRows[] = {
        {ProxyFormatCode, L"mp4", 1},           {ProxyFormatCode, L"MOV", 2},
        {ProxyFormatCode, L"AVI", 0},           {ProxyFormatCode, L"", 0},
        {ProxyVideoCodecCode, L"AVC", 1},       {ProxyVideoCodecCode, L"Mpeg-4", 2},
        {ProxyVideoCodecCode, L"MPEG4", 0},     {ProxyAudioCodecCode, L"AAC", 1},
        {ProxyAudioCodecCode, L"lpcm", 2},      {ProxyAudioCodecCode, L"PCM", 0},
        {ProxyResolutionCode, L"QVGA", 0},      {ProxyResolutionCode, L"SIF_NTSC", 1},
        {ProxyResolutionCode, L"SIF_PAL", 2},   {ProxyResolutionCode, L"480X270", 3},
        {ProxyResolutionCode, L"640x360", 4},   {ProxyResolutionCode, L"960x540", 5},
        {ProxyResolutionCode, L"1280x720", 6},  {ProxyResolutionCode, L"1920x1080", 7},
        {ProxyResolutionCode, L"1920x108", -1}, {ProxyResolutionCode, L"", -1},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(row.codeOf(row.text), row.code) << "row " << &row - kRows;
    }
}

} // namespace
} // namespace nqp2::media
