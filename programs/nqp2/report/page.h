// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/report/contents.h"
#include "nqp2/report/pictures.h"
#include "NQP2ParserU/JoinedTakes.h"

#include <string>
#include <vector>

namespace nqp2::report {

/// What a page shows.
struct PageContents {
    std::vector<CardContents> cards;
    CArray<JoinedTake> takes;    ///< of all cards; a segment's card counts as in `cards`
    CArray<SkippedFile> skipped; ///< what the search for cards left out
    std::string made;            ///< when, for people
};

/// The page as one file that needs no other. It says of itself that it may load nothing. Each
/// picture is waited for in its place.
std::string MakePage(const PageContents& contents, Pictures& pictures);

} // namespace nqp2::report
