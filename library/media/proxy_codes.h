// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string_view>

/// Codes of a proxy's description texts, letter case ignored.
namespace nqp2::media {

std::int32_t ProxyFormatCode(std::wstring_view text);
std::int32_t ProxyVideoCodecCode(std::wstring_view text);
std::int32_t ProxyAudioCodecCode(std::wstring_view text);
std::int32_t ProxyResolutionCode(std::wstring_view text);

} // namespace nqp2::media
