// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/media_tags.h"

#include "platform/unicode.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

namespace nqp2::media {
namespace {

/// A member and the names of its tags, the best first.
struct MemberTags {
    CString& (*member)(ClipMetadata& metadata);
    const wchar_t* names[3];
};
constexpr MemberTags kMembers[] = {
    {[](ClipMetadata& metadata) -> CString& { return metadata.access.creationDate; },
     {L"creation_time", L"com.apple.quicktime.creationdate", L"date"}},
    {[](ClipMetadata& metadata) -> CString& { return metadata.device.manufacturer; },
     {L"make", L"com.apple.quicktime.make", L"com.android.manufacturer"}},
    {[](ClipMetadata& metadata) -> CString& { return metadata.device.modelName; },
     {L"model", L"com.apple.quicktime.model", L"com.android.model"}},
};
constexpr const wchar_t* kPlaceTags[] = {L"location", L"com.apple.quicktime.location.ISO6709"};

/// "" for a text that is no tag.
std::wstring_view TagName(const MetadataText& text) {
    const std::wstring_view path = text.path.View();
    const std::wstring_view tags = kTagsPath;
    const std::size_t at = path.find(tags);
    return at == std::wstring_view::npos ? std::wstring_view() : path.substr(at + tags.size());
}

/// -1 when there is none. The file's own tags come first.
std::int64_t FindTag(const CArray<MetadataText>& texts, std::wstring_view name) {
    const auto found = std::find_if(texts.begin(), texts.end(), [name](const MetadataText& text) {
        return TagName(text) == name && !text.text.IsEmpty();
    });
    return found == texts.end() ? -1 : found - texts.begin();
}

bool IsDigit(char ch) {
    return ch >= '0' && ch <= '9';
}

/// Takes a sign and a number from the text's start; "" when there is none.
std::string_view TakeSigned(std::string_view& text) {
    if (text.empty() || (text[0] != '+' && text[0] != '-')) {
        return {};
    }
    std::size_t end = 1;
    while (end < text.size() && (IsDigit(text[end]) || text[end] == '.')) {
        ++end;
    }
    const std::string_view number = text.substr(0, end);
    text.remove_prefix(end);
    const bool isNumber = number.size() > 1 && IsDigit(number[1]) && IsDigit(number.back()) &&
                          std::count(number.begin(), number.end(), '.') <= 1;
    return isNumber ? number : std::string_view();
}

double ValueOf(std::string_view digits) {
    double value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

/// ISO 6709 writes degrees, degrees and minutes, or these and seconds, without a mark between: the
/// digits before the fraction tell. "" for a text that is none of these or beyond the limit.
std::string Degrees(std::string_view number, std::size_t degreeDigits, int limit) {
    if (number.empty()) {
        return {};
    }
    const std::string_view digits = number.substr(1);
    const std::size_t whole = std::min(digits.find('.'), digits.size());
    const std::size_t pairs = whole < degreeDigits ? 0 : whole - degreeDigits;
    if (whole < degreeDigits || pairs % 2 != 0 || pairs > 4) {
        return {};
    }
    double value = ValueOf(digits.substr(0, pairs == 0 ? digits.size() : degreeDigits));
    double part = 1;
    for (std::size_t at = degreeDigits; at < whole; at += 2) {
        part *= 60;
        const bool isLast = at + 2 == whole;
        value += ValueOf(digits.substr(at, isLast ? digits.size() - at : 2)) / part;
    }
    if (value > limit) {
        return {};
    }
    if (pairs == 0) {
        return std::string(number);
    }
    constexpr int kDecimals = 6; ///< a tenth of a metre
    char text[32];
    const auto [end, error] =
        std::to_chars(std::begin(text), std::end(text), value, std::chars_format::fixed, kDecimals);
    return number[0] + std::string(text, end);
}

/// "+48.1372+011.5755+520/": latitude, longitude, perhaps the height, perhaps the system they are
/// in.
void ReadPlace(const CString& text, PlaceMetadata& place) {
    const std::string bytes = platform::Utf8FromText(text.View());
    std::string_view left = bytes;
    const std::string latitude = Degrees(TakeSigned(left), 2, 90);
    const std::string longitude = Degrees(TakeSigned(left), 3, 180);
    if (latitude.empty() || longitude.empty()) {
        return;
    }
    place.latitude = platform::TextFromUtf8(latitude);
    place.longitude = platform::TextFromUtf8(longitude);
    place.altitude = platform::TextFromUtf8(TakeSigned(left));
}

} // namespace

void TakeMembersFromTags(ClipMetadata& metadata) {
    for (const MemberTags& row : kMembers) {
        for (const wchar_t* const name : row.names) {
            CString& member = row.member(metadata);
            const std::int64_t at = member.IsEmpty() ? FindTag(metadata.others, name) : -1;
            if (at >= 0) {
                member = metadata.others[at].text;
                metadata.others.RemoveAt(at);
            }
        }
    }
    for (const wchar_t* const name : kPlaceTags) {
        const std::int64_t at = FindTag(metadata.others, name);
        if (at >= 0 && metadata.place.latitude.IsEmpty()) {
            ReadPlace(metadata.others[at].text, metadata.place);
        }
    }
}

} // namespace nqp2::media
