// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/manifest.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <utility>

/// Words of a manifest, for those who write and those who read them.
namespace nqp2::mhl {

inline constexpr std::string_view kManifestNamespace = "urn:ASC:MHL:v2.0";
inline constexpr std::string_view kManifestVersion = "2.0";
inline constexpr std::string_view kMetadataEntry = "entry";

inline constexpr std::pair<Process, std::string_view> kProcessNames[] = {
    {Process::Transfer, "transfer"},
    {Process::InPlace, "in-place"},
    {Process::Flatten, "flatten"},
};
inline constexpr std::pair<Action, std::string_view> kActionNames[] = {
    {Action::Original, "original"},
    {Action::Verified, "verified"},
    {Action::Failed, "failed"},
};

/// "" for one without a name.
template <class Value, std::size_t Count>
std::string_view NameIn(const std::pair<Value, std::string_view> (&table)[Count], Value value) {
    const auto* const found = std::find_if(std::begin(table), std::end(table),
                                           [&](const auto& row) { return row.first == value; });
    return found != std::end(table) ? found->second : std::string_view();
}

/// The value-initialised one for a name that is not there.
template <class Value, std::size_t Count>
Value ValueIn(const std::pair<Value, std::string_view> (&table)[Count], std::string_view name) {
    const auto* const found = std::find_if(std::begin(table), std::end(table),
                                           [&](const auto& row) { return row.second == name; });
    return found != std::end(table) ? found->first : Value{};
}

} // namespace nqp2::mhl
