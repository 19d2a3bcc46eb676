// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

/// @file
/// Integer names and status values.

#include <cstdint>

/// The interface's own names for fixed widths. `long` and `unsigned long` of the interface are
/// 32 bits wide and are written std::int32_t and std::uint32_t.
using __int64 = std::int64_t;

/// Status of a platform operation: negative means failure.
using HRESULT = std::int32_t;

///@{
/// Status of the operations that hand one on; _com_error holds the failures.
inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003U);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057U);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005U);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154U);
///@}
