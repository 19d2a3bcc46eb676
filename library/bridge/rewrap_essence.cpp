// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/RewrapEssence.h"

#include "platform/guard.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string>
#include <vector>

namespace nqp2 {
namespace {

/// By RewrapContainer.
constexpr std::array<const wchar_t*, 4> kContainers = {L"MOV", L"MXF", L"MKV", L"MP4"};

/// By RewrapEssence: its name, and whether each of kContainers holds it.
struct EssenceRow {
    const wchar_t* name;
    std::array<bool, kContainers.size()> isLegal;
};
constexpr std::array<EssenceRow, 5> kEssence = {{
    {L"DV", {true, true, true, false}},
    {L"AVC-Intra", {true, true, true, true}},
    // libavformat's MXF loses the order of reordered pictures and knows few profiles.
    {L"H.264", {true, false, true, true}},
    {L"PCM sound", {true, true, true, false}},
    {L"AC-3 sound", {true, false, true, true}},
}};

const EssenceRow& RowOf(RewrapEssence essence) {
    return kEssence.at(static_cast<std::size_t>(essence));
}

std::wstring Listed(const std::vector<std::wstring>& names) {
    std::wstring text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += (i == 0 ? L"" : i + 1 < names.size() ? L", " : L" and ") + names[i];
    }
    return text;
}

CString Obstacle(std::size_t container, const CArray<RewrapEssence>& tracks) {
    const auto isLegal = [](std::size_t where, RewrapEssence what) {
        return RowOf(what).isLegal.at(where);
    };
    const auto wrong = std::find_if(tracks.begin(), tracks.end(),
                                    [&](RewrapEssence each) { return !isLegal(container, each); });
    if (wrong == tracks.end()) {
        return {};
    }
    std::vector<std::wstring> legal;
    for (std::size_t i = 0; i < kContainers.size(); ++i) {
        if (std::all_of(tracks.begin(), tracks.end(),
                        [&](RewrapEssence each) { return isLegal(i, each); })) {
            legal.emplace_back(kContainers.at(i));
        }
    }
    return CString(std::wstring(RowOf(*wrong).name) + L" is not put into " +
                   kContainers.at(container) + L" files; this recording can be put into " +
                   Listed(legal) + L".");
}

} // namespace

CString RewrapObstacle(RewrapContainer container, const CArray<RewrapEssence>& tracks) noexcept {
    return platform::Guarded(CString(),
                             [&] { return Obstacle(static_cast<std::size_t>(container), tracks); });
}

} // namespace nqp2
