// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"

#include <string_view>

/// Families of code types and of codec names.
namespace nqp2::media {

/// Code types that cost the same on a card and share their metadata's namespace.
enum class CodeTypeFamily {
    StandardRate,
    DoubleRate,
    HighDefinition,
    IntraHighRate,
    IntraLowRate,
    Other, ///< no fixed frame size
};

CodeTypeFamily FamilyOf(eCodeType type);

/// How the essence of a codec is laid out on the card: the two families keep video and audio in
/// one file of the AVCLIP folder.
enum class CodecFamily { Other, LongGop, Intra };

/// "AVC-LongG422" and "AVC-LongG420" in any letter case, or a name that contains "AVC-Long", are
/// long-GOP; "AVC-Intra4K_422", "AVC-Intra4K_444", "AVC-Intra_422" in any case, or a name that
/// contains "AVC-Intra", are Intra. (The short names "AVC-I_..." are neither.)
CodecFamily FamilyOfCodec(std::wstring_view codec);

/// Who looks whether a codec of AVC-I is of class 50. They look at different codecs: kept, hosts
/// rely on it.
enum class ClassReader {
    Scan,     ///< of a card's clips
    EditList, ///< reading an edit list, and its source clip for a new one
    First,    ///< a named clip, a card's format, and what a new edit list tells
};
bool LooksAtClass(ClassReader reader, std::wstring_view codec);
inline constexpr const wchar_t* kClass50 = L"50";

/// Whether the codec's class belongs into its name ("AVC-LongG422" and "AVC-LongG420", any case).
bool NameCarriesClass(std::wstring_view codec);

} // namespace nqp2::media
