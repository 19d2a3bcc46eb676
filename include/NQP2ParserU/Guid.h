// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

/// @file
/// Identifiers of 16 bytes.

#include <cstdint>

/// A 16-byte identifier in the platform's field layout (RFC 4122 text form 8-4-4-4-12).
struct _GUID {
    ///@{
    /// A group of digits of the text form, whose last two groups are in Data4.
    std::uint32_t Data1 = 0;
    std::uint16_t Data2 = 0;
    std::uint16_t Data3 = 0;
    std::uint8_t Data4[8] = {};
    ///@}

    /// Equal in all 16 bytes.
    friend bool operator==(const _GUID&, const _GUID&) = default;
};
/// The name that hosts use.
using GUID = _GUID;

static_assert(sizeof(GUID) == 16);
