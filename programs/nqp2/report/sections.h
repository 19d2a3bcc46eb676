// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/report/page.h"
#include "page/html.h"
#include "page/parts.h"

/// The parts of the page.
namespace nqp2::report {

using page::Counted;
using page::Html;
using page::Own;

/// What the card is, and whether it is whole.
void PutCardHead(Html& html, const PageContents& page, std::size_t card);
/// The clips as rows of a table. Each is a place that links lead to.
void PutClips(Html& html, const PageContents& page, std::size_t card, Pictures& pictures);
std::string ClipPlace(std::size_t card, std::size_t clip);
/// The takes of all cards as strips of their segments.
void PutTakes(Html& html, const PageContents& page);
/// Edit lists or playlists as timelines.
void PutEdits(Html& html, const CardContents& card);
/// What was skipped, and why; a heading before it.
void PutSkipped(Html& html, const CArray<SkippedFile>& skipped,
                const std::vector<std::string>& remarks);

/// The name of the folder which people have named: a card may lie in folders that are called the
/// same on all of its kind.
std::string NameOf(const tool::CardScan& scan);

} // namespace nqp2::report
