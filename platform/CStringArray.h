// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/CArray.h"
#include "platform/CString.h"

/// A growable array of strings.
using CStringArray = CArray<CString>;
