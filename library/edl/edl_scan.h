// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/P2EDL.h"
#include "platform/file_find.h"
#include "platform/io_status.h"
#include "xml/dom/parse_error.h"

#include <vector>

class CMarkupMSXML;

namespace nqp2::edl {

/// A file of the folder that gave no record.
struct SkippedList {
    platform::FoundFile file;
    platform::IoStatus status; ///< failed when the file could not be read
    dom::ParseError error;     ///< set when it was read and did not load; else it is no edit list
};

/// Appends a record for every edit list in the folder (with its trailing separator) that loads, in
/// the file system's order, and to `skipped`, when given, what does not. Returns whether the folder
/// could be read to its end.
platform::IoStatus ScanEditLists(const CString& folder, CMarkupMSXML& reader,
                                 CArray<tag_P2EDL>& edls,
                                 std::vector<SkippedList>* skipped = nullptr);

} // namespace nqp2::edl
