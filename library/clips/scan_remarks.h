// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/ScanReport.h"
#include "platform/io_status.h"
#include "xml/dom/parse_error.h"

#include <exception>

/// What a scan writes into its report.
namespace nqp2::clips {

SkippedFile NotLoaded(const CString& path, const dom::ParseError& error);
SkippedFile NotRead(const CString& path, const platform::IoStatus& status);
/// For a file with a backslash in its name; no path tells it, so that the remark is on the folder.
SkippedFile NotNamable(const CString& folder, const CString& title);
/// For a file whose values memory cannot hold.
SkippedFile NotHeld(const CString& path, const std::exception& error);
SkippedFile Remark(const CString& path, SkipReason reason);

} // namespace nqp2::clips
