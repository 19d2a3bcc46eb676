// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any wide text through everything that reads identifiers, timecodes, dates, numbers and codes.

#include "fuzz/measured_input.h"
#include "fuzz/require.h"
#include "media/dates.h"
#include "media/identifier.h"
#include "media/proxy_codes.h"
#include "media/timecode.h"
#include "platform/guid_text.h"
#include "platform/number_text.h"
#include "platform/unicode.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace {

using nqp2::fuzz::Require;

/// Half of the inputs are read as UTF-16 with all its surrogates, half as UTF-8.
CString TextOf(std::string_view bytes) {
    if (bytes.empty() || bytes.front() != 'u') {
        return nqp2::platform::TextFromUtf8(bytes);
    }
    bytes.remove_prefix(1);
    std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(units.data(), bytes.data(), units.size() * sizeof(char16_t));
    const CString text = nqp2::platform::TextFromUtf16(units);
    Require(nqp2::platform::Utf16FromText(text.View()) == units, "UTF-16 survives a round trip");
    return text;
}

void CheckIdentifier(const CString& text) {
    const GUID guid = nqp2::media::GuidFromIdentifier(text);
    Require(guid == nqp2::media::GuidFromIdentifier(text.Right(32)), "the last 32 digits count");
    if (guid != GUID()) {
        const CString identifier = nqp2::media::IdentifierFromGuid(guid);
        Require(identifier.GetLength() == 64, "an identifier has 64 digits");
        GUID again;
        Require(nqp2::platform::GuidFromText(nqp2::platform::GuidText(guid).View(), again) &&
                    again == guid,
                "a GUID survives its text");
    }
}

void CheckTimecode(const CString& text) {
    const auto timecode = nqp2::media::ParseTimecode(text.View());
    if (timecode) {
        for (const int field :
             {timecode->hours, timecode->minutes, timecode->seconds, timecode->frames}) {
            Require(field >= 0 && field <= 99, "a timecode field has two digits");
        }
    }
    for (const wchar_t* const rate : {L"50i", L"59.94i", L"23.98p", L"59.94p", L"60p", L""}) {
        for (const bool drop : {false, true}) {
            const std::int32_t count = nqp2::media::ClipFrameCount(text.View(), rate, drop);
            Require(timecode.has_value() || count == 0, "no timecode counts nothing");
            // The text may name the rate as well as the moment.
            nqp2::media::ClipFrameCount(L"01:00:00;02", text.View(), drop);
        }
    }
}

void CheckDate(const CString& text) {
    COleDateTime moment;
    nqp2::media::ReadClipDate(text, moment);
    const CString bare = nqp2::media::WithoutZone(text);
    Require(text.Left(bare.GetLength()) == bare, "only the end of a date is cut");
}

void CheckNumbers(const CString& text) {
    const std::int64_t wide = nqp2::platform::ToInt64(text.View());
    const std::int64_t clamped = wide > INT32_MAX ? INT32_MAX : wide < INT32_MIN ? INT32_MIN : wide;
    Require(nqp2::platform::ToInt32(text.View()) == clamped, "both widths read the same number");
    const std::int32_t codes[] = {nqp2::media::ProxyFormatCode(text.View()),
                                  nqp2::media::ProxyVideoCodecCode(text.View()),
                                  nqp2::media::ProxyAudioCodecCode(text.View())};
    for (const std::int32_t code : codes) {
        Require(code >= 0 && code <= 2, "a proxy code is 0, 1 or 2");
    }
    const std::int32_t resolution = nqp2::media::ProxyResolutionCode(text.View());
    Require(resolution >= -1 && resolution <= 7, "a proxy resolution is one of eight or none");
}

} // namespace

int nqp2::fuzz::TestInput(const std::uint8_t* data, std::size_t size) {
    const CString text = TextOf({reinterpret_cast<const char*>(data), size});
    CheckIdentifier(text);
    CheckTimecode(text);
    CheckDate(text);
    CheckNumbers(text);
    return 0;
}
