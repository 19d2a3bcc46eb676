// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "parser/ScanReport.h"
#include "platform/CString.h"
#include "platform/io_status.h"
#include "xml/dom/parse_error.h"

/// What a scan writes into its report.
namespace nqp2::parser {

SkippedFile NotLoaded(const CString& path, const dom::ParseError& error);
SkippedFile NotRead(const CString& path, const platform::IoStatus& status);
SkippedFile Remark(const CString& path, SkipReason reason);

} // namespace nqp2::parser
