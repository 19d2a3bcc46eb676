// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any wide text through everything that reads identifiers, timecodes, dates, numbers and codes.

#include "fuzz/fuzz_target.h"
#include "media/dates.h"
#include "media/identifier.h"
#include "media/proxy_codes.h"
#include "media/timecode.h"
#include "platform/guid_text.h"
#include "platform/number_text.h"
#include "platform/unicode.h"

#include <cstring>

namespace nqp2::fuzz {
namespace {

/// Half of the inputs are read as UTF-16 with all its surrogates, half as UTF-8.
CString TextOf(std::string_view bytes) {
    if (bytes.empty() || bytes.front() != 'u') {
        return platform::TextFromUtf8(bytes);
    }
    bytes.remove_prefix(1);
    std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(units.data(), bytes.data(), units.size() * sizeof(char16_t));
    const CString text = platform::TextFromUtf16(units);
    Require(platform::Utf16FromText(text.View()) == units, "UTF-16 survives a round trip");
    return text;
}

void CheckIdentifier(const CString& text) {
    const GUID guid = media::GuidFromIdentifier(text);
    Require(guid == media::GuidFromIdentifier(text.Right(32)), "the last 32 digits count");
    if (guid != GUID()) {
        GUID again;
        Require(platform::GuidFromText(platform::GuidText(guid).View(), again) && again == guid,
                "a GUID survives its text");
    }
}

void CheckTimecode(const CString& text) {
    const bool isTimecode = media::ParseTimecode(text.View()).has_value();
    for (const wchar_t* const rate : {L"50i", L"59.94i", L"23.98p", L"59.94p", L"60p", L""}) {
        for (const bool drop : {false, true}) {
            const std::int32_t count = media::ClipFrameCount(text.View(), rate, drop);
            Require(isTimecode || count == 0, "no timecode counts nothing");
            // The text may name the rate as well as the moment.
            media::ClipFrameCount(L"01:00:00;02", text.View(), drop);
        }
    }
}

void CheckNumbersAndDates(const CString& text) {
    const std::int64_t wide = platform::ToInt64(text.View());
    const std::int64_t clamped = wide > INT32_MAX ? INT32_MAX : wide < INT32_MIN ? INT32_MIN : wide;
    Require(platform::ToInt32(text.View()) == clamped, "both widths read the same number");
    COleDateTime moment;
    media::ReadClipDate(text, moment);
    media::WithoutZone(text);
    media::ProxyFormatCode(text.View());
    media::ProxyVideoCodecCode(text.View());
    media::ProxyAudioCodecCode(text.View());
    media::ProxyResolutionCode(text.View());
}

} // namespace

void TestInput(Input input) {
    const CString text = TextOf(AsText(input));
    CheckIdentifier(text);
    CheckTimecode(text);
    CheckNumbersAndDates(text);
}

} // namespace nqp2::fuzz
