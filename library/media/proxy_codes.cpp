// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/proxy_codes.h"

#include "platform/case_fold.h"

#include <algorithm>
#include <span>

namespace nqp2::media {
namespace {

struct Code {
    std::wstring_view text;
    std::int32_t value;
};

constexpr Code kFormats[] = {{L"MP4", 1}, {L"MOV", 2}};
constexpr Code kVideoCodecs[] = {{L"AVC", 1}, {L"MPEG-4", 2}};
constexpr Code kAudioCodecs[] = {{L"AAC", 1}, {L"LPCM", 2}};
constexpr Code kResolutions[] = {
    {L"QVGA", 0},    {L"SIF_NTSC", 1}, {L"SIF_PAL", 2},  {L"480x270", 3},
    {L"640x360", 4}, {L"960x540", 5},  {L"1280x720", 6}, {L"1920x1080", 7},
};

std::int32_t CodeOf(std::span<const Code> codes, std::wstring_view text, std::int32_t other) {
    const auto isIt = [text](const Code& code) { return platform::EqualNoCase(code.text, text); };
    const auto found = std::find_if(codes.begin(), codes.end(), isIt);
    return found == codes.end() ? other : found->value;
}

} // namespace

std::int32_t ProxyFormatCode(std::wstring_view text) {
    return CodeOf(kFormats, text, 0);
}

std::int32_t ProxyVideoCodecCode(std::wstring_view text) {
    return CodeOf(kVideoCodecs, text, 0);
}

std::int32_t ProxyAudioCodecCode(std::wstring_view text) {
    return CodeOf(kAudioCodecs, text, 0);
}

std::int32_t ProxyResolutionCode(std::wstring_view text) {
    return CodeOf(kResolutions, text, -1);
}

} // namespace nqp2::media
