// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_layout.h"

#include <algorithm>
#include <iterator>

namespace nqp2::edl {

bool IsClassCodec(const CString& codec) {
    static constexpr const wchar_t* kCodecs[] = {L"AVC-I_1080/50i", L"AVC-I_1080/25p",
                                                 L"AVC-I_720/50p", L"AVC-I_720/59.94p"};
    return std::any_of(std::begin(kCodecs), std::end(kCodecs),
                       [&](const wchar_t* each) { return codec == each; });
}

} // namespace nqp2::edl
