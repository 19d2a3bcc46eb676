// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "parser/scan_failure.h"

#include "media/card_layout.h"
#include "platform/place.h"

namespace nqp2::parser {

CString WhyUnreadable(const CString& root, const wchar_t* lack) {
    if (root.IsEmpty()) {
        return L"no card is named";
    }
    const platform::Place card(media::WithDrive(root));
    platform::IoStatus status = card.Look();
    if (status) {
        // Nothing can be looked for in a folder that may not be entered.
        status = card.Below(media::kContents.BelowDrive()).Look();
        if (status || status.error == platform::IoError::NotFound) {
            return lack;
        }
    }
    return L"the card cannot be reached: " + platform::TextFromUtf8(status.reason);
}

} // namespace nqp2::parser
