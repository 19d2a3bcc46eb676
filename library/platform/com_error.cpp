// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/ComError.h"

// Out of line so that every module that throws or catches it shares one type description.
_com_error::~_com_error() = default;
