// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/codec_family.h"

#include "platform/case_fold.h"

#include <algorithm>
#include <span>

namespace nqp2::media {
namespace {

constexpr std::wstring_view kLongGopNames[] = {L"AVC-LongG422", L"AVC-LongG420"};
constexpr std::wstring_view kIntraNames[] = {L"AVC-Intra4K_422", L"AVC-Intra4K_444",
                                             L"AVC-Intra_422"};

bool IsOneOf(std::span<const std::wstring_view> names, std::wstring_view codec) {
    return std::any_of(names.begin(), names.end(), [codec](std::wstring_view name) {
        return platform::EqualNoCase(name, codec);
    });
}

bool Contains(std::wstring_view text, std::wstring_view part) {
    return text.find(part) != std::wstring_view::npos;
}

} // namespace

CodecFamily FamilyOfCodec(std::wstring_view codec) {
    if (Contains(codec, L"AVC-Long") || IsOneOf(kLongGopNames, codec)) {
        return CodecFamily::LongGop;
    }
    if (Contains(codec, L"AVC-Intra") || IsOneOf(kIntraNames, codec)) {
        return CodecFamily::Intra;
    }
    return CodecFamily::Other;
}

bool NameCarriesClass(std::wstring_view codec) {
    return IsOneOf(kLongGopNames, codec);
}

} // namespace nqp2::media
