// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/file_date.h"

#include <cstdint>

namespace nqp2::media {

CString FileDateText(std::optional<std::time_t> time) {
    constexpr int kEpochYear = 1900;
    std::tm parts{};
    if (!time || localtime_r(&*time, &parts) == nullptr) {
        return L"Unknow";
    }
    CString text;
    text.Format(L"%ld-%02d-%02dT%02d:%02d:%02d", std::int64_t{parts.tm_year} + kEpochYear,
                parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
    return text;
}

} // namespace nqp2::media
