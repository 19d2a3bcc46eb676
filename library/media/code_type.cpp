// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/CodeType.h"

#include "NQP2ParserU/TextBytes.h"
#include "platform/case_fold.h"
#include "platform/guard.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace nqp2 {
namespace {

using platform::EqualNoCase;

/// A row without a rate takes every rate; the first row that fits decides.
struct Decision {
    std::wstring_view codec;
    std::wstring_view rate;
    eCodeType type;
    eCodeType class50Type;

    constexpr Decision(std::wstring_view codecName, std::wstring_view rateText, eCodeType result)
        : Decision(codecName, rateText, result, result) {}
    constexpr Decision(std::wstring_view codecName, std::wstring_view rateText, eCodeType result,
                       eCodeType class50Result)
        : codec(codecName), rate(rateText), type(result), class50Type(class50Result) {}
};

/// Decided before the class is looked at.
constexpr Decision kDvDecisions[] = {
    {L"DV25_411", L"25p", CT_DV25_25P},      {L"DV25_411", L"59.94i", CT_DV25_5994I},
    {L"DV25_411", L"29.97p", CT_DV25_2997P}, {L"DV25_411", L"", CT_DV25_50I},
    {L"DV25_420", L"25p", CT_DV25_25P},      {L"DV25_420", L"59.94i", CT_DV25_5994I},
    {L"DV25_420", L"29.97p", CT_DV25_2997P}, {L"DV25_420", L"", CT_DV25_50I},
    {L"DV50_422", L"25p", CT_DV50_25P},      {L"DV50_422", L"59.94i", CT_DV50_5994I},
    {L"DV50_422", L"29.97p", CT_DV50_2997P}, {L"DV50_422", L"", CT_DV50_50I},
};

/// Every codec of class 200 that is not listed, "AVC-I_1080/59.94i" included, yields
/// kClass200Default: kept, hosts rely on it.
constexpr Decision kClass200Decisions[] = {
    {L"AVC-I_720/50p", L"", CT_AVCI200_720_50P},
    {L"AVC-I_720/59.94p", L"", CT_AVCI200_720_5994P},
    {L"AVC-I_1080/25p", L"50p", CT_AVCI200_1080_50P},
    {L"AVC-I_1080/25p", L"", CT_AVCI200_1080_25P},
    {L"AVC-I_1080/29.97p", L"59.94p", CT_AVCI200_1080_5994P},
    {L"AVC-I_1080/29.97p", L"", CT_AVCI200_1080_2997P},
    {L"AVC-I_1080/50p", L"", CT_AVCI200_1080_50P},
    {L"AVC-I_1080/59.94p", L"", CT_AVCI200_1080_5994P},
};
constexpr eCodeType kClass200Default = CT_AVCI200_1080_50I;

constexpr Decision kOtherDecisions[] = {
    {L"DV100_1080/50i", L"50i", CT_DV100_1080_50I},
    {L"DV100_1080/50i", L"", CT_DV100_1080_25P},
    {L"DV100_720/50p", L"50p", CT_DV100_720_50P},
    {L"DV100_720/50p", L"", CT_DV100_720_25P},
    {L"DV100_1080/59.94i", L"59.94i", CT_DV100_1080_5994I},
    {L"DV100_1080/59.94i", L"", CT_DV100_1080_2997P},
    {L"DV100_720/59.94p", L"59.94p", CT_DV100_720_5994P},
    {L"DV100_720/59.94p", L"", CT_DV100_720_2997P},
    {L"AVC-I_1080/50i", L"", CT_AVCI100_1080_50I, CT_AVCI50_1080_50I},
    {L"AVC-I_1080/25p", L"", CT_AVCI100_1080_25P, CT_AVCI50_1080_25P},
    {L"AVC-I_720/50p", L"", CT_AVCI100_720_50P, CT_AVCI50_720_50P},
    {L"AVC-I_1080/59.94i", L"", CT_AVCI100_1080_5994I, CT_AVCI50_1080_5994I},
    {L"AVC-I_1080/29.97p", L"", CT_AVCI100_1080_2997P, CT_AVCI50_1080_2997P},
    {L"AVC-I_720/59.94p", L"", CT_AVCI100_720_5994P, CT_AVCI50_720_5994P},
    {L"AVCHD_1920_1080_50i", L"", CT_AVCHD_1920_1080_50I},
    {L"AVCHD_1440_1080_50i", L"", CT_AVCHD_1440_1080_50I},
    {L"AVCHD_1440_1080_25p", L"", CT_AVCHD_1440_1080_25P},
    {L"AVCHD_1280_720_50p", L"", CT_AVCHD_1280_720_50P},
    {L"AVCHD_1920_1080_25p", L"", CT_AVCHD_1920_1080_25P},
    {L"AVCHD_1280_720_25p", L"", CT_AVCHD_1280_720_25P},
};
constexpr eCodeType kUnknownCodecType = CT_DV25_50I;

const Decision* FindDecision(std::span<const Decision> decisions, std::wstring_view codec,
                             std::wstring_view rate) {
    const auto fits = [&](const Decision& row) {
        return EqualNoCase(row.codec, codec) && (row.rate.empty() || EqualNoCase(row.rate, rate));
    };
    const auto found = std::find_if(decisions.begin(), decisions.end(), fits);
    return found == decisions.end() ? nullptr : &*found;
}

template <class Value>
struct NamedValue {
    Value value;
    const char* name;
};

#define NQP2_NAMED(value)                                                                          \
    { value, #value }
constexpr NamedValue<eCodeType> kCodeTypeNames[] = {
    NQP2_NAMED(CT_DV25_50I),
    NQP2_NAMED(CT_DV50_50I),
    NQP2_NAMED(CT_DV100_1080_50I),
    NQP2_NAMED(CT_AVCI100_1080_50I),
    NQP2_NAMED(CT_AVCI50_1080_50I),
    NQP2_NAMED(CT_DV25_25P),
    NQP2_NAMED(CT_DV50_25P),
    NQP2_NAMED(CT_DV100_1080_25P),
    NQP2_NAMED(CT_DV100_720_25P),
    NQP2_NAMED(CT_DV100_720_50P),
    NQP2_NAMED(CT_AVCI100_1080_25P),
    NQP2_NAMED(CT_AVCI100_720_50P),
    NQP2_NAMED(CT_AVCI50_1080_25P),
    NQP2_NAMED(CT_AVCI50_720_50P),
    NQP2_NAMED(CT_DV25_5994I),
    NQP2_NAMED(CT_DV25_2997P),
    NQP2_NAMED(CT_DV50_5994I),
    NQP2_NAMED(CT_DV50_2997P),
    NQP2_NAMED(CT_DV100_1080_5994I),
    NQP2_NAMED(CT_DV100_1080_2997P),
    NQP2_NAMED(CT_DV100_720_5994P),
    NQP2_NAMED(CT_DV100_720_2997P),
    NQP2_NAMED(CT_AVCI100_1080_5994I),
    NQP2_NAMED(CT_AVCI100_1080_2997P),
    NQP2_NAMED(CT_AVCI100_720_5994P),
    NQP2_NAMED(CT_AVCI50_1080_5994I),
    NQP2_NAMED(CT_AVCI50_1080_2997P),
    NQP2_NAMED(CT_AVCI50_720_5994P),
    NQP2_NAMED(CT_AVCI200_1080_50I),
    NQP2_NAMED(CT_AVCI200_1080_5994I),
    NQP2_NAMED(CT_AVCI200_1080_25P),
    NQP2_NAMED(CT_AVCI200_1080_2997P),
    NQP2_NAMED(CT_AVCI200_1080_50P),
    NQP2_NAMED(CT_AVCI200_1080_5994P),
    NQP2_NAMED(CT_AVCI200_720_50P),
    NQP2_NAMED(CT_AVCI200_720_5994P),
    NQP2_NAMED(CT_AVCHD_1920_1080_50I),
    NQP2_NAMED(CT_AVCHD_1440_1080_50I),
    NQP2_NAMED(CT_AVCHD_1920_1080_25P),
    NQP2_NAMED(CT_AVCHD_1440_1080_25P),
    NQP2_NAMED(CT_AVCHD_1280_720_50P),
    NQP2_NAMED(CT_AVCHD_1280_720_25P),
};
constexpr NamedValue<eP2_VIDEO_STANDARD> kStandardNames[] = {
    NQP2_NAMED(VS_5994I), NQP2_NAMED(VS_50I), NQP2_NAMED(VS_60I),   NQP2_NAMED(VS_5994P),
    NQP2_NAMED(VS_50P),   NQP2_NAMED(VS_60P), NQP2_NAMED(VS_2398P),
};
#undef NQP2_NAMED

template <class Value>
const char* NameOf(std::span<const NamedValue<Value>> names, Value value) {
    const auto isIt = [value](const NamedValue<Value>& row) { return row.value == value; };
    const auto found = std::find_if(names.begin(), names.end(), isIt);
    return found == names.end() ? "" : found->name;
}

template <class Value>
std::optional<Value> ValueOf(std::span<const NamedValue<Value>> names, const CString& name) {
    const auto isIt = [&name](const NamedValue<Value>& row) {
        return EqualNoCase(TextFromBytes(row.name).View(), name.View());
    };
    const auto found = std::find_if(names.begin(), names.end(), isIt);
    return found == names.end() ? std::nullopt : std::optional(found->value);
}

} // namespace

eCodeType CodeTypeFromCodec(const CString& codec, const CString& rate, const int& class50,
                            const CString& codecClass) noexcept {
    const Decision* decision = FindDecision(kDvDecisions, codec.View(), rate.View());
    if (decision == nullptr && codecClass.View() == L"200") {
        decision = FindDecision(kClass200Decisions, codec.View(), rate.View());
        return decision == nullptr ? kClass200Default : decision->type;
    }
    if (decision == nullptr) {
        decision = FindDecision(kOtherDecisions, codec.View(), rate.View());
    }
    if (decision == nullptr) {
        return kUnknownCodecType;
    }
    return class50 != 0 ? decision->class50Type : decision->type;
}

const char* CodeTypeName(eCodeType type) noexcept {
    return NameOf<eCodeType>(kCodeTypeNames, type);
}

const char* StandardName(eP2_VIDEO_STANDARD standard) noexcept {
    return NameOf<eP2_VIDEO_STANDARD>(kStandardNames, standard);
}

std::optional<eCodeType> CodeTypeFromName(const CString& name) {
    return platform::Guarded(std::optional<eCodeType>(),
                             [&] { return ValueOf<eCodeType>(kCodeTypeNames, name); });
}

std::optional<eP2_VIDEO_STANDARD> StandardFromName(const CString& name) {
    return platform::Guarded(std::optional<eP2_VIDEO_STANDARD>(),
                             [&] { return ValueOf<eP2_VIDEO_STANDARD>(kStandardNames, name); });
}

} // namespace nqp2
