// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/clip_date.h"

#include "platform/number_text.h"

#include <string_view>

namespace nqp2::media {
namespace {

constexpr std::wstring_view kSampleDate = L"2005-02-01T08:58:44+08:00";

} // namespace

bool ReadClipDate(const CString& text, COleDateTime& moment) {
    const std::wstring_view date = text.View();
    if (date.size() != kSampleDate.size()) {
        return false;
    }
    const auto field = [date](std::size_t first, std::size_t count) {
        return platform::ToInt32(date.substr(first, count));
    };
    moment.SetDateTime(field(0, 4), field(5, 2), field(8, 2), field(11, 2), field(14, 2),
                       field(17, 2));
    return true;
}

CString WithoutZone(const CString& text) {
    const int time = text.Find(L'T');
    if (time < 0) {
        return text;
    }
    for (const wchar_t sign : {L'+', L'-'}) {
        const int zone = text.ReverseFind(sign);
        if (zone > time) {
            return text.Left(zone);
        }
    }
    return text;
}

} // namespace nqp2::media
