// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

/// @file
/// Arrays of texts.

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"

/// A growable array of strings.
using CStringArray = CArray<CString>;
