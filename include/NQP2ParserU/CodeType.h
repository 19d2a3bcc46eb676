// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

/// @file
/// Recording formats and rate families.

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"

#include <cstdint>
#include <optional>

/// Recording format: codec, raster and rate in one value. The values are fixed and sparse. A name
/// tells the codec with its class, the lines where the codec has several rasters, and the rate: I
/// for fields, P for frames a second, 5994 for 59.94. DV25, DV50 and DV100 are those of SMPTE
/// ST 314 and ST 370, AVCI is AVC-Intra (SMPTE RP 2027).
enum eCodeType : std::int32_t {
    CT_DV25_50I = 0, ///< also the result for any unknown codec
    CT_DV50_50I = 1,
    CT_DV100_1080_50I = 2,
    CT_AVCI100_1080_50I = 5,
    CT_AVCI50_1080_50I = 7,
    CT_DV25_25P = 12,
    CT_DV50_25P = 13,
    CT_DV100_1080_25P = 14,
    CT_DV100_720_25P = 15,
    CT_DV100_720_50P = 16,
    CT_AVCI100_1080_25P = 17,
    CT_AVCI100_720_50P = 19,
    CT_AVCI50_1080_25P = 20,
    CT_AVCI50_720_50P = 22,
    CT_DV25_5994I = 23,
    CT_DV25_2997P = 24,
    CT_DV50_5994I = 26,
    CT_DV50_2997P = 27,
    CT_DV100_1080_5994I = 29,
    CT_DV100_1080_2997P = 30,
    CT_DV100_720_5994P = 32,
    CT_DV100_720_2997P = 33,
    CT_AVCI100_1080_5994I = 35,
    CT_AVCI100_1080_2997P = 36,
    CT_AVCI100_720_5994P = 38,
    CT_AVCI50_1080_5994I = 43,
    CT_AVCI50_1080_2997P = 44,
    CT_AVCI50_720_5994P = 46,
    CT_AVCI200_1080_50I = 51,
    CT_AVCI200_1080_5994I = 52, ///< declared; no decision yields it
    CT_AVCI200_1080_25P = 53,
    CT_AVCI200_1080_2997P = 54,
    CT_AVCI200_1080_50P = 55,
    CT_AVCI200_1080_5994P = 56,
    CT_AVCI200_720_50P = 58,
    CT_AVCI200_720_5994P = 59,
    CT_AVCHD_1920_1080_50I = 200,
    CT_AVCHD_1440_1080_50I = 201,
    CT_AVCHD_1920_1080_25P = 202,
    CT_AVCHD_1440_1080_25P = 203,
    CT_AVCHD_1280_720_50P = 204,
    CT_AVCHD_1280_720_25P = 205,
};

/// Rate family of the material.
enum eP2_VIDEO_STANDARD : std::int32_t {
    VS_5994I = 0, ///< 59.94i, 29.97p
    VS_50I = 1,   ///< 50i, 25p, 24p and every rate not listed elsewhere
    VS_60I = 2,   ///< 60i, 30p
    VS_5994P = 3, ///< 59.94p
    VS_50P = 4,   ///< 50p
    VS_60P = 5,   ///< 60p
    VS_2398P = 6, ///< 23.98p
};

namespace nqp2 {

/// The recording format told by the codec name, the rate text, the class-50 flag and the class
/// text; all texts are compared without regard to letter case. Never fails: CT_DV25_50I for an
/// unknown codec.
NQP2_API eCodeType CodeTypeFromCodec(const CString& codec, const CString& rate, const int& class50,
                                     const CString& codecClass) noexcept;

/// Index 0 to 10 of a rate text, without regard to letter case; 0 for any other text.
NQP2_API int RateIndexFromText(const CString& rate) noexcept;
/// The same index from frames a second, each compared within 0.001; 0 for any other rate.
NQP2_API int RateIndexFromFps(double fps) noexcept;
/// The rate family of a rate index; VS_50I for an index that is none.
NQP2_API eP2_VIDEO_STANDARD StandardFromRateIndex(int index) noexcept;

/// The enumerator's own name ("CT_DV25_50I", "VS_50I"); "" for a value that has none.
NQP2_API const char* CodeTypeName(eCodeType type) noexcept;
/// The same for a rate family.
NQP2_API const char* StandardName(eP2_VIDEO_STANDARD standard) noexcept;

/// The value of an enumerator's name, without regard to letter case; nothing for any other text.
NQP2_API std::optional<eCodeType> CodeTypeFromName(const CString& name);
/// The same for a rate family.
NQP2_API std::optional<eP2_VIDEO_STANDARD> StandardFromName(const CString& name);

} // namespace nqp2
