// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/track_texts.h"

#include <string_view>

namespace nqp2::media {
namespace {

CString Joined(const CString& first, const wchar_t* between, const CString& second) {
    return first.IsEmpty() || second.IsEmpty() ? first + second : first + between + second;
}

/// "44.1", without zeros at its end.
CString ThousandsText(std::int32_t number) {
    CString text;
    text.Format(L"%d.%03d", number / 1000, number % 1000);
    while (text.Right(1) == L"0") {
        text = text.Left(text.GetLength() - 1);
    }
    return text.Right(1) == L"." ? text.Left(text.GetLength() - 1) : text;
}

} // namespace

CString PictureText(std::int32_t pixels, std::int32_t lines, const FrameRate* rate) {
    CString raster;
    if (pixels > 0 && lines > 0) {
        raster.Format(L"%dx%d", pixels, lines);
    }
    return Joined(raster, L" ", rate != nullptr ? CString(rate->text) : CString());
}

CString SoundText(std::int32_t channels, std::int32_t hertz) {
    CString count;
    if (channels > 0) {
        count.Format(channels == 1 ? L"%d channel" : L"%d channels", channels);
    }
    return Joined(count, L", ", hertz > 0 ? ThousandsText(hertz) + L" kHz" : CString());
}

} // namespace nqp2::media
