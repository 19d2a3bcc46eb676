// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/P2EDL.h"
#include "platform/io_status.h"

class CMarkupMSXML;

namespace nqp2::edl {

// Both write an edit list of clips that are on the card, under `name` (extension added when it has
// none) or, when that is empty, under the next number. A file of the given name is replaced, one of
// a number's name never, also when another writer takes it at the same moment. What killed writers
// left is removed. Any failure, a missing reader and a list that could not be read again included,
// has a sentence as its reason; then nothing is left but the folder, which is made when it is
// missing.

/// Into the folder in the card's root.
platform::IoStatus SaveEditList(const CString& root, const tag_P2EDL& edl, const CString& name,
                                CMarkupMSXML* reader);

/// Among those of both folders: into the one in the root, unless the card has the other alone. No
/// number of a list in either is given again. `saved` receives the file's interface path.
platform::IoStatus SaveCardEditList(const CString& root, const tag_P2EDL& edl, const CString& name,
                                    CMarkupMSXML* reader, CString& saved);

} // namespace nqp2::edl
