// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_remarks.h"

#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string_view>

namespace nqp2::tool {
namespace {

/// A file without a time has this in the place of its date.
constexpr const wchar_t* kNoDate = L"Unknow";

bool IsDigit(wchar_t ch) {
    return ch >= L'0' && ch <= L'9';
}

bool IsCount(const CString& text) {
    std::wstring_view digits = text.View();
    digits.remove_prefix(digits.starts_with(L'-') ? 1 : 0);
    return !digits.empty() && std::all_of(digits.begin(), digits.end(), IsDigit);
}

/// Tags of camera files may have the day alone.
bool IsDate(const CString& text) {
    return !IsoDate(text).IsEmpty() || !IsoDate(text + L"T00:00:00").IsEmpty();
}

/// A number; degrees may have minutes, seconds and the sphere's letter around them.
bool IsPlace(const CString& text, std::wstring_view letters, double limit) {
    std::wstring_view number = text.View();
    if (!number.empty() && letters.find(number.front()) != std::wstring_view::npos) {
        number.remove_prefix(1);
    } else if (!number.empty() && letters.find(number.back()) != std::wstring_view::npos) {
        number.remove_suffix(1);
    }
    constexpr std::wstring_view kMarks = L"+-.,:; \u00B0\u2032\u2033'\"";
    const bool hasForm = std::any_of(number.begin(), number.end(), IsDigit) &&
                         std::all_of(number.begin(), number.end(), [kMarks](wchar_t ch) {
                             return IsDigit(ch) || kMarks.find(ch) != std::wstring_view::npos;
                         });
    if (!hasForm) {
        return false;
    }
    const std::string bytes = BytesFromText(CString(number.substr(number.front() == L'+' ? 1 : 0)));
    double value = 0;
    std::from_chars(bytes.data(), bytes.data() + bytes.size(), value);
    return std::abs(value) <= limit;
}

bool IsLatitude(const CString& text) {
    return IsPlace(text, L"NSns", 90);
}
bool IsLongitude(const CString& text) {
    return IsPlace(text, L"EWew", 180);
}
bool IsAltitude(const CString& text) {
    return IsPlace(text, L"m", HUGE_VAL);
}

/// A value, what it should be, and how that is seen.
struct Check {
    const char* name;
    const CString& (*value)(const ClipMetadata& metadata);
    const char* what;
    bool (*isOne)(const CString& text);
};

#define NQP2_VALUE(member)                                                                         \
    [](const ClipMetadata& metadata) -> const CString& { return metadata.member; }
constexpr Check kChecks[] = {
    {"creation date", NQP2_VALUE(access.creationDate), "date", IsDate},
    {"date of the last change", NQP2_VALUE(access.lastUpdateDate), "date", IsDate},
    {"latitude", NQP2_VALUE(place.latitude), "latitude", IsLatitude},
    {"longitude", NQP2_VALUE(place.longitude), "longitude", IsLongitude},
    {"altitude", NQP2_VALUE(place.altitude), "number", IsAltitude},
    {"offset in its recording", NQP2_VALUE(relation.offsetInShot), "number", IsCount},
    {"thumbnail's frame", NQP2_VALUE(thumbnail.frameOffset), "number", IsCount},
    {"thumbnail's width", NQP2_VALUE(thumbnail.width), "number", IsCount},
    {"thumbnail's height", NQP2_VALUE(thumbnail.height), "number", IsCount},
};
#undef NQP2_VALUE

constexpr std::wstring_view kRoot = L"P2Main/";
/// Elements below it that count something.
constexpr std::wstring_view kCounts[] = {L"Duration", L"StartByteOffset", L"DataSize",
                                         L"SamplingRate", L"BitsPerSample"};

/// Of a clip's hundred paths few end in one: most are told by where their last name begins.
bool IsPathOfCount(std::wstring_view path) {
    return std::any_of(std::begin(kCounts), std::end(kCounts), [path](std::wstring_view name) {
        return path.size() > name.size() && path[path.size() - name.size() - 1] == L'/' &&
               path.ends_with(name) && path.starts_with(kRoot);
    });
}

class RemarkList {
public:
    void Check(const char* name, const CString& value, const char* what,
               bool (*isOne)(const CString& text)) {
        if (!value.IsEmpty() && !isOne(value)) {
            Tell(name, value, what);
        }
    }
    void Tell(const std::string& name, const CString& value, const char* what) {
        constexpr int kShown = 60;
        const char* const more = value.GetLength() > kShown ? "..." : "";
        m_remarks.push_back(fmt::format("its {} is no {}: \"{}{}\"", name, what,
                                        BytesFromText(value.Left(kShown)), more));
    }
    void CheckCounts(const CArray<MetadataText>& texts) {
        for (const MetadataText& each : texts) {
            if (IsPathOfCount(each.path.View()) && !IsCount(each.text)) {
                Tell(BytesFromText(each.path), each.text, "number");
            }
        }
    }
    std::vector<std::string> Take() { return std::move(m_remarks); }
    void Add(const char* sentence) { m_remarks.emplace_back(sentence); }

private:
    std::vector<std::string> m_remarks;
};

const CString& DateOf(const CString& recorded, const ClipMetadata* metadata,
                      CString ShootMetadata::*told) {
    const bool isTold = metadata != nullptr && !(metadata->shoot.*told).IsEmpty();
    return isTold ? metadata->shoot.*told : recorded;
}

} // namespace

std::vector<std::string> RemarksOn(const _tag_P2Clip& clip, const ClipMetadata* metadata) {
    RemarkList remarks;
    const auto isDate = [](const CString& text) { return IsDate(text) || text == kNoDate; };
    remarks.Check("start date", DateOf(clip.StartDate, metadata, &ShootMetadata::startDate), "date",
                  isDate);
    remarks.Check("end date", DateOf(clip.EndDate, metadata, &ShootMetadata::endDate), "date",
                  isDate);
    if (metadata == nullptr) {
        return remarks.Take();
    }
    for (const Check& check : kChecks) {
        remarks.Check(check.name, check.value(*metadata), check.what, check.isOne);
    }
    remarks.CheckCounts(metadata->others);
    if (metadata->isCut) {
        remarks.Add("its files tell more than is kept: the rest is left out");
    }
    return remarks.Take();
}

} // namespace nqp2::tool
